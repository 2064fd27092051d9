// OverlapIndex, compared with a linear search for the cues that are due, and the texts of files with overlapping cues.
#include "parsers/assparser.h"
#include "parsers/overlapindex.h"
#include "parsers/srtparser.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>
#include <random>

namespace
{

std::vector<int> Search(const std::vector<CueIndex::Span> &spans, std::int64_t ms, std::size_t limit)
{
    std::vector<int> found;
    for (std::size_t i = 0; i < spans.size() && found.size() < limit; ++i) {
        if (spans[i].nFirst <= ms && ms <= spans[i].nLast)
            found.push_back(static_cast<int>(i));
    }
    return found;
}

TEST(OverlapIndex, FindsWhatASearchFinds)
{
    std::mt19937 random(7);
    for (const int count : {0, 1, 2, 15, 16, 17, 300, 5000}) {
        std::vector<CueIndex::Span> spans;
        for (int i = 0; i < count; ++i) {
            const std::int64_t first = random() % 4 == 0 ? random() % 1000 : i;
            spans.push_back({first, first + static_cast<int>(random() % 40) - 5});
        }
        const OverlapIndex index(spans);
        std::vector<int> found = {1, 2, 3};
        for (const std::size_t limit : {64, 2}) {
            std::vector<int> before;
            CueIndex::Span same = {0, -1};
            for (std::int64_t ms = -2; ms < 1100; ++ms) {
                const bool isSame = same.nFirst <= ms && ms <= same.nLast;
                same = index.Find(ms, limit, found);
                ASSERT_EQ(found, Search(spans, ms, limit)) << count << " cues at " << ms;
                ASSERT_TRUE(same.nFirst <= ms && ms <= same.nLast) << count << " cues at " << ms;
                ASSERT_TRUE(!isSame || found == before) << count << " cues at " << ms;
                before = found;
                // Back again: from the end of the time to its beginning.
                if (same.nFirst >= -2) {
                    index.Find(same.nFirst, limit, found);
                    ASSERT_EQ(found, before) << count << " cues at " << ms;
                }
            }
        }
    }
    std::vector<int> found = {1};
    OverlapIndex().Find(0, 1, found);
    EXPECT_TRUE(found.empty());
}

TEST(OverlapIndex, SaysHowLongTheSameAreDue)
{
    const OverlapIndex index({{10, 20}, {15, 40}, {30, 35}});
    std::vector<int> found;
    for (const auto &[ms, first, last] : {std::tuple(12, 10, 14), {15, 15, 20}, {25, 21, 29}, {40, 36, 40}}) {
        const CueIndex::Span same = index.Find(ms, 64, found);
        EXPECT_EQ(same.nFirst, first) << ms;
        EXPECT_EQ(same.nLast, last) << ms;
    }
}

template <typename Parser>
QStringList TextsAt(const std::string &name, const std::string &file, long ms)
{
    const TemporaryFolder folder;
    Parser parser;
    EXPECT_EQ(parser.Open(QString::fromStdString(folder.Write(name, file)), 0), 1);
    return parser.AllDueTexts(ms);
}

QStringList Texts(std::initializer_list<const char *> texts)
{
    QStringList list;
    for (const char *text : texts)
        list.append(QString::fromUtf8(text));
    return list;
}

TEST(DueTexts, AreThoseOfAllCuesInFileOrder)
{
    const std::string file = "1\n00:00:01,000 --> 00:00:05,000\nlower\n\n2\n00:00:00,500 --> 00:00:03,000\nupper\n\n"
                             "3\n00:00:02,000 --> 00:00:03,000\nlower\n";
    EXPECT_EQ(TextsAt<SrtParser>("a.srt", file, 700), Texts({"upper"}));
    EXPECT_EQ(TextsAt<SrtParser>("a.srt", file, 1000), Texts({"lower", "upper"}));
    EXPECT_EQ(TextsAt<SrtParser>("a.srt", file, 2500), Texts({"lower", "upper"})) << "each text once";
    EXPECT_EQ(TextsAt<SrtParser>("a.srt", file, 4000), Texts({"lower"}));
    EXPECT_EQ(TextsAt<SrtParser>("a.srt", file, 6000), Texts({}));
}

TEST(DueTexts, AreNoneAtTheStart)
{
    EXPECT_EQ(TextsAt<SrtParser>("a.srt", "00:00:00,000 --> 00:00:05,000\ntext\n", 0), Texts({}));
    EXPECT_EQ(TextsAt<SrtParser>("a.srt", "00:00:00,000 --> 00:00:05,000\ntext\n", 1), Texts({"text"}));
}

TEST(DueTexts, AreWholeWhereABlankLineSplitsThem)
{
    const std::string file =
        "1\n00:00:01,000 --> 00:00:05,000\nfirst\n\nsecond\n\n\n2\n00:00:07,000 --> 00:00:09,000\nnext\n";
    EXPECT_EQ(TextsAt<SrtParser>("a.srt", file, 2000), Texts({"first\nsecond"}));
    EXPECT_EQ(TextsAt<SrtParser>("a.srt", file, 8000), Texts({"next"}));
}

TEST(DueTexts, AreThoseOfAScriptsEvents)
{
    const std::string file = "[Script Info]\nScriptType: v4.00+\n[Events]\n"
                             "Dialogue: 0,0:00:01.00,0:00:05.00,Default,,0,0,0,,one\n"
                             "Dialogue: 0,0:00:02.00,0:00:05.00,Default,,0,0,0,,two\n";
    EXPECT_EQ(TextsAt<AssParser>("a.ass", file, 1500), Texts({"one"}));
    EXPECT_EQ(TextsAt<AssParser>("a.ass", file, 3000), Texts({"one", "two"}));
}

TEST(DueTexts, AreAsManyAsMayShow)
{
    std::string file;
    for (int i = 0; i < 100; ++i)
        file += "00:00:01,000 --> 00:00:05,000\ncue " + std::to_string(i) + "x\n\n";
    EXPECT_EQ(TextsAt<SrtParser>("a.srt", file, 3000).size(), MaxDueCues);
}

} // namespace
