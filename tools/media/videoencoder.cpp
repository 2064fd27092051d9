#include "media/videoencoder.h"

#include "commandline/failure.h"
#include "media/codecs.h"
#include "media/frameconverter.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <exception>

namespace
{

// MPEG-4 time bases have 16-bit denominators. In this one, frames last a whole number of units at 24, 25, 30, 50, 60,
// 30000/1001 and 60000/1001 frames per second.
const int MaxMpeg4Denominator = 65535;
const AVRational Mpeg4TimeBase = {1, 60000};
const AVRational UsualRate = {25, 1};

bool CountsFrames(AVCodecID id)
{
    return id == AV_CODEC_ID_MPEG1VIDEO || id == AV_CODEC_ID_MPEG2VIDEO || id == AV_CODEC_ID_THEORA ||
           id == AV_CODEC_ID_DVVIDEO;
}

/** Whether a container stores no times of frames, only their order. */
bool NumbersFrames(const AVOutputFormat &container)
{
    static const std::array<const char *, 4> Names = {"avi", "dv", "gxf", "yuv4mpegpipe"};
    return (container.flags & AVFMT_NOTIMESTAMPS) != 0 ||
           std::any_of(Names.begin(), Names.end(),
                       [&](const char *pName) { return std::strcmp(container.name, pName) == 0; });
}

/** Redirects standard error to /dev/null: some encoder libraries print there directly, not through FFmpeg's log. */
class Silence
{
public:
    Silence() : m_nError(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0))
    {
        const int nNull = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (m_nError >= 0 && nNull >= 0)
            dup2(nNull, STDERR_FILENO);
        if (nNull >= 0)
            close(nNull);
    }

    ~Silence()
    {
        if (m_nError < 0)
            return;
        dup2(m_nError, STDERR_FILENO);
        close(m_nError);
    }

    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;

private:
    int m_nError;
};

} // namespace

VideoEncoder::VideoEncoder(const AVOutputFormat &container, const EncoderChoice &choice, const std::string &strFile) :
    m_container(container), m_choice(choice), m_strFile(strFile)
{
    ListCandidates();
    const bool bFits = std::any_of(m_listCandidates.begin(), m_listCandidates.end(),
                                   [&](const AVCodec *pCodec) { return CanHoldVideo(container, pCodec->id); });
    if (m_listCandidates.empty())
        throw Failure(ExitCode::Output, strFile, "this FFmpeg has no encoder for the container's video");
    if (!bFits)
        throw Failure(ExitCode::Output, strFile,
                      std::string("the container cannot hold ") + avcodec_get_name(m_listCandidates.front()->id) +
                          " video");
}

VideoEncoder::~VideoEncoder()
{
    const Silence silence;
    m_pContext.reset();
}

void VideoEncoder::ListCandidates()
{
    const std::string strOfHardware = m_choice.strHardware.empty() ? "" : "h264_" + m_choice.strHardware;
    const std::string &strCodec = m_choice.strCodec.empty() ? strOfHardware : m_choice.strCodec;
    if (!strCodec.empty()) {
        const AVCodec *pCodec = avcodec_find_encoder_by_name(strCodec.c_str());
        if ((!pCodec || pCodec->type != AVMEDIA_TYPE_VIDEO) && m_choice.strCodec.empty())
            throw Failure(ExitCode::Usage,
                          "--hwaccel: this FFmpeg has no encoder for \"" + m_choice.strHardware + "\"");
        if (!pCodec || pCodec->type != AVMEDIA_TYPE_VIDEO)
            throw Failure(ExitCode::Usage, "--codec: there is no video encoder named \"" + strCodec + "\"");
        m_listCandidates.push_back(pCodec);
        return;
    }
    if (!CanHoldVideo(m_container, AV_CODEC_ID_H264)) {
        AddCandidates(m_container.video_codec);
        return;
    }
    AddCandidates(AV_CODEC_ID_H264);
    AddCandidates(AV_CODEC_ID_MPEG4);
}

