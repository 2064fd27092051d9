#include "subburntest.h"

#include <cerrno>
#include <sys/stat.h>
#include <system_error>

namespace
{

// "grüß" in Latin-1, which is not valid UTF-8.
const char *const Latin = "gr\xfc\xdf";
// A terminal's colour sequence, a line end, a C1 control character and a right-to-left override.
const char *const Hostile = "a\x1b[31m\r\nb\xc2\x9b"
                            "c\xe2\x80\xae"
                            "d";
const char *const HostileEscaped = R"(a\x1b[31m\x0d\x0ab\xc2\x9bc\xe2\x80\xaed)";

class NamesTest : public SubburnTest
{
protected:
    /** The output for two raw frames, the second with a subtitle. */
    std::string Piped(const std::string &strSubtitles, const ChildProcess::Environment &listExtra = {})
    {
        return PipedBy({SUBBURN_PROGRAM}, strSubtitles, listExtra);
    }

    /** The same, run in another current folder. */
    std::string PipedFrom(const std::string &strFolder, const std::string &strSubtitles)
    {
        return PipedBy({"env", "-C", strFolder, SUBBURN_PROGRAM}, strSubtitles, {});
    }

    std::string PipedBy(Arguments listCommand, const std::string &strSubtitles,
                        const ChildProcess::Environment &listExtra)
    {
        for (const char *pArgument :
             {"--subtitles", strSubtitles.c_str(), "--font", "DejaVu Sans", "--pipe", "320x180@2"})
            listCommand.emplace_back(pArgument);
        const Outcome outcome =
            ChildProcess::Run(listCommand, std::string(size_t(2) * 320 * 180 * 3, '\x50'), listExtra);
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "standard output: 2 frames, 1 with a subtitle\n");
        return outcome.strOut;
    }

    std::string Copy(const std::string &strFile, const std::string &strName) const
    {
        const std::string strCopy = m_folder.Write(strName, "");
        std::filesystem::copy_file(strFile, strCopy, std::filesystem::copy_options::overwrite_existing);
        return strCopy;
    }
};

} // namespace

TEST_F(NamesTest, SubtitlesNeedNoUtf8)
{
    const std::string strTemporary = File("temporary");
    std::filesystem::create_directory(strTemporary);
    const std::string strScript = Clip("text.ass", {"-i", m_strSubtitles});
    for (const std::string &strFile : {m_strSubtitles, strScript}) {
        const std::string strExpected = Piped(strFile);
        const std::string strExtension = std::filesystem::path(strFile).extension();
        const std::string strUpper = strExtension == ".srt" ? ".SRT" : ".Ass";
        for (const std::string &strName : {Latin + strExtension, Latin + strUpper, std::string(Latin) + "/a" + strUpper,
                                           "\xf4\x90\x80\x80" + strExtension, "\xed\xa0\x80" + strExtension})
            EXPECT_TRUE(Piped(Copy(strFile, strName), {{"TMPDIR", strTemporary}}) == strExpected);
    }
    EXPECT_TRUE(std::filesystem::is_empty(strTemporary));
}

TEST_F(NamesTest, SubtitlesMayBeNamedFromTheirFolder)
{
    const std::string strExpected = Piped(m_strSubtitles);
    for (const std::string &strFolder : {std::string("plain"), std::string(Latin)}) {
        for (const std::string &strName : {std::string("a.srt"), std::string(":a.srt"), std::string("\xef\xbb\xbf.srt"),
                                           Latin + std::string(".srt"), std::string("a:b.srt")}) {
            Copy(m_strSubtitles, strFolder + "/" + strName);
            EXPECT_TRUE(PipedFrom(File(strFolder), strName) == strExpected) << testing::PrintToString(strName);
        }
    }
}

TEST_F(NamesTest, TheTemporaryFolderMayHaveAnyName)
{
    const std::string strInput = Clip("in.mkv", {"-i", m_strSubtitles, "-c:s", "subrip"});
    const std::string strExpected = Piped(strInput);
    for (const char *pName : {Latin, ":a"}) {
        std::filesystem::create_directory(File(pName));
        EXPECT_TRUE(Piped(strInput, {{"TMPDIR", File(pName)}}) == strExpected);
        EXPECT_TRUE(std::filesystem::is_empty(File(pName)));
    }
    EXPECT_TRUE(Piped(strInput, {{"TMPDIR", File("none")}}) == strExpected);
    EXPECT_TRUE(PipedBy({"env", "-C", m_folder.Path().string(), SUBBURN_PROGRAM}, strInput, {{"TMPDIR", ":a"}}) ==
                strExpected);
}

