#pragma once

#include "media/ffmpegptr.h"

/** Opens a media or subtitle file and finds its streams; throws a Failure when it cannot. */
DemuxerPtr OpenDemuxer(const std::string &strFile);

/**
 * Reads the next packet of the streams that are not discarded. Throws a Failure if it cannot, or a stop is requested.
 * @return false at the end.
 */
bool ReadPacket(AVFormatContext &format, const std::string &strFile, AVPacket &packet);

/** The name of a local file without the prefix "file:" that FFmpeg's URLs of files have. */
std::string PathOf(const std::string &strFile);

/** The time stamp, in microseconds, that counts as time 0 of the file. */
int64_t OriginOf(const AVFormatContext &format);
