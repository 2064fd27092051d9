// What the element calls, and when: this program's own functions replace the library's and log the calls.
#include "gstreamertest.h"

#include "libsubtitleframe.h"
#include "support/librarycalls.h"

#include <thread>

using namespace librarycalls;

namespace
{

const GstClockTime Due = 1500 * GST_MSECOND;

bool bDue = true;

class CallsTest : public GStreamerTest
{
protected:
    CallsTest()
    {
        strLog.clear();
        bMemory = true;
        bDue = true;
        nBroken = 0;
    }
};

} // namespace

void *CreateVideoSubtitle(int nWidth, int nHeight)
{
    const Stay stay(1000, "create " + std::to_string(nWidth) + " " + std::to_string(nHeight));
    return bMemory ? new int : nullptr;
}

void DestroyVideoSubtitle(void *pHandle)
{
    const Stay stay(1000, pHandle ? "destroy" : "destroy none");
    delete static_cast<int *>(pHandle);
}

int SetSubtitleFile(void * /*handle*/, const char *pPath, int nTrack)
{
    return Call("file", pPath, nTrack);
}

int SetSubtitleTimeStamp(void * /*handle*/, long nMilliseconds)
{
    return Call("time", nMilliseconds);
}

// Never called by the element.
int ProcessSubtitleFrame(void * /*handle*/, AVPicture *pFrame)
{
    return Call("packed frame", pFrame->linesize[0]);
}

int HasSubtitleTrack(void * /*handle*/)
{
    return Call("track") == 0 ? 1 : -1;
}

void *CreateSubtitleBurner(void *pHandle) // cppcheck-suppress constParameter ; declared so
{
    const Stay stay(1000, pHandle ? "burner" : "burner of none");
    return pHandle && bMemory ? new int : nullptr;
}

void DestroySubtitleBurner(void *pBurner)
{
    const Stay stay(1000, pBurner ? "destroy burner" : "destroy no burner");
    delete static_cast<int *>(pBurner);
}

int SetSubtitleBurnerWhite(void * /*burner*/, double level)
{
    return Call("white", level);
}

int SetSubtitleBurnerLook(void * /*burner*/, int nLook)
{
    return Call("look", nLook);
}

int SetSubtitleBurnerOutline(void * /*burner*/, double width)
{
    return Call("width", width);
}

int SetSubtitleBurnerPixelAspect(void * /*burner*/, int nWidth, int nHeight)
{
    return Call("pixels", nWidth, nHeight);
}

int IsSubtitleDue(void * /*burner*/)
{
    return Call("due") == 0 ? static_cast<int>(bDue) : -1;
}

int BurnSubtitle(void * /*burner*/, const SubtitleFrame *pFrame)
{
    return Call("frame", pFrame->linesize[0]);
}

int SetSubtitleAlpah(void * /*handle*/, int nAlpha)
{
    return Call("alpha", nAlpha);
}

int SetSubtitlePos(void * /*handle*/, int nPercent)
{
    return Call("pos", nPercent);
}

int SetSubtitleFontParam(void * /*handle*/, const char *pFamily, int nPoints, int nStyle)
{
    return Call("font", pFamily, nPoints, nStyle);
}

int SetSubtitleFontColor(void * /*handle*/, int r, int g, int b)
{
    return Call("colour", r, g, b);
}

int SetSubtitleOutlineColor(void * /*handle*/, int r, int g, int b)
{
    return Call("outline", r, g, b);
}

TEST_F(CallsTest, PixelsAreThoseOfThePictureAsItIsShown)
{
    const Element element("location=" + m_strSubtitles);
    TakeLog();
    element.SetCaps(OddSize, ",pixel-aspect-ratio=64/45");
    EXPECT_EQ(TakeLog(), "pixels 64 45\n");
    element.Push(m_strFrame, Due);
    EXPECT_EQ(TakeLog(), "time 1500\ndue\nframe 972\n");
    element.SetCaps(OddSize);
    EXPECT_EQ(TakeLog(), "pixels 1 1\n");
    element.Set("orientation", "90r");
    element.SetCaps(OddSize, ",pixel-aspect-ratio=8/9");
    EXPECT_NE(TakeLog().find("\npixels 9 8\n"), std::string::npos);
}

TEST_F(CallsTest, HandleIsMadeWithTheCapsAndDestroyedAtTheEnd)
{
    {
        const Element element("location=" + m_strSubtitles + " track=3 font-family=Fünf white-level=150.5");
        EXPECT_EQ(TakeLog(),
                  "create 323 181\nburner\ndestroy no burner\ndestroy none\nalpha 255\npos 85\n"
                  "font Fünf 0 0\ncolour 255 255 255\noutline 10 10 10\nwhite 150.5\nlook 0\nwidth 2\nfile " +
                      m_strSubtitles + " 3\ntrack\n");
        EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
        EXPECT_EQ(TakeLog(), "time 1500\ndue\nframe 972\n");
    }
    EXPECT_EQ(TakeLog(), "destroy burner\ndestroy\n");
}

