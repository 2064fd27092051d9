#pragma once

#include "ffmpegptr.h"

// Side data of streams, which FFmpeg 6.1 moved into the codec parameters.

const uint8_t *FindSideData(const AVStream &stream, AVPacketSideDataType type);

/** For a stream that is copied: all of it. */
void CopyAllSideData(const AVStream &from, AVStream &to);

/**
 * For a stream that is encoded anew: what describes the picture and not the bit stream. What the container does not say
 * of it, the first frame may.
 * @param bMatrix  whether to copy how the picture is turned.
 */
void CopyPictureSideData(const AVStream &from, const AVFrame &first, AVStream &to, bool bMatrix);
