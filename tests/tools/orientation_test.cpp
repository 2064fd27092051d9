#include "subburntest.h"
#include "support/turnedfilm.h"

#include <fstream>
#include <ostream>
#include <tuple>
#include <utility>

namespace
{

struct Turn {
    int nDegrees;
    int nWidth;
    int nHeight;

    friend std::ostream &operator<<(std::ostream &stream, const Turn &turn) { return stream << turn.nDegrees; }
};

class UprightTest : public SubburnTest
{
protected:
    std::string GrayClip(const std::string &strName, int nWidth, int nHeight) const
    {
        return Clip(strName, {"-f", "lavfi", "-i",
                              "color=gray:s=" + std::to_string(nWidth) + "x" + std::to_string(nHeight) + ":r=25:d=2",
                              "-pix_fmt", "yuv420p", "-preset", "ultrafast"});
    }

    /** Expects a burnt clip, when shown, to equal one of that size that was never turned. */
    void ExpectUpright(const std::string &strOutput, int nWidth, int nHeight) const
    {
        const std::string strFlat = Burn(GrayClip("flat.mp4", nWidth, nHeight), "upright.mp4", m_listLossless);
        const auto listFlat = Frames(strFlat, "yuv420p");
        const auto listShown = ShownFrames(strOutput, "yuv420p");
        ASSERT_EQ(listFlat.size(), listShown.size());
        for (size_t n = 0; n < listShown.size(); ++n)
            EXPECT_TRUE(listFlat[n].substr(0, 320 * 180) == listShown[n].substr(0, 320 * 180)) << "frame " << n;
        EXPECT_TRUE(listFlat[12] != listFlat[0]);
    }

    const Arguments m_listLossless = {"--crf", "0", "--preset", "ultrafast"};
};

class TurnTest : public UprightTest, public testing::WithParamInterface<Turn>
{
};

} // namespace

TEST_P(TurnTest, TheSubtitleStandsUpright)
{
    const Turn &turn = GetParam();
    const std::string strInput = GrayClip("in.mp4", 320, 180);
    TurnFilm(strInput, turn.nDegrees);
    const std::string strOutput = Burn(strInput, "out.mp4", m_listLossless);
    const std::string strMatrix = Probe(strInput, "stream_side_data=displaymatrix");
    EXPECT_NE(strMatrix.find("0000"), std::string::npos);
    EXPECT_EQ(Probe(strOutput, "stream_side_data=displaymatrix"), strMatrix);
    EXPECT_EQ(Probe(strOutput, "stream=width,height"), "width=320\nheight=180\n");
    ExpectUpright(strOutput, turn.nWidth, turn.nHeight);
}

TEST_F(UprightTest, ContainersThatCannotTurnGetThePicturesTurned)
{
    const std::string strInput = GrayClip("in.mp4", 320, 180);
    TurnFilm(strInput, 90);
    for (const char *pName : {"out.mkv", "out.avi"}) {
        Arguments listArguments = {"--font", "DejaVu Sans", strInput, File(pName)};
        listArguments.insert(listArguments.end(), m_listLossless.begin(), m_listLossless.end());
        EXPECT_EQ(Subburn(listArguments).strOut,
                  File(pName) + ": the pictures are turned upright, which this container cannot have players do\n" +
                      File(pName) + ": 50 frames, 17 with a subtitle\n");
        EXPECT_EQ(Probe(File(pName), "stream=width,height:stream_side_data=displaymatrix"), "width=180\nheight=320\n");
        ExpectUpright(File(pName), 180, 320);
    }
}

TEST_F(UprightTest, FramesMayBeAloneToSayHowTheyAreTurned)
{
    const std::string strInput = Clip("in.mkv", {"-i", GrayClip("stored.mp4", 320, 180), "-c", "copy", "-bsf:v",
                                                 "h264_metadata=display_orientation=insert:rotate=90"});
    EXPECT_EQ(Probe(strInput, "stream_side_data=displaymatrix"), "");
    ExpectUpright(Burn(strInput, "out.mp4", m_listLossless), 180, 320);
}

