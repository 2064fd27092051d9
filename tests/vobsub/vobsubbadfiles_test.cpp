// Damaged and missing .sub files through the shared library: never a crash, and the next good picture shows.
#include "support/vobsubapitest.h"

namespace
{

class VobSubBadFilesTest : public VobSubApiTest
{
protected:
    void Open(const VobSubPair &pair) { ASSERT_EQ(OpenFile(m_pHandle, pair.Write(m_folder)), 0); }

    std::filesystem::path SubFile() const { return m_folder.Path() / "pair.sub"; }

    void SwapSubFile(const std::string &bytes) const
    {
        std::filesystem::rename(m_folder.Write("new.sub", bytes), SubFile());
    }

    /** Entries of a good picture, of the bad bytes, and of two good pictures. */
    VobSubPair PairWith(const Bytes &bad) const
    {
        return {Width,
                Height,
                {{1000, m_a.Encode(), {}}, {2000, bad, {}}, {3000, m_b.Encode(), {}}, {4000, m_c.Encode(), {}}}};
    }

    void ExpectNothingShownAndTheNextGoodOne(const Bytes &bad)
    {
        const VobSubPair pair = PairWith(bad);
        Open(pair);
        EXPECT_TRUE(FrameAt(1500) == Shown(pair, {m_a}));
        EXPECT_TRUE(FrameAt(2500) == Untouched());
        EXPECT_TRUE(FrameAt(3500) == Shown(pair, {m_a, m_b}));
        EXPECT_TRUE(FrameAt(4500) == Shown(pair, {m_a, m_b, m_c}));
        Open(pair);
        EXPECT_TRUE(FrameAt(2500) == Untouched());
        EXPECT_TRUE(FrameAt(1500) == Shown(pair, {m_a}));
    }

    static Bytes WithShort(Bytes bytes, std::size_t nAt, unsigned nValue)
    {
        bytes.at(nAt) = static_cast<std::uint8_t>(nValue >> 8);
        bytes.at(nAt + 1) = static_cast<std::uint8_t>(nValue);
        return bytes;
    }

    /** Where a unit's control area begins. */
    static std::size_t Control(const Bytes &unit) { return unit[2] * 256U + unit[3]; }
};

// Where the arguments of commands 0x05 and 0x06 begin in a unit's control area.
constexpr std::size_t AreaAt = 12;
constexpr std::size_t OffsetsAt = 19;

} // namespace

TEST_F(VobSubBadFilesTest, MissingFileLeavesTheFrameAlone)
{
    Open(m_pair);
    std::filesystem::remove(SubFile());
    EXPECT_TRUE(FrameAt(1500) == Untouched());
    EXPECT_TRUE(FrameAt(2500) == Untouched());
    m_folder.Write("pair.sub", m_pair.Stream());
    EXPECT_TRUE(FrameAt(3500) == Shown(m_pair, {m_c}));
}

TEST_F(VobSubBadFilesTest, FileMayGoAndComeBackBetweenPictures)
{
    Open(m_pair);
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
    std::filesystem::rename(SubFile(), m_folder.Path() / "away");
    EXPECT_TRUE(FrameAt(1600) == Shown(m_pair, {m_a})); // decoded before
    EXPECT_TRUE(FrameAt(2500) == Untouched());
    std::filesystem::rename(m_folder.Path() / "away", SubFile());
    EXPECT_TRUE(FrameAt(3500) == Shown(m_pair, {m_a, m_c}));
}

TEST_F(VobSubBadFilesTest, FolderOfTheNameLeavesTheFrameAlone)
{
    Open(m_pair);
    std::filesystem::remove(SubFile());
    std::filesystem::create_directory(SubFile());
    EXPECT_TRUE(FrameAt(1500) == Untouched());
    std::filesystem::remove(SubFile());
    m_folder.Write("pair.sub", m_pair.Stream());
    EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_b}));
}

