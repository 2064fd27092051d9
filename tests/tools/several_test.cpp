#include "subburntest.h"

#include <algorithm>

namespace
{

const int Width = 320;

/** Several subtitles, looked at in pictures on black. */
class SeveralTest : public SubburnTest
{
protected:
    SeveralTest() :
        m_strInput(Clip("in.mkv", {"-f", "lavfi", "-i", "color=black:s=320x180:r=5:d=2", "-c:v", "ffv1"})),
        m_strA(File("a.srt")),
        m_strB(File("b.srt"))
    {
        m_strSubtitles.clear();
        m_folder.Write("a.srt", Cue("0,400", "1,000", "Good morning"));
        m_folder.Write("b.srt", Cue("0,600", "1,600", "\xd0\x94\xd0\xbe\xd0\xb1\xd1\x80\xd0\xbe jj"));
    }

    static std::string Cue(const std::string &strStart, const std::string &strEnd, const std::string &strText)
    {
        return "1\n00:00:0" + strStart + " --> 00:00:0" + strEnd + "\n" + strText + "\n\n";
    }

    Outcome Snapshot(const Arguments &listOptions, const std::string &strTime = "0.8") const
    {
        Arguments listArguments = {"--font", "DejaVu Sans", "--snapshot", strTime, m_strInput, File("a.png")};
        listArguments.insert(listArguments.end(), listOptions.begin(), listOptions.end());
        return Subburn(listArguments);
    }

    /** Expects success, and a warning of a file of which nothing is due, if there is one. */
    std::string Picture(const Arguments &listOptions, const std::string &strTime = "0.8",
                        const std::string &strUnused = "") const
    {
        const Outcome outcome = Snapshot(listOptions, strTime);
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError,
                  strUnused.empty() ? "" : "subburn: warning: " + strUnused + ": no subtitle was due at any frame\n");
        return Frames(File("a.png"), "rgb24").front();
    }

    /** Of the pixels that have a part of one of red, green and blue. */
    static Bounds Colored(const std::string &strPicture, int nColor)
    {
        Bounds bounds;
        for (size_t n = nColor; n < strPicture.size(); n += 3) {
            if (strPicture[n] != '\0')
                bounds.Add(static_cast<int>(n / 3) % Width, static_cast<int>(n / 3) / Width);
        }
        return bounds;
    }

    /** A picture of black with what another shows, moved down. */
    static std::string Moved(const std::string &strPicture, int nRows)
    {
        const size_t nBytes = std::abs(nRows) * Width * 3;
        const std::string strBlack(nBytes, '\0');
        return nRows < 0 ? strPicture.substr(nBytes) + strBlack
                         : strBlack + strPicture.substr(0, strPicture.size() - nBytes);
    }

    static std::string Sum(const std::string &strA, const std::string &strB)
    {
        std::string strSum = strA;
        std::transform(strA.begin(), strA.end(), strB.begin(), strSum.begin(),
                       [](char a, char b) { return static_cast<char>(a | b); });
        return strSum;
    }

    const std::string m_strInput;
    const std::string m_strA;
    const std::string m_strB;
};

const int Red = 0;
const int Green = 1;

} // namespace

TEST_F(SeveralTest, EachHasItsOwnPlaceAndColour)
{
    const Arguments listA = {"--subtitles", m_strA, "--position", "20", "--color", "red", "--outline-color", "black"};
    const Arguments listB = {"--subtitles", m_strB, "--color", "lime", "--outline-color", "black"};
    Arguments listBoth = listA;
    listBoth.insert(listBoth.end(), listB.begin(), listB.end());
    const std::string strBoth = Picture(listBoth);
    EXPECT_LT(Colored(strBoth, Red).nBottom, 60);
    EXPECT_GT(Colored(strBoth, Green).nTop, 120);
    const std::string strA = Picture(listA);
    const std::string strB = Picture(listB);
    EXPECT_FALSE(Colored(strA, Red).Empty());
    EXPECT_FALSE(Colored(strB, Green).Empty());
    EXPECT_TRUE(strBoth == Sum(strA, strB));
    // Each at its own time.
    EXPECT_TRUE(Picture(listBoth, "0.4", m_strB) == strA);
    EXPECT_TRUE(Picture(listBoth, "1.4", m_strA) == strB);
}

