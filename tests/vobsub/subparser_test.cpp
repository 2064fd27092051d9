// Which entry is due, and what its picture is.
#include "support/subparsertest.h"
#include "vobsub/decoderstate.h"
#include "vobsub/subtitledecoder.h"

#include <algorithm>
#include <climits>
#include <memory>
#include <random>
#include <sys/stat.h>

namespace
{

class SubParserDueTest : public SubParserTest
{
protected:
    void SetStarts(const std::vector<int> &listStarts)
    {
        QList<VobSubtitleItem> items;
        for (const int nStart : listStarts)
            items.append({nStart, QString(), 0});
        m_peer.SetItems(items);
    }

    std::string At(long ms) { return m_parser.GetSubtitle(ms).toStdString(); }

    /** The entry that is due, straight from the rule. */
    static std::string DuePlainly(const std::vector<int> &listStarts, long ms)
    {
        const int n = static_cast<int>(listStarts.size());
        if (ms < 1)
            return "";
        for (int i = 0; i < n - 1; ++i)
            if (!(listStarts[i] > ms) && !(ms > listStarts[i + 1]))
                return std::to_string(i);
        const int j = n <= 1 ? 0 : n - 1;
        if (n > 0 && !(listStarts[j] > ms) && !(ms > listStarts[j] + 3000L))
            return std::to_string(j);
        return "";
    }
};

} // namespace

TEST_F(SubParserDueTest, EntryIsDueUpToAndIncludingTheNextOnesStart)
{
    SetStarts({1000, 5000, 9000});
    EXPECT_EQ(At(999), "");
    EXPECT_TRUE(m_parser.GetSubtitle(999).isEmpty());
    EXPECT_EQ(At(1000), "0");
    EXPECT_EQ(At(5000), "0");
    EXPECT_EQ(At(5001), "1");
    EXPECT_EQ(At(9000), "1");
    EXPECT_EQ(At(9001), "2");
    EXPECT_EQ(At(12000), "2");
    EXPECT_EQ(At(12001), "");
}

TEST_F(SubParserDueTest, NothingIsDueBeforeTheFirstMillisecond)
{
    SetStarts({0, 5000});
    EXPECT_EQ(At(0), "");
    EXPECT_EQ(At(-1), "");
    EXPECT_EQ(At(LONG_MIN), "");
    EXPECT_EQ(At(1), "0");
    SetStarts({-5000, -4000});
    EXPECT_EQ(At(-4500), "");
    EXPECT_EQ(At(1), "");
}

TEST_F(SubParserDueTest, OnlyEntryIsHeldForThreeSeconds)
{
    SetStarts({2000});
    EXPECT_EQ(At(1999), "");
    EXPECT_EQ(At(2000), "0");
    EXPECT_EQ(At(5000), "0");
    EXPECT_EQ(At(5001), "");
}

TEST_F(SubParserDueTest, NothingIsDueInAnEmptyList)
{
    for (const long ms : {0L, 1L, 2999L, 3000L, 3001L, LONG_MAX})
        EXPECT_TRUE(m_parser.GetSubtitle(ms).isEmpty()) << ms;
}

TEST_F(SubParserDueTest, GapOfAnyLengthIsFilled)
{
    SetStarts({1000, 36000000, 36000001});
    EXPECT_EQ(At(35999999), "0");
    EXPECT_EQ(At(36000000), "0");
    EXPECT_EQ(At(36000001), "1");
    EXPECT_EQ(At(36000002), "2");
}

TEST_F(SubParserDueTest, OfEqualStartsTheFirstHasItsMillisecond)
{
    SetStarts({1000, 1000, 1000, 4000});
    EXPECT_EQ(At(1000), "0");
    EXPECT_EQ(At(1001), "2");
    EXPECT_EQ(At(4001), "3");
}

TEST_F(SubParserDueTest, UnorderedStartsGoByPairsInTheFilesOrder)
{
    SetStarts({5000, 1000, 9000});
    EXPECT_EQ(At(500), "");
    EXPECT_EQ(At(1000), "1");
    EXPECT_EQ(At(5000), "1");
    EXPECT_EQ(At(9001), "2");
    SetStarts({9000, 5000, 1000});
    EXPECT_EQ(At(1000), "2");
    EXPECT_EQ(At(4000), "2");
    EXPECT_EQ(At(4001), "");
    EXPECT_EQ(At(9000), "");
}

