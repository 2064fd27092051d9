#include "subburntest.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <ostream>
#include <utility>

namespace
{

struct Format {
    const char *pName;
    const char *pCodec;
    const char *pPixels;
    int nWidth;
    int nHeight;
    int nBytes;
    int nShiftX;
    int nShiftY;

    friend std::ostream &operator<<(std::ostream &stream, const Format &format) { return stream << format.pName; }
};

int CeilShift(int nValue, int nShift)
{
    return -(-nValue >> nShift);
}

class FormatTest : public SubburnTest, public testing::WithParamInterface<Format>
{
};

const Format Formats[] = {
    {"Usual", "libx264", "yuv420p", 320, 180, 1, 1, 1},
    {"FullRange", "libx264", "yuvj420p", 320, 180, 1, 1, 1},
    {"NoSubsampling", "libx264", "yuv444p", 320, 180, 1, 0, 0},
    {"TenBits", "ffv1", "yuv420p10le", 320, 180, 2, 1, 1},
    {"TenBits422", "ffv1", "yuv422p10le", 320, 180, 2, 1, 0},
    {"OddSize", "ffv1", "yuv420p", 321, 181, 1, 1, 1},
    {"Sparse", "ffv1", "yuv410p", 320, 180, 1, 2, 2},
    {"DvNtsc", "ffv1", "yuv411p", 320, 180, 1, 2, 0},
    {"HalvedRows", "ffv1", "yuv440p", 320, 180, 1, 0, 1},
    {"SixteenBits", "ffv1", "yuv420p16le", 320, 180, 2, 1, 1},
    {"SixteenBits444", "ffv1", "yuv444p16le", 320, 180, 2, 0, 0},
    {"Gray16", "ffv1", "gray16le", 320, 180, 2, 8, 8},
    {"PackedAlpha16", "ffv1", "rgba64le", 320, 180, 8, 8, 8},
    {"Gray", "ffv1", "gray", 320, 180, 1, 8, 8},
    {"Packed", "ffv1", "bgr0", 320, 180, 4, 8, 8},
};

/** The luma plane, or the only plane of a packed format. */
std::string FirstPlane(const std::string &strFrame, const Format &format)
{
    return strFrame.substr(0, static_cast<size_t>(format.nWidth) * format.nHeight * format.nBytes);
}

} // namespace

