#pragma once

#include "support/childprocess.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

/** Raw frames, and what the library makes of them when it is called without any host between. */
struct Film {
    int nWidth;
    int nHeight;
    std::vector<std::string> listFrames;

    /** Frames that differ from one another, without the colours of text and outline. */
    static Film Make(int nWidth, int nHeight, int nFrames);

    std::size_t FrameBytes() const { return std::size_t{3} * nWidth * nHeight; }
    std::string Bytes() const;

    /** Whether the tests' subtitle file has one at a time; both ends count. */
    static bool IsDue(long nMilliseconds);

    /** One of its frames with the subtitle due at a time. */
    std::string Burnt(std::size_t nFrame, long nMilliseconds, const std::string &strSubtitles) const;

    /**
     * Expects of a host's frame the film's own bytes outside the subtitle's time, and inside it the very bytes of
     * Burnt(); and, so that not both are wrong in the same way, some pixels in the colours of text and outline around
     * row 85 percent, and no other change.
     */
    void ExpectFrame(std::size_t nFrame, const std::string &strFrame, long nMilliseconds,
                     const std::string &strSubtitles) const;
};

/** Runs the examples on a film of raw frames. */
class ExamplesTest : public testing::Test
{
protected:
    /** Full name of a file in the test's folder. */
    std::string File(const std::string &strName) const { return (m_folder.Path() / strName).string(); }

    /** Expects the whole film, at so many frames per second. */
    void ExpectFilm(const std::string &strBytes, int nRate, int nScale = 1) const;

    /** Writes the film with FFmpeg's program, without loss; gives the file's name. */
    std::string Video(const std::string &strName, const std::vector<std::string> &listOptions) const;

    TemporaryFolder m_folder;
    Film m_film = Film::Make(322, 180, 40);
    std::string m_strSubtitles = m_folder.Write("text.srt", "1\n00:00:00,400 --> 00:00:00,800\nHello\n\n"
                                                            "2\n00:00:01,200 --> 00:00:01,400\nTwo\nlines\n\n");
};