/** Adds the software encoders of a codec, the preferred one first. */
void VideoEncoder::AddCandidates(AVCodecID id)
{
    const auto nBegin = static_cast<ptrdiff_t>(m_listCandidates.size());
    void *pState = nullptr;
    while (const AVCodec *pCodec = av_codec_iterate(&pState)) {
        const bool bSoftware =
            (pCodec->capabilities & (AV_CODEC_CAP_HARDWARE | AV_CODEC_CAP_HYBRID | AV_CODEC_CAP_EXPERIMENTAL)) == 0;
        if (pCodec->id == id && av_codec_is_encoder(pCodec) && bSoftware && !FormatsOf(*pCodec).empty())
            m_listCandidates.push_back(pCodec);
    }
    const auto preferred =
        std::find_if(m_listCandidates.begin() + nBegin, m_listCandidates.end(),
                     [](const AVCodec *pCodec) { return std::strcmp(pCodec->name, "libx264") == 0; });
    if (preferred != m_listCandidates.end())
        std::rotate(m_listCandidates.begin() + nBegin, preferred, preferred + 1);
}

void VideoEncoder::Open(const AVFrame &first, const VideoTraits &traits)
{
    const Silence silence;
    m_traits = traits;
    std::exception_ptr pFailure;
    for (const AVCodec *pCodec : m_listCandidates) {
        try {
            OpenAs(*pCodec, first, traits);
            return;
        } catch (const Failure &) {
            // Report the preferred encoder's error, which the user can act on.
            if (!pFailure)
                pFailure = std::current_exception();
        }
    }
    std::rethrow_exception(pFailure);
}

void VideoEncoder::CheckOpened(const AVCodec &codec, int nResult) const
{
    if (nResult < 0)
        throw Failure(ExitCode::Output, m_strFile,
                      std::string("the encoder ") + codec.name +
                          " does not take this video or these options: " + AvReason(nResult));
}

void VideoEncoder::OpenAs(const AVCodec &codec, const AVFrame &first, const VideoTraits &traits)
{
    m_pContext = Checked(CodecPtr(avcodec_alloc_context3(&codec)));
    AVCodecContext &context = *m_pContext;
    m_format = ChooseFormat(codec, static_cast<AVPixelFormat>(first.format), !traits.turn.Alike());
    if (m_format == AV_PIX_FMT_NONE)
        CheckOpened(codec, AVERROR(ENOSYS));
    context.pix_fmt = m_format;
    context.width = traits.turn.ShownWidth(first.width, first.height);
    context.height = traits.turn.ShownHeight(first.width, first.height);
    context.sample_aspect_ratio = traits.sampleAspectRatio;
    FramePtr pTagged = NewFrame();
    av_frame_copy_props(pTagged.get(), &first);
    pTagged->width = first.width;
    pTagged->height = first.height;
    pTagged->format = m_format;
    FrameConverter(first.width, first.height, m_format, traits.turn).SetColors(*pTagged, first);
    context.color_range = pTagged->color_range;
    context.color_primaries = pTagged->color_primaries;
    context.color_trc = pTagged->color_trc;
    context.colorspace = pTagged->colorspace;
    context.chroma_sample_location = pTagged->chroma_location;
    context.field_order = traits.fieldOrder;
    if (traits.fieldOrder > AV_FIELD_PROGRESSIVE)
        context.flags |= AV_CODEC_FLAG_INTERLACED_DCT;
    if ((m_container.flags & AVFMT_GLOBALHEADER) != 0)
        context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (!m_choice.strCodec.empty())
        context.strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    context.thread_count = 0;
    SetTiming(codec, traits);
    SetRate(codec);
    SetUsualOptions(codec);
    if (!m_choice.strHardware.empty())
        m_hardware.emplace(m_choice.strHardware, codec).SetUp(context, m_format);
    OpenWithOptions(codec);
}

AVPixelFormat VideoEncoder::ChooseFormat(const AVCodec &codec, AVPixelFormat source, bool bTurned) const
{
    if (m_choice.strPixelFormat.empty() && !m_choice.bCompatible)
        return BestFormat(codec, source, bTurned, !m_choice.strHardware.empty());
    const std::string strName = m_choice.strPixelFormat.empty() ? "yuv420p" : m_choice.strPixelFormat;
    const std::string strOption = m_choice.strPixelFormat.empty() ? "--compatible" : "--pix-fmt";
    const AVPixelFormat format = av_get_pix_fmt(strName.c_str());
    if (format == AV_PIX_FMT_NONE)
        throw Failure(ExitCode::Usage, strOption + ": there is no pixel format named \"" + strName + "\"");
    if (BestFormat(codec, format, bTurned, !m_choice.strHardware.empty()) != format)
        throw Failure(ExitCode::Usage,
                      strOption + ": the encoder " + codec.name + " does not take \"" + strName + "\"");
    return format;
}

