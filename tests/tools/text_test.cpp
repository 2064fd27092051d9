#include "subburntest.h"

#include <algorithm>
#include <ostream>
#include <set>
#include <sstream>

namespace
{

/** How subburn prepares text for the library. */
class TextTest : public SubburnTest
{
protected:
    TextTest() : m_strInput(Clip("in.mkv", {"-f", "lavfi", "-i", "color=black:s=320x180:r=5:d=2", "-c:v", "ffv1"})) {}

    std::string Cue(const std::string &strText) const
    {
        return "1\n00:00:00,400 --> 00:00:00,800\n" + strText + "\n\n";
    }

    std::string Event(const std::string &strText) const
    {
        return "[Script Info]\nScriptType: v4.00+\n[Events]\nDialogue: 0,0:00:00.40,0:00:00.80,Default,,0,0,0,," +
               strText + "\n";
    }

    Outcome Run(const std::string &strName, const std::string &strContent, const Arguments &listOptions = {})
    {
        m_strSubtitles = m_folder.Write(strName, strContent);
        Arguments listArguments = {"--font", "DejaVu Sans", "--snapshot", "0.6", m_strInput, File("a.png")};
        listArguments.insert(listArguments.end(), listOptions.begin(), listOptions.end());
        return Subburn(listArguments);
    }

    /** The snapshot, and the notes printed before the usual one. */
    std::pair<std::string, std::string> Shown(const std::string &strName, const std::string &strContent,
                                              const Arguments &listOptions = {})
    {
        const Outcome outcome = Run(strName, strContent, listOptions);
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        EXPECT_EQ(outcome.strError, "");
        const std::string strUsual = File("a.png") + ": the picture at 0:00:00.600, with a subtitle\n";
        EXPECT_EQ(outcome.strOut.substr(outcome.strOut.size() - strUsual.size()), strUsual);
        return {Frames(File("a.png"), "rgb24").front(),
                outcome.strOut.substr(0, outcome.strOut.size() - strUsual.size())};
    }

    const std::string m_strInput;
};

} // namespace

TEST_F(TextTest, MarkupIsLeftOutUnlessItIsWanted)
{
    const std::string strNote = ": tags and drawings are left out, --raw keeps them\n";
    const auto plain = Shown("plain.srt", Cue("One & two\n12"));
    EXPECT_EQ(plain.second, "");
    const std::string strTagged = Cue("{\\an8}<i>One</i> &amp; <font color=\"red\">two</font>\n<b>12</b>");
    const auto cleaned = Shown("tagged.srt", strTagged);
    EXPECT_EQ(cleaned.second, File("tagged.srt") + strNote);
    // A line of digits alone would end the cue; cleaning keeps it as text.
    EXPECT_TRUE(cleaned.first == Shown("shown.srt", Cue("One & two\n12\xe2\x80\x8b")).first);
    const auto raw = Shown("tagged.srt", strTagged, {"--raw"});
    EXPECT_EQ(raw.second, "");
    EXPECT_TRUE(raw.first != cleaned.first);
    const auto script = Shown("a.ass", Event("{\\p1}m 0 0 l 9 9{\\p0}One\\htwo\\NThree"));
    EXPECT_EQ(script.second, File("a.ass") + strNote);
    EXPECT_TRUE(script.first == Shown("b.ass", Event("One\xc2\xa0two\\NThree")).first);
    // The library removes blocks in braces itself.
    EXPECT_EQ(Shown("c.ass", Event("{\\i1}One{\\i0}")).second, "");
}

