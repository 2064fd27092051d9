#pragma once

#include "framepool.h"
#include "orientation.h"

/** Turns frames to how they are shown, for containers that cannot say how they lie. */
class FrameTurner
{
public:
    explicit FrameTurner(const Orientation &orientation) : m_orientation(orientation) {}

    /** Whether frames of a format can be turned; other than whole pixels would have to be taken apart. */
    static bool Takes(AVPixelFormat format);

    void Turn(FramePtr &pFrame);

private:
    Orientation m_orientation;
    FramePool m_pool;
};
