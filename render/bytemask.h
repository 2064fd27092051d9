#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

/** Coverage mask: a byte a pixel, from 0 (not covered) to 255 (covered entirely). */
struct ByteMask {
    int nLeft = 0; ///< of column 0, in the user's coordinates
    int nTop = 0;
    int nColumns = 0;
    int nRows = 0;
    std::vector<std::uint8_t> listBytes;

    const std::uint8_t *Row(int row) const { return listBytes.data() + static_cast<std::size_t>(row) * nColumns; }
    std::uint8_t *Row(int row) { return listBytes.data() + static_cast<std::size_t>(row) * nColumns; }

    /** Clears the mask and gives it another place and size. Reuses its memory. */
    void Reset(int left, int top, int columns, int rows)
    {
        nLeft = left;
        nTop = top;
        nColumns = columns;
        nRows = rows;
        listBytes.assign(static_cast<std::size_t>(columns) * rows, 0);
    }
};

/**
 * @p columns rounded up to whole vectors: loops over such rows run several times as fast as over rows with a remainder.
 */
constexpr int PaddedColumns(int columns)
{
    constexpr int VectorBytes = 16;
    return (columns + VectorBytes - 1) / VectorBytes * VectorBytes;
}

/** Raises each byte of @p to that is below the one of @p from. */
inline void RaiseTo(std::uint8_t *to, const std::uint8_t *from, int count)
{
    for (int i = 0; i < count; ++i)
        to[i] = std::max(to[i], from[i]);
}

/** A mask in which nothing is covered. */
inline ByteMask MakeByteMask(int left, int top, int columns, int rows)
{
    ByteMask mask;
    mask.Reset(left, top, columns, rows);
    return mask;
}