void VideoEncoder::OpenWithOptions(const AVCodec &codec)
{
    AVDictionary *pOptions = nullptr;
    const int nParsed = av_dict_parse_string(&pOptions, m_choice.strOptions.c_str(), "=", ":", 0);
    m_bWritesHdr = nParsed >= 0 && m_traits.hdr.AddTo(*m_pContext, &pOptions);
    const int nResult = nParsed < 0 ? nParsed : avcodec_open2(m_pContext.get(), &codec, &pOptions);
    const AVDictionaryEntry *pLeft = av_dict_get(pOptions, "", nullptr, AV_DICT_IGNORE_SUFFIX);
    const std::string strLeft = pLeft ? pLeft->key : "";
    av_dict_free(&pOptions);
    if (nParsed < 0)
        throw Failure(ExitCode::Usage,
                      "--encoder-options: \"" + m_choice.strOptions + "\" is not a list such as tune=film:bf=2");
    CheckOpened(codec, nResult);
    if (!strLeft.empty())
        throw Failure(ExitCode::Usage, std::string("--encoder-options: the encoder ") + codec.name +
                                           " has no option named \"" + strLeft + "\"");
}

void VideoEncoder::SetTiming(const AVCodec &codec, const VideoTraits &traits)
{
    AVCodecContext &context = *m_pContext;
    AVRational rate = traits.frameRate.num > 0 ? traits.frameRate : UsualRate;
    m_bEven = NumbersFrames(m_container) || codec.id == AV_CODEC_ID_THEORA;
    context.time_base = traits.timeBase;
    if (m_bEven || CountsFrames(codec.id)) {
        rate = NearestRate(codec, rate);
        context.time_base = av_inv_q(rate);
    } else if (codec.id == AV_CODEC_ID_MPEG4 && traits.timeBase.den > MaxMpeg4Denominator) {
        context.time_base = Mpeg4TimeBase;
    }
    context.framerate = rate;
}

void VideoEncoder::SetRate(const AVCodec &codec)
{
    AVCodecContext &context = *m_pContext;
    if (m_choice.dCrf) {
        if (!HasOption(context, "crf"))
            throw Failure(ExitCode::Usage, std::string("--crf: the encoder ") + codec.name + " has no such setting");
        // Some encoders would otherwise use their default bit rate as a limit.
        context.bit_rate = 0;
        SetOption("crf", "crf", std::to_string(*m_choice.dCrf));
    } else if (m_choice.nBitrate > 0) {
        context.bit_rate = m_choice.nBitrate;
    } else if (!HasOption(context, "crf")) {
        // FFmpeg's default bit rate is far too low for most videos.
        const double dPixels = static_cast<double>(context.width) * context.height * av_q2d(context.framerate);
        context.bit_rate = std::max<int64_t>(200000, static_cast<int64_t>(dPixels / 6));
        context.flags |= AV_CODEC_FLAG_QSCALE;
        context.global_quality = FF_QP2LAMBDA * (codec.id == AV_CODEC_ID_THEORA ? 7 : 3);
    }
}

void VideoEncoder::SetOption(const char *pOurs, const char *pName, const std::string &strValue)
{
    if (av_opt_set(m_pContext->priv_data, pName, strValue.c_str(), 0) < 0)
        throw Failure(ExitCode::Usage, std::string("--") + pOurs + ": the encoder " + m_pContext->codec->name +
                                           " does not take \"" + strValue + "\"");
}

