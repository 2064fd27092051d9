// Bitmap subtitles through the shared library, as a host uses it.
#include "support/vobsubapitest.h"
#include "vobsub/psstream.h"
#include "vobsub/subtitledecoder.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace
{

class VobSubCApiTest : public VobSubApiTest
{
protected:
    /** The three bytes of a pixel. */
    static Bytes Pixel(const GuardedFrame &frame, int x, int y)
    {
        const std::uint8_t *const pPixel = const_cast<GuardedFrame &>(frame).Pixel(x, y);
        return {pPixel, pPixel + 3};
    }

    /** The pair of the renderer with this number, with a canvas size and a luma of its own. */
    static VobSubPair NumberedPair(int nNumber)
    {
        VobSubPair pair(60 + 20 * nNumber, 40 + 7 * nNumber, {});
        for (int nEntry = 0; nEntry < 5; ++nEntry)
            pair.listLanguages[0].push_back({1000 + 1000 * nEntry, NumberedUnit(nNumber, nEntry).Encode(), {}});
        pair.palette[1] = 0x50 + 0x18 * static_cast<unsigned>(nNumber);
        return pair;
    }
    static PictureUnit NumberedUnit(int nNumber, int nEntry)
    {
        return PictureUnit::Filled(1 + nNumber, 2 * nEntry, 30 + 4 * nEntry, 9 + nNumber);
    }

    /** One of several renderers, and the frame that each entry must give, whatever was shown before. */
    struct Renderer {
        Renderer(const TemporaryFolder &folder, int nNumber) : pair(NumberedPair(nNumber))
        {
            pHandle = CreateVideoSubtitle(pair.nWidth, pair.nHeight);
            EXPECT_EQ(OpenFile(pHandle, pair.Write(folder, "pair" + std::to_string(nNumber))), 0);
            for (int nEntry = 0; nEntry < 5; ++nEntry)
                listExpected.push_back(Shown(pair, {NumberedUnit(nNumber, nEntry)}));
        }
        ~Renderer() { DestroyVideoSubtitle(pHandle); }
        Renderer(const Renderer &) = delete;
        Renderer &operator=(const Renderer &) = delete;

        bool ShowsItsOwn(int nEntry) const
        {
            return FrameAt(pHandle, 1500 + 1000L * nEntry, pair.nWidth, pair.nHeight) == listExpected[nEntry];
        }

        VobSubPair pair;
        void *pHandle;
        std::vector<Bytes> listExpected;
    };
};

} // namespace

TEST_F(VobSubCApiTest, FramesChangeWhileAnEntryIsDueOnly)
{
    ASSERT_EQ(OpenFile(m_pHandle, m_pair.Write(m_folder)), 0);
    EXPECT_TRUE(FrameAt(0) == Untouched());
    EXPECT_TRUE(FrameAt(999) == Untouched());
    EXPECT_TRUE(FrameAt(1000) == Shown(m_pair, {m_a}));
    EXPECT_TRUE(FrameAt(2000) == Shown(m_pair, {m_a}));
    EXPECT_TRUE(FrameAt(2001) == Shown(m_pair, {m_a, m_b}));
    EXPECT_TRUE(FrameAt(3001) == Shown(m_pair, {m_a, m_b, m_c}));
    EXPECT_TRUE(FrameAt(6000) == Shown(m_pair, {m_a, m_b, m_c}));
    EXPECT_TRUE(FrameAt(6001) == Untouched());
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_b, m_c, m_a}));
    EXPECT_TRUE(FrameAt(500) == Untouched());
}

TEST_F(VobSubCApiTest, TransparentPictureBetweenTwoLeavesTheFrameAlone)
{
    PictureUnit clear = m_b;
    clear.nContrasts = 0;
    const VobSubPair pair(Width, Height,
                          {{1000, m_a.Encode(), {}}, {2000, clear.Encode(), {}}, {3000, m_c.Encode(), {}}});
    ASSERT_EQ(OpenFile(m_pHandle, pair.Write(m_folder)), 0);
    EXPECT_TRUE(FrameAt(1500) == Shown(pair, {m_a}));
    EXPECT_TRUE(FrameAt(2500) == Untouched());
    EXPECT_TRUE(FrameAt(3500) == Shown(pair, {m_a, clear, m_c}));
}

