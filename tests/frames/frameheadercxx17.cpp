// The frame library's header, compiled as C++17: without another before it, and together with FFmpeg's.
#include "frames/libsubtitleframe.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <type_traits>

static_assert(std::is_same_v<decltype(&BurnSubtitleAVFrame), int (*)(void *, AVFrame *)>);
static_assert(sizeof(SubtitleFrame::data) == 4 * sizeof(void *));
