/* Checks that a frame contains a burnt subtitle and no other change. For C and C++. */
#ifndef BURNT_H
#define BURNT_H

#include <stdint.h>
#include <stdio.h>

enum { WIDTH = 320, HEIGHT = 180, BACKGROUND = 100, TEXT = 255, OUTLINE = 10 };

/* Whether a pixel of the frame is text; index 1 in the bitmap of TextToBmp() is the text's colour. */
static int IsText(const uint8_t *bitmap, const int *rect, int x, int y)
{
    const int column = x - rect[0];
    const int row = y - rect[1];
    return column >= 0 && column < rect[2] && row >= 0 && row < rect[3] && bitmap[row * rect[2] + column] == 1;
}

/*
 * Whether a pixel lies in the outline of 2 pixels around text, whose corners are left out. The library draws lines from
 * the top of an image, which clips the outline of letters that reach the top, as they do with Qt 6.
 */
static int IsOutline(const uint8_t *bitmap, const int *rect, int x, int y)
{
    if (y < rect[1])
        return 0;
    for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
            if (dx * dx + dy * dy < 8 && IsText(bitmap, rect, x + dx, y + dy))
                return 1;
        }
    }
    return 0;
}

/*
 * Checks all pixels of a frame that was BACKGROUND throughout: text where the bitmap has text, outline around it, no
 * other change, and none in the upper half. Prints the counts if it fails.
 * Returns the number of wrong pixels, -1 if the bitmap has no text in the frame.
 */
static int WrongPixels(const uint8_t *frame, const uint8_t *bitmap, const int *rect)
{
    int wrong = 0;
    int text = 0;
    for (int y = 0; y < HEIGHT; ++y) {
        for (int x = 0; x < WIDTH; ++x) {
            const uint8_t *pixel = frame + (y * WIDTH + x) * 3;
            int expected = BACKGROUND;
            if (IsText(bitmap, rect, x, y)) {
                expected = TEXT;
                ++text;
            } else if (IsOutline(bitmap, rect, x, y)) {
                expected = OUTLINE;
            }
            if ((y < HEIGHT / 2 && expected != BACKGROUND) || pixel[0] != expected || pixel[1] != expected ||
                pixel[2] != expected)
                ++wrong;
        }
    }
    if (wrong > 0 || text == 0)
        printf("%d pixels of text, %d wrong pixels\n", text, wrong);
    return text == 0 ? -1 : wrong;
}

#endif
