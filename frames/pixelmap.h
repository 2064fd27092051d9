#pragma once

#include "frames/orientation.h"
#include "render/shownsubtitle.h"

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

/** The pixels of a frame that a picture covers. Each row is stored from its first to its last covered pixel. */
class PixelMap
{
public:
    struct Pixel {
        std::uint32_t nColor; ///< 0 if the pixel is not covered, else the number of its colour
        std::uint32_t nWeight;
    };
    struct Row {
        int nFirst = 0;
        int nEnd = 0;
        std::size_t nAt = 0; ///< index of the first in the list of pixels
    };

    void Build(const ShownSubtitle &shown, const Orientation &orientation);

    bool IsEmpty() const { return m_listRows.empty(); }
    int Top() const { return m_nTop; }
    int Bottom() const { return m_nTop + static_cast<int>(m_listRows.size()) - 1; }
    /** For any row of the frame; empty if nothing in it is covered. */
    Row RowAt(int row) const { return row < Top() || row > Bottom() ? Row() : m_listRows[row - m_nTop]; }
    /** The pixels of a row from nFirst on. */
    const Pixel *Pixels(const Row &row) const { return m_listPixels.data() + row.nAt; }
    Pixel At(const Row &row, int column) const
    {
        return column < row.nFirst || column >= row.nEnd ? Pixel{0, 0} : m_listPixels[row.nAt + column - row.nFirst];
    }
    /** Red, green and blue of each colour, beginning with number 1. */
    const std::vector<std::array<std::uint8_t, 3>> &Colors() const { return m_listColors; }
    /** True if every covered pixel has weight 255. */
    bool IsOpaque() const { return m_bOpaque; }

private:
    std::uint32_t NumberOf(const std::array<std::uint8_t, 3> &color);

    int m_nTop = 0;
    bool m_bOpaque = true;
    std::vector<Row> m_listRows;
    std::vector<Pixel> m_listPixels;
    std::vector<std::array<std::uint8_t, 3>> m_listColors;
    std::unordered_map<std::uint32_t, std::uint32_t> m_numbers; ///< number of each colour
    std::uint32_t m_nLastColor = 0;
    std::uint32_t m_nLastNumber = 0; ///< number of m_nLastColor; 0 for none
};
