// What VisitShown() hands to a visitor, compared with the frames that the renderer draws.
#include "support/videosubtitletest.h"

#include "support/callingvisitor.h"
#include "support/pictureunit.h"
#include "support/vobsubpair.h"

#include <stdexcept>

namespace
{

using Visitor = CallingVisitor<ShownVisitor, ShownSubtitle>;

bool HasInk(const ShownSubtitle &shown)
{
    bool hasInk = false;
    ForPixels(shown.ink, [&](int, int, bool) { hasInk = true; });
    return hasInk;
}

/** Draws all pixels with the portable kernel. */
void Draw(const ShownSubtitle &shown, GuardedFrame &frame)
{
    const AVPicture picture = frame.Picture();
    const BlendTarget target = {picture.data[0], picture.linesize[0], shown.nFrameWidth, shown.nOffset};
    const BlendKernel &kernel = PortableKernel();
    ForPixels(shown.ink, [&](int row, int column, bool isText) {
        const InkBlock pixel = {row, column, isText, 1};
        kernel.Mix(target, &pixel, 1, shown.inkColors, shown.nInkWeight);
    });
    if (shown.nPictureCount > 0)
        kernel.MixPicture(target, shown.pPicture, shown.nPictureCount, shown.nUntouched);
}

class ShownSubtitleTest : public VideoSubtitleTest
{
protected:
    std::uint64_t Version()
    {
        std::uint64_t version = ~std::uint64_t{0};
        Visitor visitor([&](const ShownSubtitle &shown) { version = shown.nVersion; });
        EXPECT_EQ(m_renderer.VisitShown(visitor), 0);
        return version;
    }

    /** Draws what the visitor gets, and expects the same bytes as in a frame by the renderer. */
    void ExpectAsFrame()
    {
        GuardedFrame frame(Width, Height);
        GuardedFrame drawn(Width, Height);
        Process(frame);
        Visitor visitor([&](const ShownSubtitle &shown) {
            EXPECT_EQ(shown.nFrameWidth, Width);
            EXPECT_EQ(shown.nFrameHeight, Height);
            EXPECT_EQ(shown.nVersion == 0, !HasInk(shown) && shown.nPictureCount == 0);
            Draw(shown, drawn);
        });
        EXPECT_EQ(m_renderer.VisitShown(visitor), 0);
        EXPECT_TRUE(frame.Bytes() == drawn.Bytes());
    }

    void ExpectNewVersion(const char *after)
    {
        const std::uint64_t version = Version();
        EXPECT_NE(version, m_nVersion) << after;
        EXPECT_EQ(Version(), version) << after;
        m_nVersion = version;
        ExpectAsFrame();
        EXPECT_EQ(Version(), version) << after << ", and a frame";
    }

    std::uint64_t m_nVersion = 0;
};

} // namespace

TEST_F(ShownSubtitleTest, NothingShowsAsVersionZero)
{
    EXPECT_EQ(Version(), 0U);
    OpenCues();
    EXPECT_EQ(Version(), 0U);
    m_renderer.SetTimeStamp(2500);
    ExpectAsFrame();
    m_renderer.SetTimeStamp(1500);
    m_renderer.SetAlpah(0);
    EXPECT_EQ(Version(), 0U);
    ExpectAsFrame();
}

TEST_F(ShownSubtitleTest, EachChangeOfWhatShowsIsANewVersion)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    ExpectNewVersion("first text");
    m_renderer.SetTimeStamp(1600);
    EXPECT_EQ(Version(), m_nVersion);
    for (const int alpha : {254, 128, 1, 255}) {
        m_renderer.SetAlpah(static_cast<uchar>(alpha));
        ExpectNewVersion("opacity");
    }
    m_renderer.SetLogoPos(40);
    ExpectNewVersion("position");
    m_renderer.SetSubFontColor(1, 2, 3);
    ExpectNewVersion("colour");
    m_renderer.SetSubOutlineColor(1, 4, 5, 6);
    ExpectNewVersion("outline");
    m_renderer.SetFontParam("DejaVu Serif", 14, 1);
    ExpectNewVersion("font");
    m_renderer.SetTimeStamp(3500);
    ExpectNewVersion("other text");
    m_renderer.SetTimeStamp(2500);
    EXPECT_EQ(Version(), 0U);
    m_renderer.SetTimeStamp(5500);
    ExpectNewVersion("text again");
}

TEST_F(ShownSubtitleTest, PicturesShowWithTheirWeights)
{
    const VobSubPair pair(96, 64, {{1000, PictureUnit::Filled(20, 10, 50, 40).Encode(), {}}});
    ASSERT_EQ(m_renderer.SetSubtitleFile(pair.Write(m_folder).c_str(), 0), 0);
    m_renderer.SetTimeStamp(1500);
    for (const int alpha : {255, 254, 128, 1}) {
        m_renderer.SetAlpah(static_cast<uchar>(alpha));
        ExpectNewVersion("opacity");
    }
    m_renderer.SetLogoPos(70);
    ExpectNewVersion("position");
}

TEST_F(ShownSubtitleTest, WhatAVisitorThrowsComesOutAndLeavesTheRendererUsable)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    Visitor visitor([](const ShownSubtitle &) { throw std::runtime_error("visitor"); });
    EXPECT_THROW(m_renderer.VisitShown(visitor), std::runtime_error);
    ExpectNewVersion("throw");
}

TEST_F(ShownSubtitleTest, AnUnconfiguredRendererShowsNothingOfNoSize)
{
    VideoSubtitle renderer;
    int calls = 0;
    Visitor visitor([&](const ShownSubtitle &shown) {
        ++calls;
        EXPECT_EQ(shown.nFrameWidth, 0);
        EXPECT_EQ(shown.nFrameHeight, 0);
        EXPECT_EQ(shown.nVersion, 0U);
    });
    EXPECT_EQ(renderer.VisitShown(visitor), 0);
    EXPECT_EQ(calls, 1);
}
