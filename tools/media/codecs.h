#pragma once

#include "media/ffmpegptr.h"

#include <vector>

/** Pixel formats that an encoder takes and that subtitles can be drawn into. */
std::vector<AVPixelFormat> FormatsOf(const AVCodec &codec);

/**
 * The source's format if the encoder takes it, else the one that loses least; AV_PIX_FMT_NONE if there is none.
 * @param bTurned    restricts the choice to formats that FrameTurner can turn.
 * @param bHardware  chooses among the formats uploaded to hardware encoders, NV12 and P010.
 */
AVPixelFormat BestFormat(const AVCodec &codec, AVPixelFormat source, bool bTurned, bool bHardware);

/** Whether an encoder has a private option of a name. */
bool HasOption(const AVCodecContext &context, const char *pName);

/** The frame rate that an encoder takes which is nearest to the wanted one. */
AVRational NearestRate(const AVCodec &codec, AVRational wanted);

/** The source's sample format, planar or packed, if the encoder takes it; else the encoder's first. */
AVSampleFormat BestSampleFormat(const AVCodec &codec, AVSampleFormat source);

/** The lowest rate of the encoder that is not below the source's, else its highest; in Hz. */
int BestSampleRate(const AVCodec &codec, int nSource);

/**
 * The default layout of nSource channels if the encoder takes it, else the encoder's layout with the most channels up
 * to nSource, else its first.
 */
AVChannelLayout BestChannels(const AVCodec &codec, int nSource);

/**
 * Copies the parameters of a stream. Channels without names, which Matroska's PCM has, get the usual ones of their
 * number, since some containers cannot hold them otherwise. @throw std::bad_alloc
 */
void CopyParameters(const AVCodecParameters &source, AVCodecParameters &target);

/** Whether a container takes video that is to be encoded with a codec. */
bool CanHoldVideo(const AVOutputFormat &container, AVCodecID id);

/** Whether a container takes audio that is to be encoded with an encoder. */
bool CanHoldCodec(const AVOutputFormat &container, const AVCodec &codec);

/** Whether a container takes a copy of a stream. */
bool CanHold(const AVOutputFormat &container, const AVStream &stream);
