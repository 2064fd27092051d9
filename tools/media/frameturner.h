#pragma once

#include "media/framepool.h"
#include "media/orientation.h"

/** Turns frames upright, for containers that cannot store an orientation. */
class FrameTurner
{
public:
    explicit FrameTurner(const Orientation &orientation) : m_orientation(orientation) {}

    /**
     * Whether frames of a format can be turned: each plane needs whole pixels, and chroma the same subsampling in both
     * directions.
     */
    static bool Takes(AVPixelFormat format);

    void Turn(FramePtr &pFrame);

private:
    Orientation m_orientation;
    FramePool m_pool;
};
