// Files that are missing or refused.
#include "gstreamertest.h"

namespace
{

const GstClockTime Due = 1500 * GST_MSECOND;

std::string Refusal(const char *pKind, const std::string &strFile)
{
    return pKind + (": The subtitle file \"" + strFile) + "\" cannot be read or is refused.";
}

class FailureTest : public GStreamerTest
{
protected:
    /** Expects that the element cannot be started with that file. */
    static void ExpectNoStart(const std::string &strFile)
    {
        GstElement *pElement = gst_element_factory_make("subtitleburn", nullptr);
        ASSERT_NE(pElement, nullptr);
        g_object_set(pElement, "location", strFile.c_str(), nullptr);
        GstBus *pBus = gst_bus_new();
        gst_element_set_bus(pElement, pBus);
        EXPECT_EQ(gst_element_set_state(pElement, GST_STATE_PAUSED), GST_STATE_CHANGE_FAILURE);
        GstMessage *pMessage = gst_bus_pop_filtered(pBus, GST_MESSAGE_ERROR);
        ASSERT_NE(pMessage, nullptr);
        GError *pError = nullptr;
        gst_message_parse_error(pMessage, &pError, nullptr);
        EXPECT_TRUE(g_error_matches(pError, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ));
        EXPECT_EQ("error: " + std::string(pError->message), Refusal("error", strFile));
        g_error_free(pError);
        gst_message_unref(pMessage);
        gst_element_set_state(pElement, GST_STATE_NULL);
        gst_element_set_bus(pElement, nullptr);
        gst_object_unref(pBus);
        gst_object_unref(pElement);
    }

    std::string m_strRefused = m_folder.Write("refused.idx", "nothing of an index\n");
};

} // namespace

TEST_F(FailureTest, MissingFileIsAnErrorAtTheStart)
{
    ExpectNoStart(File("none.srt"));
    ExpectNoStart(m_folder.Path().string());
    ExpectNoStart("http://localhost:1/none.srt");
}

TEST_F(FailureTest, RefusedFileIsAnErrorAtTheFirstCaps)
{
    const Element element("location=" + m_strRefused);
    EXPECT_EQ(element.Push(m_strFrame, Due), "");
    EXPECT_EQ(element.LastFlow(), GST_FLOW_NOT_NEGOTIATED);
    EXPECT_EQ(element.Message(), Refusal("error", m_strRefused));
}

TEST_F(FailureTest, LaterItIsAWarningAndTheFilmGoesOn)
{
    const std::string strBurnt = Burnt(m_strFrame, 1500);
    const Element element("location=" + m_strSubtitles);
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strBurnt);
    for (const std::string &strFile : {m_strRefused, File("none.srt"), std::string("http://localhost:1/none.srt")}) {
        SCOPED_TRACE(strFile);
        element.Set("location", strFile);
        EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
        EXPECT_EQ(element.Message(), Refusal("warning", strFile));
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
