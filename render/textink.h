#pragma once

#include "render/polygonfiller.h"

#include <array>

/** The disc of radius 2 without its centre, as offsets of the text: where the outline is drawn. */
struct Offset {
    signed char nX;
    signed char nY;
};
constexpr std::array<Offset, 20> OutlineOffsets = {{
    {-1, -2}, {0, -2}, {1, -2}, {-2, -1}, {-1, -1}, {0, -1}, {1, -1}, {2, -1}, {-2, 0}, {-1, 0},
    {1, 0},   {2, 0},  {-2, 1}, {-1, 1},  {0, 1},   {1, 1},  {2, 1},  {-1, 2}, {0, 2},  {1, 2},
}};
constexpr int OutlineRadius = 2;

/** Where a text's two colours are, in pixels of the frame; both masks have the same place and size. */
struct TextInk {
    BitMask text;
    BitMask outline; ///< the text's pixels may or may not be in it
};

/** An empty mask. */
BitMask MakeMask(int left, int top, int columns, int rows);

/** ORs a mask, moved, into another; rows that fall beside it are lost, columns must not. */
void AddMask(BitMask &to, const BitMask &mask, int dx, int dy);

/** ORs into @p outline what lies within the disc round @p text, a mask of the same place and size. */
void AddDisc(BitMask &outline, const BitMask &text);
