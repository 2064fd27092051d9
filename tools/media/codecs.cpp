#include "media/codecs.h"

#include "media/frameturner.h"
#include "media/pictureformat.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cstring>

namespace
{

const int TrialSide = 64;
const AVRational TrialTimeBase = {1, 25};

struct FreeMuxer {
    void operator()(AVFormatContext *pFormat) const
    {
        uint8_t *pBytes = nullptr;
        if (pFormat->pb)
            avio_close_dyn_buf(pFormat->pb, &pBytes);
        av_free(pBytes);
        avformat_free_context(pFormat);
    }
};

#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
#define SUPPORTED_BY(codec, type, config, member) static_cast<const type *>(SupportedBy(codec, config))

const void *SupportedBy(const AVCodec &codec, AVCodecConfig config)
{
    const void *pList = nullptr;
    avcodec_get_supported_config(nullptr, &codec, config, 0, &pList, nullptr);
    return pList;
}
#else
#define SUPPORTED_BY(codec, type, config, member) static_cast<const type *>((codec).member)
#endif

const AVPixelFormat *RawFormatsOf(const AVCodec &codec)
{
    return SUPPORTED_BY(codec, AVPixelFormat, AV_CODEC_CONFIG_PIX_FORMAT, pix_fmts);
}

/** Whether players know a codec in a transport stream. FFmpeg writes any other as private data that nothing plays. */
bool TransportStreamKnows(AVCodecID id)
{
    static const std::vector<AVCodecID> Known = {AV_CODEC_ID_MPEG1VIDEO,   AV_CODEC_ID_MPEG2VIDEO,
                                                 AV_CODEC_ID_MPEG4,        AV_CODEC_ID_H264,
                                                 AV_CODEC_ID_HEVC,         AV_CODEC_ID_CAVS,
                                                 AV_CODEC_ID_DIRAC,        AV_CODEC_ID_VC1,
                                                 AV_CODEC_ID_MP1,          AV_CODEC_ID_MP2,
                                                 AV_CODEC_ID_MP3,          AV_CODEC_ID_AAC,
                                                 AV_CODEC_ID_AAC_LATM,     AV_CODEC_ID_AC3,
                                                 AV_CODEC_ID_EAC3,         AV_CODEC_ID_DTS,
                                                 AV_CODEC_ID_TRUEHD,       AV_CODEC_ID_OPUS,
                                                 AV_CODEC_ID_S302M,        AV_CODEC_ID_DVB_SUBTITLE,
                                                 AV_CODEC_ID_DVB_TELETEXT, AV_CODEC_ID_HDMV_PGS_SUBTITLE,
                                                 AV_CODEC_ID_SMPTE_KLV,    AV_CODEC_ID_TIMED_ID3};
    return std::find(Known.begin(), Known.end(), id) != Known.end();
}

/** Writes a trial header: some containers refuse a codec only then. */
bool AcceptsHeader(const AVOutputFormat &container, const AVCodecParameters &parameters, AVRational timeBase,
                   const AVDictionary *pTags)
{
    AVFormatContext *pFormat = nullptr;
    avformat_alloc_output_context2(&pFormat, &container, nullptr, nullptr);
    const std::unique_ptr<AVFormatContext, FreeMuxer> pTrial(Checked(pFormat));
    AVStream &copy = *Checked(avformat_new_stream(pTrial.get(), nullptr));
    CopyParameters(parameters, *copy.codecpar);
    copy.codecpar->codec_tag = 0;
    copy.time_base = timeBase;
    av_dict_copy(&copy.metadata, pTags, 0);
    return avio_open_dyn_buf(&pTrial->pb) >= 0 && avformat_write_header(pTrial.get(), nullptr) >= 0;
}

bool IsPcm(AVCodecID id)
{
    return id >= AV_CODEC_ID_FIRST_AUDIO && id < AV_CODEC_ID_ADPCM_IMA_QT;
}

/** Whether channels have names, or their number alone gives them some. MP4 fails at its end if PCM has none. */
bool HasUsualChannels(const AVChannelLayout &channels)
{
    AVChannelLayout usual = {};
    av_channel_layout_default(&usual, channels.nb_channels);
    return channels.order != AV_CHANNEL_ORDER_UNSPEC || usual.order != AV_CHANNEL_ORDER_UNSPEC;
}

} // namespace

std::vector<AVPixelFormat> FormatsOf(const AVCodec &codec)
{
    std::vector<AVPixelFormat> listFormats;
    for (const AVPixelFormat *pFormat = RawFormatsOf(codec); pFormat && *pFormat != AV_PIX_FMT_NONE; ++pFormat) {
        if (IsBurnable(*pFormat))
            listFormats.push_back(*pFormat);
    }
    return listFormats;
}

AVPixelFormat BestFormat(const AVCodec &codec, AVPixelFormat source, bool bTurned, bool bHardware)
{
    std::vector<AVPixelFormat> listFormats = FormatsOf(codec);
    if (bHardware)
        listFormats = {AV_PIX_FMT_NV12, AV_PIX_FMT_P010};
    // An encoder without a list of formats takes any.
    else if (!RawFormatsOf(codec))
        listFormats = {IsBurnable(source) ? source : AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV420P};
    const auto StaysAsStored = [](AVPixelFormat format) { return !FrameTurner::Takes(format); };
    if (bTurned)
        listFormats.erase(std::remove_if(listFormats.begin(), listFormats.end(), StaysAsStored), listFormats.end());
    if (std::find(listFormats.begin(), listFormats.end(), source) != listFormats.end())
        return source;
    listFormats.push_back(AV_PIX_FMT_NONE);
    return avcodec_find_best_pix_fmt_of_list(listFormats.data(), source, HasAlpha(source) ? 1 : 0, nullptr);
}

