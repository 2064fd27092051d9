#include "media/soundencoder.h"

#include "commandline/failure.h"
#include "media/codecs.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cstring>

namespace
{

// Per channel, in bits per second.
const int64_t UsualBitrate = 80000;
const int UsualFrame = 1024;

/** The muxer's default codec, but AAC for Matroska and transport streams, whose defaults are dated. */
AVCodecID UsualCodec(const AVOutputFormat &container)
{
    const bool bOld = std::strcmp(container.name, "matroska") == 0 || std::strcmp(container.name, "mpegts") == 0;
    return bOld ? AV_CODEC_ID_AAC : container.audio_codec;
}

} // namespace

const AVCodec *SoundEncoder::EncoderFor(const AVOutputFormat &container, const SoundChoice &choice)
{
    if (choice.strCodec.empty())
        return avcodec_find_encoder(UsualCodec(container));
    const AVCodec *pCodec = avcodec_find_encoder_by_name(choice.strCodec.c_str());
    if (!pCodec || pCodec->type != AVMEDIA_TYPE_AUDIO)
        throw Failure(ExitCode::Usage, "--audio-codec: there is no audio encoder named \"" + choice.strCodec + "\"");
    return pCodec;
}

SoundEncoder::SoundEncoder(const AVStream &source, const AVOutputFormat &container, const AVCodec &codec,
                           const SoundChoice &choice, const std::string &strFile) :
    m_strFile(strFile)
{
    OpenDecoder(source);
    OpenEncoder(container, codec, choice);
}

void SoundEncoder::Refuse(const std::string &strWhat, int nResult) const
{
    if (nResult == AVERROR(ENOMEM))
        throw std::bad_alloc();
    throw Failure(ExitCode::Output, m_strFile, strWhat + ": " + AvReason(nResult));
}

void SoundEncoder::OpenDecoder(const AVStream &source)
{
    const AVCodec *pCodec = avcodec_find_decoder(source.codecpar->codec_id);
    if (!pCodec)
        Refuse(std::string("no decoder for ") + avcodec_get_name(source.codecpar->codec_id), AVERROR_DECODER_NOT_FOUND);
    m_pDecoder = Checked(CodecPtr(avcodec_alloc_context3(pCodec)));
    if (avcodec_parameters_to_context(m_pDecoder.get(), source.codecpar) < 0)
        throw std::bad_alloc();
    m_pDecoder->pkt_timebase = source.time_base;
    const int nResult = avcodec_open2(m_pDecoder.get(), pCodec, nullptr);
    if (nResult < 0)
        Refuse(std::string("the decoder ") + pCodec->name + " does not take the sound", nResult);
    if (m_pDecoder->sample_rate <= 0 || m_pDecoder->ch_layout.nb_channels <= 0)
        Refuse("the sound names no rate or no channels", AVERROR_INVALIDDATA);
}

void SoundEncoder::OpenEncoder(const AVOutputFormat &container, const AVCodec &codec, const SoundChoice &choice)
{
    m_pEncoder = Checked(CodecPtr(avcodec_alloc_context3(&codec)));
    AVCodecContext &context = *m_pEncoder;
    context.sample_fmt = BestSampleFormat(codec, m_pDecoder->sample_fmt);
    context.sample_rate = BestSampleRate(codec, m_pDecoder->sample_rate);
    context.ch_layout = BestChannels(codec, m_pDecoder->ch_layout.nb_channels);
    context.time_base = {1, context.sample_rate};
    context.bit_rate = choice.nBitrate > 0 ? choice.nBitrate : UsualBitrate * context.ch_layout.nb_channels;
    if (!choice.strCodec.empty())
        context.strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    if ((container.flags & AVFMT_GLOBALHEADER) != 0)
        context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    const int nResult = avcodec_open2(&context, &codec, nullptr);
    if (nResult < 0)
        Refuse(std::string("the encoder ") + codec.name + " does not take the sound or these options", nResult);
}

void SoundEncoder::Encode(const AVPacket *pPacket, const Sink &sink)
{
    // Other errors are ignored: a damaged packet leaves a gap, which the resampler fills with silence.
    if (avcodec_send_packet(m_pDecoder.get(), pPacket) == AVERROR(ENOMEM))
        throw std::bad_alloc();
    const FramePtr pFrame = NewFrame();
    int nResult = 0;
    while ((nResult = avcodec_receive_frame(m_pDecoder.get(), pFrame.get())) != AVERROR(EAGAIN) &&
           nResult != AVERROR_EOF) {
        if (nResult == AVERROR(ENOMEM))
            throw std::bad_alloc();
        if (nResult >= 0)
            Resample(pFrame.get(), sink);
    }
    if (pPacket)
        return;
    if (m_pResampler)
        Resample(nullptr, sink);
    Send(nullptr, sink);
}

