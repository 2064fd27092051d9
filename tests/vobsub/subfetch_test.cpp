// Which part of the .sub file is fetched for an entry.
#include "support/subparsertest.h"

#include <random>

namespace
{

class SubFetchTest : public SubParserTest
{
protected:
    /** A unit of exactly @p nSize bytes: those added after its last command have no meaning. */
    static Bytes Padded(const PictureUnit &unit, std::size_t nSize)
    {
        Bytes bytes = unit.Encode();
        EXPECT_GE(nSize, bytes.size() + 2);
        // The same delay as that of the last control sequence ends the walk through the sequences.
        bytes.insert(bytes.end(),
                     {static_cast<std::uint8_t>(unit.nStopDelay >> 8), static_cast<std::uint8_t>(unit.nStopDelay)});
        bytes.resize(nSize);
        bytes[0] = static_cast<std::uint8_t>(nSize >> 8);
        bytes[1] = static_cast<std::uint8_t>(nSize);
        return bytes;
    }

    /** A picture of noise, whose unit takes many packs. */
    PictureUnit Noise(int nWidth, int nHeight)
    {
        PictureUnit unit = PictureUnit::Filled(0, 0, nWidth, nHeight);
        for (std::uint8_t &nPixel : unit.listPixels)
            nPixel = m_random() % 4;
        return unit;
    }

    /** Replaces the .sub file by that of another pair: a new file of the same name. */
    void SwapSubFile(const VobSubPair &pair) const
    {
        std::filesystem::rename(m_folder.Write("new.sub", pair.Stream()), SubFile());
    }
    std::filesystem::path SubFile() const { return m_folder.Path() / "pair.sub"; }

    std::mt19937 m_random{3};
    const PictureUnit m_a = PictureUnit::Filled(2, 3, 40, 10, 1);
    const PictureUnit m_b = PictureUnit::Filled(30, 20, 50, 11, 2);
    const PictureUnit m_c = PictureUnit::Filled(5, 40, 60, 12, 3);
    const Bytes m_bytesA = m_a.Encode();
    const Bytes m_bytesB = m_b.Encode();
    const Bytes m_bytesC = m_c.Encode();
    const VobSubPair m_pair{96, 64, {{1000, m_bytesA, {}}, {2000, m_bytesB, {}}, {3000, m_bytesC, {}}}};
};

constexpr std::size_t FourPacks = 2019 + 3 * 2024; // bytes of a unit that four packs hold

} // namespace

TEST_F(SubFetchTest, EveryEntryShowsItsOwnUnit)
{
    Open(m_pair);
    EXPECT_TRUE(Picture(0) == Shown(m_pair, {m_a}));
    EXPECT_TRUE(Picture(1) == Shown(m_pair, {m_a, m_b}));
    EXPECT_TRUE(Picture(2) == Shown(m_pair, {m_a, m_b, m_c}));
}

TEST_F(SubFetchTest, EntriesMayComeInAnyOrder)
{
    Open(m_pair);
    EXPECT_TRUE(Picture(1) == Shown(m_pair, {m_b}));
    EXPECT_TRUE(Picture(0) == Shown(m_pair, {m_b, m_a}));
    EXPECT_TRUE(Picture(0) == Shown(m_pair, {m_b, m_a}));
    EXPECT_TRUE(Picture(2) == Shown(m_pair, {m_b, m_a, m_c}));
    EXPECT_TRUE(Picture(1) == Shown(m_pair, {m_b, m_a, m_c, m_b}));
}

TEST_F(SubFetchTest, UnitMayFillManyPacks)
{
    const PictureUnit first = Noise(720, 60);
    const PictureUnit second = Noise(700, 70);
    const VobSubPair pair(720, 80, {{1000, first.Encode(), {}}, {2000, second.Encode(), {}}, {3000, m_bytesA, {}}});
    ASSERT_GT(pair.listLanguages[0][1].listUnit.size(), 18000U);
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {first}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {first, second}));
    EXPECT_TRUE(Picture(0) == Shown(pair, {second, first}));
}

TEST_F(SubFetchTest, UnitsOfEverySizeAroundThatOfAPackComeWhole)
{
    for (std::size_t nSize = 2010; nSize < 2030; ++nSize) {
        const VobSubPair pair(96, 64, {{1000, Padded(m_a, nSize), {}}, {2000, m_bytesB, {}}});
        Open(pair);
        EXPECT_TRUE(Picture(0) == Shown(pair, {m_a})) << nSize;
        EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_b})) << nSize;
    }
}

