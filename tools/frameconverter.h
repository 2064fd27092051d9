#pragma once

#include "framepool.h"
#include "pictureformat.h"

/** Brings frames to the size and pixel format of the encoder; those that have them already pass untouched. */
class FrameConverter
{
public:
    FrameConverter(int nWidth, int nHeight, AVPixelFormat format);

    void Convert(FramePtr &pFrame);

    /** Changes those colour tags of a converted frame that its format cannot have. */
    void SetColors(AVFrame &frame, const AVFrame &source) const;

private:
    int m_nWidth;
    int m_nHeight;
    AVPixelFormat m_format;
    FramePool m_pool;
    ScalerPtr m_pScaler;
    PictureFormat m_from;
};