bool HasOption(const AVCodecContext &context, const char *pName)
{
    return context.priv_data && context.codec->priv_class &&
           av_opt_find(context.priv_data, pName, nullptr, 0, 0) != nullptr;
}

AVRational NearestRate(const AVCodec &codec, AVRational wanted)
{
    const auto *pRates = SUPPORTED_BY(codec, AVRational, AV_CODEC_CONFIG_FRAME_RATE, supported_framerates);
    return pRates ? pRates[av_find_nearest_q_idx(wanted, pRates)] : wanted;
}

AVSampleFormat BestSampleFormat(const AVCodec &codec, AVSampleFormat source)
{
    const auto *pFormats = SUPPORTED_BY(codec, AVSampleFormat, AV_CODEC_CONFIG_SAMPLE_FORMAT, sample_fmts);
    for (const AVSampleFormat *p = pFormats; p && *p != AV_SAMPLE_FMT_NONE; ++p) {
        if (av_get_packed_sample_fmt(*p) == av_get_packed_sample_fmt(source))
            return *p;
    }
    return pFormats ? *pFormats : source;
}

int BestSampleRate(const AVCodec &codec, int nSource)
{
    const auto *pRates = SUPPORTED_BY(codec, int, AV_CODEC_CONFIG_SAMPLE_RATE, supported_samplerates);
    if (!pRates)
        return nSource;
    // The lowest that loses nothing, else the highest.
    int nBest = 0;
    for (; *pRates != 0; ++pRates) {
        if (nBest < nSource ? *pRates > nBest : *pRates >= nSource && *pRates < nBest)
            nBest = *pRates;
    }
    return nBest;
}

AVChannelLayout BestChannels(const AVCodec &codec, int nSource)
{
    AVChannelLayout usual = {};
    av_channel_layout_default(&usual, nSource);
    const auto *pLayouts = SUPPORTED_BY(codec, AVChannelLayout, AV_CODEC_CONFIG_CHANNEL_LAYOUT, ch_layouts);
    if (!pLayouts)
        return usual;
    const AVChannelLayout *pBest = pLayouts;
    for (; pLayouts->nb_channels != 0; ++pLayouts) {
        if (av_channel_layout_compare(pLayouts, &usual) == 0)
            return usual;
        if (pLayouts->nb_channels <= nSource &&
            (pBest->nb_channels > nSource || pLayouts->nb_channels > pBest->nb_channels))
            pBest = pLayouts;
    }
    return *pBest;
}

void CopyParameters(const AVCodecParameters &source, AVCodecParameters &target)
{
    if (avcodec_parameters_copy(&target, &source) < 0)
        throw std::bad_alloc();
    if (target.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&target.ch_layout, target.ch_layout.nb_channels);
}

bool CanHoldVideo(const AVOutputFormat &container, AVCodecID id)
{
    const int nAnswer = avformat_query_codec(&container, id, FF_COMPLIANCE_EXPERIMENTAL);
    if (nAnswer >= 0)
        return nAnswer > 0;
    if (std::strcmp(container.name, "mpegts") == 0)
        return TransportStreamKnows(id);
    const std::unique_ptr<AVCodecParameters, FreeByAddress<avcodec_parameters_free>> pParameters(
        Checked(avcodec_parameters_alloc()));
    pParameters->codec_type = AVMEDIA_TYPE_VIDEO;
    pParameters->codec_id = id;
    pParameters->width = TrialSide;
    pParameters->height = TrialSide;
    return AcceptsHeader(container, *pParameters, TrialTimeBase, nullptr);
}

bool CanHoldCodec(const AVOutputFormat &container, const AVCodec &codec)
{
    const int nAnswer = avformat_query_codec(&container, codec.id, FF_COMPLIANCE_EXPERIMENTAL);
    return nAnswer < 0 && std::strcmp(container.name, "mpegts") == 0 ? TransportStreamKnows(codec.id) : nAnswer != 0;
}

bool CanHold(const AVOutputFormat &container, const AVStream &stream)
{
    const AVCodecParameters &parameters = *stream.codecpar;
    if (parameters.codec_type == AVMEDIA_TYPE_ATTACHMENT)
        return std::strcmp(container.name, "matroska") == 0;
    const int nAnswer = avformat_query_codec(&container, parameters.codec_id, FF_COMPLIANCE_NORMAL);
    if (nAnswer == 0 || parameters.codec_id == AV_CODEC_ID_NONE)
        return false;
    if (nAnswer < 0 && std::strcmp(container.name, "mpegts") == 0)
        return TransportStreamKnows(parameters.codec_id);
    if (std::strcmp(container.name, "mp4") == 0 && IsPcm(parameters.codec_id) &&
        !HasUsualChannels(parameters.ch_layout))
        return false;
    return AcceptsHeader(container, parameters, stream.time_base, stream.metadata);
}
