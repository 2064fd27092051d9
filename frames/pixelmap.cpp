#include "frames/pixelmap.h"

#include <algorithm>
#include <climits>

namespace
{

/** Calls @p call(row, column, colour, weight) for each drawn pixel of a picture. */
template <typename Call>
void ForPicture(const ShownSubtitle &shown, Call call)
{
    for (const PictureBlock *block = shown.pPicture; block < shown.pPicture + shown.nPictureCount; ++block) {
        for (int i = 0; i < BlockPixels && block->nColumn + i < shown.nFrameWidth; ++i) {
            if (block->weights[i] != shown.nUntouched)
                call(block->nRow + shown.nOffset, block->nColumn + i, &block->colors[std::size_t{3} * i],
                     block->weights[i]);
        }
    }
}

} // namespace

void PixelMap::Build(const ShownSubtitle &shown, const Orientation &orientation)
{
    m_listRows.clear();
    m_listPixels.clear();
    m_listColors.clear();
    m_numbers.clear();
    m_nLastNumber = 0;
    m_bOpaque = true;

    int top = INT_MAX;
    int bottom = INT_MIN;
    const auto findRows = [&](int row, int column, auto...) {
        orientation.ToFrame(row, column);
        top = std::min(top, row);
        bottom = std::max(bottom, row);
    };
    ForPicture(shown, findRows);
    if (top > bottom)
        return;
    m_nTop = top;
    m_listRows.assign(bottom - top + 1, {INT_MAX, 0, 0});

    const auto findColumns = [&](int row, int column, auto...) {
        orientation.ToFrame(row, column);
        Row &found = m_listRows[row - top];
        found.nFirst = std::min(found.nFirst, column);
        found.nEnd = std::max(found.nEnd, column + 1);
    };
    ForPicture(shown, findColumns);
    std::size_t count = 0;
    for (Row &row : m_listRows) {
        row.nFirst = std::min(row.nFirst, row.nEnd);
        row.nAt = count;
        count += row.nEnd - row.nFirst;
    }
    m_listPixels.assign(count, {0, 0});

    ForPicture(shown, [&](int row, int column, const std::uint8_t *color, int weight) {
        orientation.ToFrame(row, column);
        const Row &found = m_listRows[row - top];
        m_listPixels[found.nAt + column - found.nFirst] = {NumberOf({color[0], color[1], color[2]}),
                                                           static_cast<std::uint32_t>(weight)};
        m_bOpaque = m_bOpaque && weight == 255;
    });
}

std::uint32_t PixelMap::NumberOf(const std::array<std::uint8_t, 3> &color)
{
    const std::uint32_t key = std::uint32_t{color[0]} << 16 | std::uint32_t{color[1]} << 8 | color[2];
    // Neighbouring pixels mostly have the same colour.
    if (m_nLastNumber > 0 && key == m_nLastColor)
        return m_nLastNumber;
    const auto [at, isNew] = m_numbers.try_emplace(key, static_cast<std::uint32_t>(m_listColors.size() + 1));
    if (isNew)
        m_listColors.push_back(color);
    m_nLastColor = key;
    m_nLastNumber = at->second;
    return at->second;
}
