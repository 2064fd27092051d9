// GStreamer's programs find the element; their output is what the library draws.
#include "gstreamertest.h"

namespace
{

class LaunchTest : public GStreamerTest
{
protected:
    /** Sends the film through elements and expects the function's result for each frame's number. */
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
    const std::vector<std::string> listTexts = {
        "  Klass                    Filter/Effect/Video\n",
        "  Description              Burns the subtitles of a file into video frames\n",
        "  License                  MIT/X11\n",
        "  Version                  " PLUGIN_VERSION "\n",
        "      video/x-raw",
        "(string)A420",
        "(string)GRAY8",
        "(string)P010_10LE",
        "  alpha               : Opacity; counts twice, so that 128 covers a frame by a quarter" + strFlags +
            "Integer. Range: 0 - 255 Default: 255 \n",
        "  bold                : Bold text" + strFlags + "Boolean. Default: false\n",
        "  font-color          : Colour of text, 0xRRGGBB" + strFlags +
            "Unsigned Integer. Range: 0 - 16777215 Default: 16777215 \n",
        "  font-family         : Font of text, none for the default font" + strFlags + "String. Default: null\n",
        "  font-size           : Size of text in points of 4/3 pixels, 0 for a 14th of the frame's height" + strFlags +
            "Integer. Range: 0 - 2147483647 Default: 0 \n",
        "  italic              : Italic text" + strFlags + "Boolean. Default: false\n",
        "  location            : Subtitle file; setting it reads it anew, none shows no subtitles" + strFlags +
            "String. Default: null\n",
        "  outline-color       : Colour of the outline of text, 0xRRGGBB; 0 is no outline, 0x010101 the darkest" +
            strFlags + "Unsigned Integer. Range: 0 - 16777215 Default: 657930 \n",
        "  pos                 : Centre line of the subtitle, in percent of the frame's height from the top" +
            strFlags + "Integer. Range: 0 - 100 Default: 85 \n",
        "  track               : Subtitle track: of a container counted from 0, of an .idx file the number after "
        "\"index:\"" +
            strFlags + "Integer. Range: 0 - 2147483647 Default: 0 \n",
        "  orientation         : How the picture is turned when it is shown; auto is as tags say" + strFlags +
            "Enum \"GstVideoOrientationMethod\" Default: 8, \"auto\"\n",
        "  look                : How subtitles look" + strFlags + "Enum \"SubtitleBurnLook\" Default: 0, \"exact\"\n",
        "  outline-width       : Width of the outline in the natural look, in pixels of a picture of 720 rows" +
            strFlags + "Double. Range:               0 -              20 Default:               2 \n",
        "  white-level         : Level of white text on PQ and HLG frames, in cd/m2" + strFlags +
            "Double. Range:               1 -           10000 Default:             203 \n"};
    for (const std::string &strText : listTexts)
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

TEST_F(LaunchTest, MissingFileIsAWarning)
{
    const Outcome outcome =
        ChildProcess::Run({"sh", "-c",
                           "cd \"$0\" && gst-launch-1.0 " + Film() +
                               " ! subtitleburn location=none.srt name=burn ! filesink location=burnt 2>&1",
                           m_folder.Path().string()});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_NE(outcome.strOut.find("WARNING: from element /GstPipeline:pipeline0/SubtitleBurn:burn: "
                                  "The subtitle file \"none.srt\" cannot be read or has no track 0."),
              std::string::npos)
        << outcome.strOut;
    std::string strFilm;
    for (int n = 0; n < Frames; ++n)
        strFilm += FilmFrame(n);
    EXPECT_TRUE(Read("burnt") == strFilm);
}

TEST_F(LaunchTest, OtherFormatsAreNotTaken)
{
    for (const char *pCaps :
         {"video/x-raw,format=GRAY16_LE", "\"video/x-raw(format:Interlaced),format=I420,interlace-mode=alternate\""}) {
        const Outcome outcome =
            Launch("videotestsrc num-buffers=1 ! capsfilter caps=" + std::string(pCaps) + " ! subtitleburn ! fakesink");
        EXPECT_NE(outcome.nExit, 0) << pCaps;
        EXPECT_NE(outcome.strError.find("could not link"), std::string::npos) << pCaps << outcome.strError;
    }
}

// For each orientation, turning after burning gives the same result as burning after turning.
TEST_F(LaunchTest, TextIsUprightOnATurnedPicture)
{
    const std::string strFilm =
        "videotestsrc num-buffers=18 ! video/x-raw,format=RGB,width=320,height=180,framerate=4/1 "
        "! taginject tags=image-orientation=";
    for (const char *pOrientation : {"rotate-0", "rotate-90", "rotate-180", "rotate-270", "flip-rotate-0",
                                     "flip-rotate-90", "flip-rotate-180", "flip-rotate-270"}) {
        SCOPED_TRACE(pOrientation);
        const std::string strTurn = " ! videoflip video-direction=auto";
        const std::string strBurn = " ! subtitleburn location=text.srt font-size=14";
        const std::string strBurnTurned = strBurn + " orientation=identity";
        ExpectLaunch(strFilm + pOrientation + strBurn + strTurn + " ! filesink location=first");
        ExpectLaunch(strFilm + pOrientation + strTurn + strBurnTurned + " ! filesink location=second");
        ExpectLaunch(strFilm + pOrientation + strTurn + " ! filesink location=plain");
        const std::string strFirst = Read("first");
        EXPECT_EQ(strFirst.size(), std::size_t{18} * 320 * 180 * 3);
        EXPECT_TRUE(strFirst == Read("second"));
        EXPECT_TRUE(strFirst != Read("plain"));
    }
}
