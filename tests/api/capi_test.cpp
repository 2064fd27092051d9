// Uses the shared library as a host does: only through its header.
#include "support/capitest.h"
#include "support/pictureunit.h"
#include "support/vobsubpair.h"

#include <algorithm>
#include <cfenv>
#include <climits>
#include <gtest/gtest.h>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/mem.h>
}

TEST_F(CApiTest, NullHandleIsDestroyedByDoingNothing)
{
    DestroyVideoSubtitle(nullptr);
}

TEST_F(CApiTest, NullHandleIsRefusedAndTouchesNothing)
{
    std::vector<uint8_t> pixels(Width * Height * 3, 90);
    AVPicture frame = {{pixels.data()}, {Width * 3}};
    EXPECT_EQ(SetSubtitleFile(nullptr, m_strFile.c_str(), 0), -1);
    EXPECT_EQ(SetSubtitleTimeStamp(nullptr, 1500), -1);
    EXPECT_EQ(ProcessSubtitleFrame(nullptr, &frame), -1);
    EXPECT_EQ(CountChanged(pixels), 0);
    EXPECT_EQ(SetSubtitleAlpah(nullptr, 1), -1);
    EXPECT_EQ(SetSubtitlePos(nullptr, 1), -1);
    EXPECT_EQ(SetSubtitleFontParam(nullptr, "DejaVu Sans", 12, 0), -1);
    EXPECT_EQ(SetSubtitleFontColor(nullptr, 1, 2, 3), -1);
    EXPECT_EQ(SetSubtitleOutlineColor(nullptr, 1, 2, 3), -1);
    AVPicture out = {};
    int rect[4] = {1, 2, 3, 4};
    EXPECT_EQ(TextToBmp(nullptr, "x", &out, rect), -1);
    EXPECT_EQ(out.data[0], nullptr);
    EXPECT_EQ(rect[0], 1);
}

TEST_F(CApiTest, BurnsAFileIntoFrames)
{
    ASSERT_EQ(SetSubtitleFile(m_subtitle, m_strFile.c_str(), 0), 0);
    EXPECT_EQ(CountChanged(FrameAt(500)), 0);
    EXPECT_GT(CountChanged(FrameAt(1000)), 500);
    EXPECT_EQ(FrameAt(1000), FrameAt(2000));
    EXPECT_EQ(CountChanged(FrameAt(2001)), 0);
}

TEST_F(CApiTest, ResultsOfTheSetters)
{
    EXPECT_EQ(SetSubtitleTimeStamp(m_subtitle, 0), 0);
    EXPECT_EQ(SetSubtitleTimeStamp(m_subtitle, -1), -1);
    EXPECT_EQ(SetSubtitleFile(m_subtitle, nullptr, 0), -1);
    EXPECT_EQ(SetSubtitleFile(m_subtitle, "", 0), -1);
    EXPECT_EQ(SetSubtitleFile(m_subtitle, "/missing.srt", 3), 0);
    EXPECT_EQ(SetSubtitleAlpah(m_subtitle, 255), 0);
    EXPECT_EQ(SetSubtitlePos(m_subtitle, 85), -1);
    EXPECT_EQ(SetSubtitlePos(m_subtitle, 84), 0);
    EXPECT_EQ(SetSubtitleFontParam(m_subtitle, "DejaVu Sans", 12, 0), 0);
    EXPECT_EQ(SetSubtitleFontColor(m_subtitle, 255, 255, 255), -1);
    EXPECT_EQ(SetSubtitleFontColor(m_subtitle, 0, 0, 0), 0);
    EXPECT_EQ(SetSubtitleFontColor(m_subtitle, 0, 0, 0), -1);
    EXPECT_EQ(SetSubtitleOutlineColor(m_subtitle, 0, 0, 0), 0);
    EXPECT_EQ(SetSubtitleOutlineColor(m_subtitle, 0, 0, 0), 0);
}

TEST_F(CApiTest, NegativeTimeLeavesTheSubtitleAsItWas)
{
    SetSubtitleFile(m_subtitle, m_strFile.c_str(), 0);
    const auto shown = FrameAt(1500);
    EXPECT_EQ(FrameAt(-1), shown);
}

