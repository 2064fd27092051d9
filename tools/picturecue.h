#pragma once

#include "ffmpegptr.h"

// What packets of subtitles that are pictures tell without being decoded.

/** Milliseconds until a picture of a DVD goes, 0 when it does not say. */
int64_t DvdDuration(const AVPacket &packet);

/** Whether a packet of a Blu-ray's subtitles begins what shows from its time on, be it a picture or nothing. */
bool BeginsBluRayPage(const AVPacket &packet);

/** Whether such a page has anything on it. */
bool ShowsBluRayPicture(const AVPacket &packet);
