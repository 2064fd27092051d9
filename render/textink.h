#pragma once

#include "render/polygonfiller.h"

#include <array>
#include <cstdint>

/** Offset of a draw, in pixels. */
struct Offset {
    signed char nX;
    signed char nY;
};
/** Where the text is drawn to make its outline: a disc of radius 2 without the centre. */
constexpr std::array<Offset, 20> OutlineOffsets = {{
    {-1, -2}, {0, -2}, {1, -2}, {-2, -1}, {-1, -1}, {0, -1}, {1, -1}, {2, -1}, {-2, 0}, {-1, 0},
    {1, 0},   {2, 0},  {-2, 1}, {-1, 1},  {0, 1},   {1, 1},  {2, 1},  {-1, 2}, {0, 2},  {1, 2},
}};
constexpr int OutlineRadius = 2;

/**
 * The pixels of a text's two colours, in coordinates of the frame. Both masks have the same place and size; nLeft is a
 * multiple of 64.
 */
struct TextInk {
    BitMask text;
    BitMask outline; ///< the text's pixels may or may not be in it
};

/**
 * The 64 columns of a row from @p column on, the first as bit 0. Also reads the word after the one that has that
 * column.
 */
inline std::uint64_t BitsFrom(const std::uint64_t *row, int column)
{
    const unsigned word = static_cast<unsigned>(column) / 64;
    const unsigned shift = static_cast<unsigned>(column) % 64;
    return row[word] >> shift | row[word + 1] << 1 << (63 - shift);
}

/** The pixel that a coordinate in 64ths is rounded to. */
inline int RoundToPixel(int fixed)
{
    return (fixed + 32) >> 6;
}

/** An empty mask. */
BitMask MakeMask(int left, int top, int columns, int rows);

/** ORs a mask, moved, into another. Rows outside the target are clipped. Precondition: all columns lie inside it. */
void AddMask(BitMask &to, const BitMask &mask, int dx, int dy);

/** ORs into @p outline the disc of OutlineOffsets around each pixel of @p text, a mask of the same place and size. */
void AddDisc(BitMask &outline, const BitMask &text);
