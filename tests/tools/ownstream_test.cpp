#include "subburntest.h"

#include <chrono>
#include <csignal>
#include <sstream>
#include <thread>

namespace
{

const Arguments Picture = {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=2"};

class OwnStreamTest : public SubburnTest
{
protected:
    OwnStreamTest() { std::filesystem::create_directory(File("tmp")); }

    /** A clip with subtitle files as its streams. */
    std::string ClipWith(const std::string &strName, const std::vector<std::string> &listFiles,
                         const Arguments &listCodecs) const
    {
        Arguments listArguments = Picture;
        for (const std::string &strFile : listFiles)
            listArguments.insert(listArguments.end(), {"-i", strFile});
        for (size_t n = 0; n <= listFiles.size(); ++n)
            listArguments.insert(listArguments.end(), {"-map", std::to_string(n)});
        listArguments.insert(listArguments.end(), listCodecs.begin(), listCodecs.end());
        return Clip(strName, listArguments);
    }

    std::string SrtFile(const std::string &strName, const std::string &strText) const
    {
        return m_folder.Write(strName, "1\n00:00:00,400 --> 00:00:00,800\n" + strText + "\n\n");
    }

    /** The burnt frames. An empty strSubtitles burns the input's own stream. */
    std::vector<std::string> Burnt(const std::string &strInput, const std::string &strSubtitles,
                                   const Arguments &listOptions = {})
    {
        m_strSubtitles = strSubtitles;
        Arguments listArguments = {"--font", "DejaVu Sans", "--codec", "ffv1", strInput, File("out.mkv")};
        listArguments.insert(listArguments.end(), listOptions.begin(), listOptions.end());
        const Outcome outcome = Subburn(listArguments, "", {{"TMPDIR", File("tmp")}});
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_TRUE(outcome.strError.empty() || outcome.strError.find("mov_text") != std::string::npos);
        ExpectNoTemporaries();
        return Frames(File("out.mkv"), "yuv420p");
    }

    /** Snapshots at the times of the usual subtitles, as contents of PNG files. */
    std::vector<std::string> Shown(const std::string &strInput, const std::string &strSubtitles,
                                   const Arguments &listOptions = {})
    {
        m_strSubtitles = strSubtitles;
        Arguments listArguments = {"--snapshot", "0.5", "--snapshot", "1.3", strInput, File("a.png")};
        listArguments.insert(listArguments.end(), listOptions.begin(), listOptions.end());
        const Outcome outcome = Subburn(listArguments, "", {{"TMPDIR", File("tmp")}});
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "");
        EXPECT_NE(outcome.strOut.find("with a subtitle"), std::string::npos);
        ExpectNoTemporaries();
        return {Content(File("a-1.png")), Content(File("a-2.png"))};
    }

    void ExpectFailure(const Arguments &listArguments, const std::string &strLine)
    {
        const Arguments listBefore = Names();
        const Outcome outcome = Subburn(listArguments, "", {{"TMPDIR", File("tmp")}});
        EXPECT_EQ(outcome.nExit, 2);
        EXPECT_EQ(outcome.strError, "subburn: " + strLine + "\n");
        EXPECT_EQ(Names(), listBefore);
        ExpectNoTemporaries();
    }

    void ExpectNoTemporaries() const { EXPECT_TRUE(std::filesystem::is_empty(File("tmp"))); }
};

struct Kind {
    const char *pName;
    const char *pVideo;
    const char *pSubtitles;

    friend std::ostream &operator<<(std::ostream &stream, const Kind &kind) { return stream << kind.pSubtitles; }
};

class OwnStreamKindTest : public OwnStreamTest, public testing::WithParamInterface<Kind>
{
};

} // namespace

TEST_F(OwnStreamTest, TheBurntTrackIsNotKeptBesides)
{
    const std::string strInput = ClipWith(
        "in.mkv", {m_strSubtitles, SrtFile("other.srt", "Other")},
        {"-c:v", "ffv1", "-c:s", "subrip", "-disposition:s:0", "default+forced", "-metadata:s:s:1", "title=Other"});
    const auto Tracks = [&](const Arguments &listOptions) {
        Burnt(strInput, "", listOptions);
        return Probe(File("out.mkv"), "stream_tags=title:stream_disposition=default,forced", "s", "csv=p=0");
    };
    EXPECT_EQ(Tracks({}), "0,0,Other\n");
    EXPECT_EQ(Tracks({"--track", "1"}), "1,1\n");
    EXPECT_EQ(Tracks({"--keep-track"}), "0,0\n0,0,Other\n");
}

