#include "parsers/colorpicture.h"

#include <algorithm>
#include <cstddef>

std::uint32_t LaidOver(std::uint32_t below, std::uint32_t above)
{
    constexpr std::uint32_t Opaque = 255;
    const std::uint32_t alpha = above >> 24;
    const std::uint32_t alphaBelow = below >> 24;
    if (alpha == Opaque || alphaBelow == 0)
        return above;
    if (alpha == 0)
        return below;
    // Both shares and their sum in 65,025ths.
    const std::uint32_t share = alpha * Opaque;
    const std::uint32_t shareBelow = alphaBelow * (Opaque - alpha);
    const std::uint32_t sum = share + shareBelow;
    std::uint32_t result = (sum + Opaque / 2) / Opaque << 24;
    for (const int shift : {16, 8, 0}) {
        const std::uint32_t color = (above >> shift & 255) * share + (below >> shift & 255) * shareBelow;
        result |= (color + sum / 2) / sum << shift;
    }
    return result;
}

namespace
{

bool IsOfSameCanvas(const ColorPicture &a, const ColorPicture &b)
{
    return a.nCanvasWidth == b.nCanvasWidth && a.nCanvasHeight == b.nCanvasHeight;
}

void LayInto(ColorPicture &below, const ColorPicture &above)
{
    const std::uint32_t *from = above.listPixels.data();
    for (int row = 0; row < above.nRows; ++row) {
        std::uint32_t *to = below.listPixels.data() +
                            static_cast<std::size_t>(above.nTop - below.nTop + row) * below.nColumns +
                            (above.nLeft - below.nLeft);
        for (int column = 0; column < above.nColumns; ++column)
            to[column] = LaidOver(to[column], from[column]);
        from += above.nColumns;
    }
}

} // namespace

ColorPicture LaidTogether(const std::vector<const ColorPicture *> &pictures)
{
    std::vector<const ColorPicture *> shown;
    for (const ColorPicture *picture : pictures) {
        if (!picture || picture->nColumns <= 0 || picture->nRows <= 0)
            continue;
        if (!shown.empty() && !IsOfSameCanvas(*shown.back(), *picture))
            shown.clear();
        shown.push_back(picture);
    }
    if (shown.empty())
        return {};
    if (shown.size() == 1)
        return *shown.front();
    ColorPicture whole = {
        shown.front()->nCanvasWidth, shown.front()->nCanvasHeight, shown.front()->nLeft, shown.front()->nTop, 0, 0, {}};
    int right = 0;
    int bottom = 0;
    for (const ColorPicture *picture : shown) {
        whole.nLeft = std::min(whole.nLeft, picture->nLeft);
        whole.nTop = std::min(whole.nTop, picture->nTop);
        right = std::max(right, picture->nLeft + picture->nColumns);
        bottom = std::max(bottom, picture->nTop + picture->nRows);
    }
    whole.nColumns = right - whole.nLeft;
    whole.nRows = bottom - whole.nTop;
    whole.listPixels.resize(static_cast<std::size_t>(whole.nColumns) * whole.nRows);
    for (const ColorPicture *picture : shown)
        LayInto(whole, *picture);
    return whole;
}
