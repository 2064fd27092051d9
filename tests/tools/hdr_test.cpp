#include "subburntest.h"

#include <algorithm>
#include <numeric>
#include <regex>
#include <sstream>

namespace
{

const std::string Display = "master-display=G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50)";
const std::string Light = "max-cll=1000,400";

/** Lines of ffprobe about both. */
const std::vector<std::string> DisplayLines = {
    "red_x=17/25",          "red_y=8/25",         "green_x=53/200",           "green_y=69/100",
    "blue_x=3/20",          "blue_y=3/50",        "white_point_x=3127/10000", "white_point_y=329/1000",
    "max_luminance=1000/1", "min_luminance=1/200"};
const std::vector<std::string> LightLines = {"max_content=1000", "max_average=400"};

class HdrTest : public SubburnTest
{
protected:
    /** A clip whose metadata is in the bit stream alone, as transport streams have no field for it. */
    std::string ClipWith(const std::string &strParameters) const
    {
        return Clip("in.ts", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=5:d=1,format=yuv420p10le", "-c:v", "libx265",
                              "-preset", "ultrafast", "-x265-params", "log-level=none:" + strParameters});
    }

    std::string ClipWithBoth() const { return ClipWith(Display + ":" + Light); }

    /** A clip whose metadata is in the container alone. */
    std::string ClipWithFields() const { return Burn(ClipWithBoth(), "fields.webm", {"--codec", "libvpx-vp9"}); }

    /** What the bit stream of the first picture says. */
    std::string FirstFrame(const std::string &strFile) const
    {
        const Outcome outcome =
            ChildProcess::Run({"ffprobe", "-v", "error", "-read_intervals", "%+#1", "-show_frames", strFile});
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        return Reduced(outcome.strOut);
    }

    /** What the container says. */
    std::string Fields(const std::string &strFile) const { return Reduced(Probe(strFile, "stream_side_data")); }

    /** FFmpeg's listing of all values in the bit stream of H.264. */
    static std::string Values(const std::string &strFile)
    {
        const Outcome outcome = ChildProcess::Run({"ffmpeg", "-nostdin", "-v", "trace", "-i", strFile, "-c", "copy",
                                                   "-bsf:v", "trace_headers", "-f", "null", "-"});
        EXPECT_EQ(outcome.nExit, 0);
        return outcome.strError;
    }

    static void ExpectLines(const std::string &strText, const std::vector<std::string> &listLines)
    {
        for (const std::string &strLine : listLines)
            EXPECT_NE(strText.find("\n" + strLine + "\n"), std::string::npos) << strLine << "\n" << strText;
    }

    void ExpectWarning(const std::string &strInput, const std::string &strOutput, const std::string &strCodec,
                       const std::string &strLost) const
    {
        const Outcome outcome = Subburn({"--codec", strCodec, strInput, File(strOutput)});
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "subburn: warning: " + File(strOutput) + ": the HDR metadata (" + strLost +
                                        ") is lost, neither this container nor " + strCodec + " can hold it\n");
    }

private:
    /** With fractions in their lowest terms, which differ from container to container. */
    static std::string Reduced(const std::string &strText)
    {
        std::string strReduced = "\n";
        std::istringstream lines(strText);
        for (std::string strLine; std::getline(lines, strLine); strReduced += strLine + "\n") {
            const size_t nEqual = strLine.find('=');
            const size_t nSlash = strLine.find('/');
            const bool bFraction = nEqual != std::string::npos && nSlash != std::string::npos &&
                                   strLine.find_first_not_of("0123456789/", nEqual + 1) == std::string::npos;
            if (!bFraction)
                continue;
            const long nOver = std::stol(strLine.substr(nEqual + 1));
            const long nUnder = std::stol(strLine.substr(nSlash + 1));
            const long nCommon = std::max(std::gcd(nOver, nUnder), 1L);
            strLine.replace(nEqual + 1, std::string::npos,
                            std::to_string(nOver / nCommon) + "/" + std::to_string(nUnder / nCommon));
        }
        return strReduced;
    }
};

} // namespace

TEST_F(HdrTest, ContainersWithFieldsGetWhatOnlyTheBitStreamHad)
{
    const std::string strInput = ClipWithBoth();
    EXPECT_EQ(Fields(strInput).find("max_content"), std::string::npos);
    for (const auto &[strOutput, strCodec] : {std::pair<std::string, std::string>("out.mkv", "libx264"),
                                              {"out.webm", "libvpx-vp9"},
                                              {"out.mp4", "libx264"},
                                              {"out.mov", "libx265"}}) {
        const std::string strFields = Fields(Burn(strInput, strOutput, {"--codec", strCodec}));
        ExpectLines(strFields, DisplayLines);
        ExpectLines(strFields, LightLines);
    }
}

TEST_F(HdrTest, HevcInATransportStream)
{
    for (const std::string &strInput : {ClipWithBoth(), ClipWithFields()}) {
        const std::string strFrame =
            FirstFrame(Burn(strInput, "out.ts", {"--codec", "libx265", "--preset", "ultrafast"}));
        ExpectLines(strFrame, DisplayLines);
        ExpectLines(strFrame, LightLines);
    }
}

