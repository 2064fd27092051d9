// The element draws what the library draws, for each of its properties.
#include "gstreamertest.h"

#include <algorithm>

namespace
{

class ElementTest : public GStreamerTest
{
protected:
    /** Expects from the element with these properties what the library draws after these calls, not the default. */
    void ExpectProperties(const std::string &strProperties, const Calls &calls) const
    {
        SCOPED_TRACE(strProperties);
        const std::string strExpected = Burnt(m_strFrame, 1500, calls);
        EXPECT_TRUE(strExpected != Burnt(m_strFrame, 1500));
        const Element element("location=" + m_strSubtitles + " " + strProperties);
        EXPECT_TRUE(element.Push(m_strFrame, 1500 * GST_MSECOND) == strExpected);
        EXPECT_TRUE(element.Push(m_strFrame, 2500 * GST_MSECOND) == m_strFrame);
    }
};

} // namespace

TEST_F(ElementTest, DrawsWhatIsDueAndNothingElse)
{
    const std::string strFirst = Burnt(m_strFrame, 1500);
    const std::string strSecond = Burnt(m_strFrame, 3500);
    ASSERT_TRUE(strFirst != m_strFrame);
    ASSERT_TRUE(strSecond != m_strFrame);
    ASSERT_TRUE(strSecond != strFirst);
    const Element element("location=" + m_strSubtitles);
    for (const auto &[nMilliseconds, strExpected] :
         std::initializer_list<std::pair<int, std::string>>{{0, m_strFrame},
                                                            {999, m_strFrame},
                                                            {1000, strFirst},
                                                            {1001, strFirst},
                                                            {2000, strFirst},
                                                            {2001, m_strFrame},
                                                            {3000, strSecond},
                                                            {4000, strSecond},
                                                            {4001, m_strFrame},
                                                            {1500, strFirst}})
        EXPECT_TRUE(element.Push(m_strFrame, nMilliseconds * GST_MSECOND) == strExpected) << nMilliseconds;
    EXPECT_EQ(element.Message(), "");
}

TEST_F(ElementTest, TimesGoToTheNearestMillisecond)
{
    const std::string strBurnt = Burnt(m_strFrame, 1000);
    const Element element("location=" + m_strSubtitles);
    EXPECT_TRUE(element.Push(m_strFrame, 999499999) == m_strFrame);
    EXPECT_TRUE(element.Push(m_strFrame, 999500000) == strBurnt);
    EXPECT_TRUE(element.Push(m_strFrame, 2000499999) == strBurnt);
    EXPECT_TRUE(element.Push(m_strFrame, 2000500000) == m_strFrame);
}

TEST_F(ElementTest, WithoutAFileNothingIsDrawn)
{
    for (const char *pProperties : {"", "location=\"\"", "font-size=20"}) {
        const Element element(pProperties);
        EXPECT_TRUE(element.Push(m_strFrame, 1500 * GST_MSECOND) == m_strFrame) << pProperties;
        EXPECT_EQ(element.Message(), "");
    }
}

TEST_F(ElementTest, PropertiesDoWhatTheSettersDo)
{
    ExpectProperties("alpha=128", [](void *p) { SetSubtitleAlpah(p, 128); });
    ExpectProperties("alpha=0", [](void *p) { SetSubtitleAlpah(p, 0); });
    ExpectProperties("pos=20", [](void *p) { SetSubtitlePos(p, 20); });
    ExpectProperties("font-family=\"DejaVu Serif\"", [](void *p) { SetSubtitleFontParam(p, "DejaVu Serif", 0, 0); });
    ExpectProperties("font-size=20", [](void *p) { SetSubtitleFontParam(p, "", 20, 0); });
    ExpectProperties("bold=true", [](void *p) { SetSubtitleFontParam(p, nullptr, 0, SUBTITLE_STYLE_BOLD); });
    ExpectProperties("italic=true", [](void *p) { SetSubtitleFontParam(p, nullptr, 0, SUBTITLE_STYLE_ITALIC); });
    ExpectProperties("bold=true italic=true font-size=14 font-family=\"DejaVu Sans\"",
                     [](void *p) { SetSubtitleFontParam(p, "DejaVu Sans", 14, 3); });
    ExpectProperties("font-color=0x20A0F1", [](void *p) { SetSubtitleFontColor(p, 0x20, 0xA0, 0xF1); });
    ExpectProperties("outline-color=0x20A0F1", [](void *p) { SetSubtitleOutlineColor(p, 0x20, 0xA0, 0xF1); });
}

