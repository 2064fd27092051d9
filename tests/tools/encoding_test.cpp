#include "subburntest.h"

#include <fstream>
#include <sstream>

namespace
{

class EncodingTest : public SubburnTest
{
protected:
    std::string ShortClip(const std::string &strPixels = "yuv420p") const
    {
        return Clip("in.mkv", {"-f", "lavfi", "-i", "testsrc2=s=96x64:r=25:d=0.6,format=" + strPixels, "-c:v", "ffv1"});
    }

    std::string VideoOf(const std::string &strFile, const std::string &strEntries) const
    {
        return Probe(strFile, "stream=" + strEntries, "v:0", "csv=p=0");
    }

    void ExpectRefusal(const Arguments &listArguments, int nExit, const std::string &strLine) const
    {
        const Outcome outcome = Subburn(listArguments);
        EXPECT_EQ(outcome.nExit, nExit);
        EXPECT_EQ(outcome.strError, "subburn: " + strLine + "\n");
    }

    const Arguments m_listFast = {"--preset", "ultrafast"};
};

} // namespace

TEST_F(EncodingTest, PixelFormats)
{
    const std::string strInput = ShortClip("yuv422p10le");
    const Outcome usual = Subburn({strInput, File("out.mp4"), "--preset", "ultrafast"});
    EXPECT_EQ(usual.nExit, 0);
    EXPECT_EQ(usual.strError, "subburn: warning: " + File("out.mp4") +
                                  ": the video is of the H.264 profile High 4:2:2, which many players do not show; "
                                  "--compatible makes 8-bit 4:2:0\n");
    EXPECT_EQ(VideoOf(File("out.mp4"), "pix_fmt"), "yuv422p10le\n");
    EXPECT_EQ(VideoOf(Burn(strInput, "out.mp4", {"--pix-fmt", "yuv444p", "--preset", "ultrafast"}), "pix_fmt"),
              "yuv444p\n");
    EXPECT_EQ(VideoOf(Burn(strInput, "out.mp4", {"--compatible", "--preset", "ultrafast"}), "pix_fmt"), "yuv420p\n");
    EXPECT_EQ(VideoOf(Burn(strInput, "out.mp4", {"--compatible", "--codec", "libx265", "--preset", "ultrafast"}),
                      "pix_fmt,codec_tag_string"),
              "hvc1,yuv420p\n");
    ExpectRefusal({strInput, File("out.mp4"), "--pix-fmt", "nonsense"}, 1,
                  "--pix-fmt: there is no pixel format named \"nonsense\"");
    ExpectRefusal({strInput, File("out.mp4"), "--pix-fmt", "rgba"}, 1,
                  "--pix-fmt: the encoder libx264 does not take \"rgba\"");
}

TEST_F(EncodingTest, OptionsOfTheEncoder)
{
    const std::string strInput = ShortClip();
    const std::string strOutput = Burn(
        strInput, "out.mp4", {"--preset", "ultrafast", "--encoder-options", "g=5:x264-params=bframes=0\\:scenecut=0"});
    std::string strKeys;
    std::istringstream lines(Probe(strOutput, "packet=flags", "v", "csv=p=0"));
    for (std::string strFlags; std::getline(lines, strFlags);)
        strKeys += strFlags.front();
    EXPECT_EQ(strKeys, "K____K____K____");
    ExpectRefusal({strInput, File("out.mp4"), "--encoder-options", "nonsense=1"}, 1,
                  "--encoder-options: the encoder libx264 has no option named \"nonsense\"");
    ExpectRefusal({strInput, File("out.mp4"), "--encoder-options", "g"}, 1,
                  "--encoder-options: \"g\" is not a list such as tune=film:bf=2");
}

TEST_F(EncodingTest, PresetsOfEncodersThatNumberThem)
{
    const std::string strInput = ShortClip();
    for (const char *pCodec : {"libvpx", "libvpx-vp9", "libaom-av1", "libsvtav1"}) {
        const auto Sizes = [&](const char *pPreset) {
            Burn(strInput, "out.mkv", {"--codec", pCodec, "--crf", "40", "--preset", pPreset});
            return Probe(File("out.mkv"), "packet=size", "v", "csv=p=0");
        };
        const std::string strFast = Sizes("ultrafast");
        EXPECT_EQ(strFast, Sizes(std::string(pCodec) == "libsvtav1" ? "12" : "8")) << pCodec;
        EXPECT_NE(strFast, Sizes("medium")) << pCodec;
        ExpectRefusal({strInput, File("out.mkv"), "--codec", pCodec, "--preset", "nonsense"}, 1,
                      std::string("--preset: the encoder ") + pCodec + " does not take \"nonsense\"");
    }
}

TEST_F(EncodingTest, HardwareThatIsNotThereIsNamed)
{
    const std::string strInput = ShortClip();
    const Outcome outcome = Subburn({strInput, File("out.mp4"), "--hwaccel", "vaapi"});
    // On a machine with the device, this succeeds.
    if (outcome.nExit != 0) {
        EXPECT_EQ(outcome.nExit, 3);
        EXPECT_EQ(outcome.strError.find("subburn: --hwaccel vaapi: there is no device that can be opened: "), 0U)
            << outcome.strError;
        EXPECT_EQ(outcome.strError.find('\n'), outcome.strError.size() - 1) << outcome.strError;
    }
    ExpectRefusal({strInput, File("out.mp4"), "--hwaccel", "nonsense"}, 1,
                  "--hwaccel: this FFmpeg has no encoder for \"nonsense\"");
    ExpectRefusal({strInput, File("out.mp4"), "--hwaccel", "vaapi", "--codec", "libx264"}, 1,
                  "--hwaccel: the encoder libx264 does not work on vaapi");
}