TEST_F(CallsTest, OnlyWhatChangedIsSet)
{
    const Element element("location=" + m_strSubtitles);
    element.Push(m_strFrame, Due);
    TakeLog();
    element.Push(m_strFrame, Due);
    EXPECT_EQ(TakeLog(), "time 1500\ndue\nframe 972\n");
    element.Set("alpha", "7");
    element.Set("alpha", "8");
    element.Push(m_strFrame, Due);
    EXPECT_EQ(TakeLog(), "alpha 8\ntime 1500\ndue\nframe 972\n");
    element.Set("track", "2");
    element.Set("italic", "true");
    element.Push(m_strFrame, Due);
    EXPECT_EQ(TakeLog(), "font  0 2\nfile " + m_strSubtitles + " 2\ntrack\ntime 1500\ndue\nframe 972\n");
    element.Push(m_strFrame, GST_CLOCK_TIME_NONE);
    EXPECT_EQ(TakeLog(), "");
    // New caps of the same size keep the handle.
    element.Set("pos", "1");
    element.SetCaps(OddSize, ",framerate=7/1");
    element.Push(m_strFrame, Due);
    EXPECT_EQ(TakeLog(), "pos 1\ntime 1500\ndue\nframe 972\n");
}

TEST_F(CallsTest, FramesWithoutASubtitleAreNotDrawn)
{
    const Element element("location=" + m_strSubtitles);
    TakeLog();
    bDue = false;
    element.Push(m_strFrame, Due);
    EXPECT_EQ(TakeLog(), "time 1500\ndue\n");
}

TEST_F(CallsTest, WithoutAFileTheLibraryIsNotCalled)
{
    const Size other = {64, 36};
    const Element element("");
    element.Push(m_strFrame, Due);
    element.Set("pos", "20");
    element.SetCaps(other);
    element.Push(PlainFrame(other), Due);
    element.SetCaps(OddSize);
    element.Set("location", File("none.srt"));
    element.Push(m_strFrame, Due);
    EXPECT_EQ(TakeLog(), "");
    element.Set("location", m_strSubtitles);
    element.Push(m_strFrame, Due);
    EXPECT_EQ(TakeLog(), "create 323 181\nburner\ndestroy no burner\ndestroy none\nalpha 255\npos 20\nfont  0 0\n"
                         "colour 255 255 255\noutline 10 10 10\nwhite 203\nlook 0\nwidth 2\nfile " +
                             m_strSubtitles + " 0\ntrack\ntime 1500\ndue\nframe 972\n");
    // The handle survives switching off and on, and then gets the properties set meanwhile.
    element.Set("location", "");
    element.Push(m_strFrame, Due);
    element.Set("pos", "30");
    element.Set("font-color", "0x010203");
    element.Push(m_strFrame, Due);
    EXPECT_EQ(TakeLog(), "");
    element.Set("location", m_strSubtitles);
    element.Push(m_strFrame, Due);
    EXPECT_EQ(TakeLog(), "pos 30\ncolour 1 2 3\nfile " + m_strSubtitles + " 0\ntrack\ntime 1500\ndue\nframe 972\n");
    // For another size it cannot be used any more.
    element.Set("location", "");
    element.SetCaps(other);
    element.Push(PlainFrame(other), Due);
    EXPECT_EQ(TakeLog(), "destroy burner\ndestroy\n");
}

TEST_F(CallsTest, OldHandleIsDestroyedAfterTheNewOneWasMade)
{
    const Size other = {64, 36};
    const Element element("location=" + m_strSubtitles);
    element.Push(m_strFrame, Due);
    TakeLog();
    element.SetCaps(other);
    element.Push(PlainFrame(other), Due);
    EXPECT_EQ(TakeLog(), "create 64 36\nburner\ndestroy burner\ndestroy\nalpha 255\npos 85\nfont  0 0\n"
                         "colour 255 255 255\noutline 10 10 10\nwhite 203\nlook 0\nwidth 2\nfile " +
                             m_strSubtitles + " 0\ntrack\ntime 1500\ndue\nframe 192\n");
}

TEST_F(CallsTest, WithoutMemoryForAHandleItFails)
{
    bMemory = false;
    const Element element("location=" + m_strSubtitles);
    EXPECT_EQ(element.Push(m_strFrame, Due), "");
    EXPECT_EQ(element.LastFlow(), GST_FLOW_NOT_NEGOTIATED);
    EXPECT_EQ(element.Message(), "error: No memory for subtitles.");
    bMemory = true;
}

TEST_F(CallsTest, WithoutMemoryForASubtitleFramesPass)
{
    const Element element("location=" + m_strSubtitles);
    element.Push(m_strFrame, Due);
    bMemory = false;
    EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
    EXPECT_EQ(element.LastFlow(), GST_FLOW_OK);
    EXPECT_EQ(element.Message(), "");
}

TEST_F(CallsTest, HandlesAreMadeAloneOnManyThreads)
{
    constexpr Size Sizes[] = {{8, 6}, {9, 7}};
    std::vector<std::thread> listThreads;
    for (int n = 0; n < 4; ++n) {
        listThreads.emplace_back([&] {
            for (int nRound = 0; nRound < 25; ++nRound) {
                const Element element("location=" + m_strSubtitles, Sizes[0]);
                for (const Size &size : Sizes) {
                    element.SetCaps(size);
                    for (int nFrame = 0; nFrame < 4; ++nFrame) {
                        element.Set("pos", std::to_string(nFrame));
                        element.Push(PlainFrame(size), Due);
                    }
                }
            }
        });
    }
    for (std::thread &thread : listThreads)
        thread.join();
    EXPECT_EQ(nBroken, 0);
}
