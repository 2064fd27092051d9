/* Burns a subtitle into a grey frame; fails unless text and outline, and no other values, are in it. */
#include <libsubtitle.h>
#include <libsubtitleframe.h>

#include <stdio.h>
#include <string.h>

enum { WIDTH = 320, HEIGHT = 180, BACKGROUND = 100, TEXT = 255, OUTLINE = 10 };

static uint8_t pixels[WIDTH * HEIGHT];

int main(int argc, char **argv)
{
    void *subtitle = CreateVideoSubtitle(WIDTH, HEIGHT);
    void *burner = CreateSubtitleBurner(subtitle);
    SubtitleFrame frame = {{pixels}, {WIDTH}, WIDTH, HEIGHT, 0, 0, 0, 0, 0, 0, 0, 0};
    int texts = 0;
    int outlines = 0;
    int others = 0;
    int result;
    int i;

    memset(pixels, BACKGROUND, sizeof pixels);
    frame.format = SubtitlePixelFormat("gray");
    result = argc != 2 || SetSubtitleFile(subtitle, argv[1], 0) != 0 || SetSubtitleTimeStamp(subtitle, 1500) != 0 ||
             BurnSubtitle(burner, &frame) != 0;
    for (i = 0; i < WIDTH * HEIGHT; ++i) {
        texts += pixels[i] == TEXT;
        outlines += pixels[i] == OUTLINE;
        others += pixels[i] != TEXT && pixels[i] != OUTLINE && pixels[i] != BACKGROUND;
    }
    DestroySubtitleBurner(burner);
    DestroyVideoSubtitle(subtitle);
    if (result || texts == 0 || outlines == 0 || others > 0)
        printf("result %d, %d pixels of text, %d of outline, %d others\n", result, texts, outlines, others);
    return result || texts == 0 || outlines == 0 || others > 0;
}
