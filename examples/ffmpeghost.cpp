/*
 * Decodes a film with FFmpeg and writes the pictures on display at given times, in any order, with their subtitles, to
 * standard output: PPM pictures, one behind the other.
 *
 *     ffmpeghost VIDEO SUBTITLES SECONDS...
 *
 * Build it with
 *
 *     c++ -std=c++17 -o ffmpeghost ffmpeghost.cpp \
 *         $(pkg-config --cflags --libs libsubtitle libavformat libavcodec libavutil libswscale)
 */
// FFmpeg first: old versions of it have an AVPicture of their own, which libsubtitle.h then takes.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}
#include <libsubtitle.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

namespace
{

template <auto Function>
struct FreeByAddress {
    template <typename T>
    void operator()(T *pObject) const
    {
        Function(&pObject);
    }
};
struct FreeScaler {
    void operator()(SwsContext *pScaler) const { sws_freeContext(pScaler); }
};
struct FreeSubtitle {
    void operator()(void *pSubtitle) const { DestroyVideoSubtitle(pSubtitle); }
};

using DemuxerPtr = std::unique_ptr<AVFormatContext, FreeByAddress<avformat_close_input>>;
using DecoderPtr = std::unique_ptr<AVCodecContext, FreeByAddress<avcodec_free_context>>;
using PacketPtr = std::unique_ptr<AVPacket, FreeByAddress<av_packet_free>>;
using FramePtr = std::unique_ptr<AVFrame, FreeByAddress<av_frame_free>>;
using SubtitlePtr = std::unique_ptr<void, FreeSubtitle>;

int Checked(int nResult, const std::string &strWhat)
{
    if (nResult >= 0)
        return nResult;
    std::array<char, AV_ERROR_MAX_STRING_SIZE> listText{};
    av_strerror(nResult, listText.data(), listText.size());
    throw std::runtime_error(strWhat + ": " + listText.data());
}

template <typename Pointer>
Pointer Checked(Pointer pObject)
{
    if (!pObject)
        throw std::bad_alloc();
    return pObject;
}

/** The video stream of a file, decoded. */
class Video
{
public:
    explicit Video(const std::string &strFile);

    int Width() const { return m_pDecoder->width; }
    int Height() const { return m_pDecoder->height; }

    /** The picture on display at a time: the last that begins then or before. */
    FramePtr FrameAt(double fSeconds);

    /** When a frame begins, counted from the start of the film. */
    std::int64_t Milliseconds(const AVFrame &frame) const
    {
        return av_rescale_q(frame.best_effort_timestamp - m_nOrigin, m_pStream->time_base, {1, 1000});
    }

private:
    void Feed();
    bool Next(AVFrame *pFrame);

    DemuxerPtr m_pDemuxer;
    DecoderPtr m_pDecoder;
    PacketPtr m_pPacket = Checked(PacketPtr(av_packet_alloc()));
    AVStream *m_pStream = nullptr;
    std::int64_t m_nOrigin = 0; ///< the film's start in units of the stream
};

Video::Video(const std::string &strFile)
{
    AVFormatContext *pDemuxer = nullptr;
    Checked(avformat_open_input(&pDemuxer, strFile.c_str(), nullptr, nullptr), strFile);
    m_pDemuxer.reset(pDemuxer);
    Checked(avformat_find_stream_info(pDemuxer, nullptr), strFile);
    const AVCodec *pCodec = nullptr;
    m_pStream =
        pDemuxer->streams[Checked(av_find_best_stream(pDemuxer, AVMEDIA_TYPE_VIDEO, -1, -1, &pCodec, 0), strFile)];
    m_pDecoder = Checked(DecoderPtr(avcodec_alloc_context3(pCodec)));
    Checked(avcodec_parameters_to_context(m_pDecoder.get(), m_pStream->codecpar), strFile);
    m_pDecoder->pkt_timebase = m_pStream->time_base;
    Checked(avcodec_open2(m_pDecoder.get(), pCodec, nullptr), strFile);
    // Many a film begins at some other time than 0; its subtitles do not know.
    if (pDemuxer->start_time != AV_NOPTS_VALUE)
        m_nOrigin = av_rescale_q(pDemuxer->start_time, {1, AV_TIME_BASE}, m_pStream->time_base);
}

void Video::Feed()
{
    int nResult = 0;
    do {
        av_packet_unref(m_pPacket.get());
        nResult = av_read_frame(m_pDemuxer.get(), m_pPacket.get());
    } while (nResult >= 0 && m_pPacket->stream_index != m_pStream->index);
    if (nResult != AVERROR_EOF)
        Checked(nResult, "reading");
    // At the end, a null packet makes the decoder hand out what it has kept back.
    Checked(avcodec_send_packet(m_pDecoder.get(), nResult >= 0 ? m_pPacket.get() : nullptr), "decoding");
}

bool Video::Next(AVFrame *pFrame)
{
    int nResult = 0;
    while ((nResult = avcodec_receive_frame(m_pDecoder.get(), pFrame)) == AVERROR(EAGAIN))
        Feed();
    if (nResult != AVERROR_EOF)
        Checked(nResult, "decoding");
    return nResult >= 0;
}

FramePtr Video::FrameAt(double fSeconds)
{
    const std::int64_t nTime = m_nOrigin + av_rescale_q_rnd(std::llround(fSeconds * AV_TIME_BASE), {1, AV_TIME_BASE},
                                                            m_pStream->time_base, AV_ROUND_DOWN);
    Checked(av_seek_frame(m_pDemuxer.get(), m_pStream->index, nTime, AVSEEK_FLAG_BACKWARD), "seeking");
    avcodec_flush_buffers(m_pDecoder.get());
    FramePtr pShown;
    FramePtr pNext = Checked(FramePtr(av_frame_alloc()));
    while (Next(pNext.get()) && (!pShown || pNext->best_effort_timestamp <= nTime)) {
        pShown = std::move(pNext);
        pNext = Checked(FramePtr(av_frame_alloc()));
    }
    if (!pShown)
        throw std::runtime_error("there is no picture at " + std::to_string(fSeconds) + " s");
    return pShown;
}

/** Brings frames to packed RGB of one size, whatever the decoder makes of a stream on the way. */
class Converter
{
public:
    Converter(int nWidth, int nHeight) : m_nWidth(nWidth), m_nHeight(nHeight) {}

