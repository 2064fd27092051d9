#include "vobsub/visiblepicture.h"

#include "vobsub/decoderstate.h"
#include "vobsub/decoderview.h"

#include <algorithm>
#include <cstddef>

ColorPicture VisiblePicture()
{
    ColorPicture picture;
    const RowRange rows = decoder.canvas.plane[0] ? Visible_Rows() : RowRange();
    if (rows.nCount <= 0)
        return picture;
    const std::size_t width = decoder.width;
    std::size_t left = width;
    std::size_t end = 0;
    for (int row = rows.nFirst; row < rows.End(); ++row) {
        const unsigned char *alpha = decoder.canvas.plane[3] + row * width;
        for (std::size_t column = 0; column < width; ++column) {
            if (alpha[column] != 0) {
                left = std::min(left, column);
                end = std::max(end, column + 1);
            }
        }
    }
    picture = {decoder.width,
               decoder.height,
               static_cast<int>(left),
               rows.nFirst,
               static_cast<int>(end - left),
               rows.nCount,
               {}};
    picture.listPixels.reserve((end - left) * rows.nCount);
    // With Subt_Color 0 the palette is black and white, in Y only.
    const bool isGrey = Read_Settings().color == 0;
    for (int row = rows.nFirst; row < rows.End(); ++row) {
        for (std::size_t at = row * width + left; at < row * width + end; ++at) {
            // The planes Y, U and V hold the palette's bytes unconverted: blue, green and red.
            const std::uint32_t blue = decoder.canvas.plane[0][at];
            const std::uint32_t green = isGrey ? blue : decoder.canvas.plane[1][at];
            const std::uint32_t red = isGrey ? blue : decoder.canvas.plane[2][at];
            const std::uint32_t contrast = decoder.canvas.plane[3][at] / 16; // 0 to 15
            picture.listPixels.push_back(contrast * 17 << 24 | red << 16 | green << 8 | blue);
        }
    }
    return picture;
}
