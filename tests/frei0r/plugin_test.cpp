// The plugin's functions, called as by a host: what they draw, and when.
#include "directburn.h"
#include "frei0rtest.h"

#include <atomic>
#include <cmath>
#include <limits>
#include <set>
#include <thread>
#include <vector>

namespace
{

class PluginTest : public Frei0rTest
{
protected:
    PluginTest() { m_instance.SetText("location", m_strSubtitles); }

    std::string Burnt(const std::string &strFrame, long nMilliseconds) const
    {
        return DirectBurn(strFrame, Width, Height, nMilliseconds, m_strSubtitles);
    }

    /** Whether the first subtitle is drawn at a host's time, in seconds. */
    bool IsDrawn(double fTime) const
    {
        const std::string strOut = m_instance.Update(m_strFrame, fTime);
        EXPECT_TRUE(strOut == m_strFrame || strOut == m_strBurnt) << fTime;
        return strOut == m_strBurnt;
    }

    const std::string m_strFrame = Frame();
    const std::string m_strBurnt = Burnt(m_strFrame, 500);
    Instance m_instance{m_plugin, Width, Height};
};

} // namespace

TEST_F(PluginTest, SaysWhatItIs)
{
    f0r_plugin_info_t info = {};
    PLUGIN_CALL(m_plugin, f0r_get_plugin_info)(&info);
    EXPECT_STREQ(info.name, "subtitleburn");
    EXPECT_STREQ(info.author, "The libsubtitle authors");
    EXPECT_EQ(info.plugin_type, F0R_PLUGIN_TYPE_FILTER);
    EXPECT_EQ(info.color_model, F0R_COLOR_MODEL_RGBA8888);
    EXPECT_EQ(info.frei0r_version, FREI0R_MAJOR_VERSION);
    EXPECT_EQ(info.major_version, PLUGIN_MAJOR);
    EXPECT_EQ(info.minor_version, PLUGIN_MINOR);
    EXPECT_EQ(info.num_params, 13);
    EXPECT_STREQ(info.explanation, "Burns the subtitles of a file into video frames");
}

TEST_F(PluginTest, DrawsWhatTheLibraryDraws)
{
    for (int n = 0; n < 40; ++n) {
        const std::string strFrame = Frame(n);
        const std::string strOut = m_instance.Update(strFrame, 0.04 * n);
        EXPECT_TRUE(strOut == Burnt(strFrame, 40L * n)) << n;
        EXPECT_EQ(strOut != strFrame, IsDue(40L * n)) << n;
    }
}

TEST_F(PluginTest, CoveredPixelsBecomeOpaque)
{
    const std::string strOut = m_instance.Update(m_strFrame, 0.5);
    std::size_t nText = 0;
    for (std::size_t n = 0; n < strOut.size(); n += 4) {
        const std::string strPixel = strOut.substr(n, 4);
        if (strPixel == m_strFrame.substr(n, 4))
            continue;
        EXPECT_TRUE(strPixel == "\xff\xff\xff\xff" || strPixel == "\x0a\x0a\x0a\xff");
        nText += strPixel[0] == '\xff' ? 1 : 0;
    }
    EXPECT_GT(nText, 50U);
}

TEST_F(PluginTest, NaturalLookIsSmooth)
{
    const auto colors = [&] {
        const std::string strOut = m_instance.Update(m_strFrame, 0.5);
        std::set<std::string> setColors;
        for (std::size_t n = 0; n < strOut.size(); n += 4) {
            if (strOut.substr(n, 4) != m_strFrame.substr(n, 4))
                setColors.insert(strOut.substr(n, 4));
        }
        return setColors.size();
    };
    m_instance.SetNumber("natural", 1);
    EXPECT_GT(colors(), 50U);
    m_instance.SetNumber("natural", 0);
    EXPECT_EQ(colors(), 2U);
}

TEST_F(PluginTest, DrawsInPlace)
{
    std::string strFrame = m_strFrame;
    m_instance.Update(0.5, strFrame.data(), strFrame.data());
    EXPECT_TRUE(strFrame == m_strBurnt);
}

TEST_F(PluginTest, TimesBecomeTheNearestMillisecond)
{
    EXPECT_FALSE(IsDrawn(0.3994));
    EXPECT_TRUE(IsDrawn(0.3996));
    EXPECT_TRUE(IsDrawn(0.8004));
    EXPECT_FALSE(IsDrawn(0.8006));
    // Multiples of a frame's duration can be slightly above or below the exact time.
    EXPECT_TRUE(IsDrawn(std::nextafter(0.4, 0)));
    EXPECT_TRUE(IsDrawn(std::nextafter(0.8, 1)));
    // At 30 frames per second, frames 12 and 24 are at 400 and 800 ms.
    EXPECT_TRUE(IsDrawn(12 * (1 / 30.0)));
    EXPECT_TRUE(IsDrawn(24 * (1 / 30.0)));
}

TEST_F(PluginTest, TimesThatNoFileHasShowNothing)
{
    for (const double fTime : {0.0, -0.5, -1e300, 1e300, 9.3e15, std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(), std::nan("")})
        EXPECT_FALSE(IsDrawn(fTime)) << fTime;
    EXPECT_TRUE(IsDrawn(0.5));
}