/** Translates preset names to the speed numbers of encoders that have no names. */
std::string VideoEncoder::PresetFor(const AVCodec &codec, const char *pOption) const
{
    struct Speed {
        const char *pName;
        int nAom;
        int nVpx;
        int nSvt;
    };
    static const std::array<Speed, 10> Speeds = {{{"ultrafast", 8, 8, 12},
                                                  {"superfast", 8, 6, 11},
                                                  {"veryfast", 7, 5, 10},
                                                  {"faster", 6, 4, 9},
                                                  {"fast", 5, 3, 8},
                                                  {"medium", 4, 2, 7},
                                                  {"slow", 3, 1, 5},
                                                  {"slower", 2, 1, 4},
                                                  {"veryslow", 1, 0, 2},
                                                  {"placebo", 0, 0, 0}}};
    const auto *const pSpeed = std::find_if(Speeds.begin(), Speeds.end(),
                                            [&](const Speed &speed) { return m_choice.strPreset == speed.pName; });
    if (pSpeed == Speeds.end() || (std::strcmp(pOption, "preset") == 0 && std::strcmp(codec.name, "libsvtav1") != 0))
        return m_choice.strPreset;
    const int nSpeed = std::strcmp(codec.name, "libsvtav1") == 0    ? pSpeed->nSvt
                       : std::strncmp(codec.name, "libaom", 6) == 0 ? pSpeed->nAom
                                                                    : pSpeed->nVpx;
    return std::to_string(nSpeed);
}

void VideoEncoder::SetUsualOptions(const AVCodec &codec)
{
    if (std::strncmp(codec.name, "libvpx", 6) == 0) {
        // Its default speed is far too slow.
        av_opt_set_int(m_pContext->priv_data, "cpu-used", 4, 0);
        av_opt_set_int(m_pContext->priv_data, "row-mt", 1, 0);
    }
    if (m_choice.strPreset.empty())
        return;
    const char *pOption = HasOption(*m_pContext, "preset") ? "preset" : "cpu-used";
    if (!HasOption(*m_pContext, pOption))
        throw Failure(ExitCode::Usage, std::string("--preset: the encoder ") + codec.name + " has no presets");
    SetOption("preset", pOption, PresetFor(codec, pOption));
}

AVRational VideoEncoder::TimeBase() const
{
    return m_bEven ? m_pContext->time_base : m_traits.timeBase;
}

void VideoEncoder::Stamp(AVFrame &frame)
{
    Timing timing = {};
    timing.nSource = frame.pts;
    timing.nDuration = FrameDuration(frame);
    timing.nEncoder = av_rescale_q(frame.pts, m_traits.timeBase, m_pContext->time_base);
    if (m_nLast != INT64_MIN)
        timing.nEncoder = std::max(timing.nEncoder, m_nLast + 1);
    m_nLast = timing.nEncoder;
    m_listTiming.push_back(timing);
    frame.pts = timing.nEncoder;
}

void VideoEncoder::Send(FramePtr pFrame)
{
    if (pFrame) {
        Stamp(*pFrame);
        // The encoder makes its own choice of key frames and quality, not the source's.
        pFrame->pict_type = AV_PICTURE_TYPE_NONE;
        pFrame->quality = m_pContext->global_quality;
        if (m_hardware)
            m_hardware->Upload(pFrame);
    }
    const int nResult = avcodec_send_frame(m_pContext.get(), pFrame.get());
    if (nResult < 0)
        throw Failure(ExitCode::Output, m_strFile, "encoding failed: " + AvReason(nResult));
}

bool VideoEncoder::Receive(AVPacket &packet)
{
    const int nResult = avcodec_receive_packet(m_pContext.get(), &packet);
    if (nResult == AVERROR(EAGAIN) || nResult == AVERROR_EOF)
        return false;
    if (nResult < 0)
        throw Failure(ExitCode::Output, m_strFile, "encoding failed: " + AvReason(nResult));
    const auto timing = std::find_if(m_listTiming.begin(), m_listTiming.end(),
                                     [&](const Timing &candidate) { return candidate.nEncoder == packet.pts; });
    if (m_bEven || timing == m_listTiming.end()) {
        packet.duration = m_bEven ? 1 : packet.duration;
    } else {
        const int64_t nDecode = av_rescale_q(packet.dts, m_pContext->time_base, m_traits.timeBase);
        packet.pts = timing->nSource;
        packet.dts = std::min(nDecode, packet.pts);
        packet.duration = timing->nDuration;
    }
    if (timing != m_listTiming.end())
        m_listTiming.erase(timing);
    return true;
}