TEST_F(SubFetchTest, LastEntryBringsEightKilobytes)
{
    VobSubPair pair(96, 64, {{1000, m_bytesA, {}}, {2000, Padded(m_b, FourPacks), {}}});
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_b}));
    pair.listLanguages[0][1].listUnit = Padded(m_b, FourPacks + 1);
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a})); // still the picture before
}

TEST_F(SubFetchTest, OtherEntriesBringAllUpToTheNext)
{
    const VobSubPair pair(96, 64, {{1000, Padded(m_a, 65535), {}}, {2000, m_bytesB, {}}});
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
}

TEST_F(SubFetchTest, EntryAfterAnIncompleteLastOneIsComplete)
{
    const VobSubPair pair(96, 64, {{1000, m_bytesA, {}}, {2000, m_bytesB, {}}, {3000, Padded(m_c, 9000), {}}});
    Open(pair);
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_b}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_b}));
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_b, m_a}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_b, m_a}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_b, m_a}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_b, m_a, m_b}));
}

TEST_F(SubFetchTest, IncompleteFirstPictureIsTransparent)
{
    const VobSubPair pair(96, 64, {{1000, Padded(m_a, 9000), {}}});
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {}));
}

TEST_F(SubFetchTest, UnitSplitOverTwoEntriesIsCompletedByTheSecond)
{
    for (const std::ptrdiff_t nSplit : {4, 5, 30, static_cast<int>(m_bytesB.size()) - 1}) {
        const VobSubPair pair(96, 64,
                              {{1000, m_bytesA, {}},
                               {2000, Bytes(m_bytesB.begin(), m_bytesB.begin() + nSplit), {}},
                               {3000, Bytes(m_bytesB.begin() + nSplit, m_bytesB.end()), {}},
                               {4000, m_bytesC, {}}});
        Open(pair);
        EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
        EXPECT_TRUE(Picture(1) == Shown(pair, {m_a})) << nSplit;
        EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_b})) << nSplit;
        EXPECT_TRUE(Picture(3) == Shown(pair, {m_a, m_b, m_c})) << nSplit;
    }
}

TEST_F(SubFetchTest, OnlyTheLowThirtyTwoBitsOfAPositionCount)
{
    VobSubPair pair = m_pair;
    pair.listLanguages[0][1].nFilePos = 0x100000800;
    pair.listLanguages[0][2].nFilePos = 0xFFFFFFFF00001000;
    Open(pair);
    EXPECT_EQ(m_peer.Items()[2].nFilePos, 0xFFFFFFFF00001000);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_b}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_b, m_c}));
}

TEST_F(SubFetchTest, DescendingPositionReadsToTheFilesEnd)
{
    VobSubPair pair = m_pair;
    pair.listLanguages[0][0].nFilePos = 0x800;
    pair.listLanguages[0][1].nFilePos = 0;
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_b, m_c}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_c, m_a, m_b}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_b, m_c}));
}

TEST_F(SubFetchTest, EqualPositionsBringNothing)
{
    VobSubPair pair = m_pair;
    pair.listLanguages[0][2].nFilePos = 0x800;
    Open(pair);
    EXPECT_TRUE(Picture(1) == Shown(pair, {}));
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_b, m_c}));
}

TEST_F(SubFetchTest, PositionBeyondTheEndBringsThePictureBeforeAgain)
{
    VobSubPair pair = m_pair;
    pair.listLanguages[0][1].nFilePos = 0x1800;
    pair.listLanguages[0][2].nFilePos = 0xFFFFFFFF;
    Open(pair);
    EXPECT_TRUE(Picture(1) == Shown(pair, {}));
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a, m_b, m_c}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_b, m_c}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_b, m_c}));
}

TEST_F(SubFetchTest, PositionInsideAPacketBringsThePictureBeforeAgain)
{
    VobSubPair pair = m_pair;
    pair.listLanguages[0][1].nFilePos = 0x801;
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_c}));
}

