// Rows of a frame that something else takes up, and how a subtitle is moved clear of them.
#include "render/takenrows.h"

#include <gtest/gtest.h>
#include <random>

namespace
{

bool IsFree(const std::vector<RowSpan> &spans, const RowSpan &rows)
{
    for (const RowSpan &span : spans) {
        for (int row = span.nTop; row < span.nEnd; ++row) {
            if (row >= rows.nTop && row < rows.nEnd)
                return false;
        }
    }
    return true;
}

/** Tries all moves, upwards first. */
int PlainEvasion(const std::vector<RowSpan> &spans, const RowSpan &rows, const RowSpan &area)
{
    if (IsFree(spans, rows))
        return 0;
    for (int move = -1; rows.nTop + move >= area.nTop; --move) {
        if (IsFree(spans, {rows.nTop + move, rows.nEnd + move}))
            return move;
    }
    for (int move = 1; rows.nEnd + move <= area.nEnd; ++move) {
        if (IsFree(spans, {rows.nTop + move, rows.nEnd + move}))
            return move;
    }
    return 0;
}

int PlainGap(const std::vector<RowSpan> &spans, const RowSpan &area)
{
    int tallest = 0;
    for (int top = area.nTop; top < area.nEnd; ++top) {
        int end = top;
        while (end < area.nEnd && IsFree(spans, {end, end + 1}))
            ++end;
        tallest = std::max(tallest, end - top);
    }
    return tallest;
}

} // namespace

TEST(TakenRows, WithoutAnyNothingMoves)
{
    const TakenRows none({{5, 5}, {9, 3}});
    EXPECT_TRUE(none.IsEmpty());
    EXPECT_TRUE(none == TakenRows());
    EXPECT_EQ(none.Evasion({10, 20}, {0, 40}), 0);
    EXPECT_TRUE(none.TallestGap({3, 40}) == (RowSpan{3, 40}));
}

TEST(TakenRows, TheyAreEqualByWhatTheyHold)
{
    const TakenRows taken({{30, 40}, {5, 10}});
    EXPECT_TRUE(taken == TakenRows({{5, 10}, {0, 0}, {30, 40}}));
    EXPECT_FALSE(taken == TakenRows({{5, 10}}));
    EXPECT_FALSE(taken == TakenRows());
    EXPECT_FALSE(TakenRows() == taken);
}

TEST(TakenRows, RowsMoveUpWhereThereIsRoomAndElseDown)
{
    const TakenRows taken({{20, 30}, {60, 70}});
    EXPECT_EQ(taken.Evasion({30, 60}, {0, 100}), 0) << "between";
    EXPECT_EQ(taken.Evasion({65, 75}, {0, 100}), -15);
    EXPECT_EQ(taken.Evasion({55, 90}, {0, 100}), 0) << "too high for any gap";
    EXPECT_EQ(taken.Evasion({55, 87}, {0, 102}), 15) << "no room above";
    EXPECT_EQ(taken.Evasion({25, 45}, {0, 100}), -25);
    EXPECT_EQ(taken.Evasion({25, 45}, {1, 100}), 5) << "not out of the area";
    EXPECT_EQ(taken.Evasion({40, 61}, {0, 100}), -1);
}

TEST(TakenRows, OfTwoGapsTheLowerCounts)
{
    EXPECT_TRUE(TakenRows({{20, 30}}).TallestGap({0, 50}) == (RowSpan{30, 50}));
    EXPECT_TRUE(TakenRows({{20, 31}}).TallestGap({0, 50}) == (RowSpan{0, 20}));
    EXPECT_TRUE(TakenRows({{0, 100}}).TallestGap({0, 50}).IsEmpty());
}

TEST(TakenRows, AnyRowsAreAsPlain)
{
    std::mt19937 random(5);
    const auto number = [&](int count) { return static_cast<int>(random() % count); };
    for (int round = 0; round < 5000; ++round) {
        std::vector<RowSpan> spans(number(5));
        for (RowSpan &span : spans) {
            span.nTop = number(60);
            span.nEnd = span.nTop + number(15);
        }
        const RowSpan area = {number(5), 50 + number(15)};
        const int top = area.nTop + number(30);
        const RowSpan rows = {top, std::min(top + 1 + number(25), area.nEnd)};
        const TakenRows taken(spans);
        ASSERT_EQ(taken.Evasion(rows, area), PlainEvasion(spans, rows, area)) << round;
        ASSERT_EQ(std::max(0, taken.TallestGap(area).Count()), PlainGap(spans, area)) << round;
    }
}
