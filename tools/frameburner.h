#pragma once

#include "bandconverter.h"
#include "framepool.h"
#include "orientation.h"
#include "subtitlerenderer.h"

/** Draws subtitles into video frames of any format and changes no sample that no subtitle covers. */
class FrameBurner
{
public:
    /** @param renderer  made for the size of the picture as it is shown. */
    FrameBurner(SubtitleRenderer &renderer, const Orientation &orientation);

    /** @return whether a subtitle was due at that time; without one the frame is left alone. */
    bool Burn(FramePtr &pFrame, long nMilliseconds);

private:
    void Prepare(const AVFrame &frame);
    void DrawTurned();
    void CopyBack(AVFrame &video);
    void MarkGroups(const Box &groups, int nShiftX, int nShiftY, int nReach);

    SubtitleRenderer &m_renderer;
    Orientation m_orientation;
    BandConverter m_converter;
    FramePool m_pool;
    PictureFormat m_format;
    FramePtr m_pRgb;
    FramePtr m_pTurned;
    FramePtr m_pBurnt;
    Box m_stored;
    std::vector<uint8_t> m_listMarks;
};
