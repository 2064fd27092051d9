#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/** A byte for each pixel: how much of it is covered, 255 for the whole. */
struct ByteMask {
    int nLeft = 0; ///< of column 0, in the coordinates of whoever uses it
    int nTop = 0;
    int nColumns = 0;
    int nRows = 0;
    std::vector<std::uint8_t> listBytes;

    const std::uint8_t *Row(int row) const { return listBytes.data() + static_cast<std::size_t>(row) * nColumns; }
    std::uint8_t *Row(int row) { return listBytes.data() + static_cast<std::size_t>(row) * nColumns; }

    /** Nothing covered, in the memory that it has. */
    void Reset(int left, int top, int columns, int rows)
    {
        nLeft = left;
        nTop = top;
        nColumns = columns;
        nRows = rows;
        listBytes.assign(static_cast<std::size_t>(columns) * rows, 0);
    }
};

/** So many columns or a few more: rows of whole vectors are worked on several times as fast as those with a rest. */
constexpr int WholeVectors(int columns)
{
    constexpr int VectorBytes = 16;
    return (columns + VectorBytes - 1) / VectorBytes * VectorBytes;
}

/** Nothing covered. */
inline ByteMask MakeByteMask(int left, int top, int columns, int rows)
{
    ByteMask mask;
    mask.Reset(left, top, columns, rows);
    return mask;
}