TEST_F(UprightTest, KeyFramesMayBeAloneToSayHowAllAreTurned)
{
    const std::string strInput = Clip("in.ts", {"-i", GrayClip("stored.mp4", 320, 180), "-c", "copy", "-bsf:v",
                                                "h264_metadata=display_orientation=insert:rotate=90"});
    const std::string strOutput = Burn(strInput, "out.mkv", {"--start", "0.4", "--codec", "ffv1"});
    EXPECT_EQ(Probe(strOutput, "stream=width,height:stream_side_data=displaymatrix"), "width=180\nheight=320\n");
    const auto listShown = Frames(strOutput, "yuv420p");
    const auto listWhole = Frames(Burn(strInput, "whole.mkv", {"--codec", "ffv1"}), "yuv420p");
    ASSERT_EQ(listWhole.size(), 50U);
    ASSERT_EQ(listShown.size(), 40U);
    for (size_t n = 0; n < listShown.size(); ++n)
        EXPECT_TRUE(listShown[n] == listWhole[n + 10]) << n;
    for (const char *pTime : {"0", "0.5", "1.9"}) {
        EXPECT_EQ(Subburn({"--overwrite", "--snapshot", pTime, strInput, File("a.png")}).nExit, 0);
        EXPECT_EQ(Probe(File("a.png"), "stream=width,height"), "width=180\nheight=320\n") << pTime;
    }
}

TEST_F(UprightTest, AKeyFrameWithoutAMatrixIsNotTurned)
{
    const std::string strTurned =
        Clip("turned.h264", {"-i", GrayClip("stored.mp4", 320, 180), "-c", "copy", "-bsf:v",
                             "h264_mp4toannexb,h264_metadata=display_orientation=insert:rotate=90"});
    const std::string strFlat = Clip("flat.h264", {"-i", File("stored.mp4"), "-c", "copy"});
    std::ofstream(strTurned, std::ios::binary | std::ios::app) << std::ifstream(strFlat, std::ios::binary).rdbuf();
    for (const auto &[pTime, pSize] :
         {std::pair("1.9", "width=180\nheight=320\n"), {"2.5", "width=320\nheight=180\n"}}) {
        EXPECT_EQ(Subburn({"--overwrite", "--snapshot", pTime, strTurned, File("a.png")}).nExit, 0);
        EXPECT_EQ(Probe(File("a.png"), "stream=width,height"), pSize);
    }
}

TEST_F(UprightTest, ATurnByNoQuartersIsKeptOrNamedAsLost)
{
    const std::string strOfContainer = GrayClip("in.mp4", 320, 180);
    TurnFilm(strOfContainer, 45);
    const std::string strOfFrames = Clip("in.ts", {"-i", GrayClip("stored.mp4", 320, 180), "-c", "copy", "-bsf:v",
                                                   "h264_metadata=display_orientation=insert:rotate=22.5"});
    for (const auto &[strInput, strAngle, strRotation] :
         {std::tuple(strOfContainer, "45 degrees clockwise", "rotation=-45\n"),
          std::tuple(strOfFrames, "22.5 degrees counterclockwise", "rotation=22\n")}) {
        EXPECT_EQ(Probe(Burn(strInput, "out.mp4", m_listLossless), "stream_side_data=rotation", "v"), strRotation);
        for (const char *pName : {"out.mkv", "out.webm", "out.avi", "out.ts"}) {
            const Outcome outcome = Subburn({strInput, File(pName)});
            EXPECT_EQ(outcome.nExit, 0);
            EXPECT_EQ(outcome.strError, "subburn: warning: " + File(pName) + ": the display matrix (" + strAngle +
                                            ") is lost, the output cannot hold it and pictures are turned by quarters "
                                            "only\n");
            EXPECT_EQ(Probe(File(pName), "stream_side_data=displaymatrix", "v"), "");
        }
    }
}

TEST_F(UprightTest, AMatrixOfZerosIsNone)
{
    const std::string strInput = GrayClip("in.mp4", 320, 180);
    SetFilmMatrix(strInput, {0, 0, 0, 0, 0, 0, 0, 0, 0x40000000});
    EXPECT_NE(Probe(strInput, "stream_side_data=displaymatrix"), "");
    Burn(strInput, "out.mkv", m_listLossless);
}

INSTANTIATE_TEST_SUITE_P(Turns, TurnTest, testing::Values(Turn{90, 180, 320}, Turn{180, 320, 180}, Turn{270, 180, 320}),
                         [](const testing::TestParamInfo<Turn> &info) { return std::to_string(info.param.nDegrees); });
