#include "render/qtruntime.h"
#include "support/forked.h"
#include "support/videosubtitletest.h"

#include <QCoreApplication>
#include <climits>

TEST_F(VideoSubtitleTest, StartsWithTheDefaults)
{
    VideoSubtitle renderer;
    const VideoSubtitlePeer peer(renderer);
    EXPECT_EQ(peer.Font(), nullptr);
    EXPECT_EQ(peer.Image(), nullptr);
    EXPECT_EQ(peer.Dirty(), 0);
    renderer.CreateVideoSubtitle(720, 587);
    EXPECT_EQ(peer.Font()->pixelSize(), 41);
    renderer.CreateVideoSubtitle(720, 576);
    EXPECT_EQ(peer.Font()->pixelSize(), 41);
    EXPECT_EQ(peer.Font()->weight(), QFont::Normal);
    EXPECT_EQ(peer.Font()->style(), QFont::StyleNormal);
    EXPECT_TRUE(peer.Image()->isNull());
    EXPECT_EQ(peer.FontColor(), 0xFFFFFFFF);
    EXPECT_EQ(peer.OutlineColor(), 0xFF0A0A0A);
    EXPECT_TRUE(peer.Outline());
    EXPECT_EQ(peer.Alpha(), 255);
    EXPECT_EQ(peer.LogoPos(), 85);
    EXPECT_EQ(peer.VideoSize(), QSize(720, 576));
    EXPECT_EQ(peer.Dirty(), 0);
}

TEST_F(VideoSubtitleTest, SizesBelowOneLeaveItUnconfigured)
{
    for (const QSize &size : {QSize(0, 576), QSize(720, 0), QSize(-1, -1), QSize(0, 0)}) {
        VideoSubtitle renderer;
        const VideoSubtitlePeer peer(renderer);
        renderer.CreateVideoSubtitle(size.width(), size.height());
        EXPECT_EQ(peer.Font(), nullptr);
        EXPECT_EQ(peer.Image(), nullptr);
        EXPECT_EQ(renderer.SetFontParam("x", 10, 0), -1);
        AVPicture out = {};
        int rect[4] = {};
        EXPECT_EQ(renderer.TextToBmp("x", &out, rect), -1);
        peer.Subtitle() = QStringLiteral("x");
        GuardedFrame frame(9, 9);
        AVPicture picture = frame.Picture();
        EXPECT_EQ(renderer.ProcessFrame(&picture), 0);
        EXPECT_TRUE(frame.Bytes() == GuardedFrame(9, 9).Bytes());
    }
}

TEST_F(VideoSubtitleTest, CountsInstancesAndMakesOneApplicationObject)
{
    const int before = VideoSubtitle::ms_nInstanceCount;
    EXPECT_GE(before, 1);
    const QCoreApplication *application = QCoreApplication::instance();
    EXPECT_NE(application, nullptr);
    {
        const VideoSubtitle second;
        EXPECT_EQ(VideoSubtitle::ms_nInstanceCount, before + 1);
        EXPECT_EQ(QCoreApplication::instance(), application);
        EXPECT_EQ(qtApp, application);
    }
    EXPECT_EQ(VideoSubtitle::ms_nInstanceCount, before);
    EXPECT_EQ(QCoreApplication::instance(), application);
}

TEST_F(VideoSubtitleTest, ApplicationObjectsAddressStaysAfterItIsDestroyed)
{
    EXPECT_EQ(RunForked([] {
                  const QCoreApplication *application = qtApp;
                  UnInitQt();
                  return application && !QCoreApplication::instance() && qtApp == application ? 0 : 1;
              }),
              0);
}

