/*
 * Decodes a film with FFmpeg and writes the pictures that are shown at given times, with their subtitles, to standard
 * output: raw pictures one after the other, in the decoder's format. The times may be in any order. The subtitles are
 * drawn into the decoder's own samples; nothing is converted.
 *
 *     ffmpeghost VIDEO SUBTITLES SECONDS...
 *
 * Build it with
 *
 *     c++ -std=c++17 -o ffmpeghost ffmpeghost.cpp \
 *         $(pkg-config --cflags --libs libsubtitleframe libsubtitle libavformat libavcodec libavutil)
 */
// FFmpeg first: old versions define AVPicture, and libsubtitle.h then uses that definition.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
}
#include <libsubtitle.h>
#include <libsubtitleframe.h>

#include <algorithm>
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
#include <vector>

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
struct FreeSubtitle {
    void operator()(void *pSubtitle) const { DestroyVideoSubtitle(pSubtitle); }
};
struct FreeBurner {
    void operator()(void *pBurner) const { DestroySubtitleBurner(pBurner); }
};

using DemuxerPtr = std::unique_ptr<AVFormatContext, FreeByAddress<avformat_close_input>>;
using DecoderPtr = std::unique_ptr<AVCodecContext, FreeByAddress<avcodec_free_context>>;
using PacketPtr = std::unique_ptr<AVPacket, FreeByAddress<av_packet_free>>;
using FramePtr = std::unique_ptr<AVFrame, FreeByAddress<av_frame_free>>;
using SubtitlePtr = std::unique_ptr<void, FreeSubtitle>;
using BurnerPtr = std::unique_ptr<void, FreeBurner>;

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

/** The display matrix of a stream; null without one. */
const std::uint8_t *StreamMatrix(const AVStream &stream, std::size_t *pBytes)
{
#if LIBAVFORMAT_VERSION_INT >= AV_VERSION_INT(60, 15, 100)
    const AVPacketSideData *pData = av_packet_side_data_get(
        stream.codecpar->coded_side_data, stream.codecpar->nb_coded_side_data, AV_PKT_DATA_DISPLAYMATRIX);
    *pBytes = pData ? pData->size : 0;
    return pData ? pData->data : nullptr;
#else
    return av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, pBytes);
#endif
}

/** The video stream of a file, decoded. */
class Video
{
public:
    explicit Video(const std::string &strFile);

    /** The picture that is shown at a time: the last that begins then or before. */
    FramePtr FrameAt(double fSeconds);

    /** When a frame begins, counted from the start of the film. */
    std::int64_t Milliseconds(const AVFrame &frame) const
    {
        return av_rescale_q(frame.best_effort_timestamp - m_nOrigin, m_pStream->time_base, {1, 1000});
    }

private:
    void Feed();
    bool Next(AVFrame *pFrame);
    void Turn(AVFrame *pFrame) const;

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
    // Many films do not begin at time 0. Subtitle files count from the start of the film all the same.
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
    // At the end, a null packet makes the decoder return the frames that it has kept back.
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

/** Copies the display matrix of the stream to a frame, since decoders do not. */
void Video::Turn(AVFrame *pFrame) const
{
    std::size_t nBytes = 0;
    const std::uint8_t *pMatrix = StreamMatrix(*m_pStream, &nBytes);
    if (!pMatrix || av_frame_get_side_data(pFrame, AV_FRAME_DATA_DISPLAYMATRIX))
        return;
    std::copy_n(pMatrix, nBytes, Checked(av_frame_new_side_data(pFrame, AV_FRAME_DATA_DISPLAYMATRIX, nBytes))->data);
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
    Turn(pShown.get());
    return pShown;
}

/** Whether a frame is shown turned by 90 or 270 degrees. */
bool IsTransposed(const AVFrame &frame)
{
    const AVFrameSideData *pMatrix = av_frame_get_side_data(&frame, AV_FRAME_DATA_DISPLAYMATRIX);
    if (!pMatrix)
        return false;
    const double fDegrees = av_display_rotation_get(reinterpret_cast<const std::int32_t *>(pMatrix->data));
    return std::abs(std::abs(fDegrees) - 90) < 1;
}

/** Draws subtitles into frames of any size. */
class Burner
{
public:
    explicit Burner(const char *pSubtitles);

    void Burn(AVFrame *pFrame, std::int64_t nMilliseconds);

private:
    void SetSize(int nWidth, int nHeight);

    const char *m_pFile;
    int m_nWidth = 0;
    int m_nHeight = 0;
    SubtitlePtr m_pSubtitle;
    BurnerPtr m_pBurner; // declared after the handle, which must outlive it
};

Burner::Burner(const char *pSubtitles) : m_pFile(pSubtitles)
{
    // Checked here because the library accepts a missing file as one without subtitles.
    if (!std::ifstream(m_pFile))
        throw std::runtime_error(std::string(m_pFile) + ": cannot be read");
}

void Burner::SetSize(int nWidth, int nHeight)
{
    if (m_pSubtitle && nWidth == m_nWidth && nHeight == m_nHeight)
        return;
    m_pBurner.reset();
    m_pSubtitle = Checked(SubtitlePtr(CreateVideoSubtitle(nWidth, nHeight)));
    m_pBurner = Checked(BurnerPtr(CreateSubtitleBurner(m_pSubtitle.get())));
    if (SetSubtitleFile(m_pSubtitle.get(), m_pFile, 0) != 0)
        throw std::runtime_error(std::string(m_pFile) + ": is refused");
    m_nWidth = nWidth;
    m_nHeight = nHeight;
}

void Burner::Burn(AVFrame *pFrame, std::int64_t nMilliseconds)
{
    // The handle needs the size of the picture as it is shown.
    if (IsTransposed(*pFrame))
        SetSize(pFrame->height, pFrame->width);
    else
        SetSize(pFrame->width, pFrame->height);
    // Frames before the start of the film have negative times, which the library refuses. They have no subtitle.
    if (nMilliseconds < 0)
        return;
    if (SetSubtitleTimeStamp(m_pSubtitle.get(), static_cast<long>(nMilliseconds)) != 0)
        throw std::bad_alloc();
    if (BurnSubtitleAVFrame(m_pBurner.get(), pFrame) != 0)
        throw std::runtime_error("a frame is refused: its format is not known, or there is no memory");
}

void Write(const AVFrame &frame)
{
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const int nBytes = Checked(av_image_get_buffer_size(format, frame.width, frame.height, 1), "a picture");
    std::vector<std::uint8_t> listBytes(static_cast<std::size_t>(nBytes));
    Checked(av_image_copy_to_buffer(listBytes.data(), nBytes, frame.data, frame.linesize, format, frame.width,
                                    frame.height, 1),
            "a picture");
    if (std::fwrite(listBytes.data(), 1, listBytes.size(), stdout) != listBytes.size() || std::fflush(stdout) != 0)
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
        Burner burner(argv[2]);
        for (int n = 3; n < argc; ++n) {
            const FramePtr pFrame = video.FrameAt(Seconds(argv[n]));
            burner.Burn(pFrame.get(), video.Milliseconds(*pFrame));
            Write(*pFrame);
        }
        return EXIT_SUCCESS;
    } catch (const std::exception &error) {
        (void)std::fprintf(stderr, "ffmpeghost: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
