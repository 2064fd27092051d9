#pragma once

#include "gstreamertest.h"

#include "libsubtitleframe.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

#include <array>
#include <memory>

/** A format of GStreamer's and the one of FFmpeg's that has the same layout. */
struct Format {
    const char *pName;
    const char *pFfmpegName;
    std::array<int, 4> planes = {0, 1, 2, 3}; ///< GStreamer's number of each plane of FFmpeg's
};

/** All that the element takes. */
extern const std::vector<Format> Formats;

/** A frame in a format's default layout, which is padded where the size is odd. */
class RawFrame
{
public:
    /** @param strMore  of the caps, after format and size. */
    RawFrame(const Format &format, const Size &size, const std::string &strMore = "");

    const GstCaps *Caps() const { return m_pCaps.get(); }
    const std::string &Bytes() const { return m_strBytes; }

    /** A copy, with a meta that says where the planes are. */
    GstBuffer *NewBuffer(GstClockTime nTime) const;

    /** What the library has to know of it, with nothing known of its colours. */
    SubtitleFrame Description();

private:
    Format m_format;
    std::shared_ptr<GstCaps> m_pCaps;
    GstVideoInfo m_info = {};
    std::string m_strBytes;
};

class FormatTest : public GStreamerTest
{
protected:
    using Change = std::function<void(SubtitleFrame &)>;

    /**
     * What the library draws into a frame when it is called without GStreamer between, at 1.5 seconds.
     *
     * @param change  of the frame's description.
     * @param calls  made on the handle and the burner before the file is set.
     */
    std::string Burnt(RawFrame frame, const Change &change = {},
                      const std::function<void(void *, void *)> &calls = {}) const;
    /** What comes out of the element at 1.5 seconds, with the frame's caps. */
    static std::string Pushed(const Element &element, const RawFrame &frame);
};
