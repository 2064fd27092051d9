#pragma once

#include "media/ffmpegptr.h"

// What can be read from packets of bitmap subtitles without decoding them.

/** How long a DVD subtitle is displayed, in milliseconds; 0 if it does not say. */
int64_t DvdDuration(const AVPacket &packet);

/** Whether a packet of Blu-ray subtitles starts a new page, which may be empty, at its time. */
bool BeginsBluRayPage(const AVPacket &packet);

/** Whether such a page has anything on it. */
bool ShowsBluRayPicture(const AVPacket &packet);
