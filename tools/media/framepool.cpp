#include "media/framepool.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace
{

const int Alignment = 64;

} // namespace

FramePtr FramePool::Get(int nWidth, int nHeight, AVPixelFormat format)
{
    const int nSize = av_image_get_buffer_size(format, nWidth, nHeight, Alignment);
    if (nSize < 0)
        throw std::bad_alloc();
    // Spare bytes for SIMD code that reads or writes past the last row.
    const size_t nBytes = static_cast<size_t>(nSize) + Alignment;
    if (!m_pPool || nBytes != m_nBytes) {
        m_pPool = Checked(BufferPoolPtr(av_buffer_pool_init(nBytes, nullptr)));
        m_nBytes = nBytes;
    }
    FramePtr pFrame = NewFrame();
    pFrame->buf[0] = Checked(av_buffer_pool_get(m_pPool.get()));
    pFrame->width = nWidth;
    pFrame->height = nHeight;
    pFrame->format = format;
    av_image_fill_arrays(pFrame->data, pFrame->linesize, pFrame->buf[0]->data, format, nWidth, nHeight, Alignment);
    return pFrame;
}

void FramePool::MakeWritable(FramePtr &pFrame)
{
    if (av_frame_is_writable(pFrame.get()) > 0)
        return;
    FramePtr pCopy = Get(pFrame->width, pFrame->height, static_cast<AVPixelFormat>(pFrame->format));
    if (av_frame_copy(pCopy.get(), pFrame.get()) < 0 || av_frame_copy_props(pCopy.get(), pFrame.get()) < 0)
        throw std::bad_alloc();
    pFrame = std::move(pCopy);
}
