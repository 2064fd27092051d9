#include "media/mediainput.h"

#include "commandline/failure.h"
#include "commandline/interrupt.h"
#include "media/demuxer.h"

extern "C" {
#include <libavutil/parseutils.h>
}

#include <algorithm>
#include <filesystem>

namespace
{

/** Whether the packets of a stream have times, which those of bare bit streams do not. */
bool HasTimes(const AVStream &stream)
{
    return stream.start_time != AV_NOPTS_VALUE;
}

bool IsVideo(const AVStream &stream)
{
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
}

} // namespace

MediaInput::MediaInput(const std::string &strFile) : m_strFile(strFile)
{
    Open();
    OpenDecoder();
}

void MediaInput::Open()
{
    m_pFormat = OpenDemuxer(m_strFile);
    for (unsigned n = 0; n < m_pFormat->nb_streams && !m_pVideo; ++n) {
        if (IsVideo(*m_pFormat->streams[n]))
            m_pVideo = m_pFormat->streams[n];
    }
    if (!m_pVideo)
        throw Failure(ExitCode::Input, m_strFile, "there is no video in it");
    m_sei.emplace(*m_pVideo->codecpar);
}

void MediaInput::OpenDecoder()
{
    const AVCodecID id = m_pVideo->codecpar->codec_id;
    const AVCodec *pCodec = avcodec_find_decoder(id);
    if (!pCodec)
        throw Failure(ExitCode::Input, m_strFile, std::string("no decoder for ") + avcodec_get_name(id) + " video");
    m_pDecoder = Checked(CodecPtr(avcodec_alloc_context3(pCodec)));
    if (avcodec_parameters_to_context(m_pDecoder.get(), m_pVideo->codecpar) < 0)
        throw std::bad_alloc();
    m_pDecoder->pkt_timebase = m_pVideo->time_base;
    m_pDecoder->framerate = FrameRate();
    m_pDecoder->thread_count = 0;
    const int nResult = avcodec_open2(m_pDecoder.get(), pCodec, nullptr);
    if (nResult < 0)
        throw Failure(ExitCode::Input, m_strFile, "the video cannot be decoded: " + AvReason(nResult));
}

int MediaInput::StreamOf(const SubtitleSource &subtitles) const
{
    std::error_code error;
    if (subtitles.strFile != m_strFile && !std::filesystem::equivalent(subtitles.strFile, m_strFile, error))
        return -1;
    int nTrack = 0;
    for (unsigned n = 0; n < m_pFormat->nb_streams; ++n) {
        const bool bSubtitles = m_pFormat->streams[n]->codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE;
        if (bSubtitles && nTrack++ == subtitles.nTrack)
            return static_cast<int>(n);
    }
    return -1;
}

void MediaInput::Ignore(int nStream)
{
    m_pFormat->streams[nStream]->discard = AVDISCARD_ALL;
}

AVRational MediaInput::FrameRate() const
{
    return av_guess_frame_rate(m_pFormat.get(), m_pVideo, nullptr);
}

AVRational MediaInput::SampleAspectRatio(AVFrame *pFrame) const
{
    return av_guess_sample_aspect_ratio(m_pFormat.get(), m_pVideo, pFrame);
}

int64_t MediaInput::Origin() const
{
    return av_rescale_q(OriginOf(*m_pFormat), Microseconds, m_pVideo->time_base);
}

bool MediaInput::Next(MediaItem &item)
{
    if (m_listPending.empty())
        return ReadOn(item);
    item = std::move(m_listPending.front());
    m_listPending.pop_front();
    return true;
}

bool MediaInput::ReadOn(MediaItem &item)
{
    item = MediaItem();
    for (;;) {
        Interrupt::Check();
        if (Receive(item))
            return true;
        if (m_bDraining)
            return false;
        if (Feed(item))
            return true;
    }
}