TEST_F(TextTest, OtherEncodingsAreReadByName)
{
    const std::string strRussian =
        "\xd0\x9f\xd1\x80\xd0\xb8\xd0\xb2\xd0\xb5\xd1\x82, \xd0\xba\xd0\xb0\xd0\xba "
        "\xd0\xb4\xd0\xb5\xd0\xbb\xd0\xb0? \xd0\xa5\xd0\xbe\xd1\x80\xd0\xbe\xd1\x88\xd0\xbe.";
    const std::string str1251 = "\xcf\xf0\xe8\xe2\xe5\xf2, \xea\xe0\xea \xe4\xe5\xeb\xe0? \xd5\xee\xf0\xee\xf8\xee.";
    const std::string strShown = Shown("utf8.srt", Cue(strRussian)).first;
    EXPECT_TRUE(Shown("a.srt", Cue(str1251), {"--encoding", "windows-1251"}) == std::pair(strShown, std::string()));
    const auto guessed = Shown("a.srt", Cue(str1251), {"--encoding", "auto"});
    EXPECT_TRUE(guessed.first == strShown);
    EXPECT_EQ(guessed.second, File("a.srt") + ": the encoding is taken for WINDOWS-1251\n");
    // Also for files that are read through FFmpeg.
    EXPECT_TRUE(
        Shown("a.vtt", "WEBVTT\n\n00:00.400 --> 00:00.800\n" + str1251 + "\n", {"--encoding", "cp1251"}).first ==
        strShown);
    // A byte-order mark takes precedence.
    EXPECT_TRUE(Shown("b.srt", "\xef\xbb\xbf" + Cue(strRussian), {"--encoding", "windows-1251"}).first == strShown);
    const auto ExpectRefusal = [&](const Outcome &outcome, int nExit, const std::string &strLine) {
        EXPECT_EQ(outcome.nExit, nExit);
        EXPECT_EQ(outcome.strError, "subburn: " + strLine + "\n");
    };
    ExpectRefusal(Run("a.srt", Cue(str1251)), 2,
                  File("a.srt") +
                      ": is not valid UTF-8; --encoding NAME reads it, such as windows-1252, and --encoding "
                      "auto guesses");
    ExpectRefusal(Run("a.srt", Cue(str1251), {"--encoding", "nonsense"}), 1,
                  "--encoding: there is no encoding named \"nonsense\"");
    ExpectRefusal(Run("a.srt", Cue("\xa5\xb9 \xc6\xe6 \xca\xea \xa3\xb3 \xd1\xf1 \xd3\xf3 \x8c\x9c \x8f\x9f \xaf\xbf"),
                      {"--encoding", "auto"}),
                  2, File("a.srt") + ": its encoding cannot be guessed; --encoding NAME reads it");
}

TEST_F(TextTest, FormatsThatFfmpegReadsMayBeInOtherEncodings)
{
    const std::string strRussian = "\xd0\x9f\xd1\x80\xd0\xb8\xd0\xb2\xd0\xb5\xd1\x82, "
                                   "\xd0\xba\xd0\xb0\xd0\xba \xd0\xb4\xd0\xb5\xd0\xbb\xd0\xb0?";
    const std::string str1251 = "\xcf\xf0\xe8\xe2\xe5\xf2, \xea\xe0\xea \xe4\xe5\xeb\xe0?";
    const std::string strShown = Shown("utf8.srt", Cue(strRussian)).first;
    const auto ExpectRefusal = [&](const Outcome &outcome) {
        EXPECT_EQ(outcome.nExit, 2);
        EXPECT_EQ(outcome.strOut, "");
        EXPECT_EQ(outcome.strError, "subburn: " + m_strSubtitles +
                                        ": is not valid UTF-8; --encoding NAME reads it, such as windows-1252, and "
                                        "--encoding auto guesses\n");
    };
    // FFmpeg recognizes MicroDVD and MPL2 only by several lines.
    const std::string strMoreMpl2 = "[30][40]2\n[50][60]3\n[70][80]4\n";
    const struct {
        std::string strName;
        std::string strHead;
        std::string strTail;
    } listFormats[] = {{"a.vtt", "WEBVTT\n\n00:00.400 --> 00:00.800\n", ""},
                       {"mpl2.txt", "[4][8]", strMoreMpl2},
                       {"microdvd.sub", "{0}{0}10\n{4}{8}", "{30}{40}2\n{50}{60}3\n"},
                       {"subviewer.sub", "00:00:00.40,00:00:00.80\n", ""}};
    for (const auto &[strName, strHead, strTail] : listFormats) {
        EXPECT_TRUE(Shown(strName, strHead + strRussian + "\n" + strTail) == std::pair(strShown, std::string()))
            << strName;
        const std::string strFile = strHead + str1251 + "\n" + strTail;
        EXPECT_TRUE(Shown(strName, strFile, {"--encoding", "windows-1251"}) == std::pair(strShown, std::string()))
            << strName;
        const std::string strNote = File(strName) + ": the encoding is taken for WINDOWS-1251\n";
        EXPECT_TRUE(Shown(strName, strFile, {"--encoding", "auto"}) == std::pair(strShown, strNote)) << strName;
        ExpectRefusal(Run(strName, strFile));
        EXPECT_EQ(Run(strName, strFile, {"--raw"}).nExit, 0) << strName;
    }
    // The same of a track, whose bytes FFmpeg copies.
    Clip("film.mkv", {"-i", m_folder.Write("a.srt", Cue(str1251)), "-c", "copy"});
    const std::string strFilm = Content(File("film.mkv"));
    ExpectRefusal(Run("film.mkv", strFilm));
    EXPECT_TRUE(Shown("film.mkv", strFilm, {"--encoding", "windows-1251"}).first == strShown);
    // The second byte of the first character is '|', which ends a line of MPL2; that of the second is a bracket.
    const std::string strJapanese = Shown("utf8.srt", Cue("\xe3\x83\x9d\xe3\x83\xbc\xe3\x83\x88")).first;
    EXPECT_TRUE(
        Shown("mpl2.txt", "[4][8]\x83\x7c\x81\x5b\x83\x67\n" + strMoreMpl2, {"--encoding", "shift-jis"}).first ==
        strJapanese);
}

