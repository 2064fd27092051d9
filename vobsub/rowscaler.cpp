#include "vobsub/rowscaler.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

extern "C" {
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

namespace
{

struct FreeFrame {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
using FramePointer = std::unique_ptr<AVFrame, FreeFrame>;

/** Extends rows to multiples of @p alignment, which some conversions need; to all rows if that passes the end. */
RowRange AlignedRows(const RowRange &rows, int height, int alignment)
{
    const int first = rows.nFirst / alignment * alignment;
    const int end = (rows.End() + alignment - 1) / alignment * alignment;
    return end <= height ? RowRange{first, end - first} : RowRange{0, height};
}

void KeepBytes(void * /*opaque*/, uint8_t * /*bytes*/) {}

/** A frame that uses the plane's bytes without owning them; null if memory runs out. */
FramePointer MakeFrame(const GreyPlane &plane)
{
    FramePointer frame(av_frame_alloc());
    if (!frame)
        return nullptr;
    const std::size_t size = static_cast<std::size_t>(plane.nWidth) * plane.nHeight;
    frame->format = AV_PIX_FMT_GRAY8;
    frame->width = plane.nWidth;
    frame->height = plane.nHeight;
    frame->data[0] = plane.pBytes;
    frame->linesize[0] = plane.nWidth;
    frame->buf[0] = av_buffer_create(plane.pBytes, size, KeepBytes, nullptr, 0);
    return frame->buf[0] ? std::move(frame) : nullptr;
}

} // namespace

RowRange ScaledRows(const RowRange &rows, int fromRows, int toRows)
{
    // When scaling down, rows of 0 may become different: libswscale's rounding adds up over the taps of its filter.
    if (toRows < fromRows)
        return {0, toRows};
    if (rows.nCount <= 0)
        return {};
    constexpr std::int64_t reach = 5; // the filter's four taps, and one for rounding
    const std::int64_t first = (rows.nFirst - reach) * toRows / fromRows - 1;
    const std::int64_t end = (rows.End() + reach) * toRows / fromRows + 2;
    const int from = static_cast<int>(std::clamp<std::int64_t>(first, 0, toRows));
    return {from, static_cast<int>(std::clamp<std::int64_t>(end, from, toRows)) - from};
}

bool ScaleRows(SwsContext *context, const GreyPlane &from, const GreyPlane &to, const RowRange &rows)
{
    if (rows.nCount <= 0)
        return true;
    const FramePointer source = MakeFrame(from);
    const FramePointer target = MakeFrame(to);
    if (!source || !target || sws_frame_start(context, target.get(), source.get()) < 0)
        return false;
    const auto alignment = static_cast<int>(sws_receive_slice_alignment(context));
    const RowRange aligned = AlignedRows(rows, to.nHeight, alignment);
    const bool isDone = sws_send_slice(context, 0, from.nHeight) >= 0 &&
                        sws_receive_slice(context, aligned.nFirst, aligned.nCount) >= 0;
    sws_frame_end(context);
    return isDone;
}
