// How the entries of an index are read: their times and positions.
#include "support/subindextest.h"

namespace
{

class SubIndexEntryTest : public SubIndexTest
{
protected:
    /** The start of an entry whose time is written in these 12 characters. */
    int Start(const std::string &time)
    {
        EXPECT_EQ(time.size(), 12U);
        OpenEntries("timestamp: " + time + ", filepos: 000000800\n");
        return m_peer.Items().value(0).nStart;
    }

    std::uint64_t Position(const std::string &position)
    {
        OpenEntries("timestamp: 00:00:01:000, filepos: " + position + "\n");
        EXPECT_EQ(m_peer.Items().size(), 1);
        return m_peer.Items().value(0).nFilePos;
    }
};

} // namespace

TEST_F(SubIndexEntryTest, ReadsTimeAndPosition)
{
    OpenEntries("timestamp: 00:01:02:345, filepos: 00000a800\n");
    ASSERT_EQ(m_peer.Items().size(), 1);
    EXPECT_EQ(m_peer.Items()[0].nStart, 62345);
    EXPECT_EQ(m_peer.Items()[0].nFilePos, 43008U);
    EXPECT_EQ(Start("01:00:00:000"), 3600000);
    EXPECT_EQ(Start("00:00:00:000"), 0);
    EXPECT_EQ(Start("10:59:59:999"), 39599999);
    EXPECT_EQ(Start("00:99:99:999"), 6039999);
}

TEST_F(SubIndexEntryTest, EntriesKeepTheOrderOfTheFile)
{
    OpenEntries("timestamp: 00:00:03:000, filepos: 000001000\n"
                "timestamp: 00:00:01:000, filepos: 000000000\n"
                "timestamp: 00:00:02:000, filepos: 000000800\n"
                "timestamp: 00:00:01:000, filepos: 000000000\n");
    EXPECT_EQ(Starts(), (std::vector<int>{3000, 1000, 2000, 1000}));
}

TEST_F(SubIndexEntryTest, TimeOfFewerThanFourPartsIsZero)
{
    EXPECT_EQ(Start("00:01:02,345"), 0);
    EXPECT_EQ(Start("00:01:02    "), 0);
    EXPECT_EQ(Start("000000062345"), 0);
}

TEST_F(SubIndexEntryTest, PartsBeyondTheFourthAreIgnored)
{
    EXPECT_EQ(Start("0:1:2:345:67"), 62345);
    EXPECT_EQ(Start("0:0:1:::::::"), 1000);
}

TEST_F(SubIndexEntryTest, SecondsAndMillisecondsAreTruncatedTowardZero)
{
    EXPECT_EQ(Start("00:01:02.9:5"), 62005);
    EXPECT_EQ(Start("00:00:02:1.9"), 2001);
    EXPECT_EQ(Start("0:00:05:-1.9"), 4999);
    EXPECT_EQ(Start("0:0:-1.9:000"), -1000);
    EXPECT_EQ(Start("00:00:1e1:05"), 10005);
    EXPECT_EQ(Start("0.9:1.9:0:00"), 0);
}

TEST_F(SubIndexEntryTest, PartOfATimeThatIsNoNumberIsZero)
{
    EXPECT_EQ(Start("aa:bb:cc:ddd"), 0);
    EXPECT_EQ(Start("aa:01:02:345"), 62345);
    EXPECT_EQ(Start("01:bb:02:345"), 3602345);
    EXPECT_EQ(Start("01:01:cc:345"), 3660345);
    EXPECT_EQ(Start("01:01:02:ddd"), 3662000);
    EXPECT_EQ(Start(":::         "), 0);
    EXPECT_EQ(Start("-0:-1:00:000"), -60000);
}

TEST_F(SubIndexEntryTest, HugeTimesWrapRound)
{
    EXPECT_EQ(Start("999999:0:0:0"), 813805952);
    EXPECT_EQ(Start("0:999999:0:0"), -129602144);
    EXPECT_EQ(Start("0:0:1e9:0000"), -727379968);
    EXPECT_EQ(Start("00:0:1e99:05"), 5);
}

TEST_F(SubIndexEntryTest, PositionThatIsNotHexadecimalIsZero)
{
    EXPECT_EQ(Position("00000g800"), 0U);
    EXPECT_EQ(m_peer.Items()[0].strFilePos.toStdString(), "00000g800");
    EXPECT_EQ(Position("800 800"), 0U);
    EXPECT_EQ(Position(""), 0U);
    EXPECT_TRUE(m_peer.Items()[0].strFilePos.isEmpty());
    EXPECT_EQ(Position("10000000000000000"), 0U);
    EXPECT_EQ(m_peer.Items()[0].strFilePos.toStdString(), "10000000000000000");
}

TEST_F(SubIndexEntryTest, PositionMayHaveSixtyFourBits)
{
    EXPECT_EQ(Position("fedcBA9876543210"), 0xFEDCBA9876543210U);
    EXPECT_EQ(Position("100000800  \t"), 0x100000800U);
    EXPECT_EQ(m_peer.Items()[0].strFilePos.toStdString(), "100000800");
    EXPECT_EQ(Position("a"), 10U);
}

TEST_F(SubIndexEntryTest, FieldsOfAnEntryStandAtFixedColumns)
{
    OpenEntries("timestamp:_00:00:01:000___filepos___800\n"    // none of the usual separators
                "timestamp: 00:00:01:000, filepos:000000800\n" // the position lacks its first digit
                "timestamp:  00:00:01:000, filepos: 00000800\n");
    ASSERT_EQ(m_peer.Items().size(), 3);
    EXPECT_EQ(Starts(), (std::vector<int>{1000, 1000, 1000}));
    EXPECT_EQ(m_peer.Items()[0].strFilePos.toStdString(), "__800");
    EXPECT_EQ(m_peer.Items()[1].strFilePos.toStdString(), "00000800");
    EXPECT_EQ(m_peer.Items()[2].strFilePos.toStdString(), "00000800");
}

TEST_F(SubIndexEntryTest, MalformedEntryIsKept)
{
    OpenEntries("timestamp:\ntimestamp: 00:00:01:000\ntimestamp: 00:00:01\n"
                "timestamp: 00:00:02:000, filepos: 000000800\n");
    EXPECT_EQ(Starts(), (std::vector<int>{0, 1000, 0, 2000}));
    EXPECT_EQ(m_peer.Items()[1].nFilePos, 0U);
    EXPECT_TRUE(m_peer.Items()[1].strFilePos.isEmpty());
}