TEST_F(NamesTest, AFileThatGetsNoLinkIsAnError)
{
    m_strSubtitles = Copy(m_strSubtitles, std::string(Latin) + ".srt");
    // Not even root can create folders in /proc; the reason differs, so ask for it.
    ASSERT_EQ(mkdir("/proc/subburn", 0700), -1);
    const std::string strReason = std::generic_category().message(errno);
    const Outcome outcome = Subburn({"--pipe", "320x180@2"}, "", {{"TMPDIR", "/proc"}});
    EXPECT_EQ(outcome.nExit, 3);
    EXPECT_EQ(outcome.strError, "subburn: /proc: " + strReason + "\n");
}

TEST_F(NamesTest, VideosNeedNoUtf8)
{
    const std::string strExpected = Frames(Burn(UsualClip(), "plain.mkv", {"--preset", "ultrafast"}), "gray").at(12);
    const std::string strInput = Copy(File("in.mkv"), std::string(Latin) + "/\xff.mkv");
    const std::string strOutput = Burn(strInput, std::string(Latin) + ".mkv", {"--preset", "ultrafast"});
    EXPECT_TRUE(Frames(strOutput, "gray").at(12) == strExpected);
    const Outcome outcome = Subburn({"--snapshot", "0.5", strInput, File(Latin) + "/\xfe.png"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strOut, File("gr\\xfc\\xdf/\\xfe.png") + ": the picture at 0:00:00.480, with a subtitle\n");
}

TEST_F(NamesTest, NoNameReachesTheTerminalRaw)
{
    const std::string strInput = UsualClip(Hostile + std::string(".mkv"));
    const std::string strPrinted = File(HostileEscaped) + ".mkv";
    EXPECT_EQ(Subburn({strInput, File("out.mkv"), "--start", "9"}).strError,
              "subburn: " + strPrinted + ": there is no picture in the wanted part\n");
    EXPECT_EQ(Subburn({strInput, strInput}).strError, "subburn: " + strPrinted + ": would overwrite an input\n");
    EXPECT_EQ(ChildProcess::Run({SUBBURN_PROGRAM, "--list", strInput}).strOut,
              strPrinted + ": there are no subtitles in it\n");
    m_strSubtitles = m_folder.Write(Hostile + std::string(".srt"), "");
    const Outcome outcome = Subburn({strInput, File(Hostile) + ".mov", "--preset", "ultrafast"});
    EXPECT_EQ(outcome.strOut, File(HostileEscaped) + ".mov: 50 frames, 0 with a subtitle\n");
    EXPECT_EQ(outcome.strError,
              "subburn: warning: " + File(HostileEscaped) + ".srt: no subtitle was due at any frame\n");
}

TEST_F(NamesTest, NoArgumentReachesTheTerminalRaw)
{
    EXPECT_EQ(Subburn({"--color", Hostile, "in.mkv", "out.mkv"}).strError,
              "subburn: --color: \"" + std::string(HostileEscaped) + "\" is not a colour such as #ffcc00 or yellow\n");
    EXPECT_EQ(Subburn({"in.mkv", "out.mkv", "third\x1b\xff"}).strError,
              "subburn: The following argument was not expected: third\\x1b\\xff (see subburn --help)\n");
    EXPECT_EQ(Subburn({"--preset", Hostile, UsualClip(), File("out.mkv")}).strError,
              "subburn: --preset: there is no preset named \"" + std::string(HostileEscaped) + "\"\n");
}

TEST_F(NamesTest, PrintableNamesStayAsTheyAre)
{
    const std::string strName = File("gr\xc3\xbc\xc3\x9f \xe5\xad\x97\xe5\xb9\x95 \xf0\x9f\x98\x80 \"\\x'$%s.mkv");
    EXPECT_EQ(Subburn({strName, File("out.mkv")}).strError, "subburn: " + strName + ": No such file or directory\n");
}
