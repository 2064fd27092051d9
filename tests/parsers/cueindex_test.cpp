#include "parsers/cueindex.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace
{

using Spans = std::vector<CueIndex::Span>;

int FindPlainly(const Spans &cues, std::int64_t ms)
{
    for (std::size_t i = 0; i < cues.size(); ++i)
        if (cues[i].nFirst <= ms && ms <= cues[i].nLast)
            return static_cast<int>(i);
    return -1;
}

CueIndex IndexOf(const Spans &cues)
{
    CueIndex::Builder builder;
    for (const CueIndex::Span &cue : cues)
        builder.Add(cue);
    return CueIndex(std::move(builder));
}

} // namespace

TEST(CueIndex, NothingIsDueWithoutCues)
{
    EXPECT_EQ(CueIndex().Find(1), -1);
    EXPECT_EQ(IndexOf({}).Find(1), -1);
}

TEST(CueIndex, BothEndsCount)
{
    const CueIndex index = IndexOf({{1000, 2000}});
    EXPECT_EQ(index.Find(999), -1);
    EXPECT_EQ(index.Find(1000), 0);
    EXPECT_EQ(index.Find(2000), 0);
    EXPECT_EQ(index.Find(2001), -1);
}

TEST(CueIndex, FirstInTheListWinsHoweverItsTimesLie)
{
    const CueIndex index = IndexOf({{500, 600}, {100, 1000}, {550, 700}, {0, 2000}});
    EXPECT_EQ(index.Find(550), 0);
    EXPECT_EQ(index.Find(601), 1);
    EXPECT_EQ(index.Find(1001), 3);
    EXPECT_EQ(index.Find(50), 3);
}

TEST(CueIndex, EndBeforeStartIsNeverDue)
{
    const CueIndex index = IndexOf({{10, 9}, {10, 10}, {11, 5}});
    EXPECT_EQ(index.Find(9), -1);
    EXPECT_EQ(index.Find(10), 1);
    EXPECT_EQ(index.Find(11), -1);
}

TEST(CueIndex, TimesOfAnySize)
{
    constexpr std::int64_t Least = std::numeric_limits<int>::min();
    constexpr std::int64_t Greatest = std::numeric_limits<int>::max();
    const CueIndex index = IndexOf({{Least, Least}, {Greatest, Greatest + 3000}, {Least, Greatest}});
    EXPECT_EQ(index.Find(Least), 0);
    EXPECT_EQ(index.Find(Least + 1), 2);
    EXPECT_EQ(index.Find(Greatest), 1);
    EXPECT_EQ(index.Find(Greatest + 3000), 1);
    EXPECT_EQ(index.Find(Greatest + 3001), -1);
}

TEST(CueIndex, FindsAtRandomWhatAPlainWalkFinds)
{
    std::mt19937 random(5);
    for (int round = 0; round < 2000; ++round) {
        const int range = 1 + static_cast<int>(random() % 60);
        Spans cues(random() % 12);
        for (CueIndex::Span &cue : cues) {
            cue.nFirst = static_cast<int>(random() % range);
            cue.nLast = cue.nFirst + static_cast<int>(random() % 20) - 3;
        }
        const CueIndex index = IndexOf(cues);
        for (int ms = -5; ms < range + 25; ++ms)
            ASSERT_EQ(index.Find(ms), FindPlainly(cues, ms)) << round << " " << ms;
    }
}