TEST_F(SubParserDueTest, KeysAreDecimal)
{
    std::vector<int> listStarts;
    for (int i = 0; i < 1235; ++i)
        listStarts.push_back(i * 10);
    SetStarts(listStarts);
    EXPECT_EQ(At(95), "9");
    EXPECT_EQ(At(105), "10");
    EXPECT_EQ(At(12335), "1233");
    EXPECT_EQ(At(12345), "1234");
}

TEST_F(SubParserDueTest, GreatestStartIsHeldToo)
{
    SetStarts({INT_MAX});
    EXPECT_EQ(At(INT_MAX), "0");
    if (LONG_MAX > INT_MAX) {
        const std::int64_t nEnd = std::int64_t{INT_MAX} + 3000;
        EXPECT_EQ(At(static_cast<long>(nEnd)), "0");
        EXPECT_EQ(At(static_cast<long>(nEnd + 1)), "");
        EXPECT_EQ(At(LONG_MAX), "");
    }
}

TEST_F(SubParserDueTest, RandomListsFollowTheRule)
{
    std::mt19937 random(7);
    for (int nRound = 0; nRound < 300; ++nRound) {
        std::vector<int> listStarts(random() % 8);
        for (int &nStart : listStarts)
            nStart = static_cast<int>(random() % 30) * 500 - 1000;
        if (nRound % 2 == 0)
            std::sort(listStarts.begin(), listStarts.end());
        SetStarts(listStarts);
        for (long ms = -1500; ms < 18000; ms += 250)
            for (long nAside = -1; nAside <= 1; ++nAside)
                ASSERT_EQ(At(ms + nAside), DuePlainly(listStarts, ms + nAside)) << nRound << " at " << ms + nAside;
    }
}

TEST_F(SubParserTest, IsNoTextParserEvenBeforeOpen)
{
    EXPECT_FALSE(m_parser.IsTextSub());
}

TEST_F(SubParserTest, VideoSizeIsStoredAsItIs)
{
    m_parser.SetVideoSize(1280, 720);
    EXPECT_EQ(m_peer.VideoWidth(), 1280);
    EXPECT_EQ(m_peer.VideoHeight(), 720);
    m_parser.SetVideoSize(-1, 0);
    EXPECT_EQ(m_peer.VideoWidth(), -1);
    EXPECT_EQ(m_peer.VideoHeight(), 0);
    EXPECT_EQ(m_peer.Context(), nullptr);
}