TEST_F(HdrTest, H264InATransportStream)
{
    const std::string strValues =
        Values(Burn(ClipWithBoth(), "out.ts", {"--codec", "libx264", "--preset", "ultrafast"}));
    const auto ExpectValue = [&](const std::string &strName, const std::string &strValue) {
        const size_t nName = strValues.find(" " + strName + " ");
        ASSERT_NE(nName, std::string::npos) << strName;
        const std::string strLine = strValues.substr(nName, strValues.find('\n', nName) - nName);
        EXPECT_EQ(strLine.substr(strLine.rfind(" = ") + 3), strValue) << strName;
    };
    ExpectValue("display_primaries_x[0]", "13250");
    ExpectValue("display_primaries_y[0]", "34500");
    ExpectValue("display_primaries_x[1]", "7500");
    ExpectValue("display_primaries_y[1]", "3000");
    ExpectValue("display_primaries_x[2]", "34000");
    ExpectValue("display_primaries_y[2]", "16000");
    ExpectValue("white_point_x", "15635");
    ExpectValue("white_point_y", "16450");
    ExpectValue("max_display_mastering_luminance", "10000000");
    ExpectValue("min_display_mastering_luminance", "50");
    ExpectValue("max_content_light_level", "1000");
    ExpectValue("max_pic_average_light_level", "400");
}

TEST_F(HdrTest, H264ThatHasItInTheBitStreamAlone)
{
    const std::string strH264 = Burn(ClipWithBoth(), "h264.ts", {"--codec", "libx264", "--preset", "ultrafast"});
    // Units follow start codes in transport streams and AVI, and lengths in FLV.
    const std::string strAvi = Clip("h264.avi", {"-i", strH264, "-c", "copy"});
    const std::string strFlv =
        Clip("h264.flv", {"-i", Burn(strAvi, "low.ts", {"--codec", "libx264", "--pix-fmt", "yuv420p"}), "-c", "copy"});
    for (const std::string &strInput : {strH264, strAvi, strFlv}) {
        EXPECT_EQ(Fields(strInput).find("max_content"), std::string::npos);
        const std::string strFields = Fields(Burn(strInput, "out.mp4", {"--start", "0.4", "--codec", "libx264"}));
        ExpectLines(strFields, DisplayLines);
        ExpectLines(strFields, LightLines);
        EXPECT_NE(Values(Burn(strInput, "out.ts", {"--codec", "libx264"})).find("max_content_light_level"),
                  std::string::npos);
    }
}

TEST_F(HdrTest, Av1WithoutAContainerOfFields)
{
    const std::string strFrame = FirstFrame(Burn(ClipWithBoth(), "out.ivf", {"--codec", "libsvtav1"}));
    ExpectLines(strFrame, LightLines);
    // Coordinates are coded in 1/65536, luminances in 1/256 and 1/16384.
    ExpectLines(strFrame, {"red_x=11141/16384", "red_y=5243/16384", "green_x=17367/65536", "green_y=11305/16384",
                           "blue_x=4915/32768", "blue_y=983/16384", "white_point_x=20493/65536",
                           "white_point_y=21561/65536", "max_luminance=1000/1", "min_luminance=41/8192"});
}

TEST_F(HdrTest, NothingIsAddedToOtherVideo)
{
    const std::string strOutput = Burn(UsualClip(), "out.ts", {"--codec", "libx264", "--preset", "ultrafast"});
    const std::string strValues = Values(strOutput);
    EXPECT_NE(strValues.find("pic_parameter_set_id"), std::string::npos);
    EXPECT_EQ(strValues.find("display_primaries_x"), std::string::npos);
    EXPECT_EQ(strValues.find("max_content_light_level"), std::string::npos);
}

TEST_F(HdrTest, ParametersOfTheUserTakePrecedence)
{
    const std::string strFrame = FirstFrame(
        Burn(ClipWithBoth(), "out.ts",
             {"--codec", "libx265", "--preset", "ultrafast", "--encoder-options", "x265-params=max-cll=600,300"}));
    ExpectLines(strFrame, DisplayLines);
    ExpectLines(strFrame, {"max_content=600", "max_average=300"});
}

TEST_F(HdrTest, ADisplayThatMakesNoSenseStopsNoEncoder)
{
    // x264 refuses to be opened with a black and a white of 5 cd/m2.
    const std::string strInput = ClipWith("master-display=G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)"
                                          "L(50000,50000)");
    const std::string strStored = Values(strInput);
    for (const char *pSide : {"max", "min"})
        EXPECT_TRUE(
            std::regex_search(strStored, std::regex(pSide + std::string("_display_mastering_luminance .* = 50000\n"))));
    const std::string strValues = Values(Burn(strInput, "out.ts", {"--codec", "libx264", "--preset", "ultrafast"}));
    EXPECT_NE(strValues.find("display_primaries_x[0]"), std::string::npos);
}

TEST_F(HdrTest, WhatIsLostIsNamed)
{
    ExpectWarning(ClipWithBoth(), "out.ts", "mpeg2video", "mastering display and light levels");
    ExpectWarning(ClipWithBoth(), "out.avi", "mpeg4", "mastering display and light levels");
    ExpectWarning(ClipWith(Light), "out.ts", "mpeg2video", "light levels");
    ExpectWarning(ClipWith(Display), "out.ts", "mpeg2video", "mastering display");
}
