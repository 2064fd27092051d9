#pragma once

#include "support/childprocess.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

using Arguments = std::vector<std::string>;

/** Bounds of a set of pixels; right and bottom are outside. */
struct Bounds {
    int nLeft = 1 << 20;
    int nTop = 1 << 20;
    int nRight = 0;
    int nBottom = 0;

    bool Empty() const { return nRight <= nLeft; }
    void Add(int x, int y);
};

/** Runs subburn on clips that FFmpeg's programs make and look at. */
class SubburnTest : public testing::Test
{
protected:
    SubburnTest();

    /** Full name of a file in the test's folder. */
    std::string File(const std::string &strName) const { return (m_folder.Path() / strName).string(); }

    /** Makes a clip with the ffmpeg program. */
    std::string Clip(const std::string &strName, const Arguments &listArguments) const;

    /** The usual clip: moving shapes, 320x180, 25 frames a second, two seconds. */
    std::string UsualClip(const std::string &strName = "in.mkv") const;

    /** A file of a Blu-ray's subtitles: a picture from 0.4 to 0.8 seconds. */
    static std::string PictureSubtitles();

    /** Runs subburn with the test's subtitle file. */
    Outcome Subburn(const Arguments &listArguments, const std::string &strInput = "",
                    const ChildProcess::Environment &listExtra = {}) const;

    /** The same; expects success and gives the name of the output. */
    std::string Burn(const std::string &strInput, const std::string &strOutput, const Arguments &listOptions) const;

    /** Decoded frames in a pixel format, as they are stored. */
    std::vector<std::string> Frames(const std::string &strFile, const std::string &strFormat) const;

    /** The same, turned as a player shows them. */
    std::vector<std::string> ShownFrames(const std::string &strFile, const std::string &strFormat) const;

    /** What ffprobe says about the entries. */
    std::string Probe(const std::string &strFile, const std::string &strEntries, const std::string &strStreams = "",
                      const std::string &strFormat = "default=nw=1") const;

    /** Presentation times of the video frames in seconds, one a line. */
    std::string Times(const std::string &strFile) const;

    /** Names in the test's folder, hidden ones too. */
    std::vector<std::string> Names() const;

    /** Where two 8-bit planes of one width differ. */
    static Bounds Difference(const std::string &strA, const std::string &strB, int nWidth, int nBytes = 1);

    /** Whether the usual subtitles have one at the time of a frame of 25 a second. */
    static bool IsDue(size_t nFrame) { return (nFrame >= 10 && nFrame <= 20) || (nFrame >= 30 && nFrame <= 35); }

    TemporaryFolder m_folder;
    // "Hello" from 0.4 to 0.8 seconds, two lines from 1.2 to 1.4. Without a name subburn is not told of any.
    std::string m_strSubtitles;

private:
    std::vector<std::string> Decode(const std::string &strFile, const std::string &strFormat,
                                    const Arguments &listOptions) const;
};
