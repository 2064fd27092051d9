// Uses the shared library as a host does: through its header alone.
#include "libsubtitle.h"

#include "support/temporaryfolder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/mem.h>
}

namespace
{

constexpr int Width = 320;
constexpr int Height = 180;

class CApiTest : public testing::Test
{
protected:
    ~CApiTest() override { DestroyVideoSubtitle(m_subtitle); }

    /** A grey frame with the subtitle of that time. */
    std::vector<uint8_t> FrameAt(long ms, void *subtitle = nullptr)
    {
        std::vector<uint8_t> pixels(Width * Height * 3, 90);
        AVPicture frame = {{pixels.data()}, {Width * 3}};
        SetSubtitleTimeStamp(subtitle ? subtitle : m_subtitle, ms);
        EXPECT_EQ(ProcessSubtitleFrame(subtitle ? subtitle : m_subtitle, &frame), 0);
        return pixels;
    }

    static long CountChanged(const std::vector<uint8_t> &pixels)
    {
        return std::count_if(pixels.begin(), pixels.end(), [](uint8_t byte) { return byte != 90; });
    }

    TemporaryFolder m_folder;
    std::string m_strFile = m_folder.Write("a.srt", "00:00:01,000 --> 00:00:02,000\nHello\n");
    void *m_subtitle = CreateVideoSubtitle(Width, Height);
};

} // namespace

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

TEST_F(CApiTest, OneHandleOnTwoThreads)
{
    SetSubtitleFile(m_subtitle, m_strFile.c_str(), 0);
    const auto expected = FrameAt(1500);
    std::atomic<bool> done = false;
    std::thread setter([&] {
        for (int i = 0; i < 2000; ++i) {
            SetSubtitleTimeStamp(m_subtitle, 500 + i % 2000);
            SetSubtitleAlpah(m_subtitle, i);
            SetSubtitlePos(m_subtitle, i % 120);
            SetSubtitleFontColor(m_subtitle, i, i, i);
            if (i % 50 == 0)
                SetSubtitleFile(m_subtitle, m_strFile.c_str(), 0);
        }
        done = true;
    });
    std::vector<uint8_t> pixels(Width * Height * 3, 90);
    AVPicture frame = {{pixels.data()}, {Width * 3}};
    while (!done)
        EXPECT_EQ(ProcessSubtitleFrame(m_subtitle, &frame), 0);
    setter.join();

    SetSubtitleAlpah(m_subtitle, 255);
    SetSubtitlePos(m_subtitle, 85);
    SetSubtitleFontColor(m_subtitle, 255, 255, 255);
    EXPECT_EQ(FrameAt(1500), expected);
}

TEST_F(CApiTest, ManyHandlesOnManyThreads)
{
    SetSubtitleFile(m_subtitle, m_strFile.c_str(), 0);
    const auto expected = FrameAt(1500);
    std::vector<void *> handles;
    for (int i = 0; i < 4; ++i)
        handles.push_back(CreateVideoSubtitle(Width, Height));
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (void *handle : handles) {
        threads.emplace_back([&, handle] {
            SetSubtitleFile(handle, m_strFile.c_str(), 0);
            for (int i = 0; i < 50; ++i) {
                if (FrameAt(1500, handle) != expected)
                    ++wrong;
                FrameAt(2500, handle);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    for (void *handle : handles)
        DestroyVideoSubtitle(handle);
}
