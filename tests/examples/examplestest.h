#pragma once

#include "support/childprocess.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

/** Raw RGB frames, and what the library, called directly, burns into them. */
struct Film {
    int nWidth;
    int nHeight;
    std::vector<std::string> listFrames;

    /** Makes different frames without the colours of text and outline. */
    static Film Make(int nWidth, int nHeight, int nFrames);

    std::size_t FrameBytes() const { return std::size_t{3} * nWidth * nHeight; }
    std::string Bytes() const;

    /** Whether the tests' subtitle file has a subtitle at a time; its ends are included. */
    static bool IsDue(long nMilliseconds);

    /** A frame with the subtitle that is due at a time. */
    std::string Burnt(std::size_t nFrame, long nMilliseconds, const std::string &strSubtitles) const;

    /**
     * Expects a host's frame to equal the film's if no subtitle is due, else Burnt(). As an independent check, the
     * changed pixels must have the colours of text and outline, both of them, and lie between 70 and 99 percent of the
     * height.
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

    /** Expects the whole film as burnt at nRate / nScale frames per second. */
    void ExpectFilm(const std::string &strBytes, int nRate, int nScale = 1) const;

    /** Writes the film with the ffmpeg program. @return the file's full name. */
    std::string Video(const std::string &strName, const std::vector<std::string> &listOptions) const;

    TemporaryFolder m_folder;
    Film m_film = Film::Make(322, 180, 40);
    std::string m_strSubtitles = m_folder.Write("text.srt", "1\n00:00:00,400 --> 00:00:00,800\nHello\n\n"
                                                            "2\n00:00:01,200 --> 00:00:01,400\nTwo\nlines\n\n");
};
