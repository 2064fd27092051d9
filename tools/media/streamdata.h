#pragma once

#include "media/ffmpegptr.h"

// Access to the side data of streams, which FFmpeg 6.1 moved into the codec parameters.

/**
 * Side data that describes the picture, from the first frame if the stream has none.
 * @return the data, owned by the stream or frame; null if there is none of the type.
 */
const uint8_t *FindPictureSideData(const AVStream &stream, const AVFrame &first, AVPacketSideDataType type);

/** Copies all side data, for a stream that is copied. */
void CopyAllSideData(const AVStream &from, AVStream &to);

/**
 * Copies the side data that describes the picture and not the bit stream, for a stream that is encoded anew. See
 * FindPictureSideData().
 * @param bMatrix  whether to copy the display matrix.
 */
void CopyPictureSideData(const AVStream &from, const AVFrame &first, AVStream &to, bool bMatrix);