/** Takes a frame from the decoder. @return false if it needs more input; while draining, at the end. */
bool MediaInput::Receive(MediaItem &item)
{
    FramePtr pFrame = NewFrame();
    for (;;) {
        const int nResult = avcodec_receive_frame(m_pDecoder.get(), pFrame.get());
        if (nResult == AVERROR(EAGAIN) || nResult == AVERROR_EOF)
            return false;
        if (nResult == AVERROR(ENOMEM))
            throw std::bad_alloc();
        if (nResult >= 0)
            break;
        ++m_nDamaged;
    }
    if ((pFrame->flags & AV_FRAME_FLAG_CORRUPT) != 0 || pFrame->decode_error_flags != 0)
        ++m_nDamaged;
    SetTimeStamp(*pFrame);
    KeepMatrix(*pFrame);
    m_sei->AddTo(*pFrame);
    item.pFrame = std::move(pFrame);
    return true;
}

/** Reads one packet. Sends it to the decoder, or returns true with it in item if it is from another stream. */
bool MediaInput::Feed(MediaItem &item)
{
    m_bRead = true;
    if (!ReadPacket(*m_pFormat, m_strFile, *m_pPacket)) {
        m_bDraining = true;
        avcodec_send_packet(m_pDecoder.get(), nullptr);
        return false;
    }
    if (m_pPacket->stream_index != m_pVideo->index) {
        item.pPacket = std::move(m_pPacket);
        m_pPacket = NewPacket();
        return true;
    }
    m_sei->Read(m_pPacket->data, static_cast<size_t>(m_pPacket->size));
    const int nResult = avcodec_send_packet(m_pDecoder.get(), m_pPacket.get());
    if (nResult == AVERROR(ENOMEM))
        throw std::bad_alloc();
    if (nResult < 0)
        ++m_nDamaged;
    return false;
}

/**
 * Copies the display matrix of the last key frame to a frame without one. In a bit stream it is often with key frames
 * only, and holds up to the next one.
 */
void MediaInput::KeepMatrix(AVFrame &frame)
{
    if (const AVFrameSideData *pOwn = av_frame_get_side_data(&frame, AV_FRAME_DATA_DISPLAYMATRIX)) {
        m_pMatrix = Checked(BufferPtr(av_buffer_ref(pOwn->buf)));
    } else if (IsKeyFrame(frame)) {
        m_pMatrix.reset();
    } else if (m_pMatrix) {
        BufferPtr pCopy = Checked(BufferPtr(av_buffer_ref(m_pMatrix.get())));
        Checked(av_frame_new_side_data_from_buf(&frame, AV_FRAME_DATA_DISPLAYMATRIX, pCopy.get()));
        (void)pCopy.release(); // the frame owns it now
    }
}

void MediaInput::SetTimeStamp(AVFrame &frame)
{
    if (frame.pts == AV_NOPTS_VALUE)
        frame.pts = frame.best_effort_timestamp;
    if (frame.pts == AV_NOPTS_VALUE)
        frame.pts = m_nNextTimeStamp != AV_NOPTS_VALUE ? m_nNextTimeStamp : Origin();
    if (m_nLastTimeStamp != AV_NOPTS_VALUE)
        m_nLongest = std::max(m_nLongest, frame.pts - m_nLastTimeStamp);
    m_nLastTimeStamp = frame.pts;
    m_nNextTimeStamp = TimeAfter(frame);
}

int64_t MediaInput::TimeAfter(const AVFrame &frame) const
{
    int64_t nDuration = FrameDuration(frame);
    const AVRational rate = FrameRate();
    if (nDuration <= 0 && rate.num > 0)
        nDuration = av_rescale_q(1, av_inv_q(rate), m_pVideo->time_base);
    return frame.pts + std::max<int64_t>(nDuration, 1);
}

int64_t MediaInput::End() const
{
    return m_nNextTimeStamp == AV_NOPTS_VALUE
               ? 0
               : av_rescale_q(m_nNextTimeStamp - Origin(), m_pVideo->time_base, Microseconds);
}