TEST_F(VobSubCApiTest, PixelsAreBlendedWithTheFramesOuterBytesSwapped)
{
    ASSERT_EQ(OpenFile(m_pHandle, m_pair.Write(m_folder)), 0);
    ASSERT_EQ(SetSubtitleTimeStamp(m_pHandle, 1500), 0);
    GuardedFrame frame(Width, Height);
    const auto show = [&](int nOpacity) {
        EXPECT_EQ(SetSubtitleAlpah(m_pHandle, nOpacity), 0);
        const Bytes pixel = {10, 20, 30};
        std::copy(pixel.begin(), pixel.end(), frame.Pixel(2, 3));
        AVPicture picture = frame.Picture();
        EXPECT_EQ(ProcessSubtitleFrame(m_pHandle, &picture), 0);
        return Pixel(frame, 2, 3);
    };
    // Luma 235 with alpha 240 at opacity A: a = 240 * A / 255, k = A * a / 255.
    EXPECT_EQ(show(255), (Bytes{222, 222, 221})); // k = 240: (240 * 235 + 15 * 30) / 255, then of 20 and 10
    EXPECT_EQ(show(128), (Bytes{78, 70, 62}));    // a = 120, k = 60: (60 * 235 + 195 * 30) / 255
    EXPECT_EQ(show(20), (Bytes{30, 20, 10}));     // a = 18, k = 1
    EXPECT_EQ(show(2), (Bytes{30, 20, 10}));      // a = 1, k = 0: only the bytes are swapped
    EXPECT_EQ(show(1), (Bytes{10, 20, 30}));      // a = 0
    EXPECT_EQ(show(0), (Bytes{10, 20, 30}));
}

TEST_F(VobSubCApiTest, OpacityTakesEffectAtTheNextFrame)
{
    ASSERT_EQ(OpenFile(m_pHandle, m_pair.Write(m_folder)), 0);
    for (const int nOpacity : {255, 200, 128, 77, 16, 3, 1, 0, 255}) {
        EXPECT_EQ(SetSubtitleAlpah(m_pHandle, nOpacity), 0);
        EXPECT_TRUE(FrameAt(1500) == Blended(Drawn(m_pair, {m_a}), nOpacity)) << nOpacity;
    }
}

TEST_F(VobSubCApiTest, PixelsOfTheTopLeftColourAreNotDrawn)
{
    PictureUnit unit = PictureUnit::Filled(0, 0, 20, 10, 1);
    for (int i = 0; i < 100; ++i)
        unit.listPixels[i * 2 + 1] = 2;
    VobSubPair pair(Width, Height, {{1000, unit.Encode(), {}}, {2000, m_c.Encode(), {}}});
    pair.palette[3] = 0x123400; // luma 0, as on a canvas that nothing was drawn on
    pair.palette[1] = 0x000000;
    ASSERT_EQ(OpenFile(m_pHandle, pair.Write(m_folder)), 0);

    EXPECT_TRUE(FrameAt(2500) == Untouched());
    EXPECT_TRUE(FrameAt(1500) == Shown(pair, {m_c, unit}));
    GuardedFrame frame(Width, Height);
    const GuardedFrame before(Width, Height);
    AVPicture picture = frame.Picture();
    ProcessSubtitleFrame(m_pHandle, &picture);
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            const bool isDrawn = x < 20 && y < 10 && x % 2 == 1;
            EXPECT_EQ(Pixel(frame, x, y) != Pixel(before, x, y), isDrawn) << x << ' ' << y;
        }
    }
}

TEST_F(VobSubCApiTest, PositionMovesThePictureByRowsAndBack)
{
    ASSERT_EQ(OpenFile(m_pHandle, m_pair.Write(m_folder)), 0);
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
    for (const int nPosition : {100, 86, 84, 50, 0, 85}) {
        EXPECT_EQ(SetSubtitlePos(m_pHandle, nPosition), 0);
        const int nRows = nPosition * Height / 100 - 85 * Height / 100;
        EXPECT_TRUE(FrameAt(1500) == Blended(Drawn(m_pair, {m_a}), 255, nRows)) << nPosition;
    }
    EXPECT_EQ(SetSubtitlePos(m_pHandle, 100), 0);
    EXPECT_TRUE(FrameAt(3500) == Blended(Drawn(m_pair, {m_a, m_c}), 255, 10)); // 64 - 54
    EXPECT_EQ(SetSubtitlePos(m_pHandle, 0), 0);
    EXPECT_TRUE(FrameAt(1500) == Untouched()); // all rows are above the frame
}

