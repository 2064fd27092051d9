/* The frame library's header, compiled alone as C99. */
#include "frames/libsubtitleframe.h"

int BurnInto(void *burner, uint8_t *grey, int width, int height);

int BurnInto(void *burner, uint8_t *grey, int width, int height)
{
    SubtitleFrame frame = {{grey}, {width}, width, height, SubtitlePixelFormat("gray"), 0, 0, 0, 0, 0, 0, 0};
    frame.orientation = SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_MIRRORED;
    return BurnSubtitle(burner, &frame);
}
