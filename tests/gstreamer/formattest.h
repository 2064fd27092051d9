#pragma once

#include "gstreamertest.h"

#include "libsubtitleframe.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

#include <array>
#include <memory>

/** A GStreamer format and the FFmpeg format with the same layout. */
struct Format {
    const char *pName;
    const char *pFfmpegName;
    std::array<int, 4> planes = {0, 1, 2, 3}; ///< GStreamer's index of each FFmpeg plane
};

/** All formats that the element takes. */
extern const std::vector<Format> Formats;

/** A frame in GStreamer's default layout of a format, which pads rows of odd sizes. */
class RawFrame
{
public:
    /** @param strMore  further fields of the caps, beginning with a comma. */
    RawFrame(const Format &format, const Size &size, const std::string &strMore = "");

    const GstCaps *Caps() const { return m_pCaps.get(); }
    const std::string &Bytes() const { return m_strBytes; }

    /** A copy in a new buffer, with a video meta for the planes. The caller owns it. */
    GstBuffer *NewBuffer(GstClockTime nTime) const;

    /** The frame for the library, with unspecified colours. Points to this object's bytes. */
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
     * What the library, called directly, draws into a frame at 1.5 seconds.
     *
     * @param change  changes the frame's description before.
     * @param calls   setters to call on the handle and the burner before the file is set.
     */
    std::string Burnt(RawFrame frame, const Change &change = {},
                      const std::function<void(void *, void *)> &calls = {}) const;
    /** The element's output for a frame with its caps, at 1.5 seconds. */
    static std::string Pushed(const Element &element, const RawFrame &frame);
};
