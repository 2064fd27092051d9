#pragma once

#include "ffmpegptr.h"

/** Opens a media or subtitle file and finds its streams; throws a Failure when it cannot. */
DemuxerPtr OpenDemuxer(const std::string &strFile);

/**
 * Reads the next packet of a stream that is not discarded; throws a Failure when it cannot, or when a stop is requested.
 * @return false at the end.
 */
bool ReadPacket(AVFormatContext &format, const std::string &strFile, AVPacket &packet);

/** Where the file's time begins, in microseconds. */
int64_t OriginOf(const AVFormatContext &format);