TEST_F(SeveralTest, AtOnePlaceTheyShowOneAboveTheOther)
{
    const Arguments listLook = {"--outline-color", "black"};
    const auto With = [&](const Arguments &listMore) {
        Arguments listAll = listLook;
        listAll.insert(listAll.end(), listMore.begin(), listMore.end());
        return Picture(listAll);
    };
    const std::string strA = With({"--subtitles", m_strA, "--color", "red"});
    const std::string strB = With({"--subtitles", m_strB, "--color", "lime"});
    EXPECT_LT(Colored(strB, Green).nTop, Colored(strA, Red).nBottom) << "they would overlap";
    const std::string strBoth =
        With({"--subtitles", m_strA, "--color", "red", "--subtitles", m_strB, "--color", "lime"});
    const Bounds lower = Colored(strBoth, Red);
    const Bounds upper = Colored(strBoth, Green);
    EXPECT_LE(upper.nBottom, lower.nTop);
    EXPECT_LE(lower.nTop, upper.nBottom + 6) << "like lines";
    EXPECT_TRUE(strBoth == Sum(strA, Moved(strB, upper.nTop - Colored(strB, Green).nTop))) << "both are whole";
    // In the other order the other is the lower one.
    const std::string strTurned =
        With({"--subtitles", m_strB, "--color", "lime", "--subtitles", m_strA, "--color", "red"});
    EXPECT_LE(Colored(strTurned, Red).nBottom, Colored(strTurned, Green).nTop);
    // Whoever is alone is where a single file's would be.
    EXPECT_TRUE(Picture({"--outline-color", "black", "--color", "lime", "--subtitles", m_strA, "--subtitles", m_strB},
                        "1.4", m_strA) == strB);
}