TEST_F(SubParserTest, PixelIsItsLumaThreeTimesAndItsAlpha)
{
    const PictureUnit unit = PictureUnit::Filled(10, 20, 30, 8);
    const VobSubPair pair(96, 64, {{1000, unit.Encode(), {}}});
    Open(pair);
    const Bytes bytes = Picture(0);
    ASSERT_EQ(bytes.size(), 4U * 96 * 64);
    const auto pixel = [&](int x, int y) {
        const auto at = bytes.begin() + 4 * (y * 96 + x);
        return Bytes(at, at + 4);
    };
    EXPECT_EQ(pixel(10, 20), (Bytes{235, 235, 235, 240}));
    EXPECT_EQ(pixel(39, 27), (Bytes{235, 235, 235, 240}));
    EXPECT_EQ(pixel(9, 20), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(pixel(40, 27), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(pixel(10, 19), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(pixel(39, 28), (Bytes{0, 0, 0, 0}));
}

TEST_F(SubParserTest, PictureOfTheCanvasSizeIsTheCanvas)
{
    PictureUnit unit = PictureUnit::Filled(1, 3, 94, 57);
    for (std::size_t i = 0; i < unit.listPixels.size(); ++i)
        unit.listPixels[i] = i * i / 7 % 4;
    unit.nColours = 0xF1A7;
    unit.nContrasts = 0xC5F1;
    const VobSubPair pair(96, 64, {{1000, unit.Encode(), {}}});
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {unit}));
}

TEST_F(SubParserTest, TransparentCanvasGivesATransparentPicture)
{
    PictureUnit unit = PictureUnit::Filled(10, 20, 30, 8);
    unit.nContrasts = 0;
    Open({96, 64, {{1000, unit.Encode(), {}}}});
    m_parser.SetVideoSize(150, 100);
    const Bytes bytes = Picture(0);
    ASSERT_EQ(bytes.size(), 4U * 150 * 100);
    for (std::size_t i = 3; i < bytes.size(); i += 4)
        ASSERT_EQ(bytes[i], 0);
}

TEST_F(SubParserTest, WholeVideoIsTheRectangle)
{
    Open({720, 480, {{1000, PictureUnit::Filled(10, 20, 30, 8).Encode(), {}}}});
    m_parser.SetVideoSize(1280, 720);
    QRect rect;
    EXPECT_EQ(m_parser.TextToImage(QStringLiteral("0"), rect).size(), QSize(1280, 720));
    EXPECT_EQ(rect.left(), 0);
    EXPECT_EQ(rect.top(), 0);
    EXPECT_EQ(rect.right(), 1279);
    EXPECT_EQ(rect.bottom(), 719);
}

TEST_F(SubParserTest, KeyOutsideTheListGivesNothing)
{
    const auto unit = PictureUnit::Filled(10, 20, 30, 8).Encode();
    Open({96, 64, {{1000, unit, {}}, {2000, unit, {}}}});
    for (const char *key : {"-1", "2", "3", "2147483647", "-2147483648"})
        EXPECT_TRUE(Picture(QString::fromLatin1(key)).empty()) << key;
    EXPECT_EQ(m_peer.Context(), nullptr);
}

TEST_F(SubParserTest, KeyThatIsNoNumberCountsAsZero)
{
    const PictureUnit unit = PictureUnit::Filled(10, 20, 30, 8);
    const PictureUnit second = PictureUnit::Filled(1, 2, 3, 4);
    const VobSubPair pair(96, 64, {{1000, unit.Encode(), {}}, {2000, second.Encode(), {}}});
    for (const char *key : {"", "x", "1x", "1.0", "0x1", "4294967297"}) {
        Open(pair);
        EXPECT_TRUE(Picture(QString::fromLatin1(key)) == Shown(pair, {unit})) << key;
    }
    EXPECT_TRUE(Picture(QStringLiteral(" 1 ")) == Shown(pair, {unit, second}));
}

TEST_F(SubParserTest, EmptyListGivesNothing)
{
    m_parser.SetVideoSize(96, 64);
    EXPECT_TRUE(Picture(0).empty());
    const std::string strIndex = m_folder.Write("a.idx", "size: 96x64\nid: en, index: 0\n#\n");
    m_folder.Write("a.sub", m_folder.Path().string());
    ASSERT_EQ(m_parser.Open(QString::fromStdString(strIndex), 0), 1);
    EXPECT_TRUE(Picture(0).empty());
    EXPECT_TRUE(Picture(QStringLiteral("x")).empty());
}

TEST_F(SubParserTest, NoVideoSizeGivesNothing)
{
    const PictureUnit unit = PictureUnit::Filled(10, 20, 30, 8);
    const VobSubPair pair(96, 64, {{1000, unit.Encode(), {}}});
    ASSERT_EQ(m_parser.Open(QString::fromStdString(pair.Write(m_folder)), 0), 1);
    EXPECT_TRUE(Picture(0).empty());
    for (const auto &[nWidth, nHeight] : {std::pair(0, 0), {96, 0}, {0, 64}, {-96, 64}, {96, -64}, {-96, -64}}) {
        m_parser.SetVideoSize(nWidth, nHeight);
        EXPECT_TRUE(Picture(0).empty());
    }
    m_parser.SetVideoSize(96, 64);
    EXPECT_TRUE(Picture(0) == Shown(pair, {unit}));
}

TEST_F(SubParserTest, BlackAndWhiteReplaceThePaletteWhereTheHostAsksForThem)
{
    PictureUnit unit = PictureUnit::Filled(10, 20, 30, 8);
    for (std::size_t i = 0; i < unit.listPixels.size(); ++i)
        unit.listPixels[i] = i % 4;
    unit.nContrasts = 0xFFFF;
    VobSubPair pair(96, 64, {{1000, unit.Encode(), {}}, {2000, unit.Encode(), {}}});
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {unit}));
    Subt_Color = 0;
    const Bytes plain = Picture(1);
    pair.palette.fill(0xFF);
    pair.palette[0] = 0;
    EXPECT_TRUE(plain == Shown(pair, {unit}));
    Subt_Color = 1; // does not bring the palette back
    EXPECT_TRUE(Picture(0) == Shown(pair, {unit}));
    Open(pair);
    EXPECT_EQ(Subt_Color, 1);
}

