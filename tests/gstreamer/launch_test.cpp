// Programs of GStreamer's find the element, and write with it what the library draws.
#include "gstreamertest.h"

namespace
{

class LaunchTest : public GStreamerTest
{
protected:
    /** Runs a pipeline in the test's folder. */
    Outcome Launch(const std::string &strPipeline) const
    {
        return ChildProcess::Run(
            {"sh", "-c", "cd \"$0\" && gst-launch-1.0 -q --no-fault " + strPipeline, m_folder.Path().string()});
    }

    void ExpectLaunch(const std::string &strPipeline) const
    {
        const Outcome outcome = Launch(strPipeline);
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        EXPECT_EQ(outcome.strError, "");
    }

    /** Sends the film through something, and expects of each frame what a function gives for it. */
    void ExpectFilm(const std::string &strElements, const std::function<std::string(int)> &expected) const
    {
        ExpectLaunch(Film() + " ! " + strElements + " ! filesink location=burnt");
        const std::string strBurnt = Read("burnt");
        ASSERT_EQ(strBurnt.size(), Frames * OddSize.Bytes());
        for (int n = 0; n < Frames; ++n)
            EXPECT_TRUE(strBurnt.substr(n * OddSize.Bytes(), OddSize.Bytes()) == expected(n)) << n;
    }
};

} // namespace

