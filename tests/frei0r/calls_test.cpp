// What the plugin calls, and when: this program's own functions replace the library's and log the calls.
#include "frei0rtest.h"

#include "frames/libsubtitleframe.h"
#include "libsubtitle.h"
#include "support/librarycalls.h"

#include <thread>
#include <vector>

using namespace librarycalls;

namespace
{

class CallsOfFrei0rTest : public Frei0rTest
{
protected:
    CallsOfFrei0rTest()
    {
        strLog.clear();
        bMemory = true;
    }
    ~CallsOfFrei0rTest() override { EXPECT_EQ(nBroken.exchange(0), 0); }

    const std::string m_strFrame = Frame();
};

const char *const Beginning = "create 336 184\nburner\nfont \"\" 0 0\nalpha 255\npos 85\nlook 0\ncolor 255 255 255\n"
                              "outline 10 10 10\n";

} // namespace

extern "C" {

void *CreateVideoSubtitle(int width, int height)
{
    const Stay stay(1000, "create " + std::to_string(width) + " " + std::to_string(height));
    return bMemory ? new char : nullptr;
}

void DestroyVideoSubtitle(void *handle)
{
    if (!handle)
        return;
    const Stay stay(1000, "destroy");
    delete static_cast<char *>(handle);
}

void *CreateSubtitleBurner(void *handle) // cppcheck-suppress constParameter ; declared so
{
    return handle && Call("burner") == 0 ? new char : nullptr;
}

void DestroySubtitleBurner(void *burner)
{
    delete static_cast<char *>(burner);
}

int SetSubtitleFile(void * /*handle*/, const char *path, int track)
{
    return Call("file", std::filesystem::path(path).filename(), track);
}

int SetSubtitleTimeStamp(void * /*handle*/, long ms)
{
    return Call("time", ms);
}

int SetSubtitleAlpah(void * /*handle*/, int alpha)
{
    return Call("alpha", alpha);
}

int SetSubtitlePos(void * /*handle*/, int percent)
{
    return Call("pos", percent);
}

int SetSubtitleBurnerLook(void * /*burner*/, int look)
{
    return Call("look", look);
}

int SetSubtitleFontParam(void * /*handle*/, const char *family, int pointSize, int style)
{
    return Call("font", "\"" + std::string(family) + "\"", pointSize, style);
}

int SetSubtitleFontColor(void * /*handle*/, int r, int g, int b)
{
    return Call("color", r, g, b);
}

int SetSubtitleOutlineColor(void * /*handle*/, int r, int g, int b)
{
    return Call("outline", r, g, b);
}

int SubtitlePixelFormat(const char * /*name*/)
{
    return 26;
}

int BurnSubtitle(void * /*burner*/, const SubtitleFrame *frame)
{
    return Call("burn", frame->width, frame->height, frame->linesize[0], frame->format);
}
}

TEST_F(CallsOfFrei0rTest, ASteadyFrameCallsForItselfAlone)
{
    {
        const Instance instance(m_plugin, Width, Height);
        instance.SetText("location", m_strSubtitles);
        EXPECT_EQ(TakeLog(), "");
        instance.Update(m_strFrame, 0.5);
        EXPECT_EQ(TakeLog(), Beginning + std::string("file \"text.srt\" 0\ntime 500\nburn 336 184 1344 26\n"));
        // Some hosts set all parameters before each frame.
        instance.SetText("location", m_strSubtitles);
        instance.SetNumber("alpha", 1);
        instance.SetText("font-family", "");
        instance.Update(m_strFrame, 0.54);
        EXPECT_EQ(TakeLog(), "time 540\nburn 336 184 1344 26\n");
    }
    EXPECT_EQ(TakeLog(), "destroy\n");
}

TEST_F(CallsOfFrei0rTest, ADifferentValueCallsItsSetterAlone)
{
    const Instance instance(m_plugin, Width, Height);
    instance.SetText("location", m_strSubtitles);
    instance.Update(m_strFrame, 0.5);
    const std::string strFrame = "time 500\nburn 336 184 1344 26\n";
    const auto expect = [&](const std::string &strCalls) {
        TakeLog();
        instance.Update(m_strFrame, 0.5);
        EXPECT_EQ(TakeLog(), strCalls + strFrame);
    };
    instance.SetNumber("alpha", 0.5);
    expect("alpha 128\n");
    instance.SetNumber("pos", 0.5);
    expect("pos 50\n");
    instance.SetNumber("font-size", 0.1);
    expect("font \"\" 14 0\n");
    instance.SetText("font-family", "Some Sans");
    instance.SetNumber("bold", 1);
    expect("font \"Some Sans\" 14 1\n");
    instance.SetColor("font-color", 1, 0, 0);
    expect("color 255 0 0\n");
    instance.SetColor("outline-color", 0, 0, 1);
    expect("outline 0 0 255\n");
    instance.SetText("subtitle-track", "3");
    expect("file \"text.srt\" 3\n");
    instance.SetText("offset", "0.0");
    expect("");
    instance.SetNumber("natural", 1);
    expect("look 1\n");
    instance.SetNumber("natural", 0);
    expect("look 0\n");
    // No setter restores the default size, so a new handle is needed.
    instance.SetNumber("font-size", 0);
    expect("create 336 184\ndestroy\nburner\nfont \"Some Sans\" 0 1\nalpha 128\npos 50\nlook 0\ncolor 255 0 0\n"
           "outline 0 0 255\nfile \"text.srt\" 3\n");
}

TEST_F(CallsOfFrei0rTest, NothingIsMadeWithoutAFileOrATime)
{
    const Instance instance(m_plugin, Width, Height);
    instance.Update(m_strFrame, 0.5);
    instance.SetText("location", m_strSubtitles);
    instance.Update(m_strFrame, -1);
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(CallsOfFrei0rTest, WithoutMemoryFramesStayAsTheyAreAndTheNextTriesAgain)
{
    bMemory = false;
    const Instance instance(m_plugin, Width, Height);
    instance.SetText("location", m_strSubtitles);
    EXPECT_TRUE(instance.Update(m_strFrame, 0.5) == m_strFrame);
    EXPECT_EQ(TakeLog(), "create 336 184\n");
    bMemory = true;
    instance.Update(m_strFrame, 0.5);
    EXPECT_EQ(TakeLog(), Beginning + std::string("file \"text.srt\" 0\ntime 500\nburn 336 184 1344 26\n"));
    bMemory = false;
    EXPECT_TRUE(instance.Update(m_strFrame, 0.5) == m_strFrame);
    EXPECT_EQ(TakeLog(), "time 500\n");
}

TEST_F(CallsOfFrei0rTest, HandlesAreMadeAndDestroyedAlone)
{
    std::vector<std::thread> listThreads;
    for (int n = 0; n < 4; ++n) {
        listThreads.emplace_back([&] {
            for (int nRound = 0; nRound < 50; ++nRound) {
                const Instance instance(m_plugin, Width, Height);
                instance.SetText("location", m_strSubtitles);
                for (int nFrame = 0; nFrame < 5; ++nFrame) {
                    instance.SetNumber("font-size", nFrame % 2 ? 0.1 : 0);
                    instance.Update(m_strFrame, 0.5);
                }
            }
        });
    }
    for (std::thread &thread : listThreads)
        thread.join();
    EXPECT_NE(TakeLog().find("destroy\n"), std::string::npos);
}