TEST_F(VobSubBadFilesTest, DeadLinkLeavesTheFrameAlone)
{
    Open(m_pair);
    std::filesystem::remove(SubFile());
    std::filesystem::create_symlink("nowhere", SubFile());
    EXPECT_TRUE(FrameAt(1500) == Untouched());
    m_folder.Write("nowhere", m_pair.Stream());
    EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_b}));
}

TEST_F(VobSubBadFilesTest, EmptyFileShowsNothing)
{
    Open(m_pair);
    SwapSubFile("");
    EXPECT_TRUE(FrameAt(1500) == Untouched());
    EXPECT_TRUE(FrameAt(3500) == Untouched());
    SwapSubFile(m_pair.Stream());
    EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_b}));
}

TEST_F(VobSubBadFilesTest, FileShorterThanTheIndexSaysShowsWhatItHas)
{
    for (const int nLength : {0, 1, 4, 5, 6, 13, 14, 15, 18, 19, 20, 22, 23, 28, 29, 30, 33, 40, 60, 70}) {
        Open(m_pair);
        SwapSubFile(m_pair.Stream().substr(0, 2048 + nLength));
        EXPECT_TRUE(FrameAt(3500) == Untouched()) << nLength;
        EXPECT_TRUE(FrameAt(2500) == Untouched()) << nLength;
        EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a})) << nLength;
        SwapSubFile(m_pair.Stream());
        EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_b})) << nLength;
    }
    // Only the padding after the unit is missing.
    Open(m_pair);
    SwapSubFile(m_pair.Stream().substr(0, 2048 + 29 + m_b.Encode().size()));
    EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_b}));
}

TEST_F(VobSubBadFilesTest, AnotherFileInItsPlaceShowsItsOwnPictures)
{
    Open(m_pair);
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
    const VobSubPair other(Width, Height,
                           {{1000, m_c.Encode(), {}}, {2000, m_a.Encode(), {}}, {3000, m_b.Encode(), {}}});
    SwapSubFile(other.Stream());
    EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_a, m_a}));
    EXPECT_TRUE(FrameAt(3500) == Shown(m_pair, {m_a, m_b}));
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a, m_b, m_c}));
}

TEST_F(VobSubBadFilesTest, FileOfOtherBytesShowsNothing)
{
    Open(m_pair);
    std::string noise;
    for (int i = 0; i < 3 * 2048; ++i)
        noise += static_cast<char>(i * i / 3);
    const std::string unknownId("\0\0\1\xE0\0\2xx", 8);
    for (const std::string &bytes : {noise, std::string(6144, '\0'), unknownId, "# text\n" + noise}) {
        Open(m_pair);
        SwapSubFile(bytes);
        for (const long ms : {1500, 2500, 3500})
            EXPECT_TRUE(FrameAt(ms) == Untouched());
        SwapSubFile(m_pair.Stream());
        EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_b}));
    }
}

TEST_F(VobSubBadFilesTest, PacketOfAnUnknownStreamEndsTheEntry)
{
    std::string stream = m_pair.Stream();
    stream[2048 + 14 + 3] = '\xE0';
    Open(m_pair);
    SwapSubFile(stream);
    EXPECT_TRUE(FrameAt(2500) == Untouched());
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
    EXPECT_TRUE(FrameAt(3500) == Shown(m_pair, {m_a, m_c}));
}

TEST_F(VobSubBadFilesTest, AreaOutsideTheCanvasShowsNothing)
{
    for (const auto &[nX, nY] : {std::pair(Width - 39, 3), {2, Height - 9}, {Width, 0}, {0, Height}, {4000, 4000}}) {
        PictureUnit unit = m_a;
        unit.nX = nX;
        unit.nY = nY;
        ExpectNothingShownAndTheNextGoodOne(unit.Encode());
    }
}

TEST_F(VobSubBadFilesTest, AreaThatEndsBeforeItBeginsShowsNothing)
{
    Bytes unit = m_a.Encode();
    const std::size_t nArea = Control(unit) + AreaAt;
    ASSERT_EQ(unit[nArea - 1], 0x05);
    unit[nArea + 2] = 1; // columns 2 to 1
    ExpectNothingShownAndTheNextGoodOne(unit);
}