TEST_P(FormatTest, OnlyThePixelsUnderADueSubtitleChange)
{
    const Format &format = GetParam();
    const std::string strSize = std::to_string(format.nWidth) + "x" + std::to_string(format.nHeight);
    const std::string strInput = Clip("in.mkv", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=2,scale=" + strSize,
                                                 "-c:v", "ffv1", "-pix_fmt", format.pPixels});
    Arguments listOptions = {"--codec", format.pCodec};
    if (std::string(format.pCodec) == "libx264")
        listOptions.insert(listOptions.end(), {"--crf", "0", "--preset", "ultrafast"});
    const std::string strOutput = Burn(strInput, "out.mkv", listOptions);
    EXPECT_EQ(Probe(strOutput, "stream=pix_fmt"), Probe(strInput, "stream=pix_fmt"));
    const auto listBefore = Frames(strInput, format.pPixels);
    const auto listAfter = Frames(strOutput, format.pPixels);
    ASSERT_EQ(listBefore.size(), 50U);
    ASSERT_EQ(listAfter.size(), 50U);
    const int nChromaWidth = CeilShift(format.nWidth, format.nShiftX);
    for (size_t n = 0; n < listAfter.size(); ++n) {
        ASSERT_EQ(listBefore[n] == listAfter[n], !IsDue(n)) << "frame " << n;
        if (!IsDue(n))
            continue;
        const std::string strBefore = FirstPlane(listBefore[n], format);
        const Bounds text = Difference(strBefore, FirstPlane(listAfter[n], format), format.nWidth, format.nBytes);
        const int nLines = n < 25 ? 1 : 2;
        EXPECT_NEAR((text.nTop + text.nBottom) / 2.0, format.nHeight * 0.85, 6) << "frame " << n;
        EXPECT_NEAR((text.nLeft + text.nRight) / 2.0, format.nWidth / 2.0, 4) << "frame " << n;
        EXPECT_NEAR(text.nBottom - text.nTop, nLines * 15, 9) << "frame " << n;
        if (format.nShiftX == 8)
            continue;
        const size_t nChroma =
            static_cast<size_t>(nChromaWidth) * CeilShift(format.nHeight, format.nShiftY) * format.nBytes;
        for (size_t nPlane : {0, 1}) {
            const size_t nOffset = strBefore.size() + nPlane * nChroma;
            const Bounds chroma = Difference(listBefore[n].substr(nOffset, nChroma),
                                             listAfter[n].substr(nOffset, nChroma), nChromaWidth, format.nBytes);
            ASSERT_FALSE(chroma.Empty());
            EXPECT_GE(chroma.nLeft, (text.nLeft >> format.nShiftX) - 1);
            EXPECT_GE(chroma.nTop, (text.nTop >> format.nShiftY) - 1);
            EXPECT_LE(chroma.nRight, CeilShift(text.nRight, format.nShiftX) + 1);
            EXPECT_LE(chroma.nBottom, CeilShift(text.nBottom, format.nShiftY) + 1);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, FormatTest, testing::ValuesIn(Formats),
                         [](const testing::TestParamInfo<Format> &info) { return std::string(info.param.pName); });

TEST_F(SubburnTest, PixelsBetweenTheLettersStay)
{
    const size_t nPixels = 320 * 180;
    const auto Planes = [&](const std::string &strSource) {
        const std::string strInput =
            Clip("in.mkv", {"-f", "lavfi", "-i", strSource + ",format=yuv444p10le", "-c:v", "ffv1"});
        return std::make_pair(Frames(strInput, "yuv444p10le")[12],
                              Frames(Burn(strInput, "out.mkv", {"--codec", "ffv1", "--exact"}), "yuv444p10le")[12]);
    };
    const auto Same = [&](const auto &planes, size_t nPixel) {
        return planes.first.compare(nPixel * 2, 2, planes.second, nPixel * 2, 2) == 0;
    };
    // On black every changed pixel can be seen. Noise has 10-bit values that a conversion to 8 bits would change.
    const auto black = Planes("color=black:s=320x180:r=25:d=0.6");
    const auto noise = Planes("color=gray:s=320x180:r=25:d=0.6,format=yuv444p10le,geq='random(1)*800+100':512:512");
    Bounds text;
    for (size_t n = 0; n < nPixels; ++n) {
        if (!Same(black, n))
            text.Add(static_cast<int>(n % 320), static_cast<int>(n / 320));
    }
    int nBetween = 0;
    int nChanged = 0;
    for (int y = text.nTop; y < text.nBottom; ++y) {
        for (int x = text.nLeft; x < text.nRight; ++x) {
            const size_t nPixel = static_cast<size_t>(y) * 320 + x;
            nBetween += Same(black, nPixel) ? 1 : 0;
            nChanged += Same(black, nPixel) && !Same(noise, nPixel) ? 1 : 0;
        }
    }
    EXPECT_GE(nBetween, 50);
    EXPECT_EQ(nChanged, 0);
}

struct Matrix {
    const char *pName;
    const char *pMatrix;
    const char *pRange;
    const char *pSize;
    int nY;
    int nU;
    int nV;

    friend std::ostream &operator<<(std::ostream &stream, const Matrix &matrix) { return stream << matrix.pName; }
};

class MatrixTest : public SubburnTest, public testing::WithParamInterface<Matrix>
{
};

TEST_P(MatrixTest, ColoursFollowTheStreamsTags)
{
    const Matrix &matrix = GetParam();
    Arguments listArguments = {
        "-f", "lavfi", "-i", std::string("color=gray:s=") + matrix.pSize + ":r=25:d=1,format=yuv420p", "-c:v", "ffv1"};
    if (*matrix.pMatrix != '\0')
        listArguments.insert(listArguments.end(), {"-colorspace", matrix.pMatrix, "-color_range", matrix.pRange});
    const std::string strInput = Clip("in.mkv", listArguments);
    const auto listFrames = Frames(
        Burn(strInput, "out.mkv", {"--codec", "ffv1", "--color", "#ff0000", "--size", "100", "--bold"}), "yuv420p");
    const std::string strSize = matrix.pSize;
    const size_t nPixels = std::stoul(strSize) * std::stoul(strSize.substr(strSize.find('x') + 1));
    const std::string &strFrame = listFrames[12];
    const auto Count = [&](size_t nOffset, size_t nBytes, int nValue) {
        int nCount = 0;
        for (size_t n = nOffset; n < nOffset + nBytes; ++n)
            nCount += std::abs(static_cast<unsigned char>(strFrame[n]) - nValue) <= 1 ? 1 : 0;
        return nCount;
    };
    EXPECT_GT(Count(0, nPixels, matrix.nY), 1000);
    EXPECT_GT(Count(nPixels, nPixels / 4, matrix.nU), 200);
    EXPECT_GT(Count(nPixels + nPixels / 4, nPixels / 4, matrix.nV), 200);
}

INSTANTIATE_TEST_SUITE_P(Matrices, MatrixTest,
                         testing::Values(Matrix{"Bt601", "smpte170m", "tv", "640x360", 81, 90, 240},
                                         Matrix{"Bt709", "bt709", "tv", "640x360", 63, 102, 240},
                                         Matrix{"Bt2020", "bt2020nc", "tv", "640x360", 74, 97, 240},
                                         Matrix{"FullRange", "smpte170m", "pc", "640x360", 76, 85, 255},
                                         Matrix{"UnspecifiedSmall", "", "", "640x360", 81, 90, 240},
                                         Matrix{"UnspecifiedHd", "", "", "960x720", 63, 102, 240}),
                         [](const testing::TestParamInfo<Matrix> &info) { return std::string(info.param.pName); });

TEST_F(SubburnTest, LookFollowsTheOptions)
{
    const std::string strInput =
        Clip("in.mkv", {"-f", "lavfi", "-i", "color=black:s=320x180:r=25:d=1,format=yuv420p", "-c:v", "ffv1"});
    const auto TextOf = [&](const Arguments &listOptions) {
        Arguments listAll = {"--codec", "ffv1"};
        listAll.insert(listAll.end(), listOptions.begin(), listOptions.end());
        return Difference(Frames(strInput, "gray")[12], Frames(Burn(strInput, "out.mkv", listAll), "gray")[12], 320);
    };
    const Bounds usual = TextOf({});
    const Bounds high = TextOf({"--position", "20"});
    EXPECT_NEAR((high.nTop + high.nBottom) / 2.0, 36, 6);
    EXPECT_EQ(high.nRight - high.nLeft, usual.nRight - usual.nLeft);
    const Bounds big = TextOf({"--size", "30"});
    EXPECT_GT(big.nBottom - big.nTop, (usual.nBottom - usual.nTop) * 2);
    const Bounds bold = TextOf({"--bold"});
    EXPECT_GT(bold.nRight - bold.nLeft, usual.nRight - usual.nLeft);
}

TEST_F(SubburnTest, LettersKeepTheirShapeInPixelsThatAreNotSquare)
{
    const auto TextOf = [&](const std::string &strAspect, const Arguments &listOptions) {
        const std::string strInput =
            Clip("in.mkv", {"-f", "lavfi", "-i", "color=black:s=320x180:r=25:d=1,format=yuv420p", "-vf",
                            "setsar=" + strAspect, "-c:v", "ffv1"});
        Arguments listAll = {"--codec", "ffv1"};
        listAll.insert(listAll.end(), listOptions.begin(), listOptions.end());
        return Difference(Frames(strInput, "gray")[12], Frames(Burn(strInput, "out.mkv", listAll), "gray")[12], 320);
    };
    const Bounds square = TextOf("1", {});
    const Bounds wide = TextOf("2", {});
    EXPECT_NEAR(2 * (wide.nRight - wide.nLeft), square.nRight - square.nLeft, 4);
    EXPECT_NEAR(wide.nBottom - wide.nTop, square.nBottom - square.nTop, 1);
    const Bounds exact = TextOf("2", {"--exact"});
    EXPECT_NEAR(exact.nRight - exact.nLeft, square.nRight - square.nLeft, 4);
}

TEST_F(SubburnTest, TheOpacityLetsThePictureThrough)
{
    const std::string strInput =
        Clip("in.mkv", {"-f", "lavfi", "-i", "color=black:s=320x180:r=25:d=1,format=yuv420p", "-c:v", "ffv1"});
    const auto listFull = Frames(Burn(strInput, "full.mkv", {"--codec", "ffv1"}), "yuv420p");
    const auto listHalf = Frames(Burn(strInput, "half.mkv", {"--codec", "ffv1", "--opacity", "128"}), "yuv420p");
    const auto listExact =
        Frames(Burn(strInput, "exact.mkv", {"--codec", "ffv1", "--opacity", "128", "--exact"}), "yuv420p");
    const auto Brightest = [](const std::string &strFrame) {
        int nBrightest = 0;
        for (size_t n = 0; n < 320 * 180; ++n)
            nBrightest = std::max<int>(nBrightest, static_cast<unsigned char>(strFrame[n]));
        return nBrightest;
    };
    EXPECT_NEAR(Brightest(listFull[12]), 235, 2);
    EXPECT_NEAR(Brightest(listHalf[12]), 16 + 219 / 2.0, 2);
    // In the exact look, the library applies the opacity twice.
    EXPECT_NEAR(Brightest(listExact[12]), 16 + 219 / 4.0, 6);
}

TEST_F(SubburnTest, AnEncoderThatLacksTheFormatGetsTheNearest)
{
    const std::string strInput =
        Clip("in.mkv", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=1", "-c:v", "ffv1", "-pix_fmt", "bgr0"});
    const std::string strOutput =
        Burn(strInput, "out.mp4", {"--codec", "libx264", "--crf", "0", "--preset", "ultrafast"});
    EXPECT_EQ(Probe(strOutput, "stream=pix_fmt,color_range,color_space"),
              "pix_fmt=yuv444p\ncolor_range=tv\ncolor_space=smpte170m\n");
    const auto listBefore = Frames(strInput, "rgb24");
    const auto listAfter = Frames(strOutput, "rgb24");
    int nFarthest = 0;
    for (size_t n = 0; n < listBefore[0].size(); ++n)
        nFarthest = std::max(nFarthest, std::abs(static_cast<unsigned char>(listBefore[0][n]) -
                                                 static_cast<unsigned char>(listAfter[0][n])));
    EXPECT_LE(nFarthest, 4);
}

TEST_F(SubburnTest, FramesThatChangeTheirSizeAreBroughtToTheFirst)
{
    const std::string strBig =
        Clip("big.ts", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=1", "-c:v", "mpeg2video"});
    const std::string strSmall = Clip("small.ts", {"-f", "lavfi", "-i", "testsrc2=s=160x96:r=25:d=1", "-c:v",
                                                   "mpeg2video", "-output_ts_offset", "1"});
    std::ofstream(File("in.ts"), std::ios::binary)
        << std::ifstream(strBig, std::ios::binary).rdbuf() << std::ifstream(strSmall, std::ios::binary).rdbuf();
    const std::string strOutput = Burn(File("in.ts"), "out.mkv", {"--preset", "ultrafast"});
    EXPECT_EQ(Probe(strOutput, "stream=width,height"), "width=320\nheight=180\n");
    EXPECT_GT(Frames(strOutput, "gray").size(), 45U);
}