TEST_F(TextTest, AFontThatIsMissingIsNamed)
{
    m_strSubtitles = m_folder.Write("a.srt", Cue("Hello"));
    const auto Picture = [&](const std::string &strFont) {
        const Outcome outcome = Subburn({"--font", strFont, "--snapshot", "0.6", m_strInput, File("a.png")});
        EXPECT_EQ(outcome.nExit, 0);
        return std::pair(outcome.strError, Frames(File("a.png"), "rgb24").front());
    };
    const auto missing = Picture("No Such Font");
    const std::string strBegin = "subburn: warning: No Such Font: there is no such font, ";
    const std::string strEnd = " is used instead\n";
    ASSERT_EQ(missing.first.substr(0, strBegin.size()), strBegin);
    ASSERT_EQ(missing.first.substr(missing.first.size() - strEnd.size()), strEnd);
    const size_t nName = missing.first.size() - strEnd.size() - strBegin.size();
    const auto used = Picture(missing.first.substr(strBegin.size(), nName));
    EXPECT_EQ(used.first, "");
    EXPECT_TRUE(used.second == missing.second);
    EXPECT_EQ(Picture("dejavu sans").first, "");
    EXPECT_EQ(Picture("sans-serif").first, "");
}

TEST_F(TextTest, TimesAreMovedAndStretched)
{
    const std::string strBlack = Frames(m_strInput, "gray").front();
    const auto Due = [&](const Arguments &listOptions) {
        std::string strDue;
        for (const std::string &strFrame : Frames(Burn(m_strInput, "out.mkv", listOptions), "gray"))
            strDue += strFrame == strBlack ? '.' : 'X';
        return strDue;
    };
    m_strSubtitles = m_folder.Write("a.srt", "1\n00:00:00,400 --> 00:00:00,800\nHello\n\n");
    EXPECT_EQ(Due({"--codec", "ffv1"}), "..XXX.....");
    EXPECT_EQ(Due({"--codec", "ffv1", "--delay", "0.6"}), ".....XXX..");
    EXPECT_EQ(Due({"--codec", "ffv1", "--delay", "-0.4"}), "XXX.......");
    EXPECT_EQ(Due({"--codec", "ffv1", "--stretch", "2"}), "....XXXXX.");
    EXPECT_EQ(Due({"--codec", "ffv1", "--stretch", "50/25", "--delay", "-0.2"}), "...XXXXX..");
    for (const auto &[strOption, strValue] : {std::pair<std::string, std::string>("--delay", "soon"),
                                              {"--delay", "--1"},
                                              {"--stretch", "0"},
                                              {"--stretch", "25/"},
                                              {"--stretch", "1/0"}})
        EXPECT_EQ(Subburn({strOption, strValue, m_strInput, File("out.mkv")}).nExit, 1) << strOption << strValue;
}

