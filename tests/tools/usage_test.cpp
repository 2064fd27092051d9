#include "subburntest.h"

TEST_F(SubburnTest, HelpNamesTheExitCodes)
{
    const Outcome outcome = ChildProcess::Run({SUBBURN_PROGRAM, "--help"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    for (const char *pText :
         {"Usage: subburn [--subtitles FILE] [OPTIONS] INPUT OUTPUT", "--snapshot TIME", "--pipe WxH@FPS",
          "subburn --list FILE", "Examples:", "Exit codes:", "130  stopped by Ctrl-C"})
        EXPECT_NE(outcome.strOut.find(pText), std::string::npos) << pText;
}

TEST_F(SubburnTest, VersionNamesFfmpegToo)
{
    const Outcome outcome = ChildProcess::Run({SUBBURN_PROGRAM, "--version"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strOut.find("subburn 1.0.0\nFFmpeg "), 0U);
}

TEST_F(SubburnTest, WrongUsageIsOneLine)
{
    const Arguments List[] = {
        {},
        {"in.mkv"},
        {"--nonsense", "in.mkv", "out.mkv"},
        {"--track", "-1", "in.mkv", "out.mkv"},
        {"--opacity", "256", "in.mkv", "out.mkv"},
        {"--position", "101", "in.mkv", "out.mkv"},
        {"--size", "0", "in.mkv", "out.mkv"},
        {"--color", "nocolor", "in.mkv", "out.mkv"},
        {"--outline-color", "red@0.5", "in.mkv", "out.mkv"},
        {"--start", "soon", "in.mkv", "out.mkv"},
        {"--start", "-1", "in.mkv", "out.mkv"},
        {"--start", "1:2:3:4", "in.mkv", "out.mkv"},
        {"--duration", "0", "in.mkv", "out.mkv"},
        {"--bitrate", "1.5.5k", "in.mkv", "out.mkv"},
        {"--bitrate", "M", "in.mkv", "out.mkv"},
        {"--bitrate", "fast", "in.mkv", "out.mkv"},
        {"--bitrate", "1M", "--crf", "20", "in.mkv", "out.mkv"},
        {"--compatible", "--pix-fmt", "yuv420p", "in.mkv", "out.mkv"},
        {"--overwrite", "-n", "in.mkv", "out.mkv"},
        {"--snapshot", "1", "in.mkv", "out.jpg"},
        {"--snapshot", "1", "--start", "1", "in.mkv", "out.png"},
        {"--pipe", "320x180@25", "in.mkv", "out.mkv"},
        {"--list", "in.mkv"},
    };
    for (const Arguments &listArguments : List) {
        const Outcome outcome = Subburn(listArguments);
        const std::string strCase = testing::PrintToString(listArguments);
        EXPECT_EQ(outcome.nExit, 1) << strCase;
        EXPECT_EQ(outcome.strError.find("subburn: "), 0U) << strCase;
        EXPECT_EQ(outcome.strError.find('\n'), outcome.strError.size() - 1) << strCase << outcome.strError;
        EXPECT_EQ(outcome.strOut, "") << strCase;
    }
    EXPECT_EQ(Subburn({"--color", "nocolor", "in.mkv", "out.mkv"}).strError,
              "subburn: --color: \"nocolor\" is not a colour such as #ffcc00 or yellow\n");
    const Outcome outcome = ChildProcess::Run({SUBBURN_PROGRAM, "--pipe", "320x180@25"});
    EXPECT_EQ(outcome.nExit, 1);
    EXPECT_EQ(outcome.strError, "subburn: --pipe needs --subtitles\n");
}

TEST_F(SubburnTest, NumbersAreRefusedAsTheyAreWritten)
{
    const auto Refusal = [&](const std::string &strOption, const std::string &strValue) {
        const Outcome outcome = Subburn({strOption, strValue, "in.mkv", "out.mkv"});
        EXPECT_EQ(outcome.nExit, 1);
        return outcome.strError;
    };
    const auto Expected = [](const std::string &strOption, const std::string &strValue, const std::string &strWanted) {
        return "subburn: " + strOption + ": \"" + strValue + "\" is not " + strWanted + "\n";
    };
    const std::pair<std::string, std::string> Ranges[] = {{"--track", "from 0 to 2147483647"},
                                                          {"--size", "from 1 to 4096"},
                                                          {"--opacity", "from 0 to 255"},
                                                          {"--position", "from 0 to 100"}};
    for (const auto &[strOption, strRange] : Ranges) {
        for (const char *pValue :
             {"-1", "2147483648", "99999999999999999999", "abc", "", "1.5", "0x1", "1e1", "nan", " 1", "1 "})
            EXPECT_EQ(Refusal(strOption, pValue), Expected(strOption, pValue, "a whole number " + strRange));
    }
    for (const char *pValue : {"1e300", "1e400", "inf", "nan", "abc", "", "18abc", "1001", "--1", "1-1"})
        EXPECT_EQ(Refusal("--crf", pValue), Expected("--crf", pValue, "a quality such as 18 or 23.5"));
    for (const char *pOption : {"--start", "--duration", "--snapshot"}) {
        for (const char *pValue : {"360000000.5", "9223372036854"})
            EXPECT_EQ(Refusal(pOption, pValue), Expected(pOption, pValue, "a time of at most 100000 hours"));
    }
}

TEST_F(SubburnTest, LeadingZerosDoNotCount)
{
    const std::string strInput = UsualClip();
    Burn(strInput, "plain.mkv", {"--codec", "ffv1", "--size", "10"});
    Burn(strInput, "zero.mkv", {"--codec", "ffv1", "--size", "010", "--track", "08"});
    EXPECT_TRUE(Frames(File("zero.mkv"), "gray") == Frames(File("plain.mkv"), "gray"));
}

TEST_F(SubburnTest, OptionsOfTheEncoderAreChecked)
{
    const std::string strInput = UsualClip();
    EXPECT_EQ(Subburn({"--codec", "nonsense", strInput, File("out.mkv")}).strError,
              "subburn: --codec: there is no video encoder named \"nonsense\"\n");
    EXPECT_EQ(Subburn({"--codec", "ffv1", "--crf", "20", strInput, File("out.mkv")}).strError,
              "subburn: --crf: the encoder ffv1 has no such setting\n");
    EXPECT_EQ(Subburn({"--codec", "ffv1", "--preset", "fast", strInput, File("out.mkv")}).strError,
              "subburn: --preset: the encoder ffv1 has no presets\n");
    EXPECT_EQ(Subburn({"--preset", "nonsense", strInput, File("out.mkv")}).nExit, 3);
    EXPECT_EQ(Names(), (Arguments{"in.mkv", "text.srt"}));
}

TEST_F(SubburnTest, TheBitRateCounts)
{
    const std::string strInput = UsualClip();
    Burn(strInput, "small.mkv", {"--bitrate", "50k"});
    Burn(strInput, "big.mkv", {"--bitrate", "2M"});
    EXPECT_GT(std::filesystem::file_size(File("big.mkv")), 4 * std::filesystem::file_size(File("small.mkv")));
}

TEST_F(SubburnTest, TheLastLineCounts)
{
    const std::string strInput = UsualClip();
    Outcome outcome = Subburn({strInput, File("out.mkv"), "--preset", "ultrafast"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strOut, File("out.mkv") + ": 50 frames, 17 with a subtitle\n");
    EXPECT_EQ(outcome.strError, "");
    outcome = Subburn({strInput, File("out.mkv"), "--preset", "ultrafast", "--quiet"});
    EXPECT_EQ(outcome.strOut + outcome.strError, "");
}

TEST_F(SubburnTest, NoSubtitleAtAllIsWarnedOf)
{
    const std::string strInput = UsualClip();
    m_strSubtitles = m_folder.Write("late.srt", "1\n01:00:00,000 --> 01:00:02,000\nLate\n\n");
    const std::string strWarning = "subburn: warning: " + m_strSubtitles + ": no subtitle was due at any frame\n";
    Outcome outcome = Subburn({strInput, File("out.mkv"), "--preset", "ultrafast"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strOut, File("out.mkv") + ": 50 frames, 0 with a subtitle\n");
    EXPECT_EQ(outcome.strError, strWarning);
    outcome = Subburn({strInput, File("out.mkv"), "--preset", "ultrafast", "--quiet"});
    EXPECT_EQ(outcome.strOut, "");
    EXPECT_EQ(outcome.strError, strWarning);
}

TEST_F(SubburnTest, TextIsUtf8WhereTheEnvironmentSaysNothing)
{
    const std::string strInput = UsualClip();
    const std::string strCue = "1\n00:00:00,400 --> 00:00:00,800\n\xc3\xa4\xc3\xb6\xc3\xbc \xe2\x82\xac\n\n";
    const auto Snapshot = [&](const std::string &strContent, const ChildProcess::Environment &listExtra) {
        m_strSubtitles = m_folder.Write("gr\xc3\xbc\xc3\x9f"
                                        "e.srt",
                                        strContent);
        const Outcome outcome =
            Subburn({"--font", "DejaVu Sans", "--snapshot", "0.5", strInput, File("a.png")}, "", listExtra);
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        return Frames(File("a.png"), "rgb24").front();
    };
    const std::string strMarked = Snapshot("\xef\xbb\xbf" + strCue, {});
    EXPECT_TRUE(Snapshot(strCue, {{"LC_ALL", ""}, {"LC_CTYPE", ""}, {"LANG", ""}}) == strMarked);
    EXPECT_TRUE(Snapshot(strCue, {{"LC_ALL", "C"}}) == strMarked);
    EXPECT_TRUE(Snapshot(strCue, {{"LC_ALL", ""}, {"LC_CTYPE", ""}, {"LANG", "POSIX"}}) == strMarked);
}