TEST_F(VideoSubtitleTest, FontParamSetsFamilySizeWeightAndStyle)
{
    EXPECT_EQ(m_renderer.SetFontParam("DejaVu Serif", 30, 3), 0);
    EXPECT_EQ(m_peer.Font()->family(), QStringLiteral("DejaVu Serif"));
    EXPECT_EQ(m_peer.Font()->pointSize(), 30);
    EXPECT_EQ(m_peer.Font()->pixelSize(), -1);
    EXPECT_EQ(m_peer.Font()->weight(), QFont::Bold);
    EXPECT_EQ(m_peer.Font()->style(), QFont::StyleItalic);
    EXPECT_EQ(m_peer.Dirty(), 1);
    EXPECT_EQ(m_renderer.SetFontParam("DejaVu Sans", 20, 4), 0);
    EXPECT_EQ(m_peer.Font()->weight(), QFont::Normal);
    EXPECT_EQ(m_peer.Font()->style(), QFont::StyleNormal);
    EXPECT_EQ(m_renderer.SetFontParam("DejaVu Sans", 20, 1), 0);
    EXPECT_EQ(m_peer.Font()->weight(), QFont::Bold);
    EXPECT_EQ(m_renderer.SetFontParam("DejaVu Sans", 20, 2), 0);
    EXPECT_EQ(m_peer.Font()->weight(), QFont::Normal);
    EXPECT_EQ(m_peer.Font()->style(), QFont::StyleItalic);
}

TEST_F(VideoSubtitleTest, FontParamIsBounded)
{
    EXPECT_EQ(m_renderer.SetFontParam(std::string(1 << 20, '\xFF').c_str(), INT_MAX, 0), 0);
    EXPECT_EQ(m_peer.Font()->family(), QString(1024, QChar::ReplacementCharacter));
    EXPECT_EQ(m_peer.Font()->pointSize(), 4096);
    EXPECT_EQ(m_renderer.SetFontParam("DejaVu Sans", 4096, 0), 0);
    EXPECT_EQ(m_peer.Font()->pointSize(), 4096);
}

TEST_F(VideoSubtitleTest, FontParamKeepsFamilyOrSizeWhereNoneIsGiven)
{
    m_renderer.CreateVideoSubtitle(Width, Height);
    m_renderer.SetFontParam("DejaVu Serif", 0, 0);
    EXPECT_EQ(m_peer.Font()->pixelSize(), Height / 14);
    m_renderer.SetFontParam(nullptr, -3, 1);
    EXPECT_EQ(m_peer.Font()->family(), QStringLiteral("DejaVu Serif"));
    EXPECT_EQ(m_peer.Font()->pixelSize(), Height / 14);
    EXPECT_EQ(m_peer.Font()->weight(), QFont::Bold);
}

TEST_F(VideoSubtitleTest, FontColorReturnsWhetherItChangedAndIsNeverBlack)
{
    EXPECT_EQ(m_renderer.SetSubFontColor(255, 255, 255), -1);
    EXPECT_EQ(m_peer.Dirty(), 0);
    EXPECT_EQ(m_renderer.SetSubFontColor(1, 2, 3), 0);
    EXPECT_EQ(m_peer.FontColor(), 0xFF010203);
    EXPECT_EQ(m_peer.Dirty(), 1);
    EXPECT_EQ(m_renderer.SetSubFontColor(0, 0, 0), 0);
    EXPECT_EQ(m_peer.FontColor(), 0xFF000001);
    EXPECT_EQ(m_renderer.SetSubFontColor(0, 0, 0), -1);
    EXPECT_EQ(m_renderer.SetSubFontColor(0, 0, 1), -1);
}

TEST_F(VideoSubtitleTest, OutlineColorIgnoresEnableAndMayBeBlack)
{
    EXPECT_EQ(m_renderer.SetSubOutlineColor(0, 0, 0, 0), 0);
    EXPECT_EQ(m_peer.OutlineColor(), 0xFF000000);
    EXPECT_TRUE(m_peer.Outline());
    EXPECT_EQ(m_peer.Dirty(), 1);
    m_peer.Dirty() = 0;
    EXPECT_EQ(m_renderer.SetSubOutlineColor(1, 0, 0, 0), 0);
    EXPECT_EQ(m_peer.Dirty(), 1);
}

