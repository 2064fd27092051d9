#include "examplestest.h"

#include <algorithm>
#include <filesystem>

namespace
{

class PipeTest : public ExamplesTest
{
protected:
    Outcome Run(std::vector<std::string> listArguments) const
    {
        listArguments.insert(listArguments.begin(), EXAMPLES "/pipe.sh");
        // ExpectFilm() expects pixels in the exact look.
        const std::string strProgram =
            m_folder.Write("subburn", "#!/bin/sh\nexec \"" SUBBURN_PROGRAM "\" --exact \"$@\"\n");
        std::filesystem::permissions(strProgram, std::filesystem::perms::owner_all);
        return ChildProcess::Run(listArguments, "", {{"SUBBURN", strProgram}});
    }

    std::string Output(const std::vector<std::string> &listCommand) const
    {
        const Outcome outcome = ChildProcess::Run(listCommand);
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        return outcome.strOut;
    }

    /** Hashes and times of the packets of a file's audio. */
    std::string Sound(const std::string &strFile) const
    {
        return Output({"ffmpeg", "-v", "error", "-i", strFile, "-map", "0:a", "-c", "copy", "-f", "framehash", "-"});
    }
};

} // namespace

TEST_F(PipeTest, BurnsThePictureAndKeepsTheSound)
{
    const std::string strVideo =
        Video("in.mkv", {"-f", "lavfi", "-i", "sine=r=8000:d=1.6", "-c:v", "ffv1", "-pix_fmt", "bgr0", "-c:a", "flac"});
    const Outcome outcome = Run({strVideo, m_strSubtitles, File("out.mkv"), "-c:v", "ffv1", "-pix_fmt", "bgr0"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    EXPECT_EQ(outcome.strOut, "");
    ExpectFilm(Output({"ffmpeg", "-v", "error", "-i", File("out.mkv"), "-map", "0:v", "-f", "rawvideo", "-pix_fmt",
                       "rgb24", "-"}),
               25);
    const std::string strSound = Sound(strVideo);
    EXPECT_GT(std::count(strSound.begin(), strSound.end(), '\n'), 10);
    EXPECT_EQ(Sound(File("out.mkv")), strSound);
}

TEST_F(PipeTest, TakesAVideoWithoutSound)
{
    const std::string strVideo = Video("in.mkv", {"-c:v", "ffv1", "-pix_fmt", "bgr0"});
    const Outcome outcome = Run({strVideo, m_strSubtitles, File("out.mkv"), "-c:v", "ffv1", "-pix_fmt", "bgr0"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    ExpectFilm(Output({"ffmpeg", "-v", "error", "-i", File("out.mkv"), "-f", "rawvideo", "-pix_fmt", "rgb24", "-"}),
               25);
}

TEST_F(PipeTest, FailsWhereOneOfThePrograms)
{
    const Outcome usage = Run({});
    EXPECT_EQ(usage.nExit, 2);
    EXPECT_EQ(usage.strError, "usage: pipe.sh VIDEO SUBTITLES OUTPUT [OPTION...]\n");
    EXPECT_NE(Run({File("none.mkv"), m_strSubtitles, File("out.mkv")}).nExit, 0);
    const std::string strVideo = Video("in.mkv", {"-c:v", "ffv1", "-pix_fmt", "bgr0"});
    const Outcome outcome = Run({strVideo, File("none.srt"), File("out.mkv")});
    EXPECT_NE(outcome.nExit, 0);
    EXPECT_NE(outcome.strError.find("subburn: " + File("none.srt")), std::string::npos) << outcome.strError;
}