int64_t MediaInput::MissingTime() const
{
    // The last frame of a slide show may have no duration of its own but be displayed as long as any other.
    const int64_t nMissing = PromisedEnd() - End();
    return nMissing > av_rescale_q(m_nLongest, m_pVideo->time_base, Microseconds) ? nMissing : 0;
}

int64_t MediaInput::PromisedEnd() const
{
    const AVDictionaryEntry *pTag = av_dict_get(m_pVideo->metadata, "DURATION", nullptr, 0);
    const int64_t nBegin = HasTimes(*m_pVideo) ? m_pVideo->start_time - Origin() : 0;
    int64_t nEnd = 0;
    if (!m_bDraining || m_pFormat->duration_estimation_method != AVFMT_DURATION_FROM_STREAM)
        return 0;
    if (m_pVideo->duration != AV_NOPTS_VALUE)
        return av_rescale_q(nBegin + m_pVideo->duration, m_pVideo->time_base, Microseconds);
    if (pTag && av_parse_time(&nEnd, pTag->value, 1) >= 0)
        return nEnd;
    // The file's duration is that of its longest stream, which need not be the video.
    return m_pFormat->nb_streams == 1 && m_pFormat->duration != AV_NOPTS_VALUE ? m_pFormat->duration : 0;
}

bool MediaInput::TrySeek(int64_t nTarget, int nFlags)
{
    if (avformat_seek_file(m_pFormat.get(), nFlags == 0 ? m_pVideo->index : -1, INT64_MIN, nTarget, nTarget, nFlags) <
        0)
        return false;
    avcodec_flush_buffers(m_pDecoder.get());
    m_listPending.clear();
    m_nNextTimeStamp = AV_NOPTS_VALUE;
    m_nLastTimeStamp = AV_NOPTS_VALUE;
    m_bDraining = false;
    return true;
}

/**
 * Seeks to the first picture; by bytes in transport and program streams, where a seek by time may miss it, since the
 * first group of pictures can have later times, and in bare bit streams.
 */
void MediaInput::Rewind(int64_t nBegin)
{
    if (!m_bRead)
        return;
    const bool bByBytes = (m_pFormat->iformat->flags & AVFMT_TS_DISCONT) != 0 || !HasTimes(*m_pVideo);
    if (!(bByBytes && TrySeek(0, AVSEEK_FLAG_BYTE)) && !TrySeek(nBegin))
        throw Failure(ExitCode::Input, m_strFile, "cannot be read again from its beginning");
}

/** Reads up to the next frame and keeps everything read. @return whether the frame is not after the time. */
bool MediaInput::LeadsUpTo(int64_t nTimeStamp)
{
    MediaItem item;
    while (ReadOn(item)) {
        m_listPending.push_back(std::move(item));
        if (m_listPending.back().pFrame)
            return m_listPending.back().pFrame->pts <= nTimeStamp;
    }
    return false;
}

void MediaInput::SeekBefore(int64_t nTimeStamp)
{
    const int64_t nBegin = HasTimes(*m_pVideo) ? m_pVideo->start_time : Origin();
    const int64_t nDamaged = m_nDamaged;
    if (m_pFormat->pb && (m_pFormat->pb->seekable & AVIO_SEEKABLE_NORMAL) == 0 && !m_bRead)
        return;
    // Some formats have no index of key frames: try seeking further and further back.
    for (int nSeconds : {0, 2, 10, 60, 300}) {
        const int64_t nTarget = nTimeStamp - av_rescale_q(nSeconds, {1, 1}, m_pVideo->time_base);
        if (nTarget <= nBegin || !HasTimes(*m_pVideo))
            break;
        if (TrySeek(nTarget) && LeadsUpTo(nTimeStamp)) {
            m_nDamaged = nDamaged;
            return;
        }
    }
    Rewind(nBegin);
    m_nDamaged = nDamaged;
}
