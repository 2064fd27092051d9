#include "subburntest.h"

namespace
{

class PartTest : public SubburnTest
{
protected:
    /** A clip of four seconds with audio and a key frame every 20 frames. */
    std::string LongClip(const std::string &strName = "in.mp4") const
    {
        return Clip(strName, {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=4", "-f", "lavfi", "-i", "sine=d=4",
                              "-c:v", "libx264", "-preset", "veryfast", "-g", "20", "-c:a", "aac"});
    }
};

} // namespace

TEST_F(PartTest, StartAndDurationCutAndShift)
{
    const std::string strInput = LongClip();
    const std::string strOutput = Burn(strInput, "out.mp4", {"--start", "0.6", "--duration", "0:01", "--crf", "0"});
    const auto listBefore = Frames(strInput, "yuv420p");
    const auto listAfter = Frames(strOutput, "yuv420p");
    ASSERT_EQ(listAfter.size(), 25U);
    for (size_t n = 0; n < listAfter.size(); ++n)
        EXPECT_EQ(listBefore[n + 15] == listAfter[n], !IsDue(n + 15)) << "frame " << n;
    EXPECT_EQ(std::stod(Times(strOutput)), 0);
    const double dSound = std::stod(Probe(strOutput, "stream=duration", "a", "csv=p=0"));
    EXPECT_NEAR(dSound, 1, 0.05);
    const double dBegin = std::stod(Probe(strOutput, "stream=start_time", "a", "csv=p=0"));
    EXPECT_GE(dBegin, 0);
    EXPECT_LT(dBegin, 0.03);
}

TEST_F(PartTest, SoundStaysWithThePictures)
{
    // Both the tone and the white pictures begin at 2 seconds.
    const std::string strInput =
        Clip("in.mkv",
             {"-f", "lavfi", "-i", "color=black:s=64x64:r=25:d=4,drawbox=c=white:t=fill:enable='gte(t,2)'", "-f",
              "lavfi", "-i", "aevalsrc='if(gte(t,2),sin(2000*t),0)':d=4:s=48000", "-c:a", "pcm_s16le", "-g", "10"});
    const std::string strOutput = Burn(strInput, "out.mkv", {"--start", "0.99"});
    const auto listFrames = Frames(strOutput, "gray");
    size_t nWhite = 0;
    while (nWhite < listFrames.size() && static_cast<unsigned char>(listFrames[nWhite][0]) < 128)
        ++nWhite;
    EXPECT_EQ(nWhite, 25U);
    const Outcome sound =
        ChildProcess::Run({"ffmpeg", "-nostdin", "-v", "error", "-i", strOutput, "-map", "0:a", "-af",
                           "aresample=async=1:first_pts=0", "-f", "s16le", "-ac", "1", "-ar", "48000", "-"});
    const size_t nTone = sound.strOut.find_first_not_of('\0');
    EXPECT_NEAR(nTone / 2.0 / 48000, 1, 0.03);
}

TEST_F(PartTest, DurationAloneKeepsTheTimes)
{
    const std::string strOutput = Burn(LongClip(), "out.mp4", {"--duration", "1.5"});
    EXPECT_EQ(Frames(strOutput, "gray").size(), 38U);
}

TEST_F(PartTest, TransportStreamsCountFromTheirBeginning)
{
    const std::string strInput =
        Clip("in.ts", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=3", "-c:v", "libx264", "-preset", "veryfast",
                       "-bf", "0", "-g", "20", "-output_ts_offset", "50"});
    const std::string strOutput = Burn(strInput, "out.mkv", {"--start", "1", "--codec", "ffv1"});
    const auto listBefore = Frames(strInput, "yuv420p");
    const auto listAfter = Frames(strOutput, "yuv420p");
    ASSERT_EQ(listAfter.size(), 50U);
    for (size_t n = 0; n < listAfter.size(); ++n)
        EXPECT_EQ(listBefore[n + 25] == listAfter[n], !IsDue(n + 25)) << "frame " << n;
}

TEST_F(PartTest, TheFirstGroupOfAStreamWithoutAnIndexIsFound)
{
    for (const char *pName : {"in.ts", "in.mpg"}) {
        // One key frame, and B-frames, which are stored after frames shown later.
        const std::string strInput = Clip(pName, {"-f", "lavfi", "-i", "testsrc2=s=96x64:r=25:d=3", "-c:v",
                                                  "mpeg2video", "-q:v", "2", "-bf", "2", "-g", "250"});
        const auto listBefore = Frames(strInput, "yuv420p");
        ASSERT_EQ(listBefore.size(), 75U);
        for (const auto &[strStart, nFirst] : {std::pair("0", 0), std::pair("0.04", 1), std::pair("1.2", 30)}) {
            const std::string strOutput = Burn(strInput, "out.mkv", {"--start", strStart, "--codec", "ffv1"});
            const auto listAfter = Frames(strOutput, "yuv420p");
            ASSERT_EQ(listAfter.size(), 75U - nFirst) << pName << strStart;
            for (const size_t nFrame : {0, 20, 34})
                EXPECT_EQ(listAfter[nFrame] == listBefore[nFrame + nFirst], !IsDue(nFrame + nFirst)) << nFrame;
        }
        const Outcome outcome =
            Subburn({"--snapshot", "2", "--snapshot", "0", "--snapshot", "1.6", strInput, File("a.png")});
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        EXPECT_EQ(outcome.strOut, File("a-1.png") + ": the picture at 0:00:02.000, without a subtitle\n" +
                                      File("a-2.png") + ": the picture at 0:00:00.000, without a subtitle\n" +
                                      File("a-3.png") + ": the picture at 0:00:01.600, without a subtitle\n");
    }
}

TEST_F(PartTest, ChaptersMoveWithTheStart)
{
    const std::string strTags = m_folder.Write(
        "tags.txt",
        ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=500\ntitle=One\n[CHAPTER]\n"
        "TIMEBASE=1/1000\nSTART=500\nEND=1500\ntitle=Two\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=1500\nEND=2000\n");
    const std::string strInput =
        Clip("in.mkv", {"-i", UsualClip("plain.mkv"), "-i", strTags, "-map_metadata", "1", "-c", "copy"});
    const std::string strOutput = Burn(strInput, "out.mkv", {"--start", "1"});
    EXPECT_EQ(Probe(strOutput, "chapter=start_time,end_time", "", "csv=p=0"), "0.000000,0.500000\n0.500000,1.000000\n");
}

TEST_F(PartTest, StartPastTheEndIsAnError)
{
    const std::string strInput = UsualClip();
    const Outcome outcome = Subburn({"--start", "1:00", strInput, File("out.mkv")});
    EXPECT_EQ(outcome.nExit, 2);
    EXPECT_EQ(outcome.strError, "subburn: " + strInput + ": there is no picture in the wanted part\n");
    EXPECT_EQ(Names(), (Arguments{"in.mkv", "text.srt"}));
}
