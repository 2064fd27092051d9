// Subtitles follow stream time, not the clock.
#include "gstreamertest.h"

#include <gst/app/gstappsink.h>

namespace
{

class SeekTest : public GStreamerTest
{
protected:
    static GstSegment Segment()
    {
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        return segment;
    }

    std::string m_strBurnt = Burnt(m_strFrame, 1500);
};

/** A paused pipeline that shows one frame after each seek. */
class Still
{
public:
    explicit Still(const std::string &strPipeline) :
        m_pPipeline(gst_parse_launch((strPipeline + " ! appsink name=sink sync=false").c_str(), nullptr))
    {
        gst_element_set_state(m_pPipeline, GST_STATE_PAUSED);
    }
    ~Still()
    {
        gst_element_set_state(m_pPipeline, GST_STATE_NULL);
        gst_object_unref(m_pPipeline);
    }
    Still(const Still &) = delete;
    Still &operator=(const Still &) = delete;

    void Seek(GstClockTime nTime) const
    {
        const auto nFlags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
        EXPECT_EQ(gst_element_get_state(m_pPipeline, nullptr, nullptr, GST_CLOCK_TIME_NONE), GST_STATE_CHANGE_SUCCESS);
        EXPECT_TRUE(gst_element_seek(m_pPipeline, 1, GST_FORMAT_TIME, nFlags, GST_SEEK_TYPE_SET,
                                     static_cast<gint64>(nTime), GST_SEEK_TYPE_NONE, -1));
    }

    std::string Frame() const
    {
        EXPECT_EQ(gst_element_get_state(m_pPipeline, nullptr, nullptr, GST_CLOCK_TIME_NONE), GST_STATE_CHANGE_SUCCESS);
        GstElement *pSink = gst_bin_get_by_name(GST_BIN(m_pPipeline), "sink");
        GstSample *pSample = gst_app_sink_pull_preroll(GST_APP_SINK(pSink));
        const std::string strFrame = Bytes(gst_sample_get_buffer(pSample));
        gst_sample_unref(pSample);
        gst_object_unref(pSink);
        return strFrame;
    }

private:
    GstElement *m_pPipeline;
};

} // namespace

TEST_F(SeekTest, SegmentsSayWhatTimeItIs)
{
    const Element element("location=" + m_strSubtitles);
    // As after a seek to 1.2 seconds, in a film whose first frame has a time of 10.
    GstSegment segment = Segment();
    segment.start = 11200 * GST_MSECOND;
    segment.time = 1200 * GST_MSECOND;
    element.SetSegment(segment);
    EXPECT_TRUE(element.Push(m_strFrame, 11200 * GST_MSECOND) == m_strBurnt);
    EXPECT_TRUE(element.Push(m_strFrame, 12000 * GST_MSECOND) == m_strBurnt);
    EXPECT_TRUE(element.Push(m_strFrame, 12001 * GST_MSECOND) == m_strFrame);
    EXPECT_TRUE(element.Push(m_strFrame, 1500 * GST_MSECOND) == m_strFrame);
    // An applied rate of 2: the film advances twice as fast as the frames' times.
    segment.start = 0;
    segment.time = 0;
    segment.applied_rate = 2;
    element.SetSegment(segment);
    EXPECT_TRUE(element.Push(m_strFrame, 500 * GST_MSECOND) == m_strBurnt);
    EXPECT_TRUE(element.Push(m_strFrame, 1000 * GST_MSECOND) == m_strBurnt);
    EXPECT_TRUE(element.Push(m_strFrame, 1500 * GST_MSECOND) == Burnt(m_strFrame, 3000));
    // A rate that sinks apply by the clock does not matter.
    segment.applied_rate = 1;
    segment.rate = 2;
    element.SetSegment(segment);
    EXPECT_TRUE(element.Push(m_strFrame, 1500 * GST_MSECOND) == m_strBurnt);
}

TEST_F(SeekTest, FramesThatReachIntoASegmentHaveATime)
{
    const Element element("location=" + m_strSubtitles);
    GstSegment segment = Segment();
    segment.start = 1020 * GST_MSECOND;
    segment.time = 1020 * GST_MSECOND;
    element.SetSegment(segment);
    EXPECT_TRUE(element.Push(m_strFrame, 1000 * GST_MSECOND) == m_strBurnt);
    EXPECT_TRUE(element.Push(m_strFrame, 999 * GST_MSECOND) == m_strFrame);
}

TEST_F(SeekTest, FramesWithoutATimeOfTheFilmPass)
{
    const Element element("location=" + m_strSubtitles);
    // The library ignores negative times, so passing one on would show the last subtitle again.
    EXPECT_TRUE(element.Push(m_strFrame, 1500 * GST_MSECOND) == m_strBurnt);
    EXPECT_TRUE(element.Push(m_strFrame, GST_CLOCK_TIME_NONE) == m_strFrame);
    GstSegment segment = Segment();
    segment.start = 10 * GST_SECOND;
    element.SetSegment(segment);
    EXPECT_TRUE(element.Push(m_strFrame, 11500 * GST_MSECOND) == m_strBurnt);
    EXPECT_TRUE(element.Push(m_strFrame, 8500 * GST_MSECOND) == m_strFrame);
}

TEST_F(SeekTest, SeekingShowsWhatIsDueThere)
{
    std::vector<std::string> listExpected;
    for (int n = 0; n < Frames; ++n)
        listExpected.push_back(Burnt(FilmFrame(n), 250L * n));
    const Still still(Film() + " ! subtitleburn location=" + m_strSubtitles);
    EXPECT_TRUE(still.Frame() == FilmFrame(0));
    for (const int n : {6, 12, 10, 4, 0, 16, 5}) {
        EXPECT_EQ(listExpected[n] == FilmFrame(n), n == 0 || n == 10);
        still.Seek(n * 250 * GST_MSECOND);
        EXPECT_TRUE(still.Frame() == listExpected[n]) << n;
    }
}
