// Hosts of frei0r plugins find this one; their output is what the library draws.
extern "C" {
#include <libavfilter/version.h>
}

#include "directburn.h"
#include "frei0rtest.h"

#include "support/childprocess.h"

#include <algorithm>
#include <filesystem>

namespace
{

constexpr int Frames = 40;

/** The parameter for FFmpeg's unit of time. */
const std::string TimeFlag = LIBAVFILTER_VERSION_MAJOR < 12 ? "|y" : "|n";

class HostsOfFrei0rTest : public Frei0rTest
{
protected:
    static std::string Film(bool bOpaque)
    {
        std::string strFilm;
        for (int n = 0; n < Frames; ++n)
            strFilm += Frame(n, bOpaque);
        return strFilm;
    }

    static Outcome Run(const std::vector<std::string> &listCommand, const std::string &strInput = "")
    {
        return ChildProcess::Run(listCommand, strInput, {{"FREI0R_PATH", PLUGIN_FOLDER}});
    }

    /** Escapes a name as docs/frei0r.md describes: once for each of the three parsers that it passes. */
    static std::string Escaped(std::string strName)
    {
        for (int nRound = 0; nRound < 3; ++nRound) {
            std::string strEscaped;
            for (const char c : strName) {
                if (std::string("\\':|,;[]").find(c) != std::string::npos)
                    strEscaped += '\\';
                strEscaped += c;
            }
            strName = strEscaped;
        }
        return strName;
    }

    /** The film after FFmpeg's frei0r filter. */
    static std::string Ffmpeg(const std::string &strParameters, const std::string &strRate = "25")
    {
        const std::string strSize = std::to_string(Width) + "x" + std::to_string(Height);
        const Outcome outcome =
            Run({"ffmpeg", "-v", "error", "-f", "rawvideo", "-pixel_format", "rgba", "-video_size", strSize,
                 "-framerate", strRate, "-i", "-", "-vf",
                 "frei0r=filter_name=subtitleburn:filter_params=" + strParameters, "-f", "rawvideo", "-"},
                Film(false));
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "");
        return outcome.strOut;
    }

    void ExpectFilm(const std::string &strBytes, bool bOpaque, const std::function<long(int)> &time,
                    const Calls &calls = {}, int nFirst = 0) const
    {
        ASSERT_EQ(strBytes.size(), (Frames - nFirst) * FrameBytes);
        for (int n = nFirst; n < Frames; ++n) {
            const std::string strFrame = strBytes.substr((n - nFirst) * FrameBytes, FrameBytes);
            const std::string strInput = Frame(n, bOpaque);
            EXPECT_EQ(strFrame != strInput, IsDue(time(n))) << n;
            EXPECT_TRUE(strFrame == DirectBurn(strInput, Width, Height, time(n), m_strSubtitles, calls)) << n;
        }
    }
    static long AtTwentyFive(int n) { return 40L * n; }

    /** Writes the film to a file, runs melt on it and decodes the result. */
    std::string Melt(const std::vector<std::string> &listClip, const std::vector<std::string> &listFilter,
                     const std::string &strThreads = "-1") const
    {
        const std::string strSize = std::to_string(Width) + "x" + std::to_string(Height);
        const Outcome made = ChildProcess::Run({"ffmpeg", "-y", "-v", "error", "-f", "rawvideo", "-pixel_format",
                                                "rgba", "-video_size", strSize, "-framerate", "25", "-i", "-", "-c:v",
                                                "ffv1", "-pix_fmt", "bgr0", File("film.mkv")},
                                               Film(true));
        EXPECT_EQ(made.nExit, 0) << made.strError;
        // melt once waited forever for a consumer without a thread; the timeout makes that a failure.
        std::vector<std::string> listCommand = {"timeout", "60", "melt", "-silent", File("film.mkv")};
        listCommand.insert(listCommand.end(), listClip.begin(), listClip.end());
        listCommand.insert(listCommand.end(), listFilter.begin(), listFilter.end());
        for (const std::string &strPart :
             {std::string("-consumer"), "avformat:" + File("out.nut"), std::string("f=nut"),
              std::string("vcodec=rawvideo"), std::string("pix_fmt=rgba"), std::string("mlt_image_format=rgba"),
              std::string("an=1"), "real_time=" + strThreads})
            listCommand.push_back(strPart);
        // melt 7.30 at times writes nothing, with other filters and with none as well.
        const auto IsWritten = [&] {
            std::error_code error;
            return std::filesystem::file_size(File("out.nut"), error) > 0 && !error;
        };
        Outcome outcome = Run(listCommand);
        for (int nTry = 0; nTry < 2 && !IsWritten(); ++nTry)
            outcome = Run(listCommand);
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        const Outcome read = ChildProcess::Run({"ffmpeg", "-nostdin", "-v", "error", "-i", File("out.nut"), "-fps_mode",
                                                "passthrough", "-f", "rawvideo", "-pix_fmt", "rgba", "-"});
        EXPECT_EQ(read.nExit, 0) << read.strError;
        return read.strOut;
    }
};

