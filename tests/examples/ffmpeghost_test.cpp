#include "decodedfilm.h"
#include "examplestest.h"
#include "support/turnedfilm.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace
{

class FfmpegHostTest : public ExamplesTest
{
protected:
    /**
     * Expects the pictures for m_listTimes, in this order.
     *
     * @param setValues  the values of text and outline in the first plane.
     */
    void ExpectPictures(const std::string &strVideo, const DecodedFilm &film, const std::set<int> &setValues) const
    {
        std::vector<std::string> listCommand = {FFMPEGHOST, strVideo, m_strSubtitles};
        for (const auto &[strTime, nFrame] : m_listTimes)
            listCommand.push_back(strTime);
        const Outcome outcome = ChildProcess::Run(listCommand);
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        ASSERT_EQ(film.Count(), m_film.listFrames.size());
        ASSERT_EQ(outcome.strOut.size(), m_listTimes.size() * film.FrameBytes());
        for (std::size_t n = 0; n < m_listTimes.size(); ++n) {
            const std::size_t nFrame = m_listTimes[n].second;
            film.ExpectFrame(nFrame, outcome.strOut.substr(n * film.FrameBytes(), film.FrameBytes()),
                             static_cast<long>(nFrame) * 40, m_strSubtitles, setValues);
        }
    }

    /** Size and colour tags of the film's frames. */
    SubtitleFrame Description(int nSpace = AVCOL_SPC_UNSPECIFIED, int nRange = AVCOL_RANGE_UNSPECIFIED) const
    {
        SubtitleFrame description = {};
        description.width = m_film.nWidth;
        description.height = m_film.nHeight;
        description.colorspace = nSpace;
        description.color_range = nRange;
        return description;
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

    // Times and their frames: forwards and backwards, between frames, in the last frame and after the end.
    const std::vector<std::pair<std::string, std::size_t>> m_listTimes = {
        {"0", 0},    {"0.36", 9}, {"0.4", 10},    {"0.8", 20},  {"0.84", 21}, {"1.2", 30},
        {"0.5", 12}, {"1.4", 35}, {"1.4399", 35}, {"1.44", 36}, {"1.56", 39}, {"9", 39}};
};

} // namespace

// With B-frames, the decoder predicts from later frames: drawing must not change its reference frames.
TEST_F(FfmpegHostTest, BurnsPicturesInAnyOrder)
{
    const std::string strVideo =
        Video("in.mkv", {"-vf", "scale=out_color_matrix=bt709", "-pix_fmt", "yuv420p", "-c:v", "libx264", "-bf", "3",
                         "-g", "16", "-colorspace", "bt709", "-color_range", "tv", "-chroma_sample_location", "left"});
    SubtitleFrame description = Description(AVCOL_SPC_BT709, AVCOL_RANGE_MPEG);
    description.chroma_location = AVCHROMA_LOC_LEFT;
    ExpectPictures(strVideo, DecodedFilm(strVideo, "yuv420p", description), {25, 235});
}

TEST_F(FfmpegHostTest, CountsFromTheStartOfTheFilm)
{
    const std::string strVideo = Video("in.mkv", {"-c:v", "ffv1", "-pix_fmt", "bgr0", "-output_ts_offset", "7"});
    ExpectPictures(strVideo, DecodedFilm(strVideo, "bgr0", Description()), {10, 255});
}

TEST_F(FfmpegHostTest, BurnsIntoWhatDecodersMake)
{
    const struct {
        const char *pFormat;
        std::vector<std::string> listOptions;
        std::set<int> setValues;
    } listCases[] = {{"yuv422p10le", {"-c:v", "ffv1", "-pix_fmt", "yuv422p10le"}, {98, 940}},
                     {"nv12", {"-c:v", "rawvideo", "-pix_fmt", "nv12"}, {25, 235}},
                     {"gbrp", {"-c:v", "libx264rgb", "-qp", "0"}, {10, 255}}};
    for (const auto &testCase : listCases) {
        const std::string strVideo = Video(std::string(testCase.pFormat) + ".nut", testCase.listOptions);
        ExpectPictures(strVideo, DecodedFilm(strVideo, testCase.pFormat, Description()), testCase.setValues);
    }
}

TEST_F(FfmpegHostTest, TakesTheRangeThatTheFilmIsTaggedWith)
{
    const std::string strVideo =
        Video("in.mkv", {"-c:v", "ffv1", "-pix_fmt", "yuv444p", "-color_range", "pc", "-colorspace", "smpte170m"});
    ExpectPictures(strVideo, DecodedFilm(strVideo, "yuv444p", Description(AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG)),
                   {10, 255});
}

TEST_F(FfmpegHostTest, BurnsUprightTextIntoATurnedFilm)
{
    const struct {
        int nDegrees;
        int nOrientation;
    } listCases[] = {{270, SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_UPSIDE_DOWN},
                     {180, SUBTITLE_ORIENTATION_MIRRORED | SUBTITLE_ORIENTATION_UPSIDE_DOWN},
                     {90, SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_MIRRORED}};
    for (const auto &[nDegrees, nOrientation] : listCases) {
        const std::string strVideo =
            Video(std::to_string(nDegrees) + ".mp4", {"-c:v", "libx264", "-pix_fmt", "yuv420p"});
        TurnFilm(strVideo, nDegrees);
        SubtitleFrame description = Description();
        description.orientation = nOrientation;
        ExpectPictures(strVideo, DecodedFilm(strVideo, "yuv420p", description), {25, 235});
    }
}

TEST_F(FfmpegHostTest, FormatThatTheLibraryDoesNotKnowIsAnError)
{
    const std::string strVideo = Video("in.nut", {"-c:v", "rawvideo", "-pix_fmt", "yuv410p"});
    const Outcome outcome = ChildProcess::Run({FFMPEGHOST, strVideo, m_strSubtitles, "0"});
    EXPECT_EQ(outcome.nExit, 1);
    EXPECT_EQ(outcome.strError, "ffmpeghost: a frame is refused: its format is not known, or there is no memory\n");
    EXPECT_EQ(outcome.strOut, "");
}

TEST_F(FfmpegHostTest, SaysWhatIsWrong)
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
