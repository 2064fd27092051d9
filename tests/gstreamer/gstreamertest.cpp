#include "gstreamertest.h"

#include <cstdlib>
#include <iterator>

std::string PlainFrame(const Size &size, int nSeed)
{
    std::string strFrame(size.Bytes(), '\0');
    for (std::size_t n = 0; n < strFrame.size(); ++n)
        strFrame[n] = static_cast<char>(60 + (n + nSeed) % 120);
    return strFrame;
}

std::string GStreamerTest::Read(const std::string &strName) const
{
    std::ifstream stream(m_folder.Path() / strName, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

Outcome GStreamerTest::Launch(const std::string &strPipeline) const
{
    return ChildProcess::Run(
        {"sh", "-c", "cd \"$0\" && gst-launch-1.0 -q --no-fault " + strPipeline, m_folder.Path().string()});
}

void GStreamerTest::ExpectLaunch(const std::string &strPipeline) const
{
    const Outcome outcome = Launch(strPipeline);
    EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
    EXPECT_EQ(outcome.strError, "");
}

std::string GStreamerTest::Film() const
{
    std::string strFrames;
    for (int n = 0; n < Frames; ++n)
        strFrames += FilmFrame(n);
    return "filesrc location=" + m_folder.Write("film", strFrames) +
           " ! rawvideoparse format=rgb width=" + std::to_string(OddSize.nWidth) +
           " height=" + std::to_string(OddSize.nHeight) + " framerate=4/1";
}

std::string GStreamerTest::Burnt(const std::string &strFrame, const Size &size, long nMilliseconds,
                                 const std::string &strFile, const Calls &calls)
{
    std::string strBurnt = strFrame;
    AVPicture picture = {{reinterpret_cast<std::uint8_t *>(strBurnt.data())}, {size.Stride()}};
    void *pHandle = CreateVideoSubtitle(size.nWidth, size.nHeight);
    if (calls)
        calls(pHandle);
    EXPECT_EQ(SetSubtitleFile(pHandle, strFile.c_str(), 0), 0);
    EXPECT_EQ(SetSubtitleTimeStamp(pHandle, nMilliseconds), 0);
    EXPECT_EQ(ProcessSubtitleFrame(pHandle, &picture), 0);
    DestroyVideoSubtitle(pHandle);
    return strBurnt;
}

Element::Element(const std::string &strProperties, const Size &size) :
    m_pHarness(gst_harness_new_parse(("subtitleburn name=burn " + strProperties).c_str())),
    m_pElement(gst_harness_find_element(m_pHarness, "subtitleburn")),
    m_pBus(gst_bus_new())
{
    gst_element_set_bus(m_pHarness->element, m_pBus);
    gst_harness_set_src_caps_str(m_pHarness, size.Caps().c_str());
}

Element::~Element()
{
    gst_object_unref(m_pElement);
    gst_element_set_bus(m_pHarness->element, nullptr);
    gst_harness_teardown(m_pHarness);
    gst_object_unref(m_pBus);
}

void Element::Set(const char *pProperty, const std::string &strValue) const
{
    gst_util_set_object_arg(G_OBJECT(m_pElement), pProperty, strValue.c_str());
}

void Element::SetCaps(const Size &size, const std::string &strMore) const
{
    gst_harness_set_src_caps_str(m_pHarness, (size.Caps() + strMore).c_str());
}

void Element::SetCaps(const GstCaps *pCaps) const
{
    gst_harness_set_src_caps(m_pHarness, gst_caps_copy(pCaps));
}

void Element::SetOrientation(const char *pOrientation) const
{
    GstTagList *pTags = gst_tag_list_new(GST_TAG_IMAGE_ORIENTATION, pOrientation, nullptr);
    EXPECT_TRUE(gst_harness_push_event(m_pHarness, gst_event_new_tag(pTags)));
}

void Element::StartStream() const
{
    GstCaps *pCaps = gst_pad_get_current_caps(m_pHarness->srcpad);
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    EXPECT_TRUE(gst_harness_push_event(m_pHarness, gst_event_new_stream_start("next")));
    EXPECT_TRUE(gst_harness_push_event(m_pHarness, gst_event_new_caps(pCaps)));
    SetSegment(segment);
    gst_caps_unref(pCaps);
}

bool Element::Accepts(const std::string &strCaps) const
{
    GstPad *pPad = gst_element_get_static_pad(m_pElement, "sink");
    GstCaps *pCaps = gst_caps_from_string(strCaps.c_str());
    const bool bAccepts = gst_pad_query_accept_caps(pPad, pCaps);
    gst_caps_unref(pCaps);
    gst_object_unref(pPad);
    return bAccepts;
}

void Element::SetSegment(const GstSegment &segment) const
{
    EXPECT_TRUE(gst_harness_push_event(m_pHarness, gst_event_new_segment(&segment)));
}

std::string Element::Push(const std::string &strFrame, GstClockTime nTime) const
{
    GstBuffer *pBuffer = gst_buffer_new_memdup(strFrame.data(), strFrame.size());
    GST_BUFFER_PTS(pBuffer) = nTime;
    m_nFlow = gst_harness_push(m_pHarness, pBuffer);
    if (m_nFlow != GST_FLOW_OK)
        return "";
    GstBuffer *pOutput = gst_harness_pull(m_pHarness);
    EXPECT_EQ(GST_BUFFER_PTS(pOutput), nTime);
    const std::string strOutput = Bytes(pOutput);
    gst_buffer_unref(pOutput);
    return strOutput;
}

GError *Element::TakeWarning() const
{
    GstMessage *pMessage = gst_bus_pop_filtered(m_pBus, GST_MESSAGE_WARNING);
    GError *pError = nullptr;
    if (pMessage) {
        gst_message_parse_warning(pMessage, &pError, nullptr);
        gst_message_unref(pMessage);
    }
    return pError;
}

std::string Element::Message() const
{
    const auto nTypes = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_WARNING);
    GstMessage *pMessage = gst_bus_pop_filtered(m_pBus, nTypes);
    if (!pMessage)
        return "";
    GError *pError = nullptr;
    const bool bError = GST_MESSAGE_TYPE(pMessage) == GST_MESSAGE_ERROR;
    if (bError)
        gst_message_parse_error(pMessage, &pError, nullptr);
    else
        gst_message_parse_warning(pMessage, &pError, nullptr);
    std::string strMessage = (bError ? "error: " : "warning: ") + std::string(pError->message);
    g_error_free(pError);
    gst_message_unref(pMessage);
    return strMessage;
}

std::string Bytes(GstBuffer *pBuffer)
{
    std::string strBytes(gst_buffer_get_size(pBuffer), '\0');
    gst_buffer_extract(pBuffer, 0, strBytes.data(), strBytes.size());
    return strBytes;
}

int main(int nArguments, char **ppArguments)
{
    // Keep GStreamer's plugin registry in this folder, also for the programs that the tests start.
    const TemporaryFolder folder;
    setenv("GST_REGISTRY", (folder.Path() / "registry").c_str(), 1);
    setenv("GST_PLUGIN_PATH", PLUGIN_FOLDER, 1);
    testing::InitGoogleTest(&nArguments, ppArguments);
    gst_init(nullptr, nullptr);
    return RUN_ALL_TESTS();
}
