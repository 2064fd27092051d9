// The hosts for raw frames in C and in Python, which behave the same.
#include "examplestest.h"

namespace
{

class RawHostTest : public ExamplesTest
{
protected:
    Outcome Run(std::vector<std::string> listArguments, const std::string &strInput) const
    {
        listArguments.insert(listArguments.begin(), m_listHost.begin(), m_listHost.end());
        return ChildProcess::Run(listArguments, strInput);
    }

    void ExpectBurns(const std::string &strRate, int nRate, int nScale) const
    {
        const Outcome outcome = Run({"322x180", strRate, m_strSubtitles}, m_film.Bytes());
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "");
        ExpectFilm(outcome.strOut, nRate, nScale);
    }

    /** Expects this exit code and exactly this text on standard error, and no output. */
    void ExpectFails(const std::vector<std::string> &listArguments, const std::string &strInput,
                     const std::string &strError, int nExit) const
    {
        const Outcome outcome = Run(listArguments, strInput);
        EXPECT_EQ(outcome.nExit, nExit);
        EXPECT_EQ(outcome.strError, strError);
        EXPECT_EQ(outcome.strOut, "");
    }

    std::vector<std::string> m_listHost = {RAWHOST};
    std::string m_strEmptyIndex = m_folder.Write("empty.idx", "");
};

class CtypesHostTest : public RawHostTest
{
protected:
    CtypesHostTest() { m_listHost = {"python3", EXAMPLES "/ctypeshost.py", "--library", SUBTITLE_LIBRARY}; }
};

} // namespace

TEST_F(RawHostTest, BurnsFrames)
{
    ExpectBurns("25", 25, 1);
    ExpectBurns("30000/1001", 30000, 1001);
    ExpectBurns("16", 16, 1);
}

TEST_F(RawHostTest, SaysWhatIsWrong)
{
    const std::string strUsage = "rawhost: usage: rawhost WIDTHxHEIGHT FRAMES-PER-SECOND SUBTITLES\n";
    ExpectFails({}, "", strUsage, 1);
    for (const char *pSize : {"322", "0x180", "322x0", "axb", ""})
        ExpectFails({pSize, "25", m_strSubtitles}, "", strUsage, 1);
    for (const char *pRate : {"0", "25/0", "-25", "pal", ""})
        ExpectFails({"322x180", pRate, m_strSubtitles}, "", strUsage, 1);
    ExpectFails({"322x180", "25", File("none.srt")}, "", "rawhost: the subtitle file cannot be read\n", 1);
    ExpectFails({"322x180", "25", m_strEmptyIndex}, "", "rawhost: the subtitle file is refused\n", 1);
    ExpectFails({"322x180", "25", m_strSubtitles}, "part", "rawhost: standard input ends within a frame\n", 1);
}

TEST_F(RawHostTest, SaysThatOutputCannotBeWritten)
{
    const Outcome outcome = ChildProcess::Run(
        {"sh", "-c", "exec \"$0\" \"$@\" >/dev/full", RAWHOST, "322x180", "25", m_strSubtitles}, m_film.Bytes());
    EXPECT_EQ(outcome.nExit, 1);
    EXPECT_EQ(outcome.strError, "rawhost: standard output cannot be written\n");
}

#ifdef WITH_CTYPES
TEST_F(CtypesHostTest, BurnsFrames)
{
    ExpectBurns("25", 25, 1);
    ExpectBurns("30000/1001", 30000, 1001);
    ExpectBurns("16", 16, 1);
}

TEST_F(CtypesHostTest, SaysWhatIsWrong)
{
    for (const char *pSize : {"322", "0x180", "axb"})
        EXPECT_EQ(Run({pSize, "25", m_strSubtitles}, "").nExit, 2) << pSize;
    for (const char *pRate : {"0", "25/0", "pal"})
        EXPECT_EQ(Run({"322x180", pRate, m_strSubtitles}, "").nExit, 2) << pRate;
    ExpectFails({"322x180", "25", File("none.srt")}, "",
                "ctypeshost.py: [Errno 2] No such file or directory: '" + File("none.srt") + "'\n", 1);
    ExpectFails({"322x180", "25", m_strEmptyIndex}, "", "ctypeshost.py: the subtitle file is refused\n", 1);
    ExpectFails({"322x180", "25", m_strSubtitles}, "part", "ctypeshost.py: standard input ends within a frame\n", 1);
}
#endif
