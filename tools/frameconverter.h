#pragma once

#include "frameturner.h"
#include "pictureformat.h"

#include <optional>

/** Brings frames to the size and pixel format of the encoder, and upright; those that have them already pass untouched. */
class FrameConverter
{
public:
    /**
     * @param nWidth, nHeight  as the frames are stored.
     * @param turn             how they are stored where they have to be turned.
     */
    FrameConverter(int nWidth, int nHeight, AVPixelFormat format, const Orientation &turn);

    void Convert(FramePtr &pFrame);

    /** Changes those colour tags of a converted frame that its format cannot have. */
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