TEST_F(CApiTest, OnlyTheLowByteOfWiderValuesCounts)
{
    SetSubtitleFile(m_subtitle, m_strFile.c_str(), 0);
    const auto opaque = FrameAt(1500);
    SetSubtitleAlpah(m_subtitle, 0x80);
    EXPECT_NE(FrameAt(1500), opaque);
    SetSubtitleAlpah(m_subtitle, 0x1FF);
    EXPECT_EQ(FrameAt(1500), opaque);
    SetSubtitleAlpah(m_subtitle, 0x100);
    EXPECT_EQ(CountChanged(FrameAt(1500)), 0);
    EXPECT_EQ(SetSubtitleFontColor(m_subtitle, 0x1FF, -1, 0xFFFF), -1);
}

TEST_F(CApiTest, HandleOfNoSizeIsHarmless)
{
    for (const auto &[width, height] : {std::pair(0, 10), {10, 0}, {-3, -3}}) {
        void *subtitle = CreateVideoSubtitle(width, height);
        ASSERT_NE(subtitle, nullptr);
        EXPECT_EQ(SetSubtitleFile(subtitle, m_strFile.c_str(), 0), 0);
        EXPECT_EQ(CountChanged(FrameAt(1500, subtitle)), 0);
        EXPECT_EQ(SetSubtitleFontParam(subtitle, "DejaVu Sans", 12, 0), -1);
        AVPicture out = {};
        int rect[4];
        EXPECT_EQ(TextToBmp(subtitle, "x", &out, rect), -1);
        DestroyVideoSubtitle(subtitle);
    }
}

TEST_F(CApiTest, HandlesAreIndependent)
{
    void *other = CreateVideoSubtitle(Width, Height);
    const std::string file = m_folder.Write("b.srt", "00:00:01,000 --> 00:00:02,000\nSomething else\n");
    SetSubtitleFile(m_subtitle, m_strFile.c_str(), 0);
    SetSubtitleFile(other, file.c_str(), 0);
    const auto first = FrameAt(1500);
    const auto second = FrameAt(1500, other);
    EXPECT_NE(first, second);
    SetSubtitleFontColor(other, 255, 0, 0);
    EXPECT_EQ(FrameAt(1500), first);
    DestroyVideoSubtitle(other);
    EXPECT_EQ(FrameAt(1500), first);
}

TEST_F(CApiTest, SwitchesFiles)
{
    const std::string file = m_folder.Write("b.srt", "00:00:01,000 --> 00:00:02,000\nSomething else\n");
    SetSubtitleFile(m_subtitle, m_strFile.c_str(), 0);
    const auto first = FrameAt(1500);
    SetSubtitleFile(m_subtitle, file.c_str(), 0);
    EXPECT_NE(FrameAt(1500), first);
    SetSubtitleFile(m_subtitle, m_strFile.c_str(), 0);
    EXPECT_EQ(FrameAt(1500), first);
}

TEST_F(CApiTest, AvFrameMayBePassedAsItIs)
{
    SetSubtitleFile(m_subtitle, m_strFile.c_str(), 0);
    const auto expected = FrameAt(1500);
    AVFrame *frame = av_frame_alloc();
    frame->format = AV_PIX_FMT_RGB24;
    frame->width = Width;
    frame->height = Height;
    ASSERT_EQ(av_frame_get_buffer(frame, 64), 0);
    for (int y = 0; y < Height; ++y)
        std::fill_n(frame->data[0] + y * frame->linesize[0], Width * 3, uint8_t{90});
    EXPECT_EQ(ProcessSubtitleFrame(m_subtitle, reinterpret_cast<AVPicture *>(frame)), 0);
    for (int y = 0; y < Height; ++y)
        EXPECT_TRUE(std::equal(expected.begin() + y * Width * 3, expected.begin() + (y + 1) * Width * 3,
                               frame->data[0] + y * frame->linesize[0]));
    av_frame_free(&frame);
}

TEST_F(CApiTest, TextToBmpFreesWhatItHandedOutBefore)
{
    AVPicture out = {};
    int rect[4] = {};
    for (const char *text : {"Hello", "World,\nand more", "", "Hello"}) {
        ASSERT_EQ(TextToBmp(m_subtitle, text, &out, rect), 0);
        EXPECT_EQ(out.linesize[0], rect[2]);
    }
    EXPECT_EQ(std::count(out.data[0], out.data[0] + rect[2] * rect[3], 0), 0);
    EXPECT_GT(std::count(out.data[0], out.data[0] + rect[2] * rect[3], 1), 20);
    av_freep(&out.data[0]);
    av_freep(&out.data[1]);
}

