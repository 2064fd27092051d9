#include "vobsub/subtitledecoder.h"

#include "vobsub/decoderstate.h"
#include "vobsub/decoderview.h"

#include <algorithm>
#include <cstring>

namespace
{

/** Position in the output planes, in luma and in chroma samples. */
struct placement {
    int64_t luma;
    int64_t chroma;
};

placement FirstPosition(const host_settings &settings)
{
    constexpr int Margin = 10; // rows kept free at the top and bottom
    const int height = decoder.height;
    const bool fits = settings.offset < height - Margin - decoder.canvas.bottom;
    const int shift = fits ? settings.offset : height - decoder.canvas.bottom - Margin;
    const int row = std::max(decoder.canvas.top + shift, Margin);
    const int chromaRow = settings.format == 1 ? row >> 1 : row;
    return {static_cast<int64_t>(row) * decoder.width, static_cast<int64_t>(chromaRow) * settings.chroma_width};
}

void PlaceRow(int row, bool isEvenRow, int format, placement &to)
{
    const int size = Canvas_Size();
    int from = row * decoder.width;
    for (int column = 0; column < decoder.width; ++column, ++from, ++to.luma) {
        const bool hasChroma = format != 1 || (isEvenRow && column % 2 == 0);
        if (decoder.canvas.plane[3][from]) {
            if (to.luma >= 0 && to.luma < size)
                decoder.canvas.out[0][to.luma] = decoder.canvas.plane[0][from];
            if (hasChroma && to.chroma >= 0 && to.chroma < size) {
                decoder.canvas.out[1][to.chroma] = decoder.canvas.plane[1][from];
                decoder.canvas.out[2][to.chroma] = decoder.canvas.plane[2][from];
            }
        }
        if (hasChroma)
            ++to.chroma;
    }
}

} // namespace

void subtitle_write(SubtitlePlanes *out)
{
    memcpy(out, &decoder.canvas, sizeof *out);
    out->top = decoder.canvas.top;
    out->bottom = decoder.canvas.bottom;
}

void subtitle_write_x(SubtitlePlanes *out)
{
    if (subtitle_is_set_up() && decoder.canvas.plane[0]) {
        const int size = Canvas_Size();
        memset(decoder.canvas.out[0], 255, size);
        memset(decoder.canvas.out[1], 0, size);
        memset(decoder.canvas.out[2], 255, size);

        const host_settings settings = Read_Settings();
        placement to = FirstPosition(settings);
        // The last picture may have been drawn on an earlier, higher canvas.
        const int bottom = std::min(decoder.canvas.bottom, decoder.height - 1);
        for (int row = decoder.canvas.top; row <= bottom; ++row)
            PlaceRow(row, (row - decoder.canvas.top) % 2 == 0, settings.format, to);

        decoder.touched_rows.set();
        unsigned char *packed = decoder.canvas.plane[0];
        for (int i = 0; i < size; ++i)
            for (const unsigned char *plane : decoder.canvas.out)
                *packed++ = plane[i];
    }
    subtitle_write(out);
}
