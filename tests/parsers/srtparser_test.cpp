#include "parsers/srtparser.h"
#include "support/srtparserpeer.h"
#include "support/temporaryfolder.h"

#include <climits>
#include <gtest/gtest.h>
#include <ostream>
#include <vector>

namespace
{

class SrtParserTest : public testing::Test
{
protected:
    void Open(const std::string &content)
    {
        const std::string path = m_folder.Write("file.srt", content);
        EXPECT_NE(m_parser.Open(QString::fromStdString(path), 0), 0);
    }

    std::string At(long ms) { return m_parser.GetSubtitle(ms).toStdString(); }

    TemporaryFolder m_folder;
    SrtParser m_parser;
};

} // namespace

TEST_F(SrtParserTest, ReadsTheUsualLayout)
{
    Open("1\n00:00:01,000 --> 00:00:02,000\nHello\nWorld\n\n2\n00:00:03,000 --> 00:00:04,000\nBye\n");
    EXPECT_EQ(At(999), "");
    EXPECT_EQ(At(1000), "Hello\nWorld");
    EXPECT_EQ(At(2000), "Hello\nWorld");
    EXPECT_TRUE(m_parser.GetSubtitle(2001).isNull());
    EXPECT_EQ(At(3000), "Bye");
    EXPECT_EQ(At(4000), "Bye");
    EXPECT_EQ(At(4001), "");
    EXPECT_TRUE(m_parser.IsTextSub());
}

TEST_F(SrtParserTest, EveryBlankLineAddsAnEmptyCueAfterItsOwn)
{
    Open("1\n00:00:01,000 --> 00:00:02,000\nHello\nWorld\n\n2\n00:00:03,000 --> 00:00:04,000\nBye");
    const SrtParserPeer peer(m_parser);
    const QList<SrtSubtitleItem> &items = peer.Items();
    ASSERT_EQ(items.size(), 3);
    const SrtSubtitleItem expected[] = {
        {1000, 2000, QStringLiteral("Hello\nWorld")}, {1000, 2000, QString()}, {3000, 4000, QStringLiteral("Bye")}};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(items[i].nStart, expected[i].nStart);
        EXPECT_EQ(items[i].nEnd, expected[i].nEnd);
        EXPECT_EQ(items[i].strText, expected[i].strText);
    }
}

/** A file, and the text that is due at some times. */
struct SrtCase {
    const char *pName;
    const char *pFile;
    struct Due {
        long nTime;
        const char *pText; ///< null for a null string
    };
    std::vector<Due> listDue;

    friend void PrintTo(const SrtCase &file, std::ostream *out) { *out << file.pName; }
};

class SrtFileTest : public SrtParserTest, public testing::WithParamInterface<SrtCase>
{
};

const SrtCase SrtCases[] = {
    {"NothingIsDueAtTimeZero", "00:00:00,000 --> 00:00:02,000\nHello\n", {{0, nullptr}, {-5, nullptr}, {1, "Hello"}}},
    // The cue that the blank line makes has the times of the time line, as "Late" has. It comes first, so it wins.
    {"BlankLineMakesACueThatHidesALaterOne", "00:00:01,000 --> 00:00:02,000\n\n1\nLate\n", {{1500, ""}}},
    {"EndOfTextTrailingSpacesAreKept",
     "00:00:01,000 --> 00:00:02,000\n  first  \n  second  \n   \nthird\n",
     {{1500, "first\n  second  \n   \nthird"}}},
    {"IndentedFirstLineIsTrimmedLaterOnesAreNot",
     "00:00:01,000 --> 00:00:02,000\n   indented\n   indented\n",
     {{1500, "indented\n   indented"}}},
    {"WhiteSpaceLineOpensABlock", "00:00:01,000 --> 00:00:02,000\n   \nfoo\n", {{1500, "\nfoo"}}},
    {"NumberIsTakenForAnIndex", "00:00:01,000 --> 00:00:02,000\n42\ntext\n7\nmore\n", {{1500, "text"}}},
    {"NumberWithMoreIsText", "00:00:01,000 --> 00:00:02,000\n1999!\n", {{1500, "1999!"}}},
    {"NumberBeyond32BitsIsText", "00:00:01,000 --> 00:00:02,000\n99999999999\n", {{1500, "99999999999"}}},
    {"TimeLineEndsABlockAndStartsAnother",
     "00:00:01,000 --> 00:00:02,000\nfirst\n00:00:03,000 --> 00:00:04,000\nsecond\n",
     {{1500, "first"}, {3500, "second"}}},
    {"ArrowAtTheStartIsText", "00:00:01,000 --> 00:00:02,000\n--> here\n--> there\n", {{1500, "--> here\n--> there"}}},
    {"IndentedArrowEndsABlockAndOpensAnother", "00:00:01,000 --> 00:00:02,000\nhere\n --> there\n", {{1500, "here"}}},
    {"TimeLineWithoutTextAddsNoCue",
     "1\n00:00:01,000 --> 00:00:02,000\n2\n00:00:03,000 --> 00:00:04,000\ntext\n",
     {{1500, nullptr}, {3500, "text"}}},
    {"CoordinatesSpoilTheEndTime",
     "00:00:01,000 --> 00:00:02,000 X1:100 X2:200\ntext\n",
     {{1000, nullptr}, {1500, nullptr}}},
    {"TextBeforeAnyTimeLineNeverShows",
     "lost\n00:00:01,000 --> 00:00:02,000\nfound\n",
     {{1, nullptr}, {1000, "found"}}},
    {"FirstInTheFileWinsAnOverlap",
     "00:00:01,000 --> 00:00:05,000\nlong\n\n00:00:02,000 --> 00:00:03,000\nshort\n",
     {{2500, "long"}}},
    {"FirstInTheFileWinsThoughItStartsLater",
     "00:00:02,000 --> 00:00:03,000\nshort\n\n00:00:01,000 --> 00:00:05,000\nlong\n",
     {{2500, "short"}, {3001, "long"}}},
    {"CueThatEndsBeforeItsStartNeverShows",
     "00:00:03,000 --> 00:00:02,000\ntext\n",
     {{2500, nullptr}, {3000, nullptr}}},
    {"MarkupIsKept", "00:00:01,000 --> 00:00:02,000\n<i>x</i> {\\an8}\n", {{1500, "<i>x</i> {\\an8}"}}},
};

