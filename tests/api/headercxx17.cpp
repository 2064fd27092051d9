// The public header, compiled as C++17: without another before it, and together with FFmpeg's.
#include "libsubtitle.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
}

#include <cstddef>

static_assert(offsetof(AVPicture, data) == offsetof(AVFrame, data));
static_assert(offsetof(AVPicture, linesize) == offsetof(AVFrame, linesize));
static_assert(sizeof(AVPicture::data) == sizeof(AVFrame::data));
static_assert(sizeof(AVPicture::linesize) == sizeof(AVFrame::linesize));