TEST_F(VobSubCApiTest, TrackChoosesTheLanguage)
{
    VobSubPair pair = m_pair;
    pair.listLanguages.push_back({{1000, m_c.Encode(), {}}, {7000, m_a.Encode(), {}}});
    const std::string strIndex = pair.Write(m_folder);
    ASSERT_EQ(OpenFile(m_pHandle, strIndex, 1), 0);
    EXPECT_TRUE(FrameAt(6500) == Shown(pair, {m_c}));
    EXPECT_EQ(OpenFile(m_pHandle, strIndex, 2), -1);
    EXPECT_TRUE(FrameAt(1500) == Untouched());
    EXPECT_EQ(OpenFile(m_pHandle, strIndex, -1), -1);
    ASSERT_EQ(OpenFile(m_pHandle, strIndex, 0), 0);
    EXPECT_TRUE(FrameAt(1500) == Shown(pair, {m_a}));
}

TEST_F(VobSubCApiTest, IndexThatIsRefusedShowsNothing)
{
    ASSERT_EQ(OpenFile(m_pHandle, m_pair.Write(m_folder)), 0);
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
    EXPECT_EQ(OpenFile(m_pHandle, m_folder.Write("a.idx", "size: 0x0\nid: en, index: 0\n#\n")), -1);
    EXPECT_TRUE(FrameAt(1500) == Untouched());
    EXPECT_EQ(OpenFile(m_pHandle, (m_folder.Path() / "missing.idx").string()), -1);
    EXPECT_TRUE(FrameAt(1500) == Untouched());
    ASSERT_EQ(OpenFile(m_pHandle, m_pair.Write(m_folder, "PAIR")), 0);
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
}

TEST_F(VobSubCApiTest, OneHandleSwitchesFromTextToBitmapsAndBack)
{
    const std::string strText = m_folder.Write("a.srt", "00:00:01,000 --> 00:00:02,000\nHello\n");
    const std::string strIndex = m_pair.Write(m_folder);
    ASSERT_EQ(OpenFile(m_pHandle, strText), 0);
    const Bytes text = FrameAt(1500);
    EXPECT_FALSE(text == Untouched());
    for (int nRound = 0; nRound < 3; ++nRound) {
        ASSERT_EQ(OpenFile(m_pHandle, strIndex), 0);
        EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
        EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_a, m_b}));
        ASSERT_EQ(OpenFile(m_pHandle, strText), 0);
        EXPECT_TRUE(FrameAt(1500) == text);
        EXPECT_TRUE(FrameAt(2500) == Untouched());
    }
}

TEST_F(VobSubCApiTest, RenderersShowTheirOwnPicturesInTurn)
{
    const Renderer first(m_folder, 0);
    auto pSecond = std::make_unique<Renderer>(m_folder, 1);
    auto pThird = std::make_unique<Renderer>(m_folder, 2);
    const auto showAll = [&](int nEntry) {
        EXPECT_TRUE(first.ShowsItsOwn(nEntry)) << nEntry;
        EXPECT_TRUE(!pSecond || pSecond->ShowsItsOwn(nEntry)) << nEntry;
        EXPECT_TRUE(!pThird || pThird->ShowsItsOwn((nEntry + 3) % 5)) << nEntry;
    };
    for (int nEntry = 0; nEntry < 5; ++nEntry)
        showAll(nEntry);
    pSecond.reset();
    for (int nEntry = 0; nEntry < 5; ++nEntry)
        showAll(nEntry);
    pThird.reset(); // it had the decoder
    for (int nEntry = 0; nEntry < 5; ++nEntry)
        showAll(nEntry);
}