namespace
{

struct RealFile {
    const char *pName;
    const char *pEncoding;
    // How many of four frames per second show a cue; -1 takes the count from the times of FFmpeg's demuxer.
    int nFrames;
    int nSeconds = 20;

    friend std::ostream &operator<<(std::ostream &stream, const RealFile &file) { return stream << file.pName; }
};

class RealFileTest : public SubburnTest, public testing::WithParamInterface<RealFile>
{
protected:
    /** Counts frames within the times of FFmpeg's packets. The library shows nothing at time 0. */
    int CountOfDemuxer(const std::string &strFile, int nAll) const
    {
        std::vector<std::pair<double, double>> listCues;
        std::istringstream lines(Probe(strFile, "packet=pts_time,duration_time", "s", "csv=p=0"));
        for (std::string strLine; std::getline(lines, strLine);) {
            const double dStart = std::stod(strLine);
            listCues.emplace_back(dStart, dStart + std::stod(strLine.substr(strLine.find(',') + 1)));
        }
        int nFrames = 0;
        for (int n = 1; n < nAll; ++n) {
            nFrames += std::any_of(listCues.begin(), listCues.end(), [&](const auto &cue) {
                return cue.first <= n / 4.0 + 1e-6 && n / 4.0 <= cue.second + 1e-6;
            });
        }
        return nFrames;
    }
};

} // namespace

TEST_P(RealFileTest, ShowsOnAsManyFramesAsAnIndependentCount)
{
    const RealFile &file = GetParam();
    m_strSubtitles = std::string(DATA_FOLDER "/") + file.pName;
    const int nAll = file.nSeconds * 4;
    const std::string strInput =
        Clip("in.mkv", {"-f", "lavfi", "-i", "color=s=64x36:r=4:d=" + std::to_string(file.nSeconds), "-c:v", "mpeg4",
                        "-g", "80"});
    Arguments listArguments = {"--codec", "mpeg4", strInput, File("out.mkv")};
    if (*file.pEncoding != '\0')
        listArguments.insert(listArguments.end(), {"--encoding", file.pEncoding});
    const Outcome outcome = Subburn(listArguments);
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError,
              file.nFrames != 0 ? "" : "subburn: warning: " + m_strSubtitles + ": no subtitle was due at any frame\n");
    const int nExpected = file.nFrames >= 0 ? file.nFrames : CountOfDemuxer(m_strSubtitles, nAll);
    EXPECT_EQ(nExpected > 0, file.nFrames != 0);
    const std::string strNote =
        File("out.mkv") + ": " + std::to_string(nAll) + " frames, " + std::to_string(nExpected) + " with a subtitle\n";
    EXPECT_EQ(outcome.strOut.substr(outcome.strOut.find(File("out.mkv"))), strNote);
}

