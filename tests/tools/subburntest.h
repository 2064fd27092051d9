#pragma once

#include "support/childprocess.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

using Arguments = std::vector<std::string>;

/** Bounds of a set of pixels; right and bottom are exclusive. */
struct Bounds {
    int nLeft = 1 << 20;
    int nTop = 1 << 20;
    int nRight = 0;
    int nBottom = 0;

    bool Empty() const { return nRight <= nLeft; }
    void Add(int x, int y);
};

/** Runs subburn on clips made by ffmpeg; ffmpeg and ffprobe examine the outputs. */
class SubburnTest : public testing::Test
{
protected:
    SubburnTest();

    /** Full name of a file in the test's folder. */
    std::string File(const std::string &strName) const { return (m_folder.Path() / strName).string(); }

    /** Makes a clip with the ffmpeg program. */
    std::string Clip(const std::string &strName, const Arguments &listArguments) const;

    /** The usual clip: moving shapes, 320x180, 25 frames per second, two seconds. */
    std::string UsualClip(const std::string &strName = "in.mkv") const;

    /** The content of a Blu-ray subtitle file: a picture from 0.4 to 0.8 seconds. */
    static std::string PictureSubtitles();

    /** Runs subburn with the test's subtitle file. */
    Outcome Subburn(const Arguments &listArguments, const std::string &strInput = "",
                    const ChildProcess::Environment &listExtra = {}) const;

    /** The same; expects success without errors. @return the output's full name. */
    std::string Burn(const std::string &strInput, const std::string &strOutput, const Arguments &listOptions) const;

    /** Decoded frames in a pixel format, as stored. */
    std::vector<std::string> Frames(const std::string &strFile, const std::string &strFormat) const;

    /** The same, turned as a player shows them. */
    std::vector<std::string> ShownFrames(const std::string &strFile, const std::string &strFormat) const;

    /** What ffprobe prints about the entries. */
    std::string Probe(const std::string &strFile, const std::string &strEntries, const std::string &strStreams = "",
                      const std::string &strFormat = "default=nw=1") const;

    /** Presentation times of the video frames in seconds, one per line. */
    std::string Times(const std::string &strFile) const;

    /** A file's bytes. */
    static std::string Content(const std::string &strFile);

    /** Names in the test's folder, hidden ones too. */
    std::vector<std::string> Names() const;

    /** Bounds of the difference of two pictures. @param nBytes  per pixel. */
    static Bounds Difference(const std::string &strA, const std::string &strB, int nWidth, int nBytes = 1);

    /** Whether the usual subtitles have one at the time of a frame, at 25 frames per second. */
    static bool IsDue(size_t nFrame) { return (nFrame >= 10 && nFrame <= 20) || (nFrame >= 30 && nFrame <= 35); }

    TemporaryFolder m_folder;
    // Has "Hello" from 0.4 to 0.8 seconds, two lines from 1.2 to 1.4. If the name is empty, --subtitles is not given.
    std::string m_strSubtitles;

private:
    std::vector<std::string> Decode(const std::string &strFile, const std::string &strFormat,
                                    const Arguments &listOptions) const;
};
