#pragma once

#include "frames/orientation.h"
#include "render/shownsubtitle.h"

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

/** The pixels of a frame that a picture covers. Each row knows those from its first to its last. */
class PixelMap
{
public:
    struct Pixel {
        std::uint32_t nColor; ///< 0 where the frame's pixel stays, else the number of a colour
        std::uint32_t nWeight;
    };
    struct Row {
        int nFirst = 0;
        int nEnd = 0;
        std::size_t nAt = 0; ///< of the first in the list of pixels
    };

    void Build(const ShownSubtitle &shown, const Orientation &orientation);

    bool IsEmpty() const { return m_listRows.empty(); }
    int Top() const { return m_nTop; }
    int Bottom() const { return m_nTop + static_cast<int>(m_listRows.size()) - 1; }
    /** Of any row of the frame; empty where nothing is covered. */
    Row RowAt(int row) const { return row < Top() || row > Bottom() ? Row() : m_listRows[row - m_nTop]; }
    /** Those of a row, from its first on. */
    const Pixel *Pixels(const Row &row) const { return m_listPixels.data() + row.nAt; }
    Pixel At(const Row &row, int column) const
    {
        return column < row.nFirst || column >= row.nEnd ? Pixel{0, 0} : m_listPixels[row.nAt + column - row.nFirst];
    }
    /** Red, green and blue of the colours from number 1 on. */
    const std::vector<std::array<std::uint8_t, 3>> &Colors() const { return m_listColors; }
    /** Every covered pixel has the whole weight. */
    bool IsOpaque() const { return m_bOpaque; }

private:
    std::uint32_t NumberOf(const std::array<std::uint8_t, 3> &color);

    int m_nTop = 0;
    bool m_bOpaque = true;
    std::vector<Row> m_listRows;
    std::vector<Pixel> m_listPixels;
    std::vector<std::array<std::uint8_t, 3>> m_listColors;
    std::unordered_map<std::uint32_t, std::uint32_t> m_numbers; ///< of the colours
    std::uint32_t m_nLastColor = 0;
    std::uint32_t m_nLastNumber = 0; ///< of that colour; 0 for none
};