    FramePtr ToRgb(const AVFrame &frame);

private:
    int m_nWidth;
    int m_nHeight;
    std::unique_ptr<SwsContext, FreeScaler> m_pScaler;
};

FramePtr Converter::ToRgb(const AVFrame &frame)
{
    FramePtr pRgb = Checked(FramePtr(av_frame_alloc()));
    pRgb->format = AV_PIX_FMT_RGB24;
    pRgb->width = m_nWidth;
    pRgb->height = m_nHeight;
    Checked(av_frame_get_buffer(pRgb.get(), 0), "a frame");

    m_pScaler.reset(sws_getCachedContext(m_pScaler.release(), frame.width, frame.height,
                                         static_cast<AVPixelFormat>(frame.format), m_nWidth, m_nHeight,
                                         AV_PIX_FMT_RGB24, SWS_BICUBIC, nullptr, nullptr, nullptr));
    Checked(m_pScaler.get());
    // Has no meaning, and does nothing, where the film itself is RGB.
    (void)sws_setColorspaceDetails(m_pScaler.get(), sws_getCoefficients(frame.colorspace),
                                   frame.color_range == AVCOL_RANGE_JPEG ? 1 : 0, sws_getCoefficients(SWS_CS_DEFAULT),
                                   1, 0, 1 << 16, 1 << 16);
    Checked(sws_scale(m_pScaler.get(), frame.data, frame.linesize, 0, frame.height, pRgb->data, pRgb->linesize),
            "converting");
    return pRgb;
}

SubtitlePtr OpenSubtitles(const std::string &strFile, int nWidth, int nHeight)
{
    // The library counts a file that is missing as one without subtitles.
    if (!std::ifstream(strFile))
        throw std::runtime_error(strFile + ": cannot be read");
    SubtitlePtr pSubtitle = Checked(SubtitlePtr(CreateVideoSubtitle(nWidth, nHeight)));
    if (SetSubtitleFile(pSubtitle.get(), strFile.c_str(), 0) != 0)
        throw std::runtime_error(strFile + ": is refused");
    return pSubtitle;
}

void Burn(void *pSubtitle, AVFrame *pFrame, std::int64_t nMilliseconds)
{
    // What comes before the film's start has a negative time, which the library refuses: it has no subtitle.
    if (nMilliseconds < 0)
        return;
    if (SetSubtitleTimeStamp(pSubtitle, static_cast<long>(nMilliseconds)) != 0 ||
        ProcessSubtitleFrame(pSubtitle, reinterpret_cast<AVPicture *>(pFrame)) != 0)
        throw std::bad_alloc();
}

void Write(const AVFrame &frame)
{
    const auto nWidth = static_cast<std::size_t>(frame.width);
    bool bWritten = std::printf("P6\n%d %d\n255\n", frame.width, frame.height) > 0;
    for (int y = 0; y < frame.height && bWritten; ++y) {
        const std::uint8_t *pRow = frame.data[0] + static_cast<std::ptrdiff_t>(y) * frame.linesize[0];
        bWritten = std::fwrite(pRow, 3, nWidth, stdout) == nWidth;
    }
    if (!bWritten || std::fflush(stdout) != 0)
        throw std::runtime_error("standard output cannot be written");
}

double Seconds(const char *pText)
{
    char *pEnd = nullptr;
    const double fSeconds = std::strtod(pText, &pEnd);
    if (pEnd == pText || *pEnd != '\0' || !(fSeconds >= 0 && fSeconds < 1e9))
        throw std::runtime_error(std::string(pText) + ": is no time in seconds");
    return fSeconds;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 4) {
        (void)std::fprintf(stderr, "usage: ffmpeghost VIDEO SUBTITLES SECONDS...\n");
        return EXIT_FAILURE;
    }
    try {
        Video video(argv[1]);
        Converter converter(video.Width(), video.Height());
        const SubtitlePtr pSubtitle = OpenSubtitles(argv[2], video.Width(), video.Height());
        for (int n = 3; n < argc; ++n) {
            const FramePtr pDecoded = video.FrameAt(Seconds(argv[n]));
            const FramePtr pRgb = converter.ToRgb(*pDecoded);
            Burn(pSubtitle.get(), pRgb.get(), video.Milliseconds(*pDecoded));
            Write(*pRgb);
        }
        return EXIT_SUCCESS;
    } catch (const std::exception &error) {
        (void)std::fprintf(stderr, "ffmpeghost: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
