#include "subburntest.h"

namespace
{

const Arguments Picture = {"-f", "lavfi", "-i", "testsrc2=s=64x64:r=25:d=2"};
const Arguments Sound = {"-f", "lavfi", "-i", "sine=d=2"};

class ListTest : public SubburnTest
{
protected:
    ListTest() { m_strSubtitles.clear(); }

    Arguments Joined(const std::vector<Arguments> &listParts) const
    {
        Arguments listAll;
        for (const Arguments &listPart : listParts)
            listAll.insert(listAll.end(), listPart.begin(), listPart.end());
        return listAll;
    }

    std::string OneTrackClip(const std::string &strName, const Arguments &listCodecs) const
    {
        return Clip(strName, Joined({Picture, {"-i", File("text.srt")}, listCodecs}));
    }

    void ExpectList(const std::string &strFile, const std::string &strText) const
    {
        const Outcome outcome = Subburn({"--list", strFile});
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "");
        EXPECT_EQ(outcome.strOut, strText);
    }

    void ExpectFailure(const std::string &strFile, const std::string &strReason) const
    {
        const Outcome outcome = Subburn({"--list", strFile});
        EXPECT_EQ(outcome.nExit, 2);
        EXPECT_EQ(outcome.strError, "subburn: " + strFile + ": " + strReason + "\n");
        EXPECT_EQ(outcome.strOut, "");
    }
};

} // namespace

TEST_F(ListTest, TracksAreCountedAsTheirOptionWantsThem)
{
    const std::string strLate = m_folder.Write(
        "late.srt", "1\n00:00:00,100 --> 00:00:00,200\nEarly\n\n2\n01:02:03,450 --> 01:02:04,010\nLate\n\n"
                    "3\n00:00:01,000 --> 00:00:01,500\nBetween\n\n");
    const std::string strInput =
        Clip("in.mkv", Joined({Picture,
                               Sound,
                               {"-i", File("text.srt"), "-i", strLate},
                               {"-map", "0:v", "-map", "2:s", "-map", "3:s", "-map", "1:a"},
                               {"-c:a", "pcm_s16le", "-c:s:0", "subrip", "-c:s:1", "ass"},
                               {"-metadata:s:s:0", "language=eng", "-metadata:s:s:0", "title=Signs & songs"},
                               {"-metadata:s:s:1", "language=deu"}}));
    ExpectList(strInput, "track  codec   language  title          cues        first         last\n"
                         "    0  subrip  eng       Signs & songs     2  0:00:00.400  0:00:01.400\n"
                         "    1  ass     deu       -                 3  0:00:00.100  1:02:04.010\n");
}

TEST_F(ListTest, TitlesAreCleanedAndTakeTheirWidth)
{
    const std::string strInput =
        Clip("in.mkv", Joined({{"-i", File("text.srt"), "-i", File("text.srt")},
                               {"-map", "0", "-map", "1"},
                               {"-metadata:s:s:0", "title=\x1b[31mRed\r\n\x07\xc2\x9b\xe2\x80\xae"},
                               {"-metadata:s:s:1", "title=\xe5\xad\x97\xe5\xb9\x95 \xc3\xbc"}}));
    ExpectList(strInput,
               "track  codec  language  title    cues        first         last\n"
               "    0  ass    -         [31mRed     2  0:00:00.400  0:00:01.400\n"
               "    1  ass    -         \xe5\xad\x97\xe5\xb9\x95 \xc3\xbc      2  0:00:00.400  0:00:01.400\n");
}

TEST_F(ListTest, PacketsThatShowNothingAreNoCues)
{
    ExpectList(OneTrackClip("in.mp4", {"-c:s", "mov_text", "-metadata:s:s:0", "language=fra"}),
               "track  codec     language  title  cues        first         last\n"
               "    0  mov_text  fra       -         2  0:00:00.400  0:00:01.400\n");
}

