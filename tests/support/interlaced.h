#pragma once

extern "C" {
#include <libavutil/frame.h>
}

/** Says of a frame whether it is interlaced, as the FFmpeg at hand has it. */
inline void SetInterlaced(AVFrame &frame, bool bInterlaced)
{
#ifdef AV_FRAME_FLAG_INTERLACED
    frame.flags = (frame.flags & ~AV_FRAME_FLAG_INTERLACED) | (bInterlaced ? AV_FRAME_FLAG_INTERLACED : 0);
#else
    frame.interlaced_frame = bInterlaced ? 1 : 0;
#endif
}
