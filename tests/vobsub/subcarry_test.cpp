// What one fetch of the .sub file leaves in the decoder for the next one.
#include "support/subparsertest.h"

#include <algorithm>

namespace
{

class SubCarryTest : public SubParserTest
{
protected:
    /** The 4 bytes after a unit's pixel data. What the decoder carries over to the next unit it takes from there. */
    static Bytes::iterator Gap(Bytes &unit) { return unit.begin() + (unit[2] << 8 | unit[3]) - 4; }

    /**
     * Entries of unit A with @p nCount more bytes, of unit B without its first @p nCount bytes, and of unit C. The
     * missing bytes lie in the gap of A.
     */
    VobSubPair WithBytesBehind(std::ptrdiff_t nCount) const
    {
        Bytes first = m_bytesA;
        std::copy_n(m_bytesB.begin(), nCount, Gap(first));
        first.insert(first.end(), nCount, 0xEE);
        return {96, 64, {{1000, first, {}}, {2000, Bytes(m_bytesB.begin() + nCount, m_bytesB.end()), {}}, m_last}};
    }

    /** Entries of unit A, of the two parts of unit B, and of unit C. */
    VobSubPair Split(std::ptrdiff_t nAt) const
    {
        const Bytes begin(m_bytesB.begin(), m_bytesB.begin() + nAt);
        const Bytes end(m_bytesB.begin() + nAt, m_bytesB.end());
        return {96, 64, {{1000, m_bytesA, {}}, {1500, begin, {}}, {2000, end, {}}, m_last}};
    }

    /** Shows the entries of Split() in order. */
    void PlaySplit(const VobSubPair &pair)
    {
        Open(pair);
        EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
        EXPECT_TRUE(Picture(1) == Shown(pair, {m_a}));
        EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_b}));
        EXPECT_TRUE(Picture(3) == Shown(pair, {m_a, m_b, m_c}));
    }

    const PictureUnit m_a = PictureUnit::Filled(2, 3, 40, 10, 1);
    const PictureUnit m_b = PictureUnit::Filled(30, 20, 50, 11, 2);
    const PictureUnit m_c = PictureUnit::Filled(5, 40, 60, 12, 3);
    const PictureUnit m_nothing = {}; ///< draws no pixel
    const Bytes m_bytesA = m_a.Encode();
    const Bytes m_bytesB = m_b.Encode();
    const VobSubEntry m_last = {3000, m_c.Encode(), {}};
};

constexpr std::ptrdiff_t InPixels = 4; // the bytes here are 0C A0: read as a header, the size 3232

} // namespace

TEST_F(SubCarryTest, BytesAfterAUnitPrecedeThoseOfTheNextEntry)
{
    for (std::ptrdiff_t nCount = 1; nCount <= 4; ++nCount) {
        const VobSubPair pair = WithBytesBehind(nCount);
        Open(pair);
        EXPECT_TRUE(Picture(0) == Shown(pair, {m_a})) << nCount;
        EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_b})) << nCount;
        EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_b, m_c})) << nCount;
    }
}

TEST_F(SubCarryTest, BytesAfterAUnitAreDroppedAfterAJump)
{
    for (std::ptrdiff_t nCount = 1; nCount <= 4; ++nCount) {
        const VobSubPair pair = WithBytesBehind(nCount);
        Open(pair);
        EXPECT_TRUE(Picture(0) == Shown(pair, {m_a})) << nCount;
        EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_c})) << nCount;
        EXPECT_TRUE(Picture(0) == Shown(pair, {m_a, m_c, m_a})) << nCount;
        EXPECT_TRUE(Picture(0) == Shown(pair, {m_a, m_c, m_a})) << nCount; // showing an entry again is a jump
        EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_c, m_a, m_b})) << nCount;
    }
}

TEST_F(SubCarryTest, UnitWhoseStartWasDroppedIsNotShown)
{
    const VobSubPair pair = WithBytesBehind(InPixels);
    Open(pair);
    EXPECT_TRUE(Picture(1) == Shown(pair, {}));
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_c}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_c}));
}

TEST_F(SubCarryTest, BytesAfterAUnitThatStartNoneSpoilTheNextEntryUnlessItIsJumpedTo)
{
    Bytes first = m_bytesA;
    first.insert(first.end(), 4, 0xEE); // carried over as the gap's four zeros: a unit of size 0
    const VobSubPair pair(96, 64, {{1000, first, {}}, {2000, m_bytesB, {}}, m_last});
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_nothing}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_nothing, m_c}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_c, m_b}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_c, m_b, m_c}));
}

TEST_F(SubCarryTest, ReturningToTheEndOfASplitUnitKeepsThePictureBefore)
{
    const VobSubPair pair = Split(InPixels);
    PlaySplit(pair);
    const Bytes last = Shown(pair, {m_a, m_b, m_c});
    for (int nTime = 0; nTime < 3; ++nTime)
        EXPECT_TRUE(Picture(2) == last) << nTime;
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_b, m_c, m_a}));
    for (int nTime = 0; nTime < 3; ++nTime)
        EXPECT_TRUE(Picture(2) == Shown(pair, {m_b, m_c, m_a})) << nTime;
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_b, m_c, m_a}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_c, m_a, m_b}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_c, m_a, m_b}));
}

TEST_F(SubCarryTest, EndOfASplitUnitOpenedFirstIsTransparent)
{
    const VobSubPair pair = Split(InPixels);
    Open(pair);
    EXPECT_TRUE(Picture(2) == Shown(pair, {}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {}));
}

// Intentional: the second part is taken for the start of a unit, to which the next entry's bytes are added.
TEST_F(SubCarryTest, EntryAfterTheEndOfASplitUnitIsShownOnlyWhenItIsJumpedTo)
{
    const VobSubPair pair = Split(InPixels);
    Open(pair);
    EXPECT_TRUE(Picture(0) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(3) == Shown(pair, {m_a}));
    EXPECT_TRUE(Picture(3) == Shown(pair, {m_a, m_c}));
}

TEST_F(SubCarryTest, ReturningToAnEndWithAnImpossibleSizeShowsNothing)
{
    Bytes bytes = m_bytesB;
    const VobSubPair pair = Split(Gap(bytes) - bytes.begin()); // the gap's four zeros are read as a header
    PlaySplit(pair);
    for (int nTime = 0; nTime < 3; ++nTime)
        EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_b, m_c, m_nothing})) << nTime;
    EXPECT_TRUE(Picture(3) == Shown(pair, {m_a, m_b, m_c}));
    EXPECT_TRUE(Picture(1) == Shown(pair, {m_a, m_b, m_c}));
    EXPECT_TRUE(Picture(2) == Shown(pair, {m_a, m_c, m_b}));
}