TEST_F(ListTest, PicturesAreCuesUntilTheyGo)
{
    const std::string strFile = m_folder.Write("in.sup", PictureSubtitles());
    ExpectList(
        Clip("in.mkv", Joined({{"-copyts"}, Picture, {"-i", strFile, "-map", "0", "-map", "1", "-c:s", "copy"}})),
        "track  codec              language  title  cues        first         last\n"
        "    0  hdmv_pgs_subtitle  -         -         1  0:00:00.400  0:00:00.800\n");
}

TEST_F(ListTest, OtherContainers)
{
    ExpectList(OneTrackClip("in.webm", {"-c:v", "libvpx", "-deadline", "realtime", "-c:s", "webvtt"}),
               "track  codec   language  title  cues        first         last\n"
               "    0  webvtt  -         -         2  0:00:00.400  0:00:01.400\n");
}

TEST_F(ListTest, SubtitleFiles)
{
    const std::string strTracks = "language  title  cues        first         last\n";
    ExpectList(File("text.srt"),
               "track  codec   " + strTracks + "    0  subrip  -         -         2  0:00:00.400  0:00:01.400\n");
    for (const char *pName : {"text.ass", "text.ssa"})
        ExpectList(Clip(pName, {"-i", File("text.srt")}),
                   "track  codec  " + strTracks + "    0  ass    -         -         2  0:00:00.400  0:00:01.400\n");
}

TEST_F(ListTest, OfTextFilesWhatTheLibraryShows)
{
    const std::string strHead = "track  codec   language  title  cues        first         last\n";
    const auto Expect = [&](const std::string &strFile, const std::string &strRow, const std::string &strWarnings) {
        const Outcome outcome = Subburn({"--list", strFile});
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strOut, strRow);
        EXPECT_EQ(outcome.strError, strWarnings);
    };
    const auto Warning = [](const std::string &strFile, const std::string &strText) {
        return "subburn: warning: " + strFile + ": " + strText + "\n";
    };
    const std::string strPlain = m_folder.Write("plain.srt", "00:00:01,000 --> 00:00:02,000\nOne\n\n"
                                                             "00:00:03,000 --> 00:00:04,000\nTwo\n");
    Expect(strPlain, strHead + "    0  subrip  -         -         2  0:00:01.000  0:00:04.000\n", "");
    const std::string strReturns = m_folder.Write("returns.srt", "1\r00:00:01,000 --> 00:00:02,000\rOne\r\r2\r"
                                                                 "00:00:03,000 --> 00:00:04,000\rTwo\r\r\n");
    const std::string strNone = "track  codec   language  title  cues  first  last\n"
                                "    0  subrip  -         -         0      -     -\n";
    Expect(strReturns, strNone, Warning(strReturns, "2 of 2 cues do not show: lines end in carriage returns alone"));
    const std::string strPlaces = m_folder.Write(
        "places.srt", "1\n00:00:01,000 --> 00:00:02,000 X1:100 X2:200\nOne\n\n2\n00:00:03,000 --> 00:00:04,000\nTwo\n\n"
                      "3\n00:00:06,000 --> 00:00:05,000\nThree\n\n4\n00:00:07,000 --> 8\nFour\n");
    Expect(strPlaces, strHead + "    0  subrip  -         -         1  0:00:03.000  0:00:04.000\n",
           Warning(strPlaces, "1 of 4 cues do not show: text follows the end time") +
               Warning(strPlaces, "1 of 4 cues do not show: the end comes before the start") +
               Warning(strPlaces, "1 of 4 cues do not show: the times cannot be read"));
    const std::string strScript =
        m_folder.Write("script.ass", "[Script Info]\nScriptType: v4.00+\n[Events]\n"
                                     "Dialogue: 0,0:00:01.00,0:00:02.00,Default,,0,0,0,,One\n"
                                     "Dialogue: 0,0:00:04:56,0:00:08:90,Default,,0,0,0,,Two\n");
    Expect(strScript,
           "track  codec  language  title  cues        first         last\n"
           "    0  ass    -         -         1  0:00:01.000  0:00:02.000\n",
           Warning(strScript, "1 of 2 cues do not show: the times cannot be read"));
    // Hours may be missing, seconds have any number of digits, and what follows a third colon is not read.
    const std::string strLoose = m_folder.Write(
        "loose.srt", ":00:06,224-->00:00:09,312\nOne\n\n0:0:10.5 --> 00:00:11\nTwo\n\n"
                     "00:00:12,000 --> 00:00:13,000:99\n\nAfter a blank line\n\n+00:-1:75 --> 00:00:16,00000\nFour\n");
    Expect(strLoose, strHead + "    0  subrip  -         -         4  0:00:06.224  0:00:16.000\n", "");
    // The text after the end time takes its seconds with it, not its minutes.
    const std::string strMinute =
        m_folder.Write("minute.srt", "00:01:59,000 --> 00:02:07,120 X1:40 X2:600\nOne\n\n"
                                     "00:02:08,000 --> 00:02:09,000 X1:40 X2:600\n- Two\n-\n");
    Expect(strMinute, strHead + "    0  subrip  -         -         1  0:01:59.000  0:02:00.000\n",
           Warning(strMinute, "1 of 2 cues do not show: text follows the end time"));
    // The digits after the point are hundredths, however many they are, and what is no number is -1.
    const std::string strHundredths =
        m_folder.Write("hundredths.ass", "[Script Info]\nScriptType: v4.00+\n[Events]\n"
                                         "Dialogue: 0,0:00:01.5,0:00:02.00,Default,,0,0,0,,One\n"
                                         "Dialogue: 0,:00:03.00,0:00:08.123,Default,,0,0,0,,Two\n");
    Expect(strHundredths,
           "track  codec  language  title  cues        first         last\n"
           "    0  ass    -         -         2  0:00:00.000  0:00:09.230\n",
           "");
    const std::string strLocal = m_folder.Write("local.srt", "1\n00:00:01,000 --> 00:00:02,000\n\xe4\xf6\xfc\n");
    ExpectFailure(strLocal,
                  "is not valid UTF-8; --encoding NAME reads it, such as windows-1252, and --encoding auto guesses");
    EXPECT_EQ(Subburn({"--list", strLocal, "--encoding", "latin1"}).strOut,
              strHead + "    0  subrip  -         -         1  0:00:01.000  0:00:02.000\n");
}

