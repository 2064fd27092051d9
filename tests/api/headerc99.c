/* The public header, compiled alone as C99, and the example in it as a program. */
#include "libsubtitle.h"

#include <stdio.h>

int main(int argc, char **argv)
{
    static uint8_t pixels[640 * 360 * 3];
    AVPicture frame = {{pixels}, {640 * 3}};
    void *subtitle = CreateVideoSubtitle(640, 360);
    int status = argc > 1 ? SetSubtitleFile(subtitle, argv[1], 0) : -1;

    for (long n = 0; status == 0 && fread(pixels, sizeof(pixels), 1, stdin) == 1; ++n) {
        SetSubtitleTimeStamp(subtitle, n * 1000 / 25);
        ProcessSubtitleFrame(subtitle, &frame);
        fwrite(pixels, sizeof(pixels), 1, stdout);
    }
    DestroyVideoSubtitle(subtitle);
    return status == 0 ? 0 : 1;
}