TEST_P(OwnStreamKindTest, LooksLikeTheFile)
{
    const std::string strFile = m_strSubtitles;
    const Kind &kind = GetParam();
    const std::string strInput =
        ClipWith(kind.pName, {strFile}, {"-c:v", kind.pVideo, "-b:v", "1M", "-c:s", kind.pSubtitles});
    const auto listExpected = Burnt(strInput, strFile);
    const auto listClear = Frames(strInput, "yuv420p");
    ASSERT_EQ(listExpected.size(), 50U);
    for (size_t n = 0; n < listExpected.size(); ++n)
        EXPECT_EQ(listExpected[n] != listClear[n], IsDue(n)) << "frame " << n;
    EXPECT_TRUE(Burnt(strInput, "") == listExpected);
}

INSTANTIATE_TEST_SUITE_P(Kinds, OwnStreamKindTest,
                         testing::Values(Kind{"in.mkv", "mpeg4", "subrip"}, Kind{"in.mkv", "mpeg4", "ass"},
                                         Kind{"in.mkv", "mpeg4", "text"}, Kind{"in.mp4", "mpeg4", "mov_text"},
                                         Kind{"in.webm", "libvpx", "webvtt"}),
                         [](const auto &info) { return std::string(info.param.pSubtitles); });

TEST_F(OwnStreamTest, MarkupDoesNotShow)
{
    const std::string strMarked = SrtFile(
        "marked.srt", "{\\an8}<i>Tom</i> &amp; <font color=\"red\">Ann</font>\na < b > c <3 &lt;b&gt; {x}<B>\n</B>");
    const std::string strPlain = SrtFile("plain.srt", "Tom & Ann\na < b > c <3 <b> {x}");
    const std::string strInput = ClipWith("in.mkv", {strMarked}, {"-c:v", "mpeg4", "-c:s", "copy"});
    EXPECT_TRUE(Shown(strInput, "") == Shown(strInput, strPlain, {"--raw"}));
    const std::string strVtt = m_folder.Write("a.vtt", "WEBVTT\n\n00:00.400 --> 00:00.800\n<v Ann><c.red>Hi</c> "
                                                       "<00:00.600>x &lt;&amp;&gt;</v>\n");
    EXPECT_TRUE(Shown(strInput, strVtt) == Shown(strInput, SrtFile("hi.srt", "Hi x <&>")));
}

TEST_F(OwnStreamTest, OtherKindsOfTextFilesAreDecoded)
{
    const std::string strInput = UsualClip();
    const std::string strFile = m_folder.Write("a.sub", "{1}{1}25\n{10}{20}{y:i}One|two\n{30}{35}Three\n");
    EXPECT_TRUE(Shown(strInput, strFile) == Shown(strInput, SrtFile("plain.srt", "One\ntwo\n\n2\n"
                                                                                 "00:00:01,200 --> 00:00:01,400\n"
                                                                                 "Three")));
}

TEST_F(OwnStreamTest, ScriptsShowTheirTextAlone)
{
    const std::string strScript =
        m_folder.Write("a.ass", "[Script Info]\nScriptType: v4.00+\n\n[V4+ Styles]\nFormat: Name, Fontname, Fontsize\n"
                                "Style: Default,Arial,20\n\n[Events]\n"
                                "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
                                "Dialogue: 0,0:00:01.20,0:00:01.40,Default,,0,0,0,,Later, with\\ha comma\n"
                                "Dialogue: 0,0:00:00.40,0:00:00.80,Default,,0,0,0,,{\\pos(1,2)}One\\N{\\i1}two{\\i0}"
                                "{\\p1}m 0 0 l 9 9{\\p0}\\nthree\n"
                                "Dialogue: 0,0:00:00.40,0:00:00.80,Default,,0,0,0,,Above the first\n");
    const std::string strPlain = m_folder.Write("plain.srt", "1\n00:00:01,200 --> 00:00:01,400\nLater, with\xc2\xa0"
                                                             "a comma\n\n"
                                                             "2\n00:00:00,400 --> 00:00:00,800\nOne\ntwo three\n\n"
                                                             "3\n00:00:00,400 --> 00:00:00,800\nAbove the first\n");
    const std::string strInput = ClipWith("in.mkv", {strScript}, {"-c:v", "mpeg4", "-c:s", "copy"});
    EXPECT_TRUE(Shown(strInput, "") == Shown(strInput, strPlain));
}

