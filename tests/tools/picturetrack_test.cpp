// Picture tracks of containers: Blu-ray, DVD and DVB.
#include "subburntest.h"

#include <sstream>

namespace
{

const Arguments Grey = {"-f", "lavfi", "-i", "color=c=0x505050:s=320x180:r=25:d=2", "-copyts"};

class PictureTrackTest : public SubburnTest
{
protected:
    PictureTrackTest() : m_strPictures(m_folder.Write("in.sup", PictureSubtitles())) { m_strSubtitles.clear(); }

    /** A grey clip with the pictures of a file as its track. */
    std::string ClipWith(const std::string &strName, const std::string &strFile, const Arguments &listCodecs) const
    {
        Arguments listArguments = Grey;
        listArguments.insert(listArguments.end(), {"-i", strFile, "-map", "0:v", "-map", "1:s"});
        listArguments.insert(listArguments.end(), listCodecs.begin(), listCodecs.end());
        return Clip(strName, listArguments);
    }

    std::string BluRayClip(const std::string &strName = "bluray.mkv") const
    {
        return ClipWith(strName, m_strPictures, {"-c:v", "ffv1", "-c:s", "copy"});
    }

    std::string DvdClip() const { return ClipWith("dvd.mkv", m_strPictures, {"-c:v", "ffv1", "-c:s", "dvdsub"}); }

    /** Burns a clip; expects the white square of 8x8 pixels at 8,8 on the frames from 10 to before nEnd. */
    void ExpectSquare(const std::string &strInput, size_t nEnd, const Arguments &listOptions = {})
    {
        Arguments listArguments = {"--codec", "ffv1", strInput, File("out.mkv")};
        listArguments.insert(listArguments.end(), listOptions.begin(), listOptions.end());
        const Outcome outcome = Subburn(listArguments);
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "");
        EXPECT_EQ(outcome.strOut, File("out.mkv") + ": 50 frames, " + std::to_string(nEnd - 10) + " with a subtitle\n");
        const auto listClear = Frames(strInput, "gray");
        const auto listBurnt = Frames(File("out.mkv"), "gray");
        ASSERT_EQ(listBurnt.size(), 50U);
        for (size_t n = 0; n < listBurnt.size(); ++n) {
            const bool bDue = n >= 10 && n < nEnd;
            ASSERT_EQ(listBurnt[n] == WithSquare(listClear[n]), bDue) << n;
            ASSERT_EQ(listBurnt[n] == listClear[n], !bDue) << n;
        }
    }

    static std::string WithSquare(std::string strFrame, int nBytes = 1)
    {
        for (int y = 8; y < 16; ++y) {
            for (int n = 8 * nBytes; n < 16 * nBytes; ++n)
                strFrame[y * 320 * nBytes + n] = '\xff';
        }
        return strFrame;
    }

    void ExpectFailure(const std::string &strFile, const Arguments &listOptions, const std::string &strReason)
    {
        Arguments listArguments = {strFile, File("out.mkv")};
        listArguments.insert(listArguments.end(), listOptions.begin(), listOptions.end());
        const Outcome outcome = Subburn(listArguments);
        EXPECT_EQ(outcome.nExit, 2);
        EXPECT_EQ(outcome.strOut, "");
        EXPECT_EQ(outcome.strError, "subburn: " + strFile + ": " + strReason + "\n");
    }

    const std::string m_strPictures;
};

} // namespace

TEST_F(PictureTrackTest, BluRay)
{
    const std::string strInput = BluRayClip();
    ExpectSquare(strInput, 20);
    // The burnt track is left out.
    EXPECT_EQ(Probe(File("out.mkv"), "stream=codec_name"), "codec_name=ffv1\n");
    ExpectSquare(strInput, 20, {"--keep-track"});
    EXPECT_EQ(Probe(File("out.mkv"), "stream=codec_name"), "codec_name=ffv1\ncodec_name=hdmv_pgs_subtitle\n");
    ExpectSquare(strInput, 30, {"--stretch", "2", "--delay", "-0.4"});
}

TEST_F(PictureTrackTest, Dvd)
{
    // FFmpeg's encoder stores no end.
    ExpectSquare(DvdClip(), 50);
}

TEST_F(PictureTrackTest, DvbWhoseClockBeginsAnywhere)
{
    const std::string strInput =
        ClipWith("dvb.ts", m_strPictures, {"-c:v", "mpeg2video", "-q:v", "2", "-c:s", "dvbsub"});
    std::istringstream times(Probe(strInput, "packet=pts_time:format=start_time", "s", "default=nw=1:nk=1"));
    double dStart = 0;
    double dEnd = 0;
    double dOrigin = 0;
    ASSERT_TRUE(times >> dStart >> dEnd >> dOrigin);
    EXPECT_GT(dOrigin, 1);
    EXPECT_NEAR(dStart - dOrigin, 0.4, 0.001);
    // The picture stays until the packet that removes it.
    const auto nEnd = static_cast<size_t>((dEnd - dOrigin) * 25 + 0.999);
    EXPECT_GT(nEnd, 10U);
    EXPECT_LT(nEnd, 50U);
    ExpectSquare(strInput, nEnd);
}

TEST_F(PictureTrackTest, OfAnotherFileWhateverItsName)
{
    const std::string strClear =
        Clip("clear.mkv", {"-f", "lavfi", "-i", "color=c=0x505050:s=320x180:r=25:d=2", "-c:v", "ffv1"});
    std::filesystem::copy_file(BluRayClip(), File("gr\xfc\xdf.mkv"));
    std::filesystem::copy_file(m_strPictures, File("a:b.sup"));
    for (const std::string &strFile :
         {m_strPictures, File("gr\xfc\xdf.mkv"), File("a:b.sup"), "file:" + m_strPictures}) {
        m_strSubtitles = strFile;
        ExpectSquare(strClear, 20);
    }
}

TEST_F(PictureTrackTest, PipesAndSnapshots)
{
    m_strSubtitles = BluRayClip();
    const std::string strFrame(320 * 180 * 3, '\x50');
    const Outcome outcome = Subburn({"--pipe", "320x180@2"}, strFrame + strFrame);
    EXPECT_EQ(outcome.strError, "standard output: 2 frames, 1 with a subtitle\n");
    EXPECT_TRUE(outcome.strOut == strFrame + WithSquare(strFrame, 3));
    EXPECT_EQ(Subburn({"--snapshot", "0.5", m_strSubtitles, File("a.png")}).strOut,
              File("a.png") + ": the picture at 0:00:00.480, with a subtitle\n");
}

TEST_F(PictureTrackTest, WhatCannotBeBurntIsNamed)
{
    const std::string strBluRay = BluRayClip();
    ExpectFailure(strBluRay, {"--exact"}, "subtitle track 0 is hdmv_pgs_subtitle, which --exact cannot burn");
    ExpectFailure(strBluRay, {"--track", "1"}, "there is no subtitle track 1, the last is 0");
    ExpectFailure(ClipWith("divx.avi", DvdClip(), {"-c:v", "mpeg4", "-c:s", "xsub"}), {},
                  "subtitle track 0 is xsub, which cannot be burnt");
}