TEST_F(VobSubCApiTest, RenderersOfOneCanvasSizeKeepTheirPalettes)
{
    const std::string strFirst = m_pair.Write(m_folder);
    VobSubPair dark = m_pair;
    dark.palette[1] = 0x333333;
    dark.palette[2] = 0x222222;
    void *const pOther = CreateVideoSubtitle(Width, Height);
    ASSERT_EQ(OpenFile(m_pHandle, strFirst), 0);
    ASSERT_EQ(OpenFile(pOther, dark.Write(m_folder, "dark")), 0);
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
    EXPECT_TRUE(FrameAt(pOther, 1500) == Shown(dark, {m_a}));
    EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_b}));
    DestroyVideoSubtitle(pOther);
    EXPECT_TRUE(FrameAt(3500) == Shown(m_pair, {m_c}));
}

TEST_F(VobSubCApiTest, RendererWhoseDecoderIsTakenKeepsItsPictureUpToTheNextEntry)
{
    ASSERT_EQ(OpenFile(m_pHandle, m_pair.Write(m_folder)), 0);
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
    const Renderer other(m_folder, 1);
    EXPECT_TRUE(other.ShowsItsOwn(3));
    EXPECT_TRUE(FrameAt(1600) == Shown(m_pair, {m_a}));
    EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_b}));
}

TEST_F(VobSubCApiTest, HostsOwnUseOfTheDecoderDoesNoHarm)
{
    ASSERT_EQ(OpenFile(m_pHandle, m_pair.Write(m_folder)), 0);
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));

    subtitle_release();
    EXPECT_TRUE(FrameAt(1600) == Shown(m_pair, {m_a}));
    EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_b}));

    const unsigned int palette[16] = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
    subtitle_init(palette, 32, 24);
    EXPECT_TRUE(FrameAt(3500) == Shown(m_pair, {m_c}));

    subtitle_init(palette, 0, 0);
    const Bytes unit = PictureUnit::Filled(0, 0, 9, 9).Encode();
    subtitle_decode(unit.data(), static_cast<int>(unit.size()) / 2);
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));

    subtitle_decode(unit.data(), 20); // the rest never comes
    EXPECT_TRUE(FrameAt(3500) == Shown(m_pair, {m_a, m_c}));

    subtitle_init(palette, 4096, 4096);
    subtitle_release();
    subtitle_release();
    EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_b}));
}

TEST_F(VobSubCApiTest, SelfTestBetweenFramesDoesNoHarm)
{
    ASSERT_EQ(OpenFile(m_pHandle, m_pair.Write(m_folder)), 0);
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.Path());
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
    TestVobSub(); // finds no file
    EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_a, m_b}));
    m_folder.Write("vobsubtest.sub", m_pair.Stream());
    TestVobSub();
    EXPECT_TRUE(FrameAt(3500) == Shown(m_pair, {m_c}));
    std::filesystem::current_path(before);
}

TEST_F(VobSubCApiTest, RenderersOnTwoThreadsShowTheirOwnPictures)
{
    const Renderer first(m_folder, 0);
    const Renderer second(m_folder, 2);
    std::atomic<int> nWrong = 0;
    const auto play = [&](const Renderer &renderer) {
        for (int i = 0; i < 300; ++i)
            if (!renderer.ShowsItsOwn(i * 3 % 5))
                ++nWrong;
    };
    std::thread thread([&] { play(second); });
    play(first);
    thread.join();
    EXPECT_EQ(nWrong, 0);
}

TEST_F(VobSubCApiTest, FilesAreOpenedAndShownOnTwoThreads)
{
    const Renderer first(m_folder, 0);
    const Renderer second(m_folder, 1);
    std::atomic<int> nWrong = 0;
    std::thread opener([&] {
        const std::string strText = m_folder.Write("a.srt", "00:00:01,000 --> 00:00:02,000\nHello\n");
        const std::string strIndex = (m_folder.Path() / "pair1.idx").string();
        for (int i = 0; i < 100; ++i) {
            nWrong += OpenFile(second.pHandle, strText) != 0;
            nWrong += OpenFile(second.pHandle, strIndex) != 0;
            nWrong += !second.ShowsItsOwn(i % 5);
        }
    });
    for (int i = 0; i < 300; ++i)
        if (!first.ShowsItsOwn(i % 5))
            ++nWrong;
    opener.join();
    EXPECT_EQ(nWrong, 0);
}
