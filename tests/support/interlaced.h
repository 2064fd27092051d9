#pragma once

extern "C" {
#include <libavutil/frame.h>
}

/** Marks a frame as interlaced or not; how depends on the version of FFmpeg. */
inline void SetInterlaced(AVFrame &frame, bool bInterlaced)
{
#ifdef AV_FRAME_FLAG_INTERLACED
    frame.flags = (frame.flags & ~AV_FRAME_FLAG_INTERLACED) | (bInterlaced ? AV_FRAME_FLAG_INTERLACED : 0);
#else
    frame.interlaced_frame = bInterlaced ? 1 : 0;
#endif
}
