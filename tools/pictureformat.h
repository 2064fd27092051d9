#pragma once

#include "ffmpegptr.h"

/** All that tells how the bytes of a picture become colours, with nothing left unspecified. */
struct PictureFormat {
    int nWidth = 0;
    int nHeight = 0;
    AVPixelFormat format = AV_PIX_FMT_NONE;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVChromaLocation chroma = AVCHROMA_LOC_UNSPECIFIED;
    bool bFullRange = false;

    static PictureFormat Of(const AVFrame &frame);

    bool operator==(const PictureFormat &other) const;
};

/** Whether a subtitle can be drawn into pictures of a format, if need be through another. */
bool IsBurnable(AVPixelFormat format);

bool IsRgb(AVPixelFormat format);

bool HasAlpha(AVPixelFormat format);

/** Bytes of a plane that hold what belongs to one pixel, or to one block of those that share chroma. */
int GroupBytes(const AVPixFmtDescriptor &descriptor, int nPlane);

/** The old formats that stand for full range by themselves. */
bool IsFullRangeFormat(AVPixelFormat format);

/** Throws std::runtime_error when swscale cannot do it. @param nFilter  SWS_BICUBIC or another. */
ScalerPtr MakeScaler(const PictureFormat &from, const PictureFormat &to, int nFilter = SWS_BICUBIC);
