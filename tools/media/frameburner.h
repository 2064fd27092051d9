#pragma once

#include "media/framepool.h"
#include "media/orientation.h"
#include "media/pictureformat.h"
#include "subtitles/subtitlestack.h"

/** Draws subtitles into video frames of any format. Samples that no subtitle covers stay as they are. */
class FrameBurner
{
public:
    /** @param subtitles  set up for the size of the picture as shown. */
    FrameBurner(SubtitleStack &subtitles, const Orientation &orientation);

    /** Replaces the frame by a copy if it is shared. @return what was due; the frame changes only for Due::Shown. */
    Due Burn(FramePtr &pFrame, long nMilliseconds);

    /** The result of the last Burn() for each subtitle. */
    const std::vector<Due> &Dues() const { return m_subtitles.Dues(); }

private:
    void BurnConverted(AVFrame &frame);
    FramePtr Known(const AVFrame &frame) const;

    SubtitleStack &m_subtitles;
    Orientation m_orientation;
    FramePool m_pool;

    // For frames whose format the library does not know.
    PictureFormat m_format;
    ScalerPtr m_pToKnown;
    ScalerPtr m_pFromKnown;
};
