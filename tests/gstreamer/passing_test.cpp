// Which frames are passed on in their own buffers.
#include "gstreamertest.h"

namespace
{

const GstClockTime Due = 1500 * GST_MSECOND;
const GstClockTime NotDue = 2500 * GST_MSECOND;

class PassingTest : public GStreamerTest
{
protected:
    GstBuffer *NewBuffer(GstClockTime nTime) const
    {
        GstBuffer *pBuffer = gst_buffer_new_memdup(m_strFrame.data(), m_strFrame.size());
        GST_BUFFER_PTS(pBuffer) = nTime;
        return pBuffer;
    }

    /** Whether a frame comes out in the same buffer and memory in which it was pushed. */
    bool StaysInBuffer(const Element &element, GstClockTime nTime, bool bShared) const
    {
        GstBuffer *pBuffer = NewBuffer(nTime);
        const GstMemory *pMemory = gst_buffer_peek_memory(pBuffer, 0);
        GstBuffer *pOutput = element.PushBuffer(bShared ? gst_buffer_ref(pBuffer) : pBuffer);
        const bool bBuffer = pOutput == pBuffer;
        EXPECT_EQ(gst_buffer_peek_memory(pOutput, 0) == pMemory, bBuffer);
        gst_buffer_unref(pOutput);
        if (bShared) {
            EXPECT_TRUE(Bytes(pBuffer) == m_strFrame);
            gst_buffer_unref(pBuffer);
        }
        return bBuffer;
    }
};

} // namespace

TEST_F(PassingTest, WithoutAFileAllFramesPass)
{
    for (const char *pProperties : {"", "location=\"\"", "font-size=20"}) {
        const Element element(pProperties);
        EXPECT_TRUE(element.IsPassthrough());
        EXPECT_TRUE(StaysInBuffer(element, Due, false));
        EXPECT_TRUE(StaysInBuffer(element, Due, true));
        EXPECT_EQ(element.Message(), "");
    }
}

TEST_F(PassingTest, FramesWithoutASubtitleAreNotCopied)
{
    const Element element("location=" + m_strSubtitles);
    EXPECT_FALSE(element.IsPassthrough());
    for (const GstClockTime nTime : {NotDue, GST_CLOCK_TIME_NONE}) {
        EXPECT_TRUE(StaysInBuffer(element, nTime, false));
        EXPECT_TRUE(StaysInBuffer(element, nTime, true));
    }
    EXPECT_TRUE(StaysInBuffer(element, Due, false));
    EXPECT_FALSE(StaysInBuffer(element, Due, true));
}

TEST_F(PassingTest, FilesAreSwitchedOffAndOnInTheMiddle)
{
    const std::string strBurnt = Burnt(m_strFrame, 1500);
    const Element element("");
    for (int nRound = 0; nRound < 3; ++nRound) {
        EXPECT_TRUE(StaysInBuffer(element, Due, true));
        EXPECT_TRUE(element.IsPassthrough());
        element.Set("location", m_strSubtitles);
        EXPECT_FALSE(StaysInBuffer(element, Due, true));
        EXPECT_FALSE(element.IsPassthrough());
        EXPECT_TRUE(element.Push(m_strFrame, Due) == strBurnt);
        element.Set("location", "");
        EXPECT_TRUE(element.Push(m_strFrame, Due) == m_strFrame);
    }
    EXPECT_EQ(element.Message(), "");
}

TEST_F(PassingTest, WhatIsSetWithoutAFileCountsWithTheNext)
{
    const std::string strExpected = Burnt(m_strFrame, 1500, [](void *p) { SetSubtitlePos(p, 30); });
    const Element element("font-size=20 location=" + m_strSubtitles);
    element.Push(m_strFrame, Due);
    element.Set("location", "");
    element.Push(m_strFrame, Due);
    element.Set("pos", "30");
    element.Set("font-size", "0");
    element.Push(m_strFrame, Due);
    element.Set("location", m_strSubtitles);
    EXPECT_TRUE(element.Push(m_strFrame, Due) == strExpected);
}
