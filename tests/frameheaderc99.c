/* The header of the library for the frames of decoders, compiled alone as C. */
#include "libsubtitleframe.h"

int BurnInto(void *burner, uint8_t *grey, int width, int height);

int BurnInto(void *burner, uint8_t *grey, int width, int height)
{
    SubtitleFrame frame = {{grey}, {width}, width, height, SubtitlePixelFormat("gray"), 0, 0, 0, 0, 0, 0, 0};
    frame.orientation = SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_MIRRORED;
    return BurnSubtitle(burner, &frame);
}
