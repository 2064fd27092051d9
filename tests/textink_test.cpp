#include "render/bitrow.h"
#include "render/textink.h"

#include <gtest/gtest.h>

namespace
{

constexpr std::uint64_t All = ~std::uint64_t{0};

} // namespace

TEST(BitRow, SearchEndsWithTheRow)
{
    const std::uint64_t row[] = {0, std::uint64_t{1} << 63};
    EXPECT_EQ(FindBit(row, 2, 0, true), 127);
    EXPECT_EQ(FindBit(row, 2, 127, false), 128);
    EXPECT_EQ(FindBit(row, 2, 128, true), 128);
    EXPECT_EQ(FindBit(row, 2, 128, false), 128);
    EXPECT_EQ(FindBit(row, 1, 0, true), 64);
}

TEST(TextInk, RowsBesideTheMaskAreLost)
{
    BitMask mask = MakeMask(0, 0, 64, 3);
    for (int row = 0; row < 3; ++row)
        mask.Row(row)[0] = std::uint64_t{1} << row;
    for (const int dy : {-3, -2, -1, 0, 1, 2, 3}) {
        BitMask to = MakeMask(0, 0, 64, 3);
        AddMask(to, mask, 0, dy);
        for (int row = 0; row < 3; ++row) {
            const bool isThere = row - dy >= 0 && row - dy < 3;
            EXPECT_EQ(to.Row(row)[0], isThere ? std::uint64_t{1} << (row - dy) : 0) << dy << " " << row;
        }
    }
}

TEST(TextInk, MaskMovesAcrossWords)
{
    BitMask mask = MakeMask(0, 0, 64, 1);
    mask.Row(0)[0] = All;
    BitMask to = MakeMask(0, 0, 192, 1);
    AddMask(to, mask, 60, 0);
    EXPECT_EQ(to.Row(0)[0], All << 60);
    EXPECT_EQ(to.Row(0)[1], All >> 4);
    EXPECT_EQ(to.Row(0)[2], 0U);
}
