/*
 * Burns subtitles into raw video: packed RGB frames come from standard input and go to standard output.
 *
 *     rawhost WIDTHxHEIGHT FRAMES-PER-SECOND SUBTITLES
 *
 * The rate is a number such as 25 or a fraction such as 30000/1001. Build it with
 *
 *     cc -std=c99 -o rawhost rawhost.c $(pkg-config --cflags --libs libsubtitle)
 */
#include <libsubtitle.h>

#include <stdio.h>
#include <stdlib.h>

static int Fail(const char *pMessage)
{
    fprintf(stderr, "rawhost: %s\n", pMessage);
    return EXIT_FAILURE;
}

/* Checked here, for mistyped names, because the library accepts a missing file as one without subtitles. */
static int IsReadable(const char *pFile)
{
    FILE *pStream = fopen(pFile, "rb");
    return pStream && fclose(pStream) == 0;
}

/* Frame n is shown from n * scale / rate seconds on. */
static int BurnFrames(void *pSubtitle, AVPicture *pFrame, size_t nBytes, int nRate, int nScale)
{
    size_t nRead = 0;
    for (long long n = 0; (nRead = fread(pFrame->data[0], 1, nBytes, stdin)) == nBytes; ++n) {
        const long nMilliseconds = (long)((n * 1000 * nScale + nRate / 2) / nRate);
        if (SetSubtitleTimeStamp(pSubtitle, nMilliseconds) != 0 || ProcessSubtitleFrame(pSubtitle, pFrame) != 0)
            return Fail("no memory for a subtitle");
        if (fwrite(pFrame->data[0], 1, nBytes, stdout) != nBytes)
            return Fail("standard output cannot be written");
    }
    if (ferror(stdin))
        return Fail("standard input cannot be read");
    if (nRead != 0)
        return Fail("standard input ends within a frame");
    return fflush(stdout) == 0 ? EXIT_SUCCESS : Fail("standard output cannot be written");
}

int main(int argc, char **argv)
{
    int nWidth = 0;
    int nHeight = 0;
    int nRate = 0;
    int nScale = 1;
    if (argc != 4 || sscanf(argv[1], "%5dx%5d", &nWidth, &nHeight) != 2 || nWidth < 1 || nHeight < 1 ||
        sscanf(argv[2], "%9d/%9d", &nRate, &nScale) < 1 || nRate < 1 || nScale < 1)
        return Fail("usage: rawhost WIDTHxHEIGHT FRAMES-PER-SECOND SUBTITLES");
    if (!IsReadable(argv[3]))
        return Fail("the subtitle file cannot be read");

    const size_t nBytes = (size_t)3 * (size_t)nWidth * (size_t)nHeight;
    AVPicture frame = {{malloc(nBytes)}, {3 * nWidth}};
    void *pSubtitle = CreateVideoSubtitle(nWidth, nHeight);
    int nExit = EXIT_FAILURE;
    if (!frame.data[0] || !pSubtitle)
        Fail("no memory for a frame");
    else if (SetSubtitleFile(pSubtitle, argv[3], 0) != 0)
        Fail("the subtitle file is refused");
    else
        nExit = BurnFrames(pSubtitle, &frame, nBytes, nRate, nScale);
    DestroyVideoSubtitle(pSubtitle);
    free(frame.data[0]);
    return nExit;
}