TEST_F(OwnStreamTest, LinesLikeNumbersAndTimesStay)
{
    const std::string strScript =
        m_folder.Write("a.ass", "[Script Info]\nScriptType: v4.00+\n\n[Events]\n"
                                "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
                                "Dialogue: 0,0:00:00.40,0:00:00.80,Default,,0,0,0,,1984\\N\\N+7\\Na --> b\n"
                                "Dialogue: 0,0:00:01.20,0:00:01.40,Default,,0,0,0,,--> -->\n");
    const std::string strInput = ClipWith("in.mkv", {strScript}, {"-c:v", "mpeg4", "-c:s", "copy"});
    EXPECT_TRUE(Shown(strInput, "") == Shown(strInput, strScript));
}

TEST_F(OwnStreamTest, TheTrackIsChosen)
{
    const std::string strOne = SrtFile("one.srt", "One");
    const std::string strTwo = SrtFile("two.srt", "Two");
    const std::string strInput =
        ClipWith("in.mkv", {strOne, strTwo}, {"-c:v", "mpeg4", "-c:s:0", "subrip", "-c:s:1", "ass"});
    const auto listOne = Shown(strInput, strOne);
    const auto listTwo = Shown(strInput, strTwo);
    EXPECT_TRUE(listOne != listTwo);
    EXPECT_TRUE(Shown(strInput, "") == listOne);
    EXPECT_TRUE(Shown(strInput, "", {"--track", "1"}) == listTwo);
    EXPECT_TRUE(Shown(strInput, strInput, {"--track", "1"}) == listTwo);
    m_strSubtitles.clear();
    ExpectFailure({"--track", "2", strInput, File("no.mkv")},
                  strInput + ": there is no subtitle track 2, the last is 1");
}

TEST_F(OwnStreamTest, APipeTakesTheSubtitlesOfAContainer)
{
    const std::string strFile = m_strSubtitles;
    const std::string strInput = ClipWith("in.mkv", {strFile}, {"-c:v", "mpeg4", "-c:s", "ass"});
    const auto Pipe = [&](const std::string &strSubtitles) {
        m_strSubtitles = strSubtitles;
        return Subburn({"--pipe", "320x180@2", "--quiet"}, std::string(320 * 180 * 3 * 2, '\x50'),
                       {{"TMPDIR", File("tmp")}});
    };
    EXPECT_TRUE(Pipe(strInput).strOut == Pipe(strFile).strOut);
    ExpectNoTemporaries();
}

TEST_F(OwnStreamTest, WhatCannotBeBurntIsNamed)
{
    m_strSubtitles.clear();
    const std::string strClip = UsualClip("clear.mkv");
    ExpectFailure({strClip, File("no.mkv")}, strClip + ": there are no subtitles in it");
    ExpectFailure({"--snapshot", "1", strClip, File("no.png")}, strClip + ": there are no subtitles in it");
    const std::string strInput =
        ClipWith("in.mkv", {m_folder.Write("in.sup", PictureSubtitles())}, {"-c:v", "mpeg4", "-c:s", "copy"});
    const std::string strReason = ": subtitle track 0 is hdmv_pgs_subtitle, which --exact cannot burn";
    ExpectFailure({"--exact", strInput, File("no.mkv")}, strInput + strReason);
    m_strSubtitles = strInput;
    ExpectFailure({"--exact", strClip, File("no.mkv")}, strInput + strReason);
    m_strSubtitles = strClip;
    ExpectFailure({strInput, File("no.mkv")}, strClip + ": there are no subtitles in it");
    m_strSubtitles = m_folder.Path().string();
    ExpectFailure({strInput, File("no.mkv")}, m_strSubtitles + ": Is a directory");
    m_strSubtitles = m_folder.Write("empty.mkv", "");
    ExpectFailure({strInput, File("no.mkv")}, m_strSubtitles + ": Invalid data found when processing input");
}

TEST_F(OwnStreamTest, CtrlCLeavesNoTemporary)
{
    const std::string strInput =
        Clip("in.mkv", {"-f", "lavfi", "-i", "testsrc2=s=640x360:r=25:d=20", "-i", m_strSubtitles, "-c:v", "libx264",
                        "-preset", "ultrafast", "-c:s", "ass"});
    const Arguments listBefore = Names();
    ChildProcess process({SUBBURN_PROGRAM, "--preset", "veryslow", strInput, File("out.mp4")}, "",
                         {{"TMPDIR", File("tmp")}});
    for (int n = 0; n < 500 && Names() == listBefore; ++n)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    process.Signal(SIGINT);
    const Outcome outcome = process.Wait();
    EXPECT_EQ(outcome.nExit, 130) << outcome.strError;
    EXPECT_EQ(Names(), listBefore);
    ExpectNoTemporaries();
}
