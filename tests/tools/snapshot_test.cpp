#include "subburntest.h"
#include "support/turnedfilm.h"

#include <algorithm>
#include <cstdlib>

namespace
{

class SnapshotTest : public SubburnTest
{
protected:
    std::string Picture(const std::string &strFile) const
    {
        const auto listFrames = Frames(strFile, "rgb24");
        EXPECT_EQ(listFrames.size(), 1U);
        return listFrames.front();
    }

    /** Compares the rows above the text, where the frame counter in the corner identifies the frame. */
    static bool SameTop(const std::string &strPicture, const std::string &strFrame)
    {
        int nFarthest = 0;
        for (size_t n = 0; n < std::min<size_t>(320 * 120 * 3, strPicture.size()); ++n)
            nFarthest = std::max(nFarthest, std::abs(static_cast<unsigned char>(strPicture[n]) -
                                                     static_cast<unsigned char>(strFrame[n])));
        return nFarthest <= 3;
    }
};

} // namespace

TEST_F(SnapshotTest, ShowsThePictureOnDisplay)
{
    const std::string strInput = Clip("in.mkv", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=2", "-c:v", "libx264",
                                                 "-pix_fmt", "yuv444p", "-crf", "0", "-g", "12"});
    const auto listFrames = Frames(strInput, "rgb24");
    struct {
        const char *pTime;
        size_t nFrame;
    } const List[] = {{"0", 0}, {"0.5", 12}, {"0.519", 12}, {"0.52", 13}, {"0:01.9", 47}, {"1.999", 49}};
    for (const auto &[pTime, nFrame] : List) {
        const Outcome outcome = Subburn({"--snapshot", pTime, strInput, File("a.png")});
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        const std::string strPicture = Picture(File("a.png"));
        EXPECT_TRUE(SameTop(strPicture, listFrames[nFrame])) << pTime;
        if (nFrame > 0) {
            EXPECT_FALSE(SameTop(strPicture, listFrames[nFrame - 1])) << pTime;
        }
        EXPECT_EQ(outcome.strError.empty(), IsDue(nFrame));
        EXPECT_EQ(Probe(File("a.png"), "stream=codec_name,pix_fmt"), "codec_name=png\npix_fmt=rgb24\n");
    }
}

TEST_F(SnapshotTest, CarriesTheSubtitle)
{
    const std::string strInput = UsualClip();
    EXPECT_EQ(Subburn({"--snapshot", "0.5", strInput, File("with.png")}).strOut,
              File("with.png") + ": the picture at 0:00:00.480, with a subtitle\n");
    EXPECT_EQ(Subburn({"--snapshot", "0.5", "--opacity", "0", strInput, File("without.png")}).strOut,
              File("without.png") + ": the picture at 0:00:00.480, without a subtitle\n");
    const Bounds text = Difference(Picture(File("with.png")), Picture(File("without.png")), 320, 3);
    EXPECT_NEAR((text.nTop + text.nBottom) / 2.0, 153, 6);
}

TEST_F(SnapshotTest, SeveralGetNumbers)
{
    const std::string strInput = UsualClip();
    const Outcome outcome =
        Subburn({"--snapshot", "1.3", "--snapshot", "0.5", "--snapshot", "0", strInput, File("a.png")});
    EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
    EXPECT_EQ(Names(), (Arguments{"a-1.png", "a-2.png", "a-3.png", "in.mkv", "text.srt"}));
    EXPECT_EQ(outcome.strOut, File("a-1.png") + ": the picture at 0:00:01.280, with a subtitle\n" + File("a-2.png") +
                                  ": the picture at 0:00:00.480, with a subtitle\n" + File("a-3.png") +
                                  ": the picture at 0:00:00.000, without a subtitle\n");
}

TEST_F(SnapshotTest, BareBitStreamsHaveAPictureAtAnyTime)
{
    const std::string strInput = Clip("in.h264", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=2", "-pix_fmt",
                                                  "yuv444p", "-crf", "0", "-g", "12"});
    const auto listFrames = Frames(strInput, "rgb24");
    ASSERT_EQ(listFrames.size(), 50U);
    // The second one needs a way back.
    const Outcome outcome = Subburn({"--snapshot", "1.6", "--snapshot", "0.4", strInput, File("a.png")});
    EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
    EXPECT_TRUE(SameTop(Picture(File("a-1.png")), listFrames[40]));
    EXPECT_TRUE(SameTop(Picture(File("a-2.png")), listFrames[10]));
}

TEST_F(SnapshotTest, AFileThatCannotBeWrittenIsNamed)
{
    const std::string strInput = Clip("in.mkv", {"-f", "lavfi", "-i", "color=s=320x180:r=25:d=1", "-f", "lavfi", "-i",
                                                 "nullsrc=s=320x180:r=25:d=1,format=yuv420p,noise=alls=100:allf=t",
                                                 "-filter_complex", "[0:v][1:v]concat", "-c:v", "ffv1"});
    // The black picture fits into the 16 blocks of 512 bytes, the noise does not.
    const Outcome outcome =
        ChildProcess::Run({"sh", "-c", "ulimit -f 16; exec \"$0\" \"$@\"", SUBBURN_PROGRAM, "--subtitles",
                           m_strSubtitles, "--snapshot", "0.2", "--snapshot", "1.6", strInput, File("a.png")});
    EXPECT_EQ(outcome.nExit, 3);
    EXPECT_EQ(outcome.strError, "subburn: " + File("a-2.png") + ": File too large\n");
    EXPECT_EQ(Names(), (Arguments{"in.mkv", "text.srt"}));
}

TEST_F(SnapshotTest, StandsUpright)
{
    const std::string strInput = Clip(
        "in.mp4", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=1", "-pix_fmt", "yuv444p", "-preset", "ultrafast"});
    TurnFilm(strInput, 90);
    EXPECT_EQ(Subburn({"--snapshot", "0", strInput, File("a.png")}).nExit, 0);
    EXPECT_EQ(Probe(File("a.png"), "stream=width,height"), "width=180\nheight=320\n");
    EXPECT_TRUE(SameTop(Picture(File("a.png")), ShownFrames(strInput, "rgb24").front()));
}

TEST_F(SnapshotTest, ATurnByNoQuartersIsWarnedOfOnce)
{
    const std::string strInput = Clip("in.mp4", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=1"});
    TurnFilm(strInput, 45);
    const Outcome outcome = Subburn({"--snapshot", "0", "--snapshot", "0.5", strInput, File("a.png")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "subburn: warning: " + File("a.png") +
                                    ": the display matrix (45 degrees clockwise) is lost, the output cannot hold it "
                                    "and pictures are turned by quarters only\n");
    EXPECT_EQ(Probe(File("a-1.png"), "stream=width,height"), "width=320\nheight=180\n");
}

TEST_F(SnapshotTest, PastTheEndIsAnError)
{
    const std::string strInput = UsualClip();
    const Outcome outcome = Subburn({"--snapshot", "0.5", "--snapshot", "2", strInput, File("a.png")});
    EXPECT_EQ(outcome.nExit, 2);
    EXPECT_EQ(outcome.strError,
              "subburn: " + strInput + ": there is no picture at 0:00:02.000, the video ends at 0:00:02.000\n");
    EXPECT_EQ(Names(), (Arguments{"in.mkv", "text.srt"}));
}
