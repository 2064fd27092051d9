#pragma once

#include "ffmpegptr.h"

/** Video frames whose memory is used again and again. */
class FramePool
{
public:
    FramePtr Get(int nWidth, int nHeight, AVPixelFormat format);

    /** Replaces a frame that someone else also reads by a copy. */
    void MakeWritable(FramePtr &pFrame);

private:
    BufferPoolPtr m_pPool;
    size_t m_nBytes = 0;
};
