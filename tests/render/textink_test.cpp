// Bit masks: adding and spreading them, each against the same work done pixel by pixel.
#include "render/textink.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <utility>

namespace
{

using Pixels = std::set<std::pair<int, int>>; ///< row, column

Pixels PixelsOf(const BitMask &mask)
{
    Pixels pixels;
    for (int row = 0; row < mask.nRows; ++row)
        for (int column = 0; column < 64 * mask.nWords; ++column)
            if (mask.Row(row)[column / 64] >> (column % 64) & 1)
                pixels.insert({mask.nTop + row, mask.nLeft + column});
    return pixels;
}

BitMask MaskOf(const Pixels &pixels, int left, int top, int columns, int rows)
{
    BitMask mask = MakeMask(left, top, columns, rows);
    for (const auto &[row, column] : pixels)
        mask.Row(row - top)[(column - left) / 64] |= std::uint64_t{1} << ((column - left) % 64);
    return mask;
}

Pixels SomePixels(std::mt19937 &random, int left, int top, int columns, int rows)
{
    Pixels pixels;
    for (int n = 1 + static_cast<int>(random() % 6); n > 0; --n)
        pixels.insert({top + static_cast<int>(random() % rows), left + static_cast<int>(random() % columns)});
    return pixels;
}

} // namespace

TEST(BitRow, BitsComeOfTwoWords)
{
    const std::uint64_t row[] = {0x8000000000000001, 0x5, 0};
    EXPECT_EQ(BitsFrom(row, 0), row[0]);
    EXPECT_EQ(BitsFrom(row, 1), 0xC000000000000000);
    EXPECT_EQ(BitsFrom(row, 63), 0xBU);
    EXPECT_EQ(BitsFrom(row, 64), row[1]);
    EXPECT_EQ(BitsFrom(row, 66), 1U);
    EXPECT_EQ(BitsFrom(row, 127), 0U);
}

TEST(AddMask, MovesAndClipsRows)
{
    std::mt19937 random(2);
    for (int n = 0; n < 2000; ++n) {
        const Pixels before = SomePixels(random, 10, 0, 300, 8);
        const Pixels added = SomePixels(random, 0, 0, 100, 4);
        const int dx = 10 + static_cast<int>(random() % 137);
        const int dy = static_cast<int>(random() % 14) - 5;
        BitMask mask = MaskOf(before, 10, 0, 300, 8);
        AddMask(mask, MaskOf(added, 0, 0, 100, 4), dx, dy);
        Pixels expected = before;
        for (const auto &[row, column] : added)
            if (row + dy >= 0 && row + dy < 8)
                expected.insert({row + dy, column + dx});
        EXPECT_EQ(PixelsOf(mask), expected);
    }
}

TEST(AddDisc, AddsAllOffsetsOfEachPixel)
{
    std::mt19937 random(3);
    for (int n = 0; n < 2000; ++n) {
        const Pixels pixels = SomePixels(random, OutlineRadius, OutlineRadius, 180, 6);
        const int columns = 180 + 2 * OutlineRadius;
        const int rows = 6 + 2 * OutlineRadius;
        BitMask outline = MakeMask(0, 0, columns, rows);
        AddDisc(outline, MaskOf(pixels, 0, 0, columns, rows));
        Pixels expected = pixels; // the offsets lack {0, 0}, but the pixel itself is set
        for (const auto &[row, column] : pixels)
            for (const Offset &offset : OutlineOffsets)
                expected.insert({row + offset.nY, column + offset.nX});
        EXPECT_EQ(PixelsOf(outline), expected);
    }
}
