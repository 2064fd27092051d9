// In a program of its own: the first UTF-16 file of a process decides the byte order of all.
#include "support/wideindextest.h"

namespace
{

class SubIndexBigEndianTest : public WideIndexTest
{
protected:
    SubIndexBigEndianTest() : WideIndexTest(true) {}
};

} // namespace

TEST_F(SubIndexBigEndianTest, ReadsAnIndex)
{
    ExpectRead();
}

TEST_F(SubIndexBigEndianTest, LanguageOnTheLastLineIsRefusedAndTouchesNothing)
{
    ExpectLanguageOnTheLastLineRefused();
}

TEST_F(SubIndexBigEndianTest, LittleEndianIndexIsNotUnderstoodAfterwards)
{
    const std::u16string text = u"size: 8x9\nid: en, index: 0\ntimestamp: 00:00:01:000, filepos: 000000000\n";
    EXPECT_EQ(OpenText(Encode(text, true)), 1);
    EXPECT_EQ(OpenText(Encode(text, false)), 0);
    EXPECT_TRUE(m_peer.Items().isEmpty());
    EXPECT_EQ(OpenText(Encode(text, true)), 1);
    EXPECT_EQ(Starts(), std::vector<int>{1000});
}
