#include "codecs.h"

#include "pictureformat.h"

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

const AVPixelFormat *RawFormatsOf(const AVCodec &codec)
{
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
    const void *pFormats = nullptr;
    avcodec_get_supported_config(nullptr, &codec, AV_CODEC_CONFIG_PIX_FORMAT, 0, &pFormats, nullptr);
    return static_cast<const AVPixelFormat *>(pFormats);
#else
    return codec.pix_fmts;
#endif
}

const AVRational *RatesOf(const AVCodec &codec)
{
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
    const void *pRates = nullptr;
    avcodec_get_supported_config(nullptr, &codec, AV_CODEC_CONFIG_FRAME_RATE, 0, &pRates, nullptr);
    return static_cast<const AVRational *>(pRates);
#else
    return codec.supported_framerates;
#endif
}

/** Transport streams carry anything as private data, which nothing can play. */
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

/** Containers say no in different places; some only when the header is written. */
bool AcceptsHeader(const AVOutputFormat &container, const AVCodecParameters &parameters, AVRational timeBase,
                   const AVDictionary *pTags)
{
    AVFormatContext *pFormat = nullptr;
    avformat_alloc_output_context2(&pFormat, &container, nullptr, nullptr);
    const std::unique_ptr<AVFormatContext, FreeMuxer> pTrial(Checked(pFormat));
    AVStream &copy = *Checked(avformat_new_stream(pTrial.get(), nullptr));
    avcodec_parameters_copy(copy.codecpar, &parameters);
    copy.codecpar->codec_tag = 0;
    copy.time_base = timeBase;
    av_dict_copy(&copy.metadata, pTags, 0);
    return avio_open_dyn_buf(&pTrial->pb) >= 0 && avformat_write_header(pTrial.get(), nullptr) >= 0;
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

AVPixelFormat BestFormat(const AVCodec &codec, AVPixelFormat source)
{
    std::vector<AVPixelFormat> listFormats = FormatsOf(codec);
    // An encoder that names no formats takes any.
    if (!RawFormatsOf(codec))
        listFormats = {IsBurnable(source) ? source : AV_PIX_FMT_YUV420P};
    if (std::find(listFormats.begin(), listFormats.end(), source) != listFormats.end())
        return source;
    listFormats.push_back(AV_PIX_FMT_NONE);
    return avcodec_find_best_pix_fmt_of_list(listFormats.data(), source, 0, nullptr);
}

AVRational NearestRate(const AVCodec &codec, AVRational wanted)
{
    const AVRational *pRates = RatesOf(codec);
    return pRates ? pRates[av_find_nearest_q_idx(wanted, pRates)] : wanted;
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
    return AcceptsHeader(container, parameters, stream.time_base, stream.metadata);
}