TEST_F(ElementTest, TrackIsTheOneOfAContainer)
{
    for (const char *pName : {"one", "two"})
        m_folder.Write(std::string(pName) + ".srt", "1\n00:00:01,000 --> 00:00:02,000\n" + std::string(pName) + "\n\n");
    const Outcome outcome = ChildProcess::Run({"ffmpeg", "-nostdin", "-v", "error", "-i", File("one.srt"), "-i",
                                               File("two.srt"), "-map", "0", "-map", "1", "-c", "copy", File("a.mkv")});
    ASSERT_EQ(outcome.nExit, 0) << outcome.strError;
    const std::string strOne = Burnt(m_strFrame, OddSize, 1500, File("one.srt"));
    const std::string strTwo = Burnt(m_strFrame, OddSize, 1500, File("two.srt"));
    ASSERT_TRUE(strOne != strTwo);
    const Element element("location=" + File("a.mkv") + " track=1");
    EXPECT_TRUE(element.Push(m_strFrame, 1500 * GST_MSECOND) == strTwo);
    element.Set("track", "0");
    EXPECT_TRUE(element.Push(m_strFrame, 1500 * GST_MSECOND) == strOne);
}

TEST_F(ElementTest, TakesRowsAtAnyDistance)
{
    const gsize nOffset = 7;
    const int nStride = 1031;
    std::string strWide(nOffset + static_cast<std::size_t>(nStride) * OddSize.nHeight, '\x55');
    std::string strExpected = strWide;
    const std::string strBurnt = Burnt(m_strFrame, 1500);
    for (int y = 0; y < OddSize.nHeight; ++y) {
        const std::size_t nFrom = static_cast<std::size_t>(y) * OddSize.Stride();
        const std::size_t nTo = nOffset + static_cast<std::size_t>(y) * nStride;
        std::copy_n(&m_strFrame[nFrom], 3 * OddSize.nWidth, &strWide[nTo]);
        std::copy_n(&strBurnt[nFrom], 3 * OddSize.nWidth, &strExpected[nTo]);
    }
    const Element element("location=" + m_strSubtitles);
    GstBuffer *pBuffer = gst_buffer_new_memdup(strWide.data(), strWide.size());
    GST_BUFFER_PTS(pBuffer) = 1500 * GST_MSECOND;
    gsize offsets[GST_VIDEO_MAX_PLANES] = {nOffset};
    gint strides[GST_VIDEO_MAX_PLANES] = {nStride};
    gst_buffer_add_video_meta_full(pBuffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_RGB, OddSize.nWidth,
                                   OddSize.nHeight, 1, offsets, strides);
    GstBuffer *pOutput = element.PushBuffer(pBuffer);
    ASSERT_NE(pOutput, nullptr);
    EXPECT_TRUE(Bytes(pOutput) == strExpected);
    gst_buffer_unref(pOutput);
}

TEST_F(ElementTest, FramesThatOthersHoldAreCopied)
{
    const std::string strBurnt = Burnt(m_strFrame, 1500);
    const Element element("location=" + m_strSubtitles);
    GstBuffer *pBuffer = gst_buffer_new_memdup(m_strFrame.data(), m_strFrame.size());
    GST_BUFFER_PTS(pBuffer) = 1500 * GST_MSECOND;
    GstBuffer *pOutput = element.PushBuffer(gst_buffer_ref(pBuffer));
    ASSERT_NE(pOutput, nullptr);
    EXPECT_TRUE(Bytes(pOutput) == strBurnt);
    EXPECT_TRUE(Bytes(pBuffer) == m_strFrame);
    gst_buffer_unref(pOutput);
    gst_buffer_unref(pBuffer);
}
