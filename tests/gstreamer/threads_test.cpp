// Elements on several threads, each creating and destroying handles while others draw.
#include "gstreamertest.h"

#include <atomic>
#include <thread>

namespace
{

constexpr Size SmallSize = {64, 36};
constexpr Size OtherSize = {67, 38};

class ThreadsTest : public GStreamerTest
{
};

std::atomic<int> nLogged = 0;

void CountLogged(const gchar * /*domain*/, GLogLevelFlags /*level*/, const gchar * /*text*/, gpointer /*data*/)
{
    ++nLogged;
}

} // namespace

TEST_F(ThreadsTest, HandlesAreMadeOnManyThreadsAtOnce)
{
    const std::string strSmall = PlainFrame(SmallSize);
    const std::string strOther = PlainFrame(OtherSize);
    const std::string strSmallBurnt = Burnt(strSmall, SmallSize, 1500, m_strSubtitles);
    const std::string strOtherBurnt = Burnt(strOther, OtherSize, 1500, m_strSubtitles);
    std::atomic<int> nWrong = 0;
    std::vector<std::thread> listThreads;
    for (int n = 0; n < 4; ++n) {
        listThreads.emplace_back([&] {
            for (int nRound = 0; nRound < 20; ++nRound) {
                const Element element("location=" + m_strSubtitles, SmallSize);
                for (int nFrame = 0; nFrame < 5; ++nFrame)
                    nWrong += element.Push(strSmall, 1500 * GST_MSECOND) != strSmallBurnt;
                element.SetCaps(OtherSize);
                for (int nFrame = 0; nFrame < 5; ++nFrame)
                    nWrong += element.Push(strOther, 1500 * GST_MSECOND) != strOtherBurnt;
            }
        });
    }
    for (std::thread &thread : listThreads)
        thread.join();
    EXPECT_EQ(nWrong, 0);
}

// A player's main loop owns GLib's default context while a streaming thread makes the first handle; Qt must not use it.
TEST_F(ThreadsTest, HandleIsMadeBesideAMainLoop)
{
    const std::string strBurnt = Burnt(m_strFrame, 1500);
    const GLogFunc pHandler = g_log_set_default_handler(CountLogged, nullptr);
    ASSERT_TRUE(g_main_context_acquire(nullptr));
    std::thread([&] {
        const Element element("location=" + m_strSubtitles);
        EXPECT_TRUE(element.Push(m_strFrame, 1500 * GST_MSECOND) == strBurnt);
        EXPECT_FALSE(g_main_context_pending(nullptr));
    }).join();
    g_main_context_release(nullptr);
    g_log_set_default_handler(pHandler, nullptr);
    EXPECT_EQ(nLogged, 0);
}
