// Colours on HDR frames, compared with the formulas of the ITU-R recommendations.
#include "support/frameapitest.h"

#include <array>
#include <cmath>
#include <set>

namespace
{

using Rgb = std::array<double, 3>;

/** ITU-R BT.2087, table 2: linear BT.709 to linear BT.2020. */
Rgb ToBt2020(const Rgb &linear)
{
    constexpr double M[3][3] = {{0.6274, 0.3293, 0.0433}, {0.0691, 0.9195, 0.0114}, {0.0164, 0.0880, 0.8956}};
    Rgb result;
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = M[i][0] * linear[0] + M[i][1] * linear[1] + M[i][2] * linear[2];
    return result;
}

Rgb Linear(const std::array<int, 3> &color)
{
    Rgb linear;
    for (std::size_t i = 0; i < 3; ++i) {
        const double value = color[i] / 255.0;
        linear[i] = value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    }
    return linear;
}

double Pq(double level)
{
    const double power = std::pow(level / 10000, 0.1593017578125);
    return std::pow((0.8359375 + 18.8515625 * power) / (1 + 18.6875 * power), 78.84375);
}

double Hlg(double scene)
{
    return scene <= 1.0 / 12 ? std::sqrt(3 * scene) : 0.17883277 * std::log(12 * scene - 0.28466892) + 0.55991073;
}

/** Display light, where 1 is 1,000 cd/m2, to scene light (the inverse OOTF of HLG). */
Rgb ToScene(const Rgb &display)
{
    const double scene = std::pow(0.2627 * display[0] + 0.6780 * display[1] + 0.0593 * display[2], 1 / 1.2);
    const double scale = scene > 0 ? std::pow(scene, -0.2) : 0;
    return {display[0] * scale, display[1] * scale, display[2] * scale};
}

using Codes = std::array<int, 3>;

/** Code values of 10 bits, limited range, BT.2020. */
Codes ToCodes(const Rgb &signal)
{
    const double y = 0.2627 * signal[0] + 0.6780 * signal[1] + 0.0593 * signal[2];
    return {static_cast<int>(std::floor(64 + 876 * y + 0.5)),
            static_cast<int>(std::floor(512 + 896 * (signal[2] - y) / 1.8814 + 0.5)),
            static_cast<int>(std::floor(512 + 896 * (signal[0] - y) / 1.4746 + 0.5))};
}

class FrameHdrTest : public FrameApiTest
{
protected:
    /** Burns a subtitle of one colour into a frame of zeros; returns the code values that the colour has there. */
    Codes Burn(const std::array<int, 3> &color, int transfer, int primaries)
    {
        SetSubtitleFontColor(m_pHandle, color[0], color[1], color[2]);
        SetSubtitleOutlineColor(m_pHandle, color[0], color[1], color[2]);
        PlaneFrame frame = NewFrame("yuv444p10");
        for (int i = 0; i < 3; ++i) {
            for (int n = 0; n < Width * Height; ++n)
                frame.Set(i, n % Width, n / Width, 0);
        }
        frame = Burnt(frame, [&](SubtitleFrame &record) {
            record.colorspace = AVCOL_SPC_BT2020_NCL;
            record.color_trc = transfer;
            record.color_primaries = primaries;
        });
        std::set<Codes> codes;
        for (int n = 0; n < Width * Height; ++n)
            codes.insert({frame.Get(0, n % Width, n / Width), frame.Get(1, n % Width, n / Width),
                          frame.Get(2, n % Width, n / Width)});
        EXPECT_EQ(codes.size(), 2U); // the colour's, and the zeros of uncovered pixels
        return *codes.rbegin();
    }

    /**
     * Burns into the least and into the greatest samples. Their difference gives the coverage of each pixel, and that
     * must be the share of the colour.
     */
    void ExpectCovered(const std::array<int, 3> &color, int transfer, const Codes &code)
    {
        SetSubtitleFontColor(m_pHandle, color[0], color[1], color[2]);
        SetSubtitleOutlineColor(m_pHandle, color[0], color[1], color[2]);
        const auto burnt = [&](int below) {
            PlaneFrame frame = NewFrame("yuv444p10");
            for (int i = 0; i < 3 * Width * Height; ++i)
                frame.Set(i % 3, i / 3 % Width, i / 3 / Width, below);
            return Burnt(frame, [&](SubtitleFrame &record) {
                record.colorspace = AVCOL_SPC_BT2020_NCL;
                record.color_trc = transfer;
                record.color_primaries = AVCOL_PRI_BT2020;
            });
        };
        constexpr int Max = 1023;
        const PlaneFrame onZero = burnt(0);
        const PlaneFrame onMost = burnt(Max);
        int partly = 0;
        int whole = 0;
        for (int n = 0; n < Width * Height; ++n) {
            for (int i = 0; i < 3; ++i) {
                const int low = onZero.Get(i, n % Width, n / Width);
                const int high = onMost.Get(i, n % Width, n / Width);
                const double covered = 1 - static_cast<double>(high - low) / Max;
                // In code values: 1 for the rounding of the colour, 0.5 for that of each of three results.
                EXPECT_NEAR(low, covered * code[i], 2.5) << i;
                partly += covered > 0 && covered < 1;
                whole += covered == 1;
            }
        }
        EXPECT_GT(partly, 100);
        EXPECT_GT(whole, 100);
    }