TEST_F(VideoSubtitleTest, AlphaAndPositionDoNotMakeDirty)
{
    EXPECT_EQ(m_renderer.SetAlpah(7), 0);
    EXPECT_EQ(m_peer.Alpha(), 7);
    EXPECT_EQ(m_renderer.SetAlpah(7), 0);
    EXPECT_EQ(m_renderer.SetLogoPos(50), 0);
    EXPECT_EQ(m_renderer.SetLogoPos(50), -1);
    EXPECT_EQ(m_renderer.SetLogoPos(150), 0);
    EXPECT_EQ(m_peer.LogoPos(), 100);
    EXPECT_EQ(m_renderer.SetLogoPos(101), -1);
    EXPECT_EQ(m_renderer.SetLogoPos(-5), 0);
    EXPECT_EQ(m_peer.LogoPos(), 0);
    EXPECT_EQ(m_renderer.SetLogoPos(-1), -1);
    EXPECT_EQ(m_peer.Dirty(), 0);
}

TEST_F(VideoSubtitleTest, SetSubtitleFileMarksDirtyAndSetsTheAnchorWhateverComesOfIt)
{
    const std::string unknown = m_folder.Write("file.idx", "");
    VideoSubtitle renderer;
    renderer.CreateVideoSubtitle(720, 576);
    const VideoSubtitlePeer peer(renderer);
    const std::string good = m_folder.Write("good.srt", "");
    for (const auto &[path, result] : {std::pair<const char *, int>{nullptr, -1},
                                       {"", -1},
                                       {unknown.c_str(), -1},
                                       {good.c_str(), 0},
                                       {"/missing/file.srt", 0}}) {
        peer.Dirty() = 0;
        peer.AnchorOffset() = 0;
        EXPECT_EQ(renderer.SetSubtitleFile(path, 0), result);
        EXPECT_EQ(peer.Dirty(), 1);
        EXPECT_EQ(peer.AnchorOffset(), 489);
    }
}

TEST_F(VideoSubtitleTest, EmptyPathKeepsTheFileRefusedOneDropsIt)
{
    EXPECT_EQ(OpenCues(), 0);
    EXPECT_EQ(m_renderer.SetSubtitleFile("", 0), -1);
    m_renderer.SetTimeStamp(1500);
    EXPECT_EQ(m_peer.Subtitle(), QStringLiteral("one"));
    EXPECT_EQ(m_renderer.SetSubtitleFile(m_folder.Write("file.idx", "").c_str(), 0), -1);
    EXPECT_EQ(m_peer.Subtitle(), QStringLiteral("one"));
    m_renderer.SetTimeStamp(1500);
    EXPECT_TRUE(m_peer.Subtitle().isEmpty());
}

TEST_F(VideoSubtitleTest, TimeStampMakesDirtyOnlyWhenTheTextChanges)
{
    OpenCues();
    m_peer.Dirty() = 0;
    EXPECT_EQ(m_renderer.SetTimeStamp(500), 0);
    EXPECT_EQ(m_peer.Dirty(), 0);
    EXPECT_EQ(m_renderer.SetTimeStamp(1000), 0);
    EXPECT_EQ(m_peer.Subtitle(), QStringLiteral("one"));
    EXPECT_EQ(m_peer.Dirty(), 1);
    m_peer.Dirty() = 0;
    EXPECT_EQ(m_renderer.SetTimeStamp(1500), 0);
    EXPECT_EQ(m_peer.Dirty(), 0);
    EXPECT_EQ(m_renderer.SetTimeStamp(5500), 0);
    EXPECT_EQ(m_peer.Dirty(), 0);
    EXPECT_EQ(m_renderer.SetTimeStamp(3500), 0);
    EXPECT_EQ(m_peer.Subtitle(), QStringLiteral("two"));
    EXPECT_EQ(m_peer.Dirty(), 1);
    EXPECT_EQ(m_renderer.SetTimeStamp(2500), 0);
    EXPECT_TRUE(m_peer.Subtitle().isEmpty());
}

TEST_F(VideoSubtitleTest, NegativeTimeIsRefusedAndChangesNothing)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    m_peer.Dirty() = 0;
    EXPECT_EQ(m_renderer.SetTimeStamp(-1), -1);
    EXPECT_EQ(m_peer.Subtitle(), QStringLiteral("one"));
    EXPECT_EQ(m_peer.Dirty(), 0);
}
