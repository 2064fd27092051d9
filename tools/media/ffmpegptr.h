#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
#include <libavutil/error.h>
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <array>
#include <memory>
#include <new>
#include <string>

template <auto Function>
struct FreeByAddress {
    template <typename T>
    void operator()(T *pObject) const
    {
        Function(&pObject);
    }
};

struct FreeScaler {
    void operator()(SwsContext *pContext) const { sws_freeContext(pContext); }
};

using FramePtr = std::unique_ptr<AVFrame, FreeByAddress<av_frame_free>>;
using PacketPtr = std::unique_ptr<AVPacket, FreeByAddress<av_packet_free>>;
using CodecPtr = std::unique_ptr<AVCodecContext, FreeByAddress<avcodec_free_context>>;
using DemuxerPtr = std::unique_ptr<AVFormatContext, FreeByAddress<avformat_close_input>>;
using BufferPtr = std::unique_ptr<AVBufferRef, FreeByAddress<av_buffer_unref>>;
using BufferPoolPtr = std::unique_ptr<AVBufferPool, FreeByAddress<av_buffer_pool_uninit>>;
using ScalerPtr = std::unique_ptr<SwsContext, FreeScaler>;

template <typename Pointer>
Pointer Checked(Pointer pObject)
{
    if (!pObject)
        throw std::bad_alloc();
    return pObject;
}

inline FramePtr NewFrame()
{
    return Checked(FramePtr(av_frame_alloc()));
}
inline PacketPtr NewPacket()
{
    return Checked(PacketPtr(av_packet_alloc()));
}

inline std::string AvReason(int nError)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> listText{};
    av_strerror(nError, listText.data(), listText.size());
    return listText.data();
}

inline int64_t FrameDuration(const AVFrame &frame)
{
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(57, 30, 100)
    return frame.duration;
#else
    return frame.pkt_duration;
#endif
}

inline bool IsKeyFrame(const AVFrame &frame)
{
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(58, 7, 100)
    return (frame.flags & AV_FRAME_FLAG_KEY) != 0;
#else
    return frame.key_frame != 0;
#endif
}

/** The field order of an interlaced frame; AV_FIELD_UNKNOWN for any other. */
inline AVFieldOrder FrameFieldOrder(const AVFrame &frame)
{
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(58, 7, 100)
    const bool bInterlaced = (frame.flags & AV_FRAME_FLAG_INTERLACED) != 0;
    const bool bTopFirst = (frame.flags & AV_FRAME_FLAG_TOP_FIELD_FIRST) != 0;
#else
    const bool bInterlaced = frame.interlaced_frame != 0;
    const bool bTopFirst = frame.top_field_first != 0;
#endif
    return bInterlaced ? (bTopFirst ? AV_FIELD_TT : AV_FIELD_BB) : AV_FIELD_UNKNOWN;
}

inline const AVRational Milliseconds = {1, 1000};
inline const AVRational Microseconds = {1, AV_TIME_BASE};
