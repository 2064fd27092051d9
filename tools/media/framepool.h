#pragma once

#include "media/ffmpegptr.h"

/** Allocates video frames from a pool of buffers of one size. Frames may outlive the pool. */
class FramePool
{
public:
    FramePtr Get(int nWidth, int nHeight, AVPixelFormat format);

    /** Replaces a frame by a copy if its buffers are shared. */
    void MakeWritable(FramePtr &pFrame);

private:
    BufferPoolPtr m_pPool;
    size_t m_nBytes = 0;
};