TEST_F(EncodingTest, PlayersMayBeginBeforeTheEnd)
{
    const std::string strFile = Content(Burn(ShortClip(), "out.mp4", m_listFast));
    EXPECT_LT(strFile.find("moov"), strFile.find("mdat"));
}

TEST_F(EncodingTest, OutputsAreReplacedOnlyOnRequest)
{
    const std::string strInput = ShortClip();
    const std::string strKept = m_folder.Write("out.mp4", "kept");
    const std::string strPicture = m_folder.Write("a-2.png", "kept");
    const auto Run = [&](const Arguments &listArguments) {
        Arguments listCommand = {SUBBURN_PROGRAM, "--subtitles", m_strSubtitles, "--preset",
                                 "ultrafast",     strInput,      strKept};
        listCommand.insert(listCommand.end(), listArguments.begin(), listArguments.end());
        return ChildProcess::Run(listCommand);
    };
    for (const Arguments &listArguments : {Arguments{}, Arguments{"-n"}, Arguments{"--no-overwrite"}}) {
        const Outcome outcome = Run(listArguments);
        EXPECT_EQ(outcome.nExit, 3);
        EXPECT_EQ(outcome.strError, "subburn: " + strKept + ": exists; --overwrite replaces it\n");
    }
    EXPECT_EQ(Content(strKept), "kept");
    const Outcome snapshots = ChildProcess::Run({SUBBURN_PROGRAM, "--subtitles", m_strSubtitles, "--snapshot", "0",
                                                 "--snapshot", "0.5", strInput, File("a.png")});
    EXPECT_EQ(snapshots.strError, "subburn: " + strPicture + ": exists; --overwrite replaces it\n");
    // On a terminal, the user is asked.
    for (const auto &[strAnswer, nExit] : {std::pair<std::string, int>("n", 3), {"y", 0}}) {
        const Outcome asked =
            ChildProcess::Run({"sh", "-c",
                               "echo " + strAnswer +
                                   " | BURN=\"$0\" TEXT=\"$1\" FROM=\"$2\" TO=\"$3\" script -qec "
                                   "'\"$BURN\" --subtitles \"$TEXT\" --preset ultrafast \"$FROM\" \"$TO\"' /dev/null",
                               SUBBURN_PROGRAM, m_strSubtitles, strInput, strKept});
        EXPECT_EQ(asked.nExit, nExit) << asked.strOut;
        EXPECT_NE(asked.strOut.find("exists. Replace it? [y/N] "), std::string::npos) << asked.strOut;
        EXPECT_EQ(Content(strKept) == "kept", nExit != 0);
    }
    m_folder.Write("out.mp4", "kept");
    EXPECT_EQ(Run({"-y"}).nExit, 0);
    EXPECT_NE(Content(strKept), "kept");
}

TEST_F(EncodingTest, StandardInputAndOutput)
{
    const std::string strInput = ShortClip();
    const auto listPlain = Frames(Burn(strInput, "plain.mkv", {"--codec", "ffv1"}), "yuv420p");
    const Outcome outcome =
        Subburn({"--font", "DejaVu Sans", "--codec", "ffv1", "--format", "matroska", "-", "-"}, Content(strInput));
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "standard output: 15 frames, 5 with a subtitle\n");
    EXPECT_TRUE(Frames(m_folder.Write("piped.mkv", outcome.strOut), "yuv420p") == listPlain);
    const Outcome pieces =
        Subburn({"--preset", "ultrafast", "--start", "0.2", "--format", "mp4", "-", "-"}, Content(strInput));
    EXPECT_EQ(pieces.nExit, 0) << pieces.strError;
    EXPECT_EQ(Frames(m_folder.Write("piped.mp4", pieces.strOut), "gray").size(), 10U);
    ExpectRefusal({strInput, "-"}, 1, "standard output has no extension, so that --format has to name a container");
    ExpectRefusal({strInput, File("out.mkv"), "--format", "nonsense"}, 1,
                  "--format: there is no container format named \"nonsense\"");
    m_strSubtitles.clear();
    ExpectRefusal({"-", File("out.mkv")}, 1,
                  "standard input is read only once, so that --subtitles has to name a file");
}

TEST_F(EncodingTest, TheInputMayBeNamedAsFfmpegHasIt)
{
    const std::string strInput = ShortClip();
    EXPECT_EQ(Subburn({"-i", strInput, "--preset", "ultrafast", File("out.mkv")}).nExit, 0);
    EXPECT_EQ(Frames(File("out.mkv"), "gray").size(), 15U);
    ExpectRefusal({"-i", strInput, strInput, File("out.mkv")}, 1,
                  "INPUT is named twice, as \"" + strInput + "\" and as \"" + strInput + "\"");
}