INSTANTIATE_TEST_SUITE_P(Files, SrtFileTest, testing::ValuesIn(SrtCases),
                         [](const auto &info) { return info.param.pName; });

TEST_P(SrtFileTest, ShowsTheText)
{
    Open(GetParam().pFile);
    for (const SrtCase::Due &due : GetParam().listDue) {
        const QString text = m_parser.GetSubtitle(due.nTime);
        EXPECT_EQ(text.isNull(), !due.pText) << due.nTime;
        EXPECT_EQ(text.toStdString(), due.pText ? due.pText : "") << due.nTime;
    }
}

TEST_F(SrtParserTest, SecondOpenReplacesTheCues)
{
    Open("00:00:01,000 --> 00:00:02,000\nfirst\n");
    Open("00:00:03,000 --> 00:00:04,000\nsecond\n");
    EXPECT_TRUE(m_parser.GetSubtitle(1500).isNull());
    EXPECT_EQ(At(3500), "second");
}

TEST_F(SrtParserTest, MissingFileHasNoCues)
{
    Open("00:00:01,000 --> 00:00:02,000\nfirst\n");
    EXPECT_NE(m_parser.Open(QStringLiteral("/nonexistent/file.srt"), 0), 0);
    EXPECT_TRUE(m_parser.GetSubtitle(1500).isNull());
}

TEST_F(SrtParserTest, BaseClassOperationsAreInherited)
{
    QRect rect(1, 2, 3, 4);
    m_parser.SetVideoSize(1, 1);
    EXPECT_TRUE(m_parser.TextToImage(QStringLiteral("0"), rect).isNull());
    EXPECT_EQ(rect, QRect(1, 2, 3, 4));
}

TEST_F(SrtParserTest, CuesBeyondTheLimitAreNotKept)
{
    Open("1\n00:00:01,000 --> 00:00:02,000\nfirst\n" + std::string(MaxCues + 10, '\n'));
    EXPECT_EQ(SrtParserPeer(m_parser).Items().size(), MaxCues);
    EXPECT_EQ(At(1500), "first");
}

TEST(ParseTime, ReadsStampsWithTheirTruncation)
{
    const std::pair<const char16_t *, int> stamps[] = {
        {u"00:00:00,000", 0},
        {u"01:02:03,456", 3723456},
        {u"00:00:04,350", 4350},
        {u"00:01:04,350", 64349},
        {u"00:00:01,001", 1000},
        {u"00:00:01,005", 1004},
        {u"00:00:01.5", 1500},
        {u"00:00:00,5", 500},
        {u"00:00:01,123456", 1123},
        {u"1:2:3", 3723000},
        {u"12:34", 0},
        {u"", 0},
        {u"nonsense", 0},
        {u"00:00:01,000:99", 1000},
        {u"x:00:01,000", 1000},
        {u"00:x:01", 1000},
        {u"00:01:x", 60000},
        {u"00:00:02,000 X1", 0},
        {u"-1:00:00", -3600000},
        {u"00:00:-1,5", -1500},
        {u"00:00:1,000,000", 0},
        {u"::", 0},
        {u"100:00:00,000", 360000000},
        {u"596:31:23,647", INT_MAX},
    };
    for (const auto &[stamp, ms] : stamps)
        EXPECT_EQ(ParseTime(QString::fromUtf16(stamp)), ms) << QString::fromUtf16(stamp).toStdString();
}

TEST(ParseTime, TimesBeyondTheRangeAreDefined)
{
    EXPECT_EQ(ParseTime(QStringLiteral("596:31:23,648")), INT_MIN);
    EXPECT_EQ(ParseTime(QStringLiteral("1000:00:00")), INT_MIN);
    EXPECT_EQ(ParseTime(QStringLiteral("-1000:00:00")), INT_MIN);
    EXPECT_EQ(ParseTime(QStringLiteral("00:00:1e300")), INT_MIN);
    EXPECT_EQ(ParseTime(QStringLiteral("00:01:1e400")), 60000); // out of a double's range: no number
    EXPECT_EQ(ParseTime(QStringLiteral("00:00:nan")), INT_MIN);
    EXPECT_EQ(ParseTime(QStringLiteral("00:00:inf")), INT_MIN);
    // 1,193,047 hours are 2^32 seconds and 1,904 more: the sum of hours and minutes wraps round.
    EXPECT_EQ(ParseTime(QStringLiteral("1193047:00:00")), 1904 * 1000);
    EXPECT_EQ(ParseTime(QStringLiteral("2147483647:2147483647:00")), -3660 * 1000);
}