TEST_F(SubFetchTest, MissingFileGivesNoPicture)
{
    Open(m_pair);
    std::filesystem::rename(SubFile(), m_folder.Path() / "away");
    EXPECT_TRUE(Picture(0).empty());
    std::filesystem::create_directory(SubFile());
    EXPECT_TRUE(Picture(0).empty());
    std::filesystem::remove(SubFile());
    std::filesystem::rename(m_folder.Path() / "away", SubFile());
    EXPECT_TRUE(Picture(1) == Shown(m_pair, {m_b}));
}

TEST_F(SubFetchTest, EmptyFileGivesATransparentPicture)
{
    Open(m_pair);
    m_folder.Write("pair.sub", "");
    for (int nEntry = 0; nEntry < 3; ++nEntry)
        EXPECT_TRUE(Picture(nEntry) == Shown(m_pair, {}));
    m_folder.Write("pair.sub", m_pair.Stream());
    EXPECT_TRUE(Picture(1) == Shown(m_pair, {m_b}));
}

TEST_F(SubFetchTest, FileIsOpenDuringAFetchOnly)
{
    Open(m_pair);
    EXPECT_TRUE(Picture(0) == Shown(m_pair, {m_a}));
    for (const auto &link : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone; // the descriptor of the listing itself may be closed
        EXPECT_NE(std::filesystem::read_symlink(link, gone), SubFile());
    }
}

TEST_F(SubFetchTest, ShortenedFileGivesWhatIsLeftOfIt)
{
    Open(m_pair);
    std::filesystem::resize_file(SubFile(), 0x800 + 50);
    EXPECT_TRUE(Picture(0) == Shown(m_pair, {m_a}));
    EXPECT_TRUE(Picture(1) == Shown(m_pair, {m_a}));
    EXPECT_TRUE(Picture(2) == Shown(m_pair, {m_a}));
    m_folder.Write("pair.sub", m_pair.Stream());
    EXPECT_TRUE(Picture(2) == Shown(m_pair, {m_a, m_c}));
}

TEST_F(SubFetchTest, ReplacedFileGivesItsOwnPictures)
{
    Open(m_pair);
    EXPECT_TRUE(Picture(0) == Shown(m_pair, {m_a}));
    SwapSubFile({96, 64, {{1000, m_bytesC, {}}, {2000, m_bytesA, {}}, {3000, m_bytesB, {}}}});
    EXPECT_TRUE(Picture(1) == Shown(m_pair, {m_a, m_a}));
    EXPECT_TRUE(Picture(2) == Shown(m_pair, {m_a, m_b}));
    EXPECT_TRUE(Picture(0) == Shown(m_pair, {m_a, m_b, m_c}));
}

TEST_F(SubFetchTest, ReplacedFileDoesNotGoOnWithTheUnitOfTheOldOne)
{
    VobSubPair pair = m_pair;
    pair.listLanguages[0][0].listUnit.resize(20);
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {}));
    SwapSubFile(m_pair);
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_b}));
}

TEST_F(SubFetchTest, LanguagesOneAfterAnotherShowTheirOwnUnits)
{
    VobSubPair pair = m_pair;
    pair.listLanguages.push_back({{1500, m_bytesC, {}}, {2500, m_bytesA, {}}});
    Open(pair, 1);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_c}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_c, m_a}));
    Open(pair, 0);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_b}));
}

// Intentional: the packets of all languages are decoded, so the last unit in the part that was fetched shows.
TEST_F(SubFetchTest, UnitOfAnotherLanguageBeforeTheNextEntryShows)
{
    VobSubPair pair(96, 64, {{1000, m_bytesA, {}}, {3000, m_bytesA, {}}});
    pair.listLanguages.push_back({{2000, m_bytesB, {}}, {4000, m_bytesC, {}}});
    pair.bInterleaved = true;
    Open(pair, 0);
    EXPECT_EQ(m_peer.Items()[1].nFilePos, 4096U);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a, m_b}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_b, m_a, m_c}));
    Open(pair, 1);
    EXPECT_EQ(m_peer.Items()[0].nFilePos, 2048U);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_b, m_a}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_b, m_a, m_c}));
}

TEST_F(SubFetchTest, ReopeningForgetsThePictureAndTheUnitComingIn)
{
    VobSubPair pair = m_pair;
    pair.listLanguages[0][1].listUnit.resize(20);
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a}));
    Open(pair);
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_c}));
}
