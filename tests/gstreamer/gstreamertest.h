#pragma once

#include "support/childprocess.h"
#include "support/temporaryfolder.h"

#include "libsubtitle.h"

#include <functional>
#include <gst/base/gstbasetransform.h>
#include <gst/check/gstharness.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

/** The size of an RGB frame, and its layout by GStreamer's default. */
struct Size {
    int nWidth;
    int nHeight;

    int Stride() const { return (3 * nWidth + 3) / 4 * 4; }
    std::size_t Bytes() const { return static_cast<std::size_t>(Stride()) * nHeight; }
    std::string Caps() const
    {
        return "video/x-raw,format=RGB,width=" + std::to_string(nWidth) + ",height=" + std::to_string(nHeight);
    }
};

/** An odd size, whose rows are padded. */
constexpr Size OddSize = {323, 181};

/** An RGB frame whose bytes, padding included, differ from the colours of text and outline. */
std::string PlainFrame(const Size &size, int nSeed = 0);

using Calls = std::function<void(void *)>;

/** The subtitle file has one subtitle from 1 to 2 seconds and another from 3 to 4. */
class GStreamerTest : public testing::Test
{
protected:
    std::string File(const std::string &strName) const { return (m_folder.Path() / strName).string(); }
    std::string Read(const std::string &strName) const;

    /** Runs a pipeline in the test's folder. */
    Outcome Launch(const std::string &strPipeline) const;
    /** The same; expects success and nothing on standard error. */
    void ExpectLaunch(const std::string &strPipeline) const;

    /**
     * What the library draws when called directly. No pipeline may run meanwhile.
     *
     * @param calls  setters to call on the handle before the file is set.
     */
    static std::string Burnt(const std::string &strFrame, const Size &size, long nMilliseconds,
                             const std::string &strFile, const Calls &calls = {});
    std::string Burnt(const std::string &strFrame, long nMilliseconds, const Calls &calls = {}) const
    {
        return Burnt(strFrame, OddSize, nMilliseconds, m_strSubtitles, calls);
    }

    /** The film: 18 different frames, four per second, the last at 4.25 seconds. */
    static constexpr int Frames = 18;
    static std::string FilmFrame(int n) { return PlainFrame(OddSize, n); }
    /** A source of the film, for a pipeline. */
    std::string Film() const;

    TemporaryFolder m_folder;
    std::string m_strSubtitles = m_folder.Write("text.srt", "1\n00:00:01,000 --> 00:00:02,000\nHello\n\n"
                                                            "2\n00:00:03,000 --> 00:00:04,000\nTwo\nlines\n\n");
    std::string m_strFrame = PlainFrame(OddSize);
};

/** The element by itself, on the test's own thread. */
class Element
{
public:
    /** @param strProperties  in the syntax of gst-launch-1.0. */
    explicit Element(const std::string &strProperties, const Size &size = OddSize);
    ~Element();

    Element(const Element &) = delete;
    Element &operator=(const Element &) = delete;

    GstElement *Get() const { return m_pElement; }
    /** Sets a property from a text. */
    void Set(const char *pProperty, const std::string &strValue) const;
    void SetCaps(const Size &size, const std::string &strMore = "") const;
    void SetCaps(const GstCaps *pCaps) const;
    void SetSegment(const GstSegment &segment) const;
    /** Pushes a tag event with an image orientation. */
    void SetOrientation(const char *pOrientation) const;
    /** Starts a new stream with the same caps and segment. */
    void StartStream() const;
    /** Whether other elements can link to it with these caps. */
    bool Accepts(const std::string &strCaps) const;
    bool IsPassthrough() const { return gst_base_transform_is_passthrough(GST_BASE_TRANSFORM(m_pElement)); }

    /** Pushes a frame. @return the output, "" if the element fails. */
    std::string Push(const std::string &strFrame, GstClockTime nTime) const;
    GstBuffer *PushBuffer(GstBuffer *pBuffer) const { return gst_harness_push_and_pull(m_pHarness, pBuffer); }
    GstFlowReturn LastFlow() const { return m_nFlow; }

    /** The next error or warning on the bus, as "error: text"; "" if there is none. */
    std::string Message() const;
    /** The next warning on the bus, owned by the caller; null if there is none. */
    GError *TakeWarning() const;

private:
    GstHarness *m_pHarness;
    GstElement *m_pElement;
    GstBus *m_pBus;
    mutable GstFlowReturn m_nFlow = GST_FLOW_OK;
};

/** A buffer's content. */
std::string Bytes(GstBuffer *pBuffer);