TEST_F(VobSubBadFilesTest, OffsetsOutsideTheUnitShowNothing)
{
    const Bytes unit = m_a.Encode();
    const std::size_t nOffsets = Control(unit) + OffsetsAt;
    ASSERT_EQ(unit[nOffsets - 1], 0x06);
    for (const unsigned nOffset : {0xFFFFU, 0x8000U, static_cast<unsigned>(unit.size()) + 1}) {
        ExpectNothingShownAndTheNextGoodOne(WithShort(unit, nOffsets, nOffset));
        ExpectNothingShownAndTheNextGoodOne(WithShort(unit, nOffsets + 2, nOffset));
    }
}

TEST_F(VobSubBadFilesTest, HeaderThatContradictsItselfShowsNothing)
{
    const Bytes unit = m_a.Encode();
    const auto nSize = static_cast<unsigned>(unit.size());
    ExpectNothingShownAndTheNextGoodOne(WithShort(unit, 2, nSize));
    ExpectNothingShownAndTheNextGoodOne(WithShort(unit, 2, 0xFFFF));
    ExpectNothingShownAndTheNextGoodOne(WithShort(unit, 2, 3));
    ExpectNothingShownAndTheNextGoodOne(WithShort(unit, 2, 0));
    ExpectNothingShownAndTheNextGoodOne(WithShort(unit, 0, 0));
    ExpectNothingShownAndTheNextGoodOne(WithShort(unit, 0, 4));
    ExpectNothingShownAndTheNextGoodOne(WithShort(unit, 0, static_cast<unsigned>(Control(unit))));
    ExpectNothingShownAndTheNextGoodOne(Bytes(unit.size(), 0));
}

TEST_F(VobSubBadFilesTest, UnitThatClaimsMoreThanComesLeavesThePictureBefore)
{
    const Bytes unit = m_c.Encode();
    for (const unsigned nSize : {static_cast<unsigned>(unit.size()) + 1, 0xFFFFU}) {
        const VobSubPair pair = PairWith(WithShort(unit, 0, nSize));
        Open(pair);
        EXPECT_TRUE(FrameAt(1500) == Shown(pair, {m_a}));
        EXPECT_TRUE(FrameAt(2500) == Shown(pair, {m_a}));
        EXPECT_TRUE(FrameAt(1500) == Shown(pair, {m_a}));
        EXPECT_TRUE(FrameAt(4500) == Shown(pair, {m_a, m_c}));
        Open(pair);
        EXPECT_TRUE(FrameAt(2500) == Untouched());
        EXPECT_TRUE(FrameAt(4500) == Shown(pair, {m_c}));
    }
}

TEST_F(VobSubBadFilesTest, EmptyPacketsShowNothing)
{
    const VobSubPair pair = PairWith({});
    Open(pair);
    EXPECT_TRUE(FrameAt(2500) == Untouched());
    EXPECT_TRUE(FrameAt(3500) == Shown(pair, {m_b}));
}

TEST_F(VobSubBadFilesTest, AnyByteOfAUnitMayBeWrong)
{
    const Bytes good = m_a.Encode();
    for (std::size_t nAt = 0; nAt < good.size(); ++nAt) {
        for (const unsigned nBits : {0x01U, 0x80U, 0xFFU}) {
            Bytes unit = good;
            unit[nAt] = static_cast<std::uint8_t>(unit[nAt] ^ nBits);
            const VobSubPair pair = PairWith(unit);
            Open(pair);
            FrameAt(2500);
            // The top left pixel's colour is not drawn. That of m_c is none that the wrong unit may leave there.
            EXPECT_TRUE(FrameAt(4500) == Shown(pair, {m_c})) << nAt << ' ' << nBits;
            EXPECT_TRUE(FrameAt(3500) == Shown(pair, {m_b})) << nAt << ' ' << nBits;
        }
    }
}
