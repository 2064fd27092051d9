/* A host in C, linked with the library, that sets the decoder's variables. For decoderhost_test.
   usage: decoderprobe planes WIDTH HEIGHT COLOUR OFFSET FORMAT   decodes units from the input; writes Y, U, V, alpha,
                                                                 then, after subtitle_write_x(), the packed block and
                                                                 the output planes
          decoderprobe frame WIDTH HEIGHT COLOUR FILE MS         writes a black frame with the subtitle of that time */
#include "libsubtitle.h"
#include "vobsub/subtitledecoder.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void Write(const unsigned char *bytes, size_t size)
{
    if (fwrite(bytes, 1, size, stdout) != size)
        exit(2);
}

static int WritePlanes(int width, int height, char **argv)
{
    static unsigned char units[65536];
    const size_t read = fread(units, 1, sizeof units, stdin);
    const size_t size = (size_t)width * (size_t)height;
    struct SubtitlePlanes planes;
    unsigned int palette[16];

    for (unsigned int k = 0; k < 16; ++k)
        palette[k] = (0xA0 + k) << 16 | (0x50 + k) << 8 | (16 * k + 1);
    Subt_Color = Subt_Offset = chroma_format = 7;
    subtitle_init(palette, width, height);
    if (Subt_Color != 1 || Subt_Offset != 0 || chroma_format != 3 || Coded_Picture_Width != width ||
        Coded_Picture_Height != height || Chroma_Width != width || Chroma_Height != height)
        return 3;
    Subt_Color = atoi(argv[0]);
    Subt_Offset = atoi(argv[1]);
    chroma_format = atoi(argv[2]);

    subtitle_decode(units, (int)read);
    subtitle_write(&planes);
    if (memcmp(&planes, &mediadata, 4 * sizeof planes.plane[0]) != 0 || planes.top != mediadata.top)
        return 4;
    for (int n = 0; n < 4; ++n)
        Write(planes.plane[n], size);
    subtitle_write_x(&planes);
    Write(planes.plane[0], 3 * size);
    for (int n = 0; n < 3; ++n)
        Write(mediadata.out[n], size);
    subtitle_release();
    return 0;
}

static int WriteFrame(int width, int height, char **argv)
{
    const size_t size = 3 * (size_t)width * (size_t)height;
    unsigned char *pixels = calloc(size, 1);
    void *subtitle = CreateVideoSubtitle(width, height);
    AVPicture frame = {{pixels}, {3 * width}};

    if (!pixels || SetSubtitleFile(subtitle, argv[1], 0) != 0)
        return 5;
    Subt_Color = atoi(argv[0]);
    SetSubtitleTimeStamp(subtitle, atol(argv[2]));
    ProcessSubtitleFrame(subtitle, &frame);
    Write(pixels, size);
    DestroyVideoSubtitle(subtitle);
    free(pixels);
    return 0;
}

int main(int argc, char **argv)
{
    if (argc != 7)
        return 1;
    return (strcmp(argv[1], "planes") == 0 ? WritePlanes : WriteFrame)(atoi(argv[2]), atoi(argv[3]), argv + 4);
}
