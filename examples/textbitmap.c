/*
 * Renders any text with the library's font and writes its shape to standard output, as a PBM picture.
 *
 *     textbitmap TEXT
 *
 * The text is UTF-8. Build it with
 *
 *     cc -std=c99 -o textbitmap textbitmap.c $(pkg-config --cflags --libs libsubtitle libavutil)
 */
#include <libsubtitle.h>

#include <libavutil/mem.h>
#include <stdio.h>
#include <stdlib.h>

enum { FrameWidth = 640, FrameHeight = 360, TextIndex = 1 };

/* PBM has eight pixels in a byte, the leftmost in the highest bit. Each row begins with a new byte. */
static void WriteShape(const AVPicture *pBitmap, int nWidth, int nHeight)
{
    printf("P4\n%d %d\n", nWidth, nHeight);
    for (int y = 0; y < nHeight; ++y) {
        const uint8_t *pRow = pBitmap->data[0] + (ptrdiff_t)y * pBitmap->linesize[0];
        for (int x = 0; x < nWidth; x += 8) {
            int nByte = 0;
            for (int nBit = 0; nBit < 8 && x + nBit < nWidth; ++nBit) {
                if (pRow[x + nBit] == TextIndex)
                    nByte |= 0x80 >> nBit;
            }
            putchar(nByte);
        }
    }
}

int main(int argc, char **argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: textbitmap TEXT\n");
        return EXIT_FAILURE;
    }
    void *pSubtitle = CreateVideoSubtitle(FrameWidth, FrameHeight);
    AVPicture bitmap = {{NULL}, {0}}; /* null, since TextToBmp() frees data[] */
    int rect[4];                      /* left, top, width, height */
    int nResult = TextToBmp(pSubtitle, argv[1], &bitmap, rect);
    if (nResult == 0)
        WriteShape(&bitmap, rect[2], rect[3]);
    else
        fprintf(stderr, "textbitmap: no memory for the bitmap\n");
    av_free(bitmap.data[0]);
    av_free(bitmap.data[1]);
    DestroyVideoSubtitle(pSubtitle);
    return nResult == 0 && fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