/** The library calls for the values in the tests of all parameters. */
void SetAll(void *p)
{
    SetSubtitleAlpah(p, 204);
    SetSubtitlePos(p, 30);
    SetSubtitleFontParam(p, "DejaVu Serif", 14, 3);
    SetSubtitleFontColor(p, 0xFF, 0xD7, 0);
    SetSubtitleOutlineColor(p, 0x10, 0x20, 0x30);
}

} // namespace

TEST_F(HostsOfFrei0rTest, FfmpegBurnsEveryFrameAtItsTime)
{
    ExpectFilm(Ffmpeg(m_strSubtitles + TimeFlag), false, AtTwentyFive);
    ExpectFilm(Ffmpeg(m_strSubtitles + TimeFlag, "30000/1001"), false,
               [](int n) { return (n * 2002000L + 30000) / 60000; });
}

TEST_F(HostsOfFrei0rTest, FfmpegSetsAllParameters)
{
    ExpectFilm(
        Ffmpeg(m_strSubtitles + TimeFlag + "|0|0.8|0.3|DejaVu Serif|0.1|y|y|gold|0x102030|-0.2"), false,
        [](int n) { return std::max(0L, 40L * n - 200); }, SetAll);
}

TEST_F(HostsOfFrei0rTest, FfmpegTakesAnyName)
{
    m_strSubtitles =
        m_folder.Write("it's: a [file], with | and \\ ; 字幕.srt", "1\n00:00:00,400 --> 00:00:00,800\nHello\n\n"
                                                                   "2\n00:00:01,200 --> 00:00:01,400\nTwo\nlines\n\n");
    ExpectFilm(Ffmpeg(Escaped(m_strSubtitles) + TimeFlag), false, AtTwentyFive);
}

TEST_F(HostsOfFrei0rTest, FfmpegContinuesWithoutAFile)
{
    EXPECT_TRUE(Ffmpeg(File("none.srt") + TimeFlag) == Film(false));
}

TEST_F(HostsOfFrei0rTest, MeltBurnsEveryFrameAtItsTime)
{
    ExpectFilm(Melt({}, {"-filter", "frei0r.subtitleburn", "location=" + m_strSubtitles}), true, AtTwentyFive);
}

TEST_F(HostsOfFrei0rTest, MeltBurnsOnManyThreadsAtOnce)
{
    ExpectFilm(Melt({}, {"-attach", "frei0r.subtitleburn", "location=" + m_strSubtitles}, "-3"), true, AtTwentyFive);
}

TEST_F(HostsOfFrei0rTest, MeltSetsAllParameters)
{
    ExpectFilm(Melt({}, {"-filter", "frei0r.subtitleburn", "location=" + m_strSubtitles, "milliseconds=0",
                         "subtitle-track=0", "alpha=0.8", "pos=0.3", "font-family=DejaVu Serif", "font-size=0.1",
                         "bold=1", "italic=1", "font-color=#ffd700", "outline-color=#102030"}),
               true, AtTwentyFive, SetAll);
}

// MLT counts time from the cut, so the offset has to make up for it.
TEST_F(HostsOfFrei0rTest, MeltBurnsIntoAClipThatWasCut)
{
    ExpectFilm(Melt({"in=5"}, {"-attach", "frei0r.subtitleburn", "location=" + m_strSubtitles, "offset=0.2"}), true,
               AtTwentyFive, {}, 5);
}
