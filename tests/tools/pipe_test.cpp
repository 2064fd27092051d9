#include "subburntest.h"

namespace
{

const size_t FrameBytes = 320 * 180 * 3;

} // namespace

TEST_F(SubburnTest, PipeBurnsRawFrames)
{
    // At two frames per second the second frame is at 0.5 seconds and shows "Hello".
    const std::string strInput(FrameBytes * 2, '\x50');
    const Outcome outcome = Subburn({"--pipe", "320x180@2", "--font", "DejaVu Sans"}, strInput);
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "standard output: 2 frames, 1 with a subtitle\n");
    ASSERT_EQ(outcome.strOut.size(), strInput.size());
    EXPECT_TRUE(outcome.strOut.substr(0, FrameBytes) == strInput.substr(0, FrameBytes));
    const Bounds text = Difference(outcome.strOut.substr(FrameBytes), strInput.substr(FrameBytes), 320, 3);
    EXPECT_NEAR((text.nTop + text.nBottom) / 2.0, 153, 6);
    EXPECT_NEAR((text.nLeft + text.nRight) / 2.0, 160, 4);
}

TEST_F(SubburnTest, PipeTakesFractionsOfFramesPerSecond)
{
    const std::string strInput(FrameBytes * 5, '\x50');
    for (const char *pRate : {"10", "10.0", "10000/1000"}) {
        const Outcome outcome = Subburn({"--pipe", std::string("320x180@") + pRate, "--quiet"}, strInput);
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "");
        EXPECT_TRUE(outcome.strOut.substr(0, FrameBytes * 4) == strInput.substr(0, FrameBytes * 4)) << pRate;
        EXPECT_TRUE(outcome.strOut != strInput) << pRate;
    }
}

TEST_F(SubburnTest, PipeRefusesAPartOfAFrame)
{
    const Outcome outcome = Subburn({"--pipe", "320x180@25"}, std::string(FrameBytes + 100, '\0'));
    EXPECT_EQ(outcome.nExit, 2);
    EXPECT_EQ(outcome.strError,
              "subburn: standard input: ends within a frame, " + std::to_string(FrameBytes - 100) + " bytes short\n");
    EXPECT_EQ(outcome.strOut.size(), FrameBytes);
}

TEST_F(SubburnTest, PipeWithoutAReaderIsAnError)
{
    const Outcome outcome = ChildProcess::Run({"sh", "-c",
                                               "head -c 10000000 /dev/zero | { \"$0\" --subtitles \"$1\" --pipe "
                                               "320x180@25; echo $? >\"$2\"; } | head -c 10 >/dev/null",
                                               SUBBURN_PROGRAM, m_strSubtitles, File("code")});
    EXPECT_EQ(outcome.strError, "subburn: standard output: Broken pipe\n");
    std::string strCode;
    std::ifstream(File("code")) >> strCode;
    EXPECT_EQ(strCode, "3");
}

TEST_F(SubburnTest, PipeNeedsSizeAndRate)
{
    for (const char *pFormat : {"320x180", "320@25", "320x180@", "320x180@0", "0x180@25", "320x180@25/0", "axb@c", "",
                                "x@", "99999x1@25", "320x180x2@25", "320x180@pal"}) {
        const Outcome outcome = Subburn({"--pipe", pFormat});
        EXPECT_EQ(outcome.nExit, 1) << pFormat;
        EXPECT_EQ(outcome.strError, std::string("subburn: --pipe: \"") + pFormat +
                                        "\" is not WxH@FPS such as 1280x720@25 or 1280x720@30000/1001\n");
    }
}
