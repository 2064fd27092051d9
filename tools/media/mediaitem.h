#pragma once

#include "media/ffmpegptr.h"

/** What is passed from input to output: a video frame, or a packet of another stream. */
struct MediaItem {
    FramePtr pFrame;
    PacketPtr pPacket;
    // Of a frame: its time in the input, not shifted.
    long nMilliseconds = 0;
};
