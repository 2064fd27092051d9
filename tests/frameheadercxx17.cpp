// The header of the library for the frames of decoders, compiled alone as C++17, and beside FFmpeg's own.
#include "libsubtitleframe.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <type_traits>

static_assert(std::is_same_v<decltype(&BurnSubtitleAVFrame), int (*)(void *, AVFrame *)>);
static_assert(sizeof(SubtitleFrame::data) == 4 * sizeof(void *));