TEST_F(PluginTest, CountsMillisecondsWhereTheHostDoes)
{
    m_instance.SetNumber("milliseconds", 1);
    EXPECT_FALSE(IsDrawn(399.4));
    EXPECT_TRUE(IsDrawn(399.6));
    EXPECT_TRUE(IsDrawn(800.4));
    EXPECT_FALSE(IsDrawn(800.6));
    EXPECT_FALSE(IsDrawn(0.5));
    m_instance.SetNumber("milliseconds", 0);
    EXPECT_TRUE(IsDrawn(0.5));
}

TEST_F(PluginTest, OffsetMovesTheFile)
{
    m_instance.SetText("offset", "0.25");
    EXPECT_FALSE(IsDrawn(0.149));
    EXPECT_TRUE(IsDrawn(0.15));
    EXPECT_TRUE(IsDrawn(0.55));
    EXPECT_FALSE(IsDrawn(0.551));
    m_instance.SetText("offset", "-3");
    EXPECT_FALSE(IsDrawn(0.5));
    EXPECT_TRUE(IsDrawn(3.5));
    m_instance.SetNumber("milliseconds", 1);
    EXPECT_TRUE(IsDrawn(3500));
    for (const char *pOffset : {"", "soon", "1s", "0,5", " 1", "nan", "inf", "1e999"}) {
        m_instance.SetText("offset", pOffset);
        EXPECT_FALSE(IsDrawn(500)) << pOffset;
    }
}

TEST_F(PluginTest, WithoutAFileFramesStayAsTheyAre)
{
    for (const std::string &strFile : {std::string(), File("none.srt"), m_folder.Path().string(),
                                       m_folder.Write("empty.idx", ""), std::string("/dev/null")}) {
        m_instance.SetText("location", strFile);
        EXPECT_FALSE(IsDrawn(0.5)) << strFile;
        m_instance.SetText("location", m_strSubtitles);
        EXPECT_TRUE(IsDrawn(0.5)) << strFile;
    }
    const Instance instance(m_plugin, Width, Height);
    EXPECT_TRUE(instance.Update(m_strFrame, 0.5) == m_strFrame);
    f0r_param_string pNone = nullptr;
    m_instance.Set(0, static_cast<void *>(&pNone));
    EXPECT_FALSE(IsDrawn(0.5));
    EXPECT_EQ(m_instance.Text("location"), "");
}

// Some hosts set all parameters before each frame, which must not read the file each time.
TEST_F(PluginTest, AFileIsReadAgainOnlyWhenItsNameChanges)
{
    EXPECT_TRUE(IsDrawn(0.5));
    m_folder.Write("text.srt", "1\n00:00:09,000 --> 00:00:10,000\nLater\n\n");
    m_instance.SetText("location", m_strSubtitles);
    EXPECT_TRUE(IsDrawn(0.5));
    m_instance.SetText("location", "");
    EXPECT_FALSE(IsDrawn(0.5));
    m_instance.SetText("location", m_strSubtitles);
    EXPECT_FALSE(IsDrawn(0.5));
}

TEST_F(PluginTest, SizesThatCannotBeAreRefused)
{
    for (const auto &[nWidth, nHeight] : std::initializer_list<std::pair<unsigned, unsigned>>{
             {0, 184}, {336, 0}, {0, 0}, {65537, 8}, {8, 65537}, {0xFFFFFFFF, 0xFFFFFFFF}})
        EXPECT_FALSE(Instance(m_plugin, nWidth, nHeight).IsMade()) << nWidth << "x" << nHeight;
    EXPECT_TRUE(Instance(m_plugin, 65536, 8).IsMade());
}

TEST_F(PluginTest, InstancesAreIndependent)
{
    const std::string strOther = m_folder.Write("other.srt", "1\n00:00:00,500 --> 00:00:01,300\nAbove\n\n");
    const Instance other(m_plugin, Width, Height);
    other.SetText("location", strOther);
    other.SetNumber("pos", 0.2);
    for (int n = 0; n < 40; ++n) {
        EXPECT_TRUE(m_instance.Update(Frame(n), 0.04 * n) == Burnt(Frame(n), 40L * n)) << n;
        EXPECT_TRUE(other.Update(Frame(n), 0.04 * n) ==
                    DirectBurn(Frame(n), Width, Height, 40L * n, strOther, [](void *p) { SetSubtitlePos(p, 20); }))
            << n;
    }
}

TEST_F(PluginTest, InstancesWorkOnManyThreadsAtOnce)
{
    std::atomic<int> nWrong = 0;
    std::vector<std::thread> listThreads;
    for (int n = 0; n < 4; ++n) {
        listThreads.emplace_back([&] {
            for (int nRound = 0; nRound < 20; ++nRound) {
                const Instance instance(m_plugin, Width, Height);
                instance.SetText("location", m_strSubtitles);
                nWrong += instance.Update(m_strFrame, 0.5) != m_strBurnt;
                nWrong += instance.Update(m_strFrame, 1) != m_strFrame;
                instance.SetNumber("font-size", 0.2);
                nWrong += instance.Update(m_strFrame, 0.5) == m_strBurnt;
                instance.SetNumber("font-size", 0);
                nWrong += instance.Update(m_strFrame, 0.5) != m_strBurnt;
            }
        });
    }
    for (std::thread &thread : listThreads)
        thread.join();
    EXPECT_EQ(nWrong, 0);
}