namespace
{

const RealFile Files[] = {{"alignment.srt", "", -1},
                          {"big5.srt", "big5", -1},
                          {"example-in-html-entities.srt", "", -1},
                          {"example-in-styled.srt", "", -1},
                          {"typical.srt", "", -1},
                          {"typical_extra_blank_line.srt", "", -1},
                          {"typical_missing_sequence.srt", "", -1},
                          {"typical_with_tags.srt", "", -1},
                          {"typical_utf16le.ass", "", 8},
                          {"utf16.srt", "", -1},
                          {"utf8.srt", "", -1},
                          {"windows-1250.srt", "cp1250", -1},
                          {"windows-1252.srt", "cp1252", -1},
                          {"windows-1254.srt", "cp1254", -1},
                          {"windows-1256.srt", "cp1256", -1},
                          {"windows-874.srt", "cp874", -1},
                          {"positioning.ass", "", 8},
                          {"newlines.vtt", "", 4},
                          {"with_tags.vtt", "", -1},
                          {"with_overlapping_timestamps.vtt", "", -1},
                          {"backtoback.srt", "", -1},
                          {"countries.he.cp1255.srt", "cp1255", -1},
                          {"countries.ja.shift-jis.srt", "shift-jis", -1},
                          {"countries.ko.euc-kr.srt", "euc-kr", -1},
                          {"innerblank.srt", "", -1},
                          {"noindex.srt", "", 56},
                          {"oddindex.srt", "", -1},
                          {"overlap.srt", "", -1},
                          {"sametime.srt", "", -1},
                          {"unsorted.srt", "", -1},
                          {"wisdom.en.utf8bom-crlf.srt", "", -1}};

// Counted from the texts of the files. What differs from the times of FFmpeg's packets has a reason.
const RealFile LongFiles[] = {
    {"ass_different_format2.ass", "", 12, 200},
    {"captions.ar.vtt", "", 253, 200},
    {"captions.ja.vtt", "", 210, 200},
    {"captions.ru.vtt", "", 214, 200},
    {"example-in.ssa", "", 62, 200},
    {"extended-tags.srt", "", 11, 200},
    {"sub_viewer.sub", "", 12, 200},
    {"sample_MKV_SRT.mkv", "", 17, 200},
    // Packets without a text end the cues.
    {"sample_MP4_stz2_compact.mp4", "", 41, 200},
    // FFmpeg finds three of six cues and shows each until the next. The library reads all, but
    // coordinates take the seconds from the end of the second one, which so ends before it begins.
    {"missing-sequence-in.srt", "", 50, 200},
    // FFmpeg reads "03,4560" as 3 seconds and 4560 milliseconds, the library as 3.456 seconds.
    {"typical_bad_timestamps.srt", "", 8, 200},
    // FFmpeg ends lines at carriage returns. The library drops them: what they end is one line with
    // what follows, which has other times or none, and twelve of the 24 cues do not show. That
    // includes one whose own time line ends in a line feed, but whose text is joined to an arrow.
    {"mixedeol.srt", "", 138, 200},
    // The same for all lines.
    {"example-in-carriage-return.srt", "", 0, 200},
    {"example-in-carriage-return.ssa", "", 0, 200},
    // FFmpeg takes the first of three cues, 15 frames, for a part of the header.
    {"example-in-carriage-return.vtt", "", 41, 200},
    // The events have three fields, of which the library takes other ones for the times.
    {"overlapping_timecodes.ssa", "", 0, 200},
    // No cue ends after it begins. FFmpeg shows such a cue until the next one.
    {"timings-negative.vtt", "", 799, 200}};

} // namespace

INSTANTIATE_TEST_SUITE_P(Files, RealFileTest, testing::ValuesIn(Files));
INSTANTIATE_TEST_SUITE_P(LongFiles, RealFileTest, testing::ValuesIn(LongFiles));

TEST(RealFiles, AreAllBurnt)
{
    std::set<std::string> setNames = {"SOURCES.md", "sintel.idx", "sintel.sub"};
    for (const RealFile &file : Files)
        setNames.insert(file.pName);
    for (const RealFile &file : LongFiles)
        setNames.insert(file.pName);
    std::set<std::string> setFound;
    for (const auto &entry : std::filesystem::directory_iterator(DATA_FOLDER))
        setFound.insert(entry.path().filename().string());
    EXPECT_EQ(setNames, setFound);
}

TEST_F(SubburnTest, ARealIndexWithoutTheSizeOfItsVideoIsRefused)
{
    m_strSubtitles = DATA_FOLDER "/sintel.idx";
    const Outcome outcome = Subburn({"--pipe", "320x180@25"});
    EXPECT_EQ(outcome.nExit, 2);
    EXPECT_EQ(outcome.strOut, "");
    EXPECT_EQ(outcome.strError, "subburn: " + m_strSubtitles +
                                    ": it has no line with the size of the video that it is made for, such as "
                                    "\"size: 720x576\"\n");
}
