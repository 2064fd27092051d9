#pragma once

#include "ffmpegptr.h"

// Side data of streams, which FFmpeg 6.1 moved into the codec parameters.

const uint8_t *FindSideData(const AVStream &stream, AVPacketSideDataType type);

/** For a stream that is copied: all of it. */
void CopyAllSideData(const AVStream &from, AVStream &to);

/** For a stream that is encoded anew: what describes the picture and not the bit stream. */
void CopyPictureSideData(const AVStream &from, AVStream &to);

void SetSideData(AVStream &stream, AVPacketSideDataType type, const uint8_t *pData, size_t nSize);