TEST_F(SeveralTest, VideoHasThemInEveryFrameOfTheirTimes)
{
    const Outcome outcome =
        Subburn({"--outline-color", "black", "--subtitles", m_strA, "--color", "red", "--subtitles", m_strB, "--color",
                 "lime", "--codec", "ffv1", "--pix-fmt", "bgr0", m_strInput, File("out.mkv")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    EXPECT_EQ(outcome.strOut, m_strA + ": 4 frames with a subtitle\n" + m_strB + ": 6 frames with a subtitle\n" +
                                  File("out.mkv") + ": 10 frames, 7 with a subtitle\n");
    std::string strShown;
    for (const std::string &strFrame : Frames(File("out.mkv"), "rgb24")) {
        const bool bRed = !Colored(strFrame, Red).Empty();
        const bool bGreen = !Colored(strFrame, Green).Empty();
        strShown += bRed && bGreen ? 'B' : bRed ? 'R' : bGreen ? 'G' : '.';
    }
    EXPECT_EQ(strShown, "..RBBBGGG.");
}

TEST_F(SeveralTest, FramesThatHaveToBeConvertedHaveThemToo)
{
    const std::string strOdd = Clip("odd.mkv", {"-i", m_strInput, "-c:v", "ffv1", "-pix_fmt", "yuv411p"});
    const auto Luma = [&](const Arguments &listOptions) {
        Arguments listArguments = {"--codec", "ffv1", "--font", "DejaVu Sans", strOdd, File("out.mkv")};
        listArguments.insert(listArguments.end(), listOptions.begin(), listOptions.end());
        EXPECT_EQ(Subburn(listArguments).nExit, 0);
        EXPECT_EQ(Probe(File("out.mkv"), "stream=pix_fmt", "v:0", "csv=p=0"), "yuv411p\n");
        return Frames(File("out.mkv"), "gray")[4];
    };
    const std::string strA = Luma({"--subtitles", m_strA, "--position", "20"});
    const std::string strB = Luma({"--subtitles", m_strB});
    EXPECT_FALSE(strA == strB);
    const size_t nHalf = strA.size() / 2;
    EXPECT_TRUE(Luma({"--subtitles", m_strA, "--position", "20", "--subtitles", m_strB}) ==
                strA.substr(0, nHalf) + strB.substr(nHalf));
}

TEST_F(SeveralTest, TracksOfOneFileAreNamedByTheirNumbers)
{
    const std::string strFilm = Clip("film.mkv", {"-i", m_strInput, "-i", m_strA, "-i", m_strB, "-map", "0", "-map",
                                                  "1", "-map", "2", "-map", "1", "-c", "copy"});
    const Arguments listFiles = {"--outline-color", "black",          "--subtitles", m_strA, "--color", "red",
                                 "--subtitles",     m_strB,           "--color",     "lime", "--codec", "ffv1",
                                 m_strInput,        File("files.mkv")};
    EXPECT_EQ(Subburn(listFiles).nExit, 0);
    const Outcome outcome =
        Subburn({"--outline-color", "black", "--subtitles", strFilm, "--color", "red", "--subtitles", strFilm,
                 "--track", "1", "--color", "lime", "--codec", "ffv1", strFilm, File("tracks.mkv")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    EXPECT_EQ(outcome.strOut, strFilm + ", track 0: 4 frames with a subtitle\n" + strFilm +
                                  ", track 1: 6 frames with a subtitle\n" + File("tracks.mkv") +
                                  ": 10 frames, 7 with a subtitle\n");
    EXPECT_TRUE(Frames(File("tracks.mkv"), "rgb24") == Frames(File("files.mkv"), "rgb24"));
    // Both that were burnt are left out.
    EXPECT_EQ(Probe(File("tracks.mkv"), "stream=codec_type", "", "csv=p=0"), "video\nsubtitle\n");
}

TEST_F(SeveralTest, OptionsBeforeTheFirstAreForAllAndThoseAfterOneForItAlone)
{
    const std::string strRedAndLime = Picture({"--subtitles", m_strA, "--color", "red", "--size", "9", "--subtitles",
                                               m_strB, "--color", "lime", "--size", "9", "--bold"});
    EXPECT_TRUE(Picture({"--size", "9", "--color", "red", "--subtitles", m_strA, "--subtitles", m_strB, "--color",
                         "lime", "--bold"}) == strRedAndLime);
    EXPECT_TRUE(Picture({"--size", "9", "--bold", "--color", "lime", "--subtitles", m_strA, "--color", "red",
                         "--bold=false", "--subtitles", m_strB}) == strRedAndLime);
    EXPECT_FALSE(Picture({"--size", "9", "--color", "lime", "--subtitles", m_strA, "--color", "red", "--subtitles",
                          m_strB}) == strRedAndLime);
    // Of times, too; with one file the place does not matter.
    const std::string strLater = Picture({"--subtitles", m_strA, "--subtitles", m_strB, "--delay", "1"}, "0.8", m_strB);
    EXPECT_TRUE(strLater == Picture({"--delay", "0.2", "--subtitles", m_strA}));
    EXPECT_TRUE(strLater == Picture({"--subtitles", m_strA, "--delay", "0.2"}));
}

TEST_F(SeveralTest, WrongUsageIsOneLine)
{
    const auto ExpectRefusal = [&](const Arguments &listOptions, int nExit, const std::string &strLine) {
        const Outcome outcome = Snapshot(listOptions);
        EXPECT_EQ(outcome.nExit, nExit);
        EXPECT_EQ(outcome.strError, "subburn: " + strLine + "\n");
        EXPECT_EQ(outcome.strOut, "");
    };
    ExpectRefusal({"--subtitles", m_strA, "--subtitles", m_strB, "--position", "101"}, 1,
                  "--position: \"101\" is not a whole number from 0 to 100");
    ExpectRefusal({"--size", "9", "--subtitles", m_strA, "--track", "1", "--size", "8", "--track", "2"}, 1,
                  "--track: given twice for one --subtitles");
    ExpectRefusal({"--track", "1", "--track", "2"}, 1, "--track: given twice");
    ExpectRefusal({"--outline-width", "3", "--subtitles", m_strA, "--subtitles", m_strB, "--exact"}, 1,
                  "--exact excludes --outline-width");
    ExpectRefusal({"--subtitles", m_strA, "--subtitles"}, 1,
                  "--subtitles: 1 required TEXT missing (see subburn --help)");
    EXPECT_EQ(Snapshot({"--subtitles", m_strA, "--outline-width", "3", "--subtitles", m_strB, "--exact"}).nExit, 0);
}

TEST_F(SeveralTest, ASecondFileThatCannotBeReadIsNamed)
{
    m_folder.Write("broken.idx", "no index\n");
    m_folder.Write("broken.sub", "");
    m_folder.Write("latin.srt", Cue("0,400", "0,800", "\xe4\xf6\xfc"));
    const std::pair<std::string, std::string> Files[] = {
        {File("none.srt"), "No such file or directory"},
        {File("broken.idx"), "there are no subtitles in it"},
        {m_strInput, "there are no subtitles in it"},
        {File("latin.srt"), "is not valid UTF-8; --encoding NAME reads it, such as windows-1252, and --encoding auto "
                            "guesses"}};
    const Arguments listBefore = Names();
    for (const auto &[strFile, strReason] : Files) {
        for (const Arguments &listOrder : {Arguments{m_strA, strFile}, Arguments{strFile, m_strA}}) {
            const Outcome outcome =
                Subburn({"--subtitles", listOrder[0], "--subtitles", listOrder[1], m_strInput, File("out.mkv")});
            EXPECT_EQ(outcome.nExit, 2) << strFile;
            EXPECT_EQ(outcome.strError.substr(0, outcome.strError.find(strReason)), "subburn: " + strFile + ": ")
                << outcome.strError;
            EXPECT_EQ(outcome.strError.find('\n'), outcome.strError.size() - 1) << outcome.strError;
            EXPECT_EQ(Names(), listBefore);
        }
    }
    // Nor is any of them written over.
    const std::string strTrack = Clip("track.mkv", {"-i", m_strB, "-c", "copy"});
    const Outcome outcome = Subburn({"--subtitles", m_strA, "--subtitles", strTrack, m_strInput, strTrack});
    EXPECT_EQ(outcome.nExit, 1);
    EXPECT_EQ(outcome.strError, "subburn: " + strTrack + ": would overwrite an input\n");
}

TEST_F(SeveralTest, WarningsNameTheFile)
{
    const std::string strLate = m_folder.Write("late.srt", "1\n01:00:00,000 --> 01:00:02,000\nLate\n\n");
    Outcome outcome = Snapshot({"--subtitles", m_strA, "--subtitles", strLate});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "subburn: warning: " + strLate + ": no subtitle was due at any frame\n");
    EXPECT_EQ(outcome.strOut, File("a.png") + ": the picture at 0:00:00.800, with a subtitle of " + m_strA + "\n");
    EXPECT_EQ(Snapshot({"--subtitles", m_strA, "--subtitles", m_strB}).strOut,
              File("a.png") + ": the picture at 0:00:00.800, with a subtitle of " + m_strA + " and of " + m_strB +
                  "\n");
    EXPECT_EQ(Snapshot({"--subtitles", m_strA, "--subtitles", m_strB}, "0.2").strOut,
              File("a.png") + ": the picture at 0:00:00.200, without a subtitle\n");
    // A font of all is named once.
    outcome = Subburn({"--font", "No Such Font", "--subtitles", m_strA, "--subtitles", m_strB, "--snapshot", "0.8",
                       m_strInput, File("a.png")});
    EXPECT_EQ(std::count(outcome.strError.begin(), outcome.strError.end(), '\n'), 1) << outcome.strError;
}

TEST_F(SeveralTest, TheExactLookDrawsThemInOrder)
{
    const auto Exact = [&](const std::string &strSubtitles, const std::string &strColor) {
        return Arguments{"--subtitles", strSubtitles, "--exact", "--color", strColor};
    };
    Arguments listBoth = Exact(m_strA, "red");
    const Arguments listB = Exact(m_strB, "lime");
    listBoth.insert(listBoth.end(), listB.begin(), listB.end());
    const std::string strBoth = Picture(listBoth);
    // The same in two passes.
    Picture(Exact(m_strA, "red"));
    Clip("in.mkv",
         {"-framerate", "5", "-loop", "1", "-i", File("a.png"), "-t", "2", "-c:v", "ffv1", "-pix_fmt", "bgr0"});
    EXPECT_TRUE(strBoth == Picture(listB));
    EXPECT_LT(Colored(strBoth, Green).nTop, Colored(strBoth, Red).nBottom) << "over each other";
}

TEST_F(SeveralTest, PicturesOfAPipeHaveThemToo)
{
    const std::string strShown = Picture({"--subtitles", m_strA, "--subtitles", m_strB});
    const size_t nBytes = strShown.size();
    const Outcome outcome =
        Subburn({"--font", "DejaVu Sans", "--subtitles", m_strA, "--subtitles", m_strB, "--pipe", "320x180@5"},
                std::string(5 * nBytes, '\0'));
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, m_strA + ": 3 frames with a subtitle\n" + m_strB +
                                    ": 2 frames with a subtitle\nstandard output: 5 frames, 3 with a subtitle\n");
    EXPECT_TRUE(outcome.strOut.substr(4 * nBytes) == strShown);
    EXPECT_EQ(Subburn({"--subtitles", m_strA, "--subtitles", "", "--pipe", "320x180@5"}).strError,
              "subburn: --pipe needs --subtitles\n");
}
