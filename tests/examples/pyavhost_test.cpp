// The Python host that burns into frames decoded by PyAV.
#include "decodedfilm.h"
#include "examplestest.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

#ifdef PYTHON_WITH_AV
namespace
{

class PyavHostTest : public ExamplesTest
{
protected:
    Outcome Run(std::vector<std::string> listArguments) const
    {
        const std::vector<std::string> listHost = {PYTHON_WITH_AV, EXAMPLES "/pyavhost.py", "--library", FRAME_LIBRARY};
        listArguments.insert(listArguments.begin(), listHost.begin(), listHost.end());
        return ChildProcess::Run(listArguments);
    }

    /** Runs a Python program after loading the host as a module, and the library. */
    static std::string Python(const std::string &strProgram, std::vector<std::string> listArguments)
    {
        const std::string strStart = "import sys\n"
                                     "sys.dont_write_bytecode = True\n"
                                     "sys.path.insert(0, '" EXAMPLES "')\n"
                                     "import av, pyavhost\n"
                                     "library = pyavhost.load('" FRAME_LIBRARY "')\n";
        listArguments.insert(listArguments.begin(), {PYTHON_WITH_AV, "-c", strStart + strProgram});
        const Outcome outcome = ChildProcess::Run(listArguments);
        EXPECT_EQ(outcome.strError, "");
        return outcome.strOut;
    }

    static std::string Times(const std::string &strVideo)
    {
        const Outcome outcome = ChildProcess::Run(
            {"ffprobe", "-v", "error", "-show_entries", "frame=pts_time", "-of", "default=nw=1:nk=1", strVideo});
        EXPECT_EQ(outcome.strError, "");
        return outcome.strOut;
    }

    /** Number of frames that the host copies before drawing, as printed by Python. */
    std::string Copied(const std::string &strVideo) const
    {
        return Python("film = av.open(sys.argv[1])\n"
                      "stream = film.streams.video[0]\n"
                      "burner = pyavhost.Burner(library, sys.argv[2], stream)\n"
                      "copied = 0\n"
                      "for packet in film.demux(stream):\n"
                      "    frames = packet.decode()\n"
                      "    while frames:\n"
                      "        address = frames[0].planes[0].buffer_ptr\n"
                      "        copied += burner.burn(frames, 500).planes[0].buffer_ptr != address\n"
                      "print(copied)\n"
                      "burner.close()\n",
                      {strVideo, m_strSubtitles});
    }

    /**
     * Expects every frame of a film in the output, burnt and at its time.
     *
     * @param setValues  the values of text and outline in the first plane.
     */
    void ExpectBurns(const std::string &strVideo, const std::string &strFormat, const std::set<int> &setValues) const
    {
        const Outcome outcome = Run({"--codec", "ffv1", strVideo, m_strSubtitles, File("out.nut")});
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "");
        SubtitleFrame description = {};
        description.width = m_film.nWidth;
        description.height = m_film.nHeight;
        const DecodedFilm film(strVideo, strFormat, description);
        ASSERT_EQ(film.Count(), m_film.listFrames.size());
        const Outcome decoded =
            ChildProcess::Run({"ffmpeg", "-nostdin", "-v", "error", "-i", File("out.nut"), "-fps_mode", "passthrough",
                               "-pix_fmt", strFormat, "-f", "rawvideo", "-"});
        ASSERT_EQ(decoded.strOut.size(), film.Count() * film.FrameBytes()) << decoded.strError;
        for (std::size_t n = 0; n < film.Count(); ++n)
            film.ExpectFrame(n, decoded.strOut.substr(n * film.FrameBytes(), film.FrameBytes()),
                             static_cast<long>(n) * 40, m_strSubtitles, setValues);
        EXPECT_EQ(Times(File("out.nut")), Times(strVideo));
    }

    void ExpectFails(const std::vector<std::string> &listArguments, const std::string &strError) const
    {
        const Outcome outcome = Run(listArguments);
        EXPECT_EQ(outcome.nExit, 1);
        EXPECT_EQ(outcome.strError, "pyavhost.py: " + strError + "\n");
    }
};

} // namespace

// Drawing into one of the decoder's reference frames would show the subtitle in other frames.
TEST_F(PyavHostTest, FramesThatTheDecoderPredictsFromAreCopied)
{
    const std::string strVideo = Video("in.nut", {"-pix_fmt", "yuv420p", "-c:v", "libx264", "-bf", "3", "-g", "16"});
    ExpectBurns(strVideo, "yuv420p", {25, 235});
    EXPECT_NE(Copied(strVideo), "0\n");
}

TEST_F(PyavHostTest, FramesThatNobodyElseHoldsStayWhereTheyAre)
{
    const std::string strVideo = Video("in.nut", {"-pix_fmt", "yuv422p10le", "-c:v", "prores"});
    ExpectBurns(strVideo, "yuv422p10le", {98, 940});
    EXPECT_EQ(Copied(strVideo), "0\n");
}

TEST_F(PyavHostTest, CountsFromTheStartOfTheFilm)
{
    ExpectBurns(Video("in.nut", {"-c:v", "ffv1", "-pix_fmt", "bgr0", "-output_ts_offset", "7"}), "bgr0", {10, 255});
}

// Newer PyAV frames have colour attributes, which PyAV 10 lacks; a fake frame stands in.
TEST_F(PyavHostTest, ReadsColoursOfVersionsThatHaveThem)
{
    EXPECT_EQ(Python("from types import SimpleNamespace as Fake\n"
                     "frame = Fake(planes=[], width=4, height=2, format=Fake(name='nv12'), interlaced_frame=1,\n"
                     "             colorspace=9, color_range=2)\n"
                     "record = pyavhost.describe(library, frame)\n"
                     "print(record.format, record.colorspace, record.color_range, record.interlaced)\n",
                     {}),
              std::to_string(AV_PIX_FMT_NV12) + " 9 2 1\n");
}

TEST_F(PyavHostTest, SaysWhatIsWrong)
{
    EXPECT_EQ(Run({}).nExit, 2);
    const std::string strVideo = Video("in.nut", {"-c:v", "ffv1"});
    ExpectFails({File("none.mkv"), m_strSubtitles, File("out.mkv")},
                "[Errno 2] No such file or directory: '" + File("none.mkv") + "'");
    ExpectFails({strVideo, File("none.srt"), File("out.mkv")},
                "[Errno 2] No such file or directory: '" + File("none.srt") + "'");
    ExpectFails({m_strSubtitles, m_strSubtitles, File("out.mkv")}, "there is no video in the film");
    ExpectFails({strVideo, m_folder.Write("empty.idx", ""), File("out.mkv")}, "the subtitle file is refused");
    ExpectFails({"--codec", "none", strVideo, m_strSubtitles, File("out.mkv")}, "none");
    const std::string strRare = Video("rare.nut", {"-c:v", "rawvideo", "-pix_fmt", "yuv410p"});
    ExpectFails({"--codec", "ffv1", strRare, m_strSubtitles, File("out.mkv")}, "a frame of format yuv410p is refused");
}
#endif
