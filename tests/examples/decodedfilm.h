#pragma once

#include "frames/libsubtitleframe.h"

#include <set>
#include <string>
#include <vector>

/** The frames of a video in the format of their decoder, and what the library makes of them without any host between. */
class DecodedFilm
{
public:
    /**
     * Has FFmpeg's program decode a video.
     *
     * @param strFormat    that the decoder makes, by FFmpeg's name.
     * @param description  of which the size and what the frames say of their colours, fields and orientation count.
     */
    DecodedFilm(const std::string &strVideo, const std::string &strFormat, const SubtitleFrame &description);

    std::size_t Count() const { return m_listFrames.size(); }
    std::size_t FrameBytes() const { return m_listFrames.front().size(); }

    /** One of the frames with the subtitle due at a time. */
    std::string Burnt(std::size_t nFrame, long nMilliseconds, const std::string &strSubtitles) const;

    /**
     * Expects of a host's frame the decoded bytes where no subtitle is due, and otherwise the very bytes of Burnt(); and,
     * so that not both are wrong in the same way, only these values where the first plane has changed, and all of them.
     */
    void ExpectFrame(std::size_t nFrame, const std::string &strFrame, long nMilliseconds,
                     const std::string &strSubtitles, const std::set<int> &setValues) const;

private:
    std::string m_strFormat;
    SubtitleFrame m_description;
    std::vector<std::string> m_listFrames;
};
