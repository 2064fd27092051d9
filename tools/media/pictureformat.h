#pragma once

#include "media/ffmpegptr.h"

/** Everything that decides how a picture's bytes become colours, with defaults for what a frame leaves unspecified. */
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

/** Whether a subtitle can be drawn into pictures of a format, directly or by converting to another format and back. */
bool IsBurnable(AVPixelFormat format);

bool IsRgb(AVPixelFormat format);

bool HasAlpha(AVPixelFormat format);

/** Bytes of a plane per pixel, or per group of pixels that share chroma. */
int GroupBytes(const AVPixFmtDescriptor &descriptor, int nPlane);

/** Whether a format is one of the old yuvj formats, which imply full range. */
bool IsFullRangeFormat(AVPixelFormat format);

/** Throws std::runtime_error if swscale cannot convert so. @param nFilter  an SWS_ flag such as SWS_BICUBIC. */
ScalerPtr MakeScaler(const PictureFormat &from, const PictureFormat &to, int nFilter = SWS_BICUBIC);
