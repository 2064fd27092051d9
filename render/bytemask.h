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
};

/** Nothing covered. */
inline ByteMask MakeByteMask(int left, int top, int columns, int rows)
{
    ByteMask mask = {left, top, columns, rows, {}};
    mask.listBytes.assign(static_cast<std::size_t>(columns) * rows, 0);
    return mask;
}

/** A quotient of a product of two bytes, rounded to nearest. */
constexpr int Over255(int product)
{
    return (product + 128 + ((product + 128) >> 8)) >> 8;
}
