#include "examplestest.h"

#include <array>

namespace
{

class FfmpegHostTest : public ExamplesTest
{
protected:
    /** Expects the pictures of some frames, in this order. */
    void ExpectPictures(const std::string &strVideo, const std::vector<std::pair<std::string, std::size_t>> &listTimes)
    {
        std::vector<std::string> listCommand = {FFMPEGHOST, strVideo, m_strSubtitles};
        for (const auto &[strTime, nFrame] : listTimes)
            listCommand.push_back(strTime);
        const Outcome outcome = ChildProcess::Run(listCommand);
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        const std::string strHeader = "P6\n322 180\n255\n";
        const std::size_t nBytes = strHeader.size() + m_film.FrameBytes();
        ASSERT_EQ(outcome.strOut.size(), listTimes.size() * nBytes);
        for (std::size_t n = 0; n < listTimes.size(); ++n) {
            EXPECT_EQ(outcome.strOut.substr(n * nBytes, strHeader.size()), strHeader);
            const std::size_t nFrame = listTimes[n].second;
            m_film.ExpectFrame(nFrame, outcome.strOut.substr(n * nBytes + strHeader.size(), m_film.FrameBytes()),
                               static_cast<long>(nFrame) * 40, m_strSubtitles);
        }
    }

    void ExpectFails(const std::vector<std::string> &listArguments, const std::string &strError) const
    {
        std::vector<std::string> listCommand = {FFMPEGHOST};
        listCommand.insert(listCommand.end(), listArguments.begin(), listArguments.end());
        const Outcome outcome = ChildProcess::Run(listCommand);
        EXPECT_EQ(outcome.nExit, 1);
        EXPECT_NE(outcome.strError.find(strError), std::string::npos) << outcome.strError;
        EXPECT_EQ(outcome.strOut, "");
    }

    // Forwards and back, between frames, the last one and what is behind it.
    const std::vector<std::pair<std::string, std::size_t>> m_listTimes = {
        {"0", 0},    {"0.36", 9}, {"0.4", 10},    {"0.8", 20},  {"0.84", 21}, {"1.2", 30},
        {"0.5", 12}, {"1.4", 35}, {"1.4399", 35}, {"1.44", 36}, {"1.56", 39}, {"9", 39}};
};

} // namespace

TEST_F(FfmpegHostTest, BurnsPicturesInAnyOrder)
{
    ExpectPictures(Video("in.mkv", {"-c:v", "libx264rgb", "-qp", "0", "-bf", "3", "-g", "16"}), m_listTimes);
}

TEST_F(FfmpegHostTest, CountsFromTheStartOfTheFilm)
{
    ExpectPictures(Video("in.mkv", {"-c:v", "ffv1", "-pix_fmt", "bgr0", "-output_ts_offset", "7"}), m_listTimes);
}

TEST_F(FfmpegHostTest, ConvertsColours)
{
    // One colour, stored in each of these ways.
    for (const char *pMatrix : {"bt601", "bt709", "bt2020"}) {
        for (const char *pRange : {"tv", "pc"}) {
            const std::string strVideo = File("in.mkv");
            const std::string strTag = std::string(pMatrix) == "bt601"    ? "smpte170m"
                                       : std::string(pMatrix) == "bt2020" ? "bt2020nc"
                                                                          : pMatrix;
            const Outcome made = ChildProcess::Run(
                {"ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "color=0xc86432:s=320x180:r=25:d=0.2,format=gbrp",
                 "-vf", std::string("scale=out_color_matrix=") + pMatrix + ":out_range=" + pRange + ",format=yuv444p",
                 "-c:v", "ffv1", "-colorspace", strTag, "-color_range", pRange, strVideo});
            ASSERT_EQ(made.nExit, 0) << made.strError;
            const Outcome outcome = ChildProcess::Run({FFMPEGHOST, strVideo, m_strSubtitles, "0.04"});
            EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
            ASSERT_EQ(outcome.strOut.size(), 15 + 320U * 180 * 3);
            for (std::size_t n = 15; n < outcome.strOut.size(); ++n)
                ASSERT_NEAR(static_cast<unsigned char>(outcome.strOut[n]), (std::array{0xc8, 0x64, 0x32})[n % 3], 3)
                    << pMatrix << " " << pRange;
        }
    }
}

TEST_F(FfmpegHostTest, TellsWhatIsWrong)
{
    ExpectFails({}, "usage: ffmpeghost VIDEO SUBTITLES SECONDS...\n");
    ExpectFails({File("none.mkv"), m_strSubtitles, "1"}, "none.mkv: No such file or directory\n");
    ExpectFails({m_strSubtitles, m_strSubtitles, "1"}, "text.srt: Stream not found\n");
    const std::string strVideo = Video("in.mkv", {"-c:v", "ffv1"});
    ExpectFails({strVideo, File("none.srt"), "1"}, "none.srt: cannot be read\n");
    ExpectFails({strVideo, m_folder.Write("empty.idx", ""), "1"}, "empty.idx: is refused\n");
    for (const char *pTime : {"soon", "1s", "-1", "nan", "1e99", ""})
        ExpectFails({strVideo, m_strSubtitles, pTime}, std::string(pTime) + ": is no time in seconds\n");
}
