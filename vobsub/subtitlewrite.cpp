#include "vobsub/subtitledecoder.h"

#include "vobsub/decoderstate.h"

#include <algorithm>
#include <cstring>

namespace
{

/** Position in the output planes: luma by pixel, chroma as many steps as the chroma format has samples. */
struct placement {
    int64_t luma;
    int64_t chroma;
};

placement FirstPosition()
{
    constexpr int Margin = 10; // rows that stay free at the picture's top and bottom
    const int height = Coded_Picture_Height;
    const bool fits = Subt_Offset < height - Margin - mediadata.bottom;
    const int shift = fits ? Subt_Offset : height - mediadata.bottom - Margin;
    const int row = std::max(mediadata.top + shift, Margin);
    const int chromaRow = chroma_format == 1 ? row >> 1 : row;
    return {static_cast<int64_t>(row) * Coded_Picture_Width, static_cast<int64_t>(chromaRow) * Chroma_Width};
}

void PlaceRow(int row, bool isEvenRow, placement &to)
{
    const int size = Canvas_Size();
    int from = row * Coded_Picture_Width;
    for (int column = 0; column < Coded_Picture_Width; ++column, ++from, ++to.luma) {
        const bool hasChroma = chroma_format != 1 || (isEvenRow && column % 2 == 0);
        if (mediadata.plane[3][from]) {
            if (to.luma >= 0 && to.luma < size)
                mediadata.out[0][to.luma] = mediadata.plane[0][from];
            if (hasChroma && to.chroma >= 0 && to.chroma < size) {
                mediadata.out[1][to.chroma] = mediadata.plane[1][from];
                mediadata.out[2][to.chroma] = mediadata.plane[2][from];
            }
        }
        if (hasChroma)
            ++to.chroma;
    }
}

} // namespace

void subtitle_write(SubtitlePlanes *out)
{
    memcpy(out, &mediadata, sizeof *out);
    out->top = mediadata.top;
    out->bottom = mediadata.bottom;
}

void subtitle_write_x(SubtitlePlanes *out)
{
    if (subtitle_is_set_up() && mediadata.plane[0]) {
        const int size = Canvas_Size();
        memset(mediadata.out[0], 255, size);
        memset(mediadata.out[1], 0, size);
        memset(mediadata.out[2], 255, size);

        placement to = FirstPosition();
        // The rows may be those of a picture on an earlier, higher canvas.
        const int bottom = std::min(mediadata.bottom, Coded_Picture_Height - 1);
        for (int row = mediadata.top; row <= bottom; ++row)
            PlaceRow(row, (row - mediadata.top) % 2 == 0, to);

        unsigned char *packed = mediadata.plane[0];
        for (int i = 0; i < size; ++i)
            for (const unsigned char *plane : mediadata.out)
                *packed++ = plane[i];
    }
    subtitle_write(out);
}