TEST_F(ListTest, NoTracksAtAll)
{
    const std::string strInput = UsualClip();
    ExpectList(strInput, strInput + ": there are no subtitles in it\n");
    const std::string strColon = UsualClip("12:30.mkv");
    ExpectList(strColon, strColon + ": there are no subtitles in it\n");
}

TEST_F(ListTest, UnreadableFiles)
{
    ExpectFailure(File("none.mkv"), "No such file or directory");
    ExpectFailure(m_folder.Write("empty.mkv", ""), "Invalid data found when processing input");
    ExpectFailure(m_folder.Path().string(), "Is a directory");
}

TEST_F(ListTest, StandsAlone)
{
    for (const Arguments &listOthers : {Arguments{"in.mkv"}, Arguments{"--quiet"}, Arguments{"--track", "1"},
                                        Arguments{"--subtitles", "a.srt"}, Arguments{"--pipe", "320x180@25"}}) {
        const Outcome outcome = Subburn(Joined({{"--list", "in.mkv"}, listOthers}));
        EXPECT_EQ(outcome.nExit, 1);
        EXPECT_EQ(outcome.strError,
                  "subburn: --list takes no INPUT, no OUTPUT and no options other than --encoding and --raw\n");
    }
}

TEST_F(ListTest, AFullOutputIsAnError)
{
    const Outcome outcome =
        ChildProcess::Run({"sh", "-c", "exec \"$0\" \"$@\" >/dev/full", SUBBURN_PROGRAM, "--list", File("text.srt")});
    EXPECT_EQ(outcome.nExit, 3);
    EXPECT_EQ(outcome.strError, "subburn: standard output: No space left on device\n");
}
