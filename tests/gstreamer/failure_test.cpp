// Files that are missing or refused.
#include "gstreamertest.h"

namespace
{

const GstClockTime Due = 1500 * GST_MSECOND;

std::string Refusal(const std::string &strFile, int nTrack = 0)
{
    return "warning: The subtitle file \"" + strFile + "\" cannot be read or has no track " + std::to_string(nTrack) +
           ".";
}

class FailureTest : public GStreamerTest
{
protected:
    /** Expects a warning once the caps are set, and frames to pass unchanged; then another file to work as usual. */
    void ExpectWarning(const std::string &strFile) const
    {
        SCOPED_TRACE(strFile);
        const Element element("location=" + strFile);
        EXPECT_EQ(element.Message(), Refusal(strFile));
        EXPECT_TRUE(element.IsPassthrough());
        EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
        EXPECT_EQ(element.LastFlow(), GST_FLOW_OK);
        EXPECT_EQ(element.Message(), "");
        element.Set("location", m_strSubtitles);
        EXPECT_TRUE(element.Push(m_strFrame, Due) == Burnt(m_strFrame, 1500));
        EXPECT_EQ(element.Message(), "");
    }

    std::string m_strRefused = m_folder.Write("refused.idx", "nothing of an index\n");
};

} // namespace

TEST_F(FailureTest, MissingFileIsAWarningAndTheFilmContinues)
{
    ExpectWarning(File("none.srt"));
    ExpectWarning(File("none"));
    ExpectWarning(File("none.idx"));
    ExpectWarning(m_folder.Path().string());
    ExpectWarning("http://localhost:1/none.srt");
}

TEST_F(FailureTest, RefusedFileIsAWarningAndTheFilmContinues)
{
    ExpectWarning(m_strRefused);
}

TEST_F(FailureTest, MissingTrackIsAWarning)
{
    ExpectWarning(m_folder.Write("nothing.mkv", "no container"));
    const std::string strFile = File("a.mkv");
    const Outcome outcome = ChildProcess::Run(
        {"ffmpeg", "-nostdin", "-v", "error", "-i", m_strSubtitles, "-map", "0", "-c", "copy", strFile});
    ASSERT_EQ(outcome.nExit, 0) << outcome.strError;
    const Element element("track=1 location=" + strFile);
    EXPECT_EQ(element.Message(), Refusal(strFile, 1));
    EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
    element.Set("track", "0");
    EXPECT_TRUE(element.Push(m_strFrame, Due) == Burnt(m_strFrame, 1500));
    EXPECT_EQ(element.Message(), "");
    element.Set("track", "7");
    EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
    EXPECT_EQ(element.Message(), Refusal(strFile, 7));
    EXPECT_EQ(element.Message(), "");
}

TEST_F(FailureTest, EachStartWarnsAgain)
{
    for (const std::string &strFile : {m_strRefused, File("none.srt")}) {
        const Element element("location=" + strFile);
        EXPECT_EQ(element.Message(), Refusal(strFile));
        gst_element_set_state(element.Get(), GST_STATE_NULL);
        gst_element_set_state(element.Get(), GST_STATE_PLAYING);
        element.SetCaps(OddSize);
        EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
        EXPECT_EQ(element.Message(), Refusal(strFile));
        EXPECT_EQ(element.Message(), "");
    }
}

TEST_F(FailureTest, WarningIsAboutReading)
{
    const Element element("location=" + File("none.srt"));
    GError *pError = element.TakeWarning();
    ASSERT_NE(pError, nullptr);
    EXPECT_TRUE(g_error_matches(pError, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_READ));
    g_error_free(pError);
}

TEST_F(FailureTest, LaterItIsAWarningAndTheFilmContinues)
{
    const std::string strBurnt = Burnt(m_strFrame, 1500);
    const Element element("location=" + m_strSubtitles);
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strBurnt);
    for (const std::string &strFile : {m_strRefused, File("none.srt"), std::string("http://localhost:1/none.srt")}) {
        SCOPED_TRACE(strFile);
        element.Set("location", strFile);
        EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
        EXPECT_EQ(element.Message(), Refusal(strFile));
        EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
        EXPECT_EQ(element.Message(), "");
        element.Set("location", m_strSubtitles);
        EXPECT_TRUE(element.Push(m_strFrame, Due) == strBurnt);
        EXPECT_EQ(element.Message(), "");
    }
}

TEST_F(FailureTest, WarningsLeaveTheSettings)
{
    const std::string strBurnt = Burnt(m_strFrame, 1500, [](void *p) {
        SetSubtitlePos(p, 30);
        SetSubtitleFontParam(p, nullptr, 20, SUBTITLE_STYLE_ITALIC);
    });
    const Element element("location=" + m_strSubtitles + " pos=30 font-size=20 italic=true");
    element.Push(m_strFrame, Due);
    element.Set("location", File("none.srt"));
    element.Push(m_strFrame, Due);
    element.Set("location", m_strSubtitles);
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strBurnt);
}
