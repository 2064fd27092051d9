#pragma once

#include "ffmpegptr.h"

#include <vector>

/** Pixel formats that an encoder takes and subtitles can be drawn into. */
std::vector<AVPixelFormat> FormatsOf(const AVCodec &codec);

/** The format of the source where the encoder takes it, else the one that loses least. */
AVPixelFormat BestFormat(const AVCodec &codec, AVPixelFormat source);

/** The frame rate nearest to a wanted one that an encoder takes. */
AVRational NearestRate(const AVCodec &codec, AVRational wanted);

/** Whether a container takes video of a codec that is still to be encoded. */
bool CanHoldVideo(const AVOutputFormat &container, AVCodecID id);

/** Whether a container takes a stream. */
bool CanHold(const AVOutputFormat &container, const AVStream &stream);
