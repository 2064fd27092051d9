// The shared library on several threads of a host, on a thread with a small stack, and on cancelled threads.
#include "support/capitest.h"
#include "support/pictureunit.h"
#include "support/vobsubpair.h"

#include <atomic>
#include <chrono>
#include <pthread.h>
#include <set>
#include <thread>

extern "C" {
#include <libavutil/mem.h>
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

TEST_F(CApiTest, FontIsSetBesideFramesOnTwoThreads)
{
    SetSubtitleFile(m_subtitle, m_strFile.c_str(), 0);
    const auto set = [&](int n) {
        EXPECT_EQ(SetSubtitleFontParam(m_subtitle, n % 2 ? "DejaVu Serif" : "DejaVu Sans", n % 2 ? 70 : 60, 0), 0);
        EXPECT_EQ(SetSubtitleOutlineColor(m_subtitle, n % 2 ? 200 : 10, 10, 10), 0);
    };
    std::set<std::vector<uint8_t>> setAllowed;
    for (const int n : {0, 1}) {
        for (const int red : {10, 200}) {
            set(n);
            SetSubtitleOutlineColor(m_subtitle, red, 10, 10);
            setAllowed.insert(FrameAt(1500));
        }
    }
    ASSERT_EQ(setAllowed.size(), 4U);
    std::atomic<bool> isOver = false;
    std::thread other([&] {
        for (int n = 0; n < 60; ++n)
            set(n);
        isOver = true;
    });
    do {
        FrameAt(2500);
        EXPECT_EQ(setAllowed.count(FrameAt(1500)), 1U);
    } while (!isOver);
    other.join();
    const std::vector<uint8_t> last = FrameAt(1500);
    set(1);
    EXPECT_TRUE(FrameAt(1500) == last);
}

namespace
{

/** Shows each file and makes text into a bitmap, on the calling thread. */
void UseAll(const std::vector<std::string> &listFiles)
{
    for (const std::string &strFile : listFiles) {
        void *pHandle = CreateVideoSubtitle(Width, Height);
        EXPECT_EQ(SetSubtitleFontParam(pHandle, "DejaVu Sans", 15, SUBTITLE_STYLE_BOLD | SUBTITLE_STYLE_ITALIC), 0);
        EXPECT_EQ(SetSubtitleFile(pHandle, strFile.c_str(), 0), 0);
        std::vector<uint8_t> pixels(Width * Height * 3);
        AVPicture frame = {{pixels.data()}, {Width * 3}};
        for (long ms = 500; ms < 4000; ms += 500) {
            EXPECT_EQ(SetSubtitleTimeStamp(pHandle, ms), 0);
            EXPECT_EQ(ProcessSubtitleFrame(pHandle, &frame), 0);
        }
        AVPicture out = {};
        int rect[4];
        EXPECT_EQ(TextToBmp(pHandle, "Hello مرحبا 世界 😀", &out, rect), 0);
        av_freep(&out.data[0]);
        av_freep(&out.data[1]);
        DestroyVideoSubtitle(pHandle);
    }
}

class CApiThreadTest : public CApiTest
{
protected:
    CApiThreadTest()
    {
        const VobSubPair pair(96, 64, {{1000, PictureUnit::Filled(0, 0, 96, 64).Encode(), {}}});
        m_listFiles = {m_strFile, pair.Write(m_folder), TEST_DATA "/positioning.ass", TEST_DATA "/sample_MKV_SRT.mkv",
                       m_folder.Write("b.srt", "\xEF\xBB\xBF"
                                               "00:00:01,000 --> 00:00:09,000\nمرحبا 世界 नमस्ते 😀\n")};
    }

    std::vector<std::string> m_listFiles;
};

} // namespace

#ifndef SANITIZED // sanitizers need more stack
TEST_F(CApiThreadTest, NeedsAStackOf128KiB)
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{128} * 1024), 0);
    pthread_t thread;
    const auto run = [](void *pFiles) -> void * {
        UseAll(*static_cast<std::vector<std::string> *>(pFiles));
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &m_listFiles), 0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}
#endif

TEST_F(CApiThreadTest, CancelledThreadEndsOutside)
{
    const auto run = [](void *pFiles) -> void * {
        for (;;) {
            UseAll(*static_cast<std::vector<std::string> *>(pFiles));
            pthread_testcancel();
        }
    };
    for (int n = 0; n < 10; ++n) {
        pthread_t thread;
        ASSERT_EQ(pthread_create(&thread, nullptr, run, &m_listFiles), 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(5 + 3 * n));
        ASSERT_EQ(pthread_cancel(thread), 0);
        void *pResult = nullptr;
        ASSERT_EQ(pthread_join(thread, &pResult), 0);
        EXPECT_EQ(pResult, PTHREAD_CANCELED);
    }
    UseAll(m_listFiles);
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
