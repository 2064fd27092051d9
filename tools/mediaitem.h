#pragma once

#include "ffmpegptr.h"

/** What comes out of an input and goes into an output: a video frame, or a packet of another stream. */
struct MediaItem {
    FramePtr pFrame;
    PacketPtr pPacket;
    // Of a frame, in the input's time.
    long nMilliseconds = 0;
};
