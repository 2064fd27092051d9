/*
 * A host in C, built through pkg-config.
 * usage: host SUBTITLES TEXT FRAME
 *   SUBTITLES  a file that has TEXT, one line, from 1 to 2 seconds
 *   FRAME      to write the frame to
 */
#include "../burnt.h"

#include <libavutil/mem.h>
#include <libsubtitle.h>
#include <string.h>

int main(int argc, char **argv)
{
    static uint8_t pixels[WIDTH * HEIGHT * 3];
    AVPicture frame = {{pixels}, {WIDTH * 3}};
    AVPicture bitmap = {{NULL}, {0}};
    int rect[4];
    void *subtitle = CreateVideoSubtitle(WIDTH, HEIGHT);
    void *reference = CreateVideoSubtitle(WIDTH, HEIGHT);
    FILE *output;
    int wrong;

    memset(pixels, BACKGROUND, sizeof(pixels));
    if (argc != 4 || SetSubtitleFile(subtitle, argv[1], 0) != 0 || SetSubtitleTimeStamp(subtitle, 1500) != 0 ||
        ProcessSubtitleFrame(subtitle, &frame) != 0 || TextToBmp(reference, argv[2], &bitmap, rect) != 0)
        return 2;
    wrong = WrongPixels(pixels, bitmap.data[0], rect);
    av_freep(&bitmap.data[0]);
    av_freep(&bitmap.data[1]);
    DestroyVideoSubtitle(reference);
    DestroyVideoSubtitle(subtitle);

    output = fopen(argv[3], "wb");
    if (!output || fwrite(pixels, sizeof(pixels), 1, output) != 1 || fclose(output) != 0)
        return 2;
    return wrong == 0 ? 0 : 1;
}
