#pragma once

#include "ffmpegptr.h"

#include <vector>

/** Pixel formats that an encoder takes and subtitles can be drawn into. */
std::vector<AVPixelFormat> FormatsOf(const AVCodec &codec);

/**
 * The format of the source where the encoder takes it, else the one that loses least.
 * @param bTurned    whether the frames have to be turned in that format.
 * @param bHardware  whether they are uploaded to a device in it.
 */
AVPixelFormat BestFormat(const AVCodec &codec, AVPixelFormat source, bool bTurned, bool bHardware);

/** The frame rate nearest to a wanted one that an encoder takes. */
AVRational NearestRate(const AVCodec &codec, AVRational wanted);

/** The format of the samples, planar or not, where the encoder takes it. */
AVSampleFormat BestSampleFormat(const AVCodec &codec, AVSampleFormat source);

int BestSampleRate(const AVCodec &codec, int nSource);

/** The usual layout of so many channels, or of the most that the encoder takes. */
AVChannelLayout BestChannels(const AVCodec &codec, int nSource);

/** Whether a container takes video of a codec that is still to be encoded. */
bool CanHoldVideo(const AVOutputFormat &container, AVCodecID id);

/** The same of an encoder for sound. */
bool CanHoldCodec(const AVOutputFormat &container, const AVCodec &codec);

/** Whether a container takes a stream. */
bool CanHold(const AVOutputFormat &container, const AVStream &stream);
