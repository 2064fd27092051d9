#pragma once

#include "frames/libsubtitleframe.h"

#include <set>
#include <string>
#include <vector>

/** The decoded frames of a video, and what the library, called directly, burns into them. */
class DecodedFilm
{
public:
    /**
     * Decodes a video with the ffmpeg program.
     *
     * @param strFormat    FFmpeg's name of the decoder's pixel format.
     * @param description  the size and the tags for colours, fields and orientation; the other members are ignored.
     */
    DecodedFilm(const std::string &strVideo, const std::string &strFormat, const SubtitleFrame &description);

    std::size_t Count() const { return m_listFrames.size(); }
    std::size_t FrameBytes() const { return m_listFrames.front().size(); }

    /** A frame with the subtitle that is due at a time. */
    std::string Burnt(std::size_t nFrame, long nMilliseconds, const std::string &strSubtitles) const;

    /**
     * Expects a host's frame to equal the decoded one if no subtitle is due, else Burnt(). As an independent check, the
     * changed bytes of the first plane must have exactly these values, each at least once.
     */
    void ExpectFrame(std::size_t nFrame, const std::string &strFrame, long nMilliseconds,
                     const std::string &strSubtitles, const std::set<int> &setValues) const;

private:
    std::string m_strFormat;
    SubtitleFrame m_description;
    std::vector<std::string> m_listFrames;
};
