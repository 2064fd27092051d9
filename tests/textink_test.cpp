#include "render/textink.h"

#include <gtest/gtest.h>

namespace
{

constexpr std::uint64_t All = ~std::uint64_t{0};

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