TEST_F(SubParserTest, BlackAndWhiteStayWhenTheDecoderChangesHands)
{
    const PictureUnit unit = PictureUnit::Filled(10, 20, 30, 8);
    VobSubPair pair(96, 64, {{1000, unit.Encode(), {}}});
    Open(pair);
    SubParser other;
    ASSERT_EQ(other.Open(QString::fromStdString(pair.Write(m_folder, "other")), 0), 1);
    Subt_Color = 0;
    pair.palette.fill(0xFF);
    EXPECT_TRUE(Picture(0) == Shown(pair, {unit}));
    EXPECT_EQ(Subt_Color, 0);
    subtitle_release();
    EXPECT_TRUE(Picture(0) == Shown(pair, {unit}));
}

TEST_F(SubParserTest, DestructionReleasesTheDecoder)
{
    auto pParser = std::make_unique<SubParser>();
    const VobSubPair pair(96, 64, {{1000, PictureUnit::Filled(1, 2, 3, 4).Encode(), {}}});
    ASSERT_EQ(pParser->Open(QString::fromStdString(pair.Write(m_folder)), 0), 1);
    EXPECT_TRUE(subtitle_is_set_up());
    pParser.reset();
    EXPECT_FALSE(subtitle_is_set_up());
}

TEST_F(SubParserTest, LastParserOpenedHasTheDecoderUntilAnotherNeedsIt)
{
    const PictureUnit unit = PictureUnit::Filled(1, 2, 3, 4);
    const VobSubPair pair(96, 64, {{1000, unit.Encode(), {}}, {2000, unit.Encode(), {}}});
    Open(pair);
    {
        VobSubPair otherPair(40, 30, {{1000, unit.Encode(), {}}});
        otherPair.palette[1] = 0x77;
        SubParser other;
        ASSERT_EQ(other.Open(QString::fromStdString(otherPair.Write(m_folder, "other")), 0), 1);
        EXPECT_EQ(Coded_Picture_Width, 40);
        EXPECT_TRUE(Picture(0) == Shown(pair, {unit}));
        EXPECT_EQ(Coded_Picture_Width, 96);
    }
    EXPECT_TRUE(subtitle_is_set_up());
    EXPECT_TRUE(Picture(1) == Shown(pair, {unit}));
}

TEST_F(SubParserTest, ParserBetweenLeavesNoTrace)
{
    // The second picture leaves the first one's luma around it, and the fourth completes the unit that the third began.
    const PictureUnit great = PictureUnit::Filled(0, 0, 96, 64);
    const PictureUnit small = PictureUnit::Filled(10, 20, 30, 8, 2);
    const Bytes whole = PictureUnit::Filled(5, 6, 40, 30, 3).Encode();
    const Bytes begin(whole.begin(), whole.begin() + 20);
    const Bytes end(whole.begin() + 20, whole.end());
    const VobSubPair pair(96, 64,
                          {{1000, great.Encode(), {}}, {2000, small.Encode(), {}}, {3000, begin, {}}, {4000, end, {}}});
    VobSubPair otherPair(40, 30, {{1000, PictureUnit::Filled(1, 2, 30, 20, 3).Encode(), {}}});
    SubParser other;
    const QString otherFile = QString::fromStdString(otherPair.Write(m_folder, "other"));

    Open(pair);
    m_parser.SetVideoSize(192, 100);
    std::vector<Bytes> alone;
    for (int entry = 0; entry < 4; ++entry)
        alone.push_back(Picture(entry));
    EXPECT_NE(alone[2], alone[3]);

    Open(pair);
    m_parser.SetVideoSize(192, 100);
    other.SetVideoSize(40, 30);
    for (int entry = 0; entry < 4; ++entry) {
        EXPECT_TRUE(Picture(entry) == alone[entry]) << entry;
        if (entry == 1) {
            ASSERT_EQ(other.Open(otherFile, 0), 1);
        }
        QRect rect;
        EXPECT_EQ(other.TextToImage(QStringLiteral("0"), rect).isNull(), entry == 0);
    }
}

TEST_F(SubParserTest, PipeInPlaceOfThePicturesIsNotWaitedFor)
{
    const VobSubPair pair(96, 64, {{1000, PictureUnit::Filled(1, 2, 3, 4).Encode(), {}}});
    Open(pair);
    const std::string pictures = (m_folder.Path() / "pair.sub").string();
    ASSERT_EQ(std::remove(pictures.c_str()), 0);
    ASSERT_EQ(mkfifo(pictures.c_str(), 0600), 0);
    EXPECT_TRUE(Picture(0).empty());
}
