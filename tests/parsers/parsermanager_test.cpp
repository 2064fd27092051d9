#include "parsers/parsermanager.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

namespace
{

const char Cue[] = "00:00:01,000 --> 00:00:02,000\ntext\n";

class ParserManagerTest : public testing::Test
{
protected:
    int Open(const std::string &name) { return m_manager.Open(QString::fromStdString(m_folder.Write(name, Cue)), 0); }

    TemporaryFolder m_folder;
    ParserManager m_manager;
};

} // namespace

TEST_F(ParserManagerTest, AnswersWithoutAParser)
{
    QRect rect(1, 2, 3, 4);
    m_manager.SetVideoSize(1, 1);
    EXPECT_TRUE(m_manager.IsTextSub());
    EXPECT_TRUE(m_manager.GetSubtitle(5000).isEmpty());
    EXPECT_TRUE(m_manager.TextToImage(QStringLiteral("0"), rect).isNull());
    EXPECT_EQ(rect, QRect(1, 2, 3, 4));
}

TEST_F(ParserManagerTest, ForwardsToTheParser)
{
    EXPECT_NE(Open("movie.srt"), 0);
    EXPECT_EQ(m_manager.GetSubtitle(1500), QStringLiteral("text"));
    EXPECT_TRUE(m_manager.IsTextSub());
    m_manager.SetVideoSize(1, 1);
    QRect rect;
    EXPECT_TRUE(m_manager.TextToImage(QStringLiteral("0"), rect).isNull());
}

TEST_F(ParserManagerTest, ExtensionMayBeInUpperCase)
{
    EXPECT_NE(Open("Movie.SRT"), 0);
    EXPECT_EQ(m_manager.GetSubtitle(1500), QStringLiteral("text"));
    EXPECT_NE(Open("a.b.Srt"), 0);
    EXPECT_EQ(m_manager.GetSubtitle(1500), QStringLiteral("text"));
}

TEST_F(ParserManagerTest, ExtensionIsWhatFollowsTheLastDotOfTheWholePath)
{
    Open("clips.srt/movie");
    EXPECT_TRUE(m_manager.GetSubtitle(1500).isEmpty());
    Open("movie.srt.bak");
    EXPECT_TRUE(m_manager.GetSubtitle(1500).isEmpty());
    Open("srt");
    EXPECT_TRUE(m_manager.GetSubtitle(1500).isEmpty());
}

TEST_F(ParserManagerTest, DotAtTheStartIsNoExtension)
{
    m_folder.Write(".srt", Cue);
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.Path());
    m_manager.Open(QStringLiteral(".srt"), 0);
    std::filesystem::current_path(before);
    EXPECT_TRUE(m_manager.GetSubtitle(1500).isEmpty());
}

TEST_F(ParserManagerTest, EmptyPathDropsTheParser)
{
    EXPECT_NE(Open("movie.srt"), 0);
    EXPECT_EQ(m_manager.Open(QString(), 0), 0);
    EXPECT_TRUE(m_manager.GetSubtitle(1500).isEmpty());
}

TEST_F(ParserManagerTest, ParserThatRefusesItsFileStays)
{
    EXPECT_NE(Open("movie.srt"), 0);
    EXPECT_EQ(Open("movie.idx"), 0);
    EXPECT_TRUE(m_manager.GetSubtitle(1500).isEmpty());
    EXPECT_FALSE(m_manager.IsTextSub());
}
