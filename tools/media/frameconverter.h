#pragma once

#include "media/frameturner.h"
#include "media/pictureformat.h"

#include <optional>

/** Converts frames to the encoder's size and pixel format and turns them upright. Frames that fit stay untouched. */
class FrameConverter
{
public:
    /**
     * @param nWidth, nHeight  of the frames as stored, before turning.
     * @param turn             their orientation if they are to be turned; else none.
     */
    FrameConverter(int nWidth, int nHeight, AVPixelFormat format, const Orientation &turn);

    void Convert(FramePtr &pFrame);

    /** Sets the colour tags of a converted frame that cannot stay as they were in the source's format. */
    void SetColors(AVFrame &frame, const AVFrame &source) const;

private:
    void Scale(FramePtr &pFrame);

    int m_nWidth;
    int m_nHeight;
    AVPixelFormat m_format;
    FramePool m_pool;
    ScalerPtr m_pScaler;
    PictureFormat m_from;
    std::optional<FrameTurner> m_turner;
};
