// Changes of properties and of the frame size in the middle of a stream.
#include "gstreamertest.h"

namespace
{

const GstClockTime Due = 1500 * GST_MSECOND;

class ChangeTest : public GStreamerTest
{
};

} // namespace

TEST_F(ChangeTest, PropertiesCountFromTheNextFrame)
{
    const std::string strPlain = Burnt(m_strFrame, 1500);
    const Element element("location=" + m_strSubtitles);
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strPlain);
    // Each property is changed, then set back.
    struct Change {
        const char *pProperty;
        const char *pValue;
        const char *pDefault;
        Calls calls;
    };
    const std::vector<Change> listChanges = {
        {"alpha", "100", "255", [](void *p) { SetSubtitleAlpah(p, 100); }},
        {"pos", "30", "85", [](void *p) { SetSubtitlePos(p, 30); }},
        {"font-family", "DejaVu Serif", "", [](void *p) { SetSubtitleFontParam(p, "DejaVu Serif", 0, 0); }},
        {"font-size", "20", "0", [](void *p) { SetSubtitleFontParam(p, nullptr, 20, 0); }},
        {"bold", "true", "false", [](void *p) { SetSubtitleFontParam(p, nullptr, 0, SUBTITLE_STYLE_BOLD); }},
        {"italic", "true", "false", [](void *p) { SetSubtitleFontParam(p, nullptr, 0, SUBTITLE_STYLE_ITALIC); }},
        {"font-color", "0xFF0000", "0xFFFFFF", [](void *p) { SetSubtitleFontColor(p, 255, 0, 0); }},
        {"outline-color", "0x0000FF", "0x0A0A0A", [](void *p) { SetSubtitleOutlineColor(p, 0, 0, 255); }}};
    for (const Change &change : listChanges) {
        SCOPED_TRACE(change.pProperty);
        const std::string strExpected = Burnt(m_strFrame, 1500, change.calls);
        EXPECT_TRUE(strExpected != strPlain);
        element.Set(change.pProperty, change.pValue);
        EXPECT_TRUE(element.Push(m_strFrame, Due) == strExpected);
        EXPECT_TRUE(element.Push(m_strFrame, Due) == strExpected);
        element.Set(change.pProperty, change.pDefault);
        EXPECT_TRUE(element.Push(m_strFrame, Due) == strPlain);
    }
}

TEST_F(ChangeTest, SeveralPropertiesAtOnce)
{
    const std::string strExpected = Burnt(m_strFrame, 1500, [](void *p) {
        SetSubtitleFontParam(p, "DejaVu Serif", 12, SUBTITLE_STYLE_ITALIC);
        SetSubtitlePos(p, 50);
        SetSubtitleFontColor(p, 1, 2, 3);
    });
    const Element element("location=" + m_strSubtitles + " bold=true");
    element.Push(m_strFrame, Due);
    element.Set("font-family", "DejaVu Serif");
    element.Set("font-size", "12");
    element.Set("bold", "false");
    element.Set("italic", "true");
    element.Set("pos", "50");
    element.Set("font-color", "0x010203");
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strExpected);
}

TEST_F(ChangeTest, PropertiesReturnWhatTheyWereSetTo)
{
    const Element element("location=" + m_strSubtitles + " pos=30 bold=true font-color=0x123456");
    gchar *pFile = nullptr;
    gchar *pFamily = nullptr;
    gint nPos = 0;
    gint nAlpha = 0;
    gboolean bBold = FALSE;
    gboolean bItalic = TRUE;
    guint nFontColor = 0;
    guint nOutlineColor = 0;
    g_object_get(element.Get(), "location", &pFile, "font-family", &pFamily, "pos", &nPos, "alpha", &nAlpha, "bold",
                 &bBold, "italic", &bItalic, "font-color", &nFontColor, "outline-color", &nOutlineColor, nullptr);
    EXPECT_EQ(pFile, m_strSubtitles);
    EXPECT_EQ(pFamily, nullptr);
    EXPECT_EQ(nPos, 30);
    EXPECT_EQ(nAlpha, 255);
    EXPECT_TRUE(bBold);
    EXPECT_FALSE(bItalic);
    EXPECT_EQ(nFontColor, 0x123456U);
    EXPECT_EQ(nOutlineColor, 0x0A0A0AU);
    g_free(pFile);
}

TEST_F(ChangeTest, AnotherFileTakesThePlaceOfTheFirst)
{
    const std::string strOther = m_folder.Write("b.srt", "1\n00:00:01,000 --> 00:00:02,000\nOther\n\n");
    const std::string strBurnt = Burnt(m_strFrame, 1500);
    const std::string strBurntOther = Burnt(m_strFrame, OddSize, 1500, strOther);
    const Element element("location=" + m_strSubtitles);
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strBurnt);
    element.Set("location", strOther);
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strBurntOther);
    EXPECT_TRUE(element.Push(m_strFrame, 3500 * GST_MSECOND) == m_strFrame);
    element.Set("location", "");
    EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
    g_object_set(element.Get(), "location", m_strSubtitles.c_str(), nullptr);
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strBurnt);
    g_object_set(element.Get(), "location", nullptr, nullptr);
    EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
    EXPECT_EQ(element.Message(), "");
}

TEST_F(ChangeTest, SettingTheFileReadsItAgain)
{
    const std::string strBurnt = Burnt(m_strFrame, 1500);
    const Element element("location=" + m_strSubtitles);
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strBurnt);
    m_folder.Write("text.srt", "1\n00:00:01,000 --> 00:00:02,000\nAnew\n\n");
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strBurnt);
    element.Set("location", m_strSubtitles);
    const std::string strAnew = element.Push(m_strFrame, Due);
    EXPECT_TRUE(strAnew != strBurnt);
    EXPECT_TRUE(strAnew == Burnt(m_strFrame, 1500));
}

TEST_F(ChangeTest, NewSizeKeepsFileAndSettings)
{
    const Size other = {641, 363};
    const std::string strOther = PlainFrame(other, 7);
    const Calls calls = [](void *p) {
        SetSubtitlePos(p, 40);
        SetSubtitleFontParam(p, "DejaVu Serif", 0, SUBTITLE_STYLE_BOLD);
        SetSubtitleOutlineColor(p, 9, 99, 199);
    };
    const std::string strFirst = Burnt(m_strFrame, 1500, calls);
    const std::string strSecond = Burnt(strOther, other, 1500, m_strSubtitles, calls);
    const Element element("location=" + m_strSubtitles +
                          " pos=40 font-family=\"DejaVu Serif\" bold=true outline-color=0x0963C7");
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strFirst);
    element.SetCaps(other);
    EXPECT_TRUE(element.Push(strOther, Due) == strSecond);
    EXPECT_TRUE(element.Push(strOther, 2500 * GST_MSECOND) == strOther);
    element.SetCaps(OddSize);
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strFirst);
    EXPECT_EQ(element.Message(), "");
}
