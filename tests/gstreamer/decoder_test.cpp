// Burning into a decoder's frames without conversion.
#include "gstreamertest.h"

#include "libsubtitleframe.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace
{

/** The test's film as planar frames from a decoder. */
class DecoderTest : public GStreamerTest
{
protected:
    static constexpr Size FilmSize = {322, 180};
    static constexpr std::size_t FrameBytes = 324 * 180 + 2 * 164 * 90;

    DecoderTest()
    {
        ExpectLaunch("videotestsrc num-buffers=18 pattern=ball animation-mode=frames ! "
                     "video/x-raw,format=I420,width=322,height=180,framerate=4/1 ! jpegenc ! matroskamux ! "
                     "filesink location=film.mkv");
        ExpectLaunch("filesrc location=film.mkv ! decodebin ! video/x-raw,format=I420 ! filesink location=plain");
    }

    /** Expects every frame of the film as the library burns it. */
    void ExpectBurnt() const
    {
        const std::string strPlain = Read("plain");
        const std::string strBurnt = Read("burnt");
        ASSERT_EQ(strPlain.size(), 18 * FrameBytes);
        ASSERT_EQ(strBurnt.size(), strPlain.size());
        for (int n = 0; n < 18; ++n)
            EXPECT_TRUE(strBurnt.substr(n * FrameBytes, FrameBytes) ==
                        Planes(strPlain.substr(n * FrameBytes, FrameBytes), 250L * n))
                << n;
        EXPECT_TRUE(strBurnt != strPlain);
    }

private:
    std::string Planes(std::string strFrame, long nMilliseconds) const
    {
        auto *pBytes = reinterpret_cast<std::uint8_t *>(strFrame.data());
        SubtitleFrame frame = {};
        frame.data[0] = pBytes;
        frame.data[1] = pBytes + 324 * 180;
        frame.data[2] = frame.data[1] + 164 * 90;
        frame.linesize[0] = 324;
        frame.linesize[1] = frame.linesize[2] = 164;
        frame.width = FilmSize.nWidth;
        frame.height = FilmSize.nHeight;
        frame.format = AV_PIX_FMT_YUVJ420P;
        frame.colorspace = AVCOL_SPC_SMPTE170M;
        void *pHandle = CreateVideoSubtitle(FilmSize.nWidth, FilmSize.nHeight);
        void *pBurner = CreateSubtitleBurner(pHandle);
        EXPECT_EQ(SetSubtitleFile(pHandle, m_strSubtitles.c_str(), 0), 0);
        EXPECT_EQ(SetSubtitleTimeStamp(pHandle, nMilliseconds), 0);
        EXPECT_EQ(BurnSubtitle(pBurner, &frame), 0);
        DestroySubtitleBurner(pBurner);
        DestroyVideoSubtitle(pHandle);
        return strFrame;
    }
};

} // namespace

TEST_F(DecoderTest, FramesOfADecoderNeedNoConversion)
{
    ExpectLaunch("filesrc location=film.mkv ! decodebin ! subtitleburn location=text.srt ! filesink location=burnt");
    ExpectBurnt();
}

TEST_F(DecoderTest, ExampleBurnsAFilm)
{
    const auto run = [](std::vector<std::string> listArguments) {
        listArguments.insert(listArguments.begin(), EXAMPLES "/gstreamer.sh");
        return ChildProcess::Run(listArguments);
    };
    const Outcome outcome = run(
        {File("film.mkv"), m_strSubtitles, "video/x-raw,format=I420", "!", "filesink", "location=" + File("burnt")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    ExpectBurnt();

    const Outcome usage = run({File("film.mkv")});
    EXPECT_EQ(usage.nExit, 2);
    EXPECT_EQ(usage.strError, "usage: gstreamer.sh VIDEO SUBTITLES [ELEMENT...]\n");
    EXPECT_NE(run({File("none.mkv"), m_strSubtitles, "fakesink"}).nExit, 0);
}