/** Set up from the first decoded frame, since it may differ from what the container says. */
void SoundEncoder::SetUpResampler(AVFrame &frame)
{
    SwrContext *pContext = nullptr;
    int nResult =
        swr_alloc_set_opts2(&pContext, &m_pEncoder->ch_layout, m_pEncoder->sample_fmt, m_pEncoder->sample_rate,
                            &frame.ch_layout, static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    m_pResampler.reset(pContext);
    // Fill gaps between time stamps with silence and cut overlaps, without changing the pitch.
    if (nResult >= 0)
        nResult = av_opt_set_double(pContext, "async", 1, 0);
    if (nResult >= 0)
        nResult = swr_init(pContext);
    if (nResult < 0)
        Refuse("the sound cannot be converted", nResult);
    m_pFifo.reset(Checked(av_audio_fifo_alloc(m_pEncoder->sample_fmt, m_pEncoder->ch_layout.nb_channels, UsualFrame)));
}

/** A frame with room for samples in the encoder's format. */
FramePtr SoundEncoder::NewSamples(int nSamples) const
{
    FramePtr pFrame = NewFrame();
    pFrame->nb_samples = nSamples;
    pFrame->format = m_pEncoder->sample_fmt;
    pFrame->sample_rate = m_pEncoder->sample_rate;
    if (av_channel_layout_copy(&pFrame->ch_layout, &m_pEncoder->ch_layout) < 0 ||
        av_frame_get_buffer(pFrame.get(), 0) < 0)
        throw std::bad_alloc();
    return pFrame;
}

void SoundEncoder::SetTime(const AVFrame &frame)
{
    if (frame.pts == AV_NOPTS_VALUE)
        return;
    const AVRational base = m_pDecoder->pkt_timebase;
    if (m_nNext == AV_NOPTS_VALUE)
        m_nNext = av_rescale_q(frame.pts, base, m_pEncoder->time_base);
    const int64_t nUnits = static_cast<int64_t>(m_pEncoder->sample_rate) * frame.sample_rate;
    swr_next_pts(m_pResampler.get(), av_rescale(frame.pts * base.num, nUnits, base.den));
}

/** @param pFrame  null flushes the resampler. */
void SoundEncoder::Resample(AVFrame *pFrame, const Sink &sink)
{
    if (pFrame && !m_pResampler)
        SetUpResampler(*pFrame);
    if (pFrame)
        SetTime(*pFrame);
    const int nIn = pFrame ? pFrame->nb_samples : 0;
    const int nRoom = swr_get_out_samples(m_pResampler.get(), nIn);
    if (nRoom > 0) {
        const FramePtr pOut = NewSamples(nRoom);
        const auto **const pIn = pFrame ? const_cast<const uint8_t **>(pFrame->extended_data) : nullptr;
        const int nOut = swr_convert(m_pResampler.get(), pOut->extended_data, nRoom, pIn, nIn);
        if (nOut < 0)
            Refuse("the sound cannot be converted", nOut);
        if (av_audio_fifo_write(m_pFifo.get(), reinterpret_cast<void **>(pOut->extended_data), nOut) < nOut)
            throw std::bad_alloc();
    }
    const int nFrame = m_pEncoder->frame_size > 0 ? m_pEncoder->frame_size : UsualFrame;
    const int nLeast = pFrame ? nFrame : 1;
    while (av_audio_fifo_size(m_pFifo.get()) >= nLeast) {
        const FramePtr pSamples = NewSamples(std::min(nFrame, av_audio_fifo_size(m_pFifo.get())));
        av_audio_fifo_read(m_pFifo.get(), reinterpret_cast<void **>(pSamples->extended_data), pSamples->nb_samples);
        pSamples->pts = m_nNext == AV_NOPTS_VALUE ? 0 : m_nNext;
        m_nNext = pSamples->pts + pSamples->nb_samples;
        Send(pSamples.get(), sink);
    }
}

void SoundEncoder::Send(const AVFrame *pFrame, const Sink &sink)
{
    int nResult = avcodec_send_frame(m_pEncoder.get(), pFrame);
    while (nResult >= 0 && (nResult = avcodec_receive_packet(m_pEncoder.get(), m_pPacket.get())) >= 0)
        sink(*m_pPacket);
    if (nResult < 0 && nResult != AVERROR(EAGAIN) && nResult != AVERROR_EOF)
        Refuse("encoding the sound failed", nResult);
}