TEST_F(CApiTest, FramesLargerThanAnyVideoShowNothing)
{
    const VobSubPair pair(96, 64, {{1000, PictureUnit::Filled(0, 0, 96, 64).Encode(), {}}});
    const int listSizes[][2] = {{1, INT_MAX}, {INT_MAX, 1}, {1, 1 << 30}, {65537, 4}, {4, 65537}, {16385, 16384}};
    for (const auto &[nWidth, nHeight] : listSizes) {
        void *pHandle = CreateVideoSubtitle(nWidth, nHeight);
        EXPECT_EQ(SetSubtitleFontParam(pHandle, "DejaVu Sans", 20, 0), 0);
        for (const std::string &strFile : {m_strFile, pair.Write(m_folder)}) {
            EXPECT_EQ(SetSubtitleFile(pHandle, strFile.c_str(), 0), 0);
            EXPECT_EQ(SetSubtitleTimeStamp(pHandle, 1500), 0);
            // A line size of 0: all rows share the memory of one.
            std::vector<uint8_t> pixels(3 * static_cast<std::size_t>(std::min(nWidth, 70000)), 90);
            AVPicture frame = {{pixels.data()}, {0}};
            EXPECT_EQ(ProcessSubtitleFrame(pHandle, &frame), 0);
            EXPECT_EQ(CountChanged(pixels), 0);
        }
        AVPicture out = {};
        int rect[4] = {1, 2, 3, 4};
        EXPECT_EQ(TextToBmp(pHandle, "text", &out, rect), -1);
        EXPECT_EQ(out.data[0], nullptr);
        EXPECT_EQ(rect[3], 4);
        DestroyVideoSubtitle(pHandle);
    }
}

TEST_F(CApiTest, FloatingPointEnvironmentOfTheHostMakesNoDifference)
{
    const std::string strTimes = "1\n00:00:01,005 --> 00:00:nan\nA\n\n00:00:01,005 --> 00:00:1e999\nB\n\n"
                                 "00:00:01,005 --> 00:00:02,005\nC\n";
    const std::string strScript = "Dialogue: ,0:00:01.05,0:00:nan,,,,,,,A\nDialogue: ,0:00:01.05,0:00:02.05,,,,,,,B\n";
    const std::string strUnit = "size: 96x64\nid: en, index: 0\ntimestamp: 00:00:nan:nan, filepos: 000000000\n"
                                "timestamp: 00:00:1e999:001, filepos: 000000000\n";
    const std::vector<std::string> listFiles = {m_folder.Write("times.srt", strTimes),
                                                m_folder.Write("times.ass", strScript),
                                                m_folder.Write("times.idx", strUnit), m_strFile};
    const auto frames = [&] {
        std::vector<std::vector<uint8_t>> listFrames;
        for (const std::string &strFile : listFiles) {
            void *pHandle = CreateVideoSubtitle(Width, Height);
            EXPECT_EQ(SetSubtitleFontParam(pHandle, "DejaVu Sans", 20, 0), 0);
            EXPECT_EQ(SetSubtitleFile(pHandle, strFile.c_str(), 0), 0);
            for (const long ms : {1003, 1004, 1005, 1049, 1050, 1051, 2004, 2005, 2050, 2051})
                listFrames.push_back(FrameAt(ms, pHandle));
            DestroyVideoSubtitle(pHandle);
        }
        return listFrames;
    };
    const std::vector<std::vector<uint8_t>> expected = frames();
    std::fenv_t before;
    std::fegetenv(&before);
    std::fesetround(FE_UPWARD);
    std::feclearexcept(FE_ALL_EXCEPT);
    const bool bTraps = feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW) != -1; // not on all processors
    const std::vector<std::vector<uint8_t>> actual = frames();
    const int nRound = std::fegetround();
    const int nTraps = fegetexcept();
    std::fesetenv(&before);
    EXPECT_TRUE(actual == expected);
    EXPECT_EQ(nRound, FE_UPWARD);
    EXPECT_EQ(nTraps, bTraps ? FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW : 0);
}