TEST_F(LaunchTest, InspectShowsElementAndProperties)
{
    const Outcome outcome = ChildProcess::Run({"gst-inspect-1.0", "--no-colors", "subtitleburn"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    const std::string strFlags =
        "\n                        flags: readable, writable, changeable in NULL, READY, PAUSED or PLAYING state"
        "\n                        ";
    for (const std::string &strText :
         {std::string("  Klass                    Filter/Effect/Video\n"),
          std::string("  Description              Burns the subtitles of a file into video frames\n"),
          std::string("  License                  MIT/X11\n"),
          std::string("  Version                  " PLUGIN_VERSION "\n"),
          std::string("      video/x-raw\n                 format: RGB\n                  width: [ 1, 2147483647 ]\n"),
          "  alpha               : Opacity; counts twice, so that 128 covers a frame by a quarter" + strFlags +
              "Integer. Range: 0 - 255 Default: 255 \n",
          "  bold                : Bold text" + strFlags + "Boolean. Default: false\n",
          "  font-color          : Colour of text, 0xRRGGBB" + strFlags +
              "Unsigned Integer. Range: 0 - 16777215 Default: 16777215 \n",
          "  font-family         : Font of text, none for the default font" + strFlags + "String. Default: null\n",
          "  font-size           : Size of text in points of 4/3 pixels, 0 for a 14th of the frame's height" +
              strFlags + "Integer. Range: 0 - 2147483647 Default: 0 \n",
          "  italic              : Italic text" + strFlags + "Boolean. Default: false\n",
          "  location            : Subtitle file; setting it reads it anew, none shows no subtitles" + strFlags +
              "String. Default: null\n",
          "  outline-color       : Colour of the outline of text, 0xRRGGBB; 0 is no outline, 0x010101 the darkest" +
              strFlags + "Unsigned Integer. Range: 0 - 16777215 Default: 657930 \n",
          "  pos                 : Centre line of the subtitle, in percent of the frame's height from the top" +
              strFlags + "Integer. Range: 0 - 100 Default: 85 \n",
          "  track               : Subtitle track: of a container counted from 0, of an .idx file the number behind "
          "\"index:\"" +
              strFlags + "Integer. Range: 0 - 2147483647 Default: 0 \n"})
        EXPECT_NE(outcome.strOut.find(strText), std::string::npos) << strText << "is not in\n" << outcome.strOut;
}

TEST_F(LaunchTest, BurnsEveryFrameAtItsTime)
{
    ExpectFilm("subtitleburn location=text.srt", [this](int n) { return Burnt(FilmFrame(n), 250L * n); });
}

TEST_F(LaunchTest, PropertiesAreSetFromTexts)
{
    ExpectFilm("subtitleburn location=text.srt pos=30 font-size=18 bold=true font-color=0xFFD700", [this](int n) {
        const std::string strFrame = Burnt(FilmFrame(n), 250L * n, [](void *p) {
            SetSubtitlePos(p, 30);
            SetSubtitleFontParam(p, nullptr, 18, SUBTITLE_STYLE_BOLD);
            SetSubtitleFontColor(p, 0xFF, 0xD7, 0);
        });
        EXPECT_EQ(strFrame != FilmFrame(n), (n >= 4 && n <= 8) || (n >= 12 && n <= 16)) << n;
        return strFrame;
    });
}

TEST_F(LaunchTest, TwoElementsInOnePipeline)
{
    const std::string strOther = m_folder.Write("b.srt", "1\n00:00:01,500 --> 00:00:03,500\nAbove\n\n");
    ExpectFilm("subtitleburn location=text.srt ! queue ! subtitleburn location=b.srt pos=15 italic=true", [&](int n) {
        const std::string strBelow = Burnt(FilmFrame(n), 250L * n);
        const std::string strBoth = Burnt(strBelow, OddSize, 250L * n, strOther, [](void *p) {
            SetSubtitlePos(p, 15);
            SetSubtitleFontParam(p, nullptr, 0, SUBTITLE_STYLE_ITALIC);
        });
        EXPECT_EQ(strBoth != strBelow, n >= 6 && n <= 14) << n;
        return strBoth;
    });
}

TEST_F(LaunchTest, MissingFileEndsTheProgram)
{
    const Outcome outcome = Launch(Film() + " ! subtitleburn location=none.srt ! fakesink");
    EXPECT_NE(outcome.nExit, 0);
    EXPECT_NE(outcome.strError.find("The subtitle file \"none.srt\" cannot be read or is refused."), std::string::npos)
        << outcome.strError;
}

TEST_F(LaunchTest, TakesRgbAlone)
{
    const Outcome outcome = Launch("videotestsrc num-buffers=1 ! video/x-raw,format=BGR ! subtitleburn ! fakesink");
    EXPECT_NE(outcome.nExit, 0);
    EXPECT_NE(outcome.strError.find("could not link"), std::string::npos) << outcome.strError;
}

TEST_F(LaunchTest, ExampleBurnsAFilm)
{
    ExpectLaunch("videotestsrc num-buffers=18 pattern=ball animation-mode=frames ! "
                 "video/x-raw,width=322,height=180,framerate=4/1 ! jpegenc ! matroskamux ! filesink location=film.mkv");
    ExpectLaunch("filesrc location=film.mkv ! decodebin ! videoconvert ! video/x-raw,format=RGB ! "
                 "filesink location=plain");
    const auto run = [](std::vector<std::string> listArguments) {
        listArguments.insert(listArguments.begin(), EXAMPLES "/gstreamer.sh");
        return ChildProcess::Run(listArguments);
    };
    const Outcome outcome =
        run({File("film.mkv"), m_strSubtitles, "video/x-raw,format=RGB", "!", "filesink", "location=" + File("burnt")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    const Size size = {322, 180};
    const std::string strPlain = Read("plain");
    const std::string strBurnt = Read("burnt");
    ASSERT_EQ(strPlain.size(), 18 * size.Bytes());
    ASSERT_EQ(strBurnt.size(), strPlain.size());
    for (int n = 0; n < 18; ++n) {
        const std::size_t nFrom = n * size.Bytes();
        EXPECT_TRUE(strBurnt.substr(nFrom, size.Bytes()) ==
                    Burnt(strPlain.substr(nFrom, size.Bytes()), size, 250L * n, m_strSubtitles))
            << n;
    }
    EXPECT_TRUE(strBurnt != strPlain);

    const Outcome usage = run({File("film.mkv")});
    EXPECT_EQ(usage.nExit, 2);
    EXPECT_EQ(usage.strError, "usage: gstreamer.sh VIDEO SUBTITLES [ELEMENT...]\n");
    EXPECT_NE(run({File("film.mkv"), File("none.srt"), "fakesink"}).nExit, 0);
}