    static void ExpectNear(const Codes &codes, const Codes &expected)
    {
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(codes[i], expected[i], 1) << i;
    }
};

constexpr std::array<int, 3> White = {255, 255, 255};
constexpr std::array<int, 3> Colors[] = {{255, 0, 0},    {0, 255, 0},     {0, 0, 255},
                                         {250, 200, 30}, {128, 128, 128}, {9, 9, 9}};

} // namespace

TEST_F(FrameHdrTest, WhiteIsReferenceWhite)
{
    // ITU-R BT.2408, table 1: 58 % of PQ and 75 % of HLG.
    EXPECT_EQ(Burn(White, AVCOL_TRC_SMPTE2084, AVCOL_PRI_BT2020), (Codes{573, 512, 512}));
    EXPECT_EQ(Burn(White, AVCOL_TRC_ARIB_STD_B67, AVCOL_PRI_BT2020), (Codes{721, 512, 512}));
    EXPECT_EQ(Burn(White, AVCOL_TRC_SMPTE2084, AVCOL_PRI_SMPTE432), (Codes{573, 512, 512}));
    EXPECT_EQ(Burn(White, AVCOL_TRC_BT709, AVCOL_PRI_BT2020), (Codes{940, 512, 512}));
}

TEST_F(FrameHdrTest, ColoursAreMappedToThePrimaries)
{
    for (const auto &color : Colors) {
        Rgb pq = ToBt2020(Linear(color));
        Rgb hlg = pq;
        for (double &value : pq)
            value = Pq(203 * value);
        for (double &value : hlg)
            value *= 0.203;
        hlg = ToScene(hlg);
        for (double &value : hlg)
            value = Hlg(value);
        ExpectNear(Burn(color, AVCOL_TRC_SMPTE2084, AVCOL_PRI_BT2020), ToCodes(pq));
        ExpectNear(Burn(color, AVCOL_TRC_ARIB_STD_B67, AVCOL_PRI_UNSPECIFIED), ToCodes(hlg));
        Rgb unmapped = Linear(color);
        for (double &value : unmapped)
            value = Pq(203 * value);
        ExpectNear(Burn(color, AVCOL_TRC_SMPTE2084, AVCOL_PRI_BT709), ToCodes(unmapped));
    }
}

TEST_F(FrameHdrTest, TheLevelOfWhiteCanBeSet)
{
    for (const double level : {0.0, 0.99, -1.0, 10000.5, std::nan("")})
        EXPECT_EQ(SetSubtitleBurnerWhite(m_pBurner, level), -1);
    EXPECT_EQ(Burn(White, AVCOL_TRC_SMPTE2084, AVCOL_PRI_BT2020), (Codes{573, 512, 512}));
    for (const double level : {1.0, 100.0, 1000.0, 10000.0}) {
        EXPECT_EQ(SetSubtitleBurnerWhite(m_pBurner, level), 0);
        const double signal = Pq(level);
        EXPECT_EQ(Burn(White, AVCOL_TRC_SMPTE2084, AVCOL_PRI_BT2020), ToCodes({signal, signal, signal})) << level;
    }
    // 10,000 cd/m2 are beyond the range of HLG.
    EXPECT_EQ(Burn(White, AVCOL_TRC_ARIB_STD_B67, AVCOL_PRI_BT2020), (Codes{940, 512, 512}));
    EXPECT_EQ(Burn(White, AVCOL_TRC_BT2020_10, AVCOL_PRI_BT2020), (Codes{940, 512, 512}));
}

TEST_F(FrameHdrTest, TheNaturalLookHasTheSameColours)
{
    EXPECT_EQ(SetSubtitleBurnerLook(m_pBurner, SUBTITLE_LOOK_NATURAL), 0);
    for (const auto &color : Colors) {
        for (const int transfer : {AVCOL_TRC_SMPTE2084, AVCOL_TRC_ARIB_STD_B67}) {
            const bool isPq = transfer == AVCOL_TRC_SMPTE2084;
            Rgb signal = ToBt2020(Linear(color));
            for (double &value : signal)
                value = isPq ? Pq(203 * value) : 0.203 * value;
            if (!isPq) {
                signal = ToScene(signal);
                for (double &value : signal)
                    value = Hlg(value);
            }
            ExpectCovered(color, transfer, ToCodes(signal));
        }
    }
    ExpectCovered(White, AVCOL_TRC_SMPTE2084, {573, 512, 512});
    ExpectCovered(White, AVCOL_TRC_ARIB_STD_B67, {721, 512, 512});
}
