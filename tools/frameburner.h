#pragma once

#include "framepool.h"
#include "orientation.h"
#include "pictureformat.h"
#include "subtitlerenderer.h"

/** Draws subtitles into video frames of any format and changes no sample that no subtitle covers. */
class FrameBurner
{
public:
    /** @param renderer  made for the size of the picture as it is shown. */
    FrameBurner(const SubtitleRenderer &renderer, const Orientation &orientation);

    /** @return what was due at that time; unless it is Due::Shown, the samples are left alone. */
    Due Burn(FramePtr &pFrame, long nMilliseconds);

private:
    void BurnConverted(AVFrame &frame);
    FramePtr Known(const AVFrame &frame) const;

    const SubtitleRenderer &m_renderer;
    Orientation m_orientation;
    FramePool m_pool;

    // For frames that the library refuses.
    PictureFormat m_format;
    ScalerPtr m_pToKnown;
    ScalerPtr m_pFromKnown;
};
