// Frames of every format burnt in the natural look, compared with its definition computed sample by sample in doubles.
#include "frames/blendlists.h"
#include "frames/libsubtitleframe.h"
#include "support/callingvisitor.h"
#include "support/naturaloracle.h"
#include "support/pictureunit.h"
#include "support/subtitlemuxer.h"
#include "support/temporaryfolder.h"
#include "support/vobsubpair.h"

#include "render/videosubtitle.h"

#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace
{

const char *const Formats[] = {
    "yuv420p",     "yuv422p",     "yuv444p",     "yuvj420p",    "yuvj422p",  "yuvj444p", "yuva420p",    "yuva422p",
    "yuva444p",    "nv12",        "nv21",        "nv16",        "yuyv422",   "uyvy422",  "yuv420p10le", "yuv422p10le",
    "yuv444p10le", "yuv420p12le", "yuv422p12le", "yuv444p12le", "p010le",    "gray",     "gray10le",    "gbrp",
    "gbrp10le",    "rgb24",       "bgr24",       "rgba",        "bgra",      "argb",     "abgr",        "rgb0",
    "bgr0",        "0rgb",        "0bgr",        "rgb48le",     "x2rgb10le",
};

using Visitor = CallingVisitor<NaturalVisitor, NaturalSubtitle>;

/** A renderer that shows a subtitle, and a burner for it in the natural look. */
class Shown
{
public:
    Shown(int width, int height, const std::string &text, int pointSize)
    {
        m_renderer.CreateVideoSubtitle(width, height);
        m_renderer.SetFontParam("DejaVu Sans", pointSize, SUBTITLE_STYLE_BOLD);
        m_renderer.SetSubFontColor(250, 200, 30);
        m_renderer.SetSubOutlineColor(1, 20, 60, 130);
        const std::string cue = "00:00:01,000 --> 00:00:02,000\n" + text + "\n";
        EXPECT_EQ(m_renderer.SetSubtitleFile(m_folder.Write("cue.srt", cue).c_str(), 0), 0);
        Start(40);
    }
    /** Pictures instead of text. */
    Shown(int width, int height, const std::string &file)
    {
        m_renderer.CreateVideoSubtitle(width, height);
        EXPECT_EQ(m_renderer.SetSubtitleFile(file.c_str(), 0), 0);
        Start(85);
    }
    ~Shown() { DestroySubtitleBurner(m_pBurner); }
    Shown(const Shown &) = delete;
    Shown &operator=(const Shown &) = delete;

    PlainNatural Plain()
    {
        std::optional<PlainNatural> plain;
        Visitor visitor([&](const NaturalSubtitle &shown) { plain.emplace(shown); });
        EXPECT_EQ(m_renderer.VisitNatural({20, 0}, visitor), 0);
        return *plain;
    }

    VideoSubtitle &Renderer() { return m_renderer; }
    void *Burner() { return m_pBurner; }

private:
    void Start(int position)
    {
        m_renderer.SetLogoPos(position);
        m_renderer.SetTimeStamp(1500);
        // A wide outline, and no safe area: these frames have few rows.
        EXPECT_EQ(SetSubtitleBurnerLook(m_pBurner, SUBTITLE_LOOK_NATURAL), 0);
        EXPECT_EQ(SetSubtitleBurnerOutline(m_pBurner, 20), 0);
        EXPECT_EQ(SetSubtitleBurnerSafeArea(m_pBurner, 0), 0);
    }

    TemporaryFolder m_folder;
    VideoSubtitle m_renderer;
    void *m_pBurner = CreateSubtitleBurner(&m_renderer);
};

struct Description {
    const char *pFormat;
    int nMatrix = AVCOL_SPC_BT709;
    int nRange = AVCOL_RANGE_MPEG;
    int nLocation = AVCHROMA_LOC_LEFT;
    int nInterlaced = 0;
    int nOrientation = SUBTITLE_ORIENTATION_UPRIGHT;
    bool bBottomUp = false;
};

/** Burns into a frame and compares every byte with the expected one. Returns whether anything changed. */
bool ExpectAsPlain(Shown &shown, const PlainNatural &subtitle, const Description &description)
{
    const auto format = static_cast<AVPixelFormat>(SubtitlePixelFormat(description.pFormat));
    const bool isTransposed = description.nOrientation & SUBTITLE_ORIENTATION_TRANSPOSED;
    PlaneFrame frame(format, isTransposed ? subtitle.nHeight : subtitle.nWidth,
                     isTransposed ? subtitle.nWidth : subtitle.nHeight, description.bBottomUp);
    const PlaneFrame before = frame;
    PlaneFrame expected = frame;
    SubtitleFrame record = frame.Frame();
    record.colorspace = description.nMatrix;
    record.color_range = description.nRange;
    record.chroma_location = description.nLocation;
    record.interlaced = description.nInterlaced;
    record.orientation = description.nOrientation;
    EXPECT_EQ(BurnSubtitle(shown.Burner(), &record), 0);
    if (std::string(description.pFormat).rfind("yuvj", 0) == 0)
        record.color_range = AVCOL_RANGE_JPEG;
    const NaturalOracle oracle(before, record, subtitle);
    double worst = 0; // in code values of 8 bits
    for (int i = 0; i < frame.Description().nb_components; ++i) {
        const double step = std::ldexp(1, frame.Description().comp[i].depth - 8);
        for (int y = 0; y < frame.Height(i); ++y) {
            for (int x = 0; x < frame.Width(i); ++x) {
                const PlainSample sample = oracle.Sample(i, x, y);
                if (!sample.bTouched)
                    continue;
                worst = std::max(worst, std::abs(sample.value - frame.Get(i, x, y)) / step);
                expected.Set(i, x, y, frame.Get(i, x, y));
            }
        }
    }
    EXPECT_LE(worst, 0.8);
    EXPECT_TRUE(frame.Bytes() == expected.Bytes()) << "something else was written to";
    if (testing::Test::HasFailure())
        ADD_FAILURE() << description.pFormat << " " << subtitle.nWidth << "x" << subtitle.nHeight << " matrix "
                      << description.nMatrix << " range " << description.nRange << " location " << description.nLocation
                      << " interlaced " << description.nInterlaced << " orientation " << description.nOrientation
                      << " opacity " << subtitle.nOpacity;
    return frame.Bytes() != before.Bytes();
}

} // namespace

class NaturalFrameFormats : public testing::TestWithParam<const char *>
{
};

TEST_P(NaturalFrameFormats, EveryMatrixRangeAndChromaPositionIsAsPlain)
{
    Shown shown(50, 38, "Wg", 14);
    for (const int opacity : {1, 128, 255}) {
        shown.Renderer().SetAlpah(static_cast<uchar>(opacity));
        const PlainNatural subtitle = shown.Plain();
        for (const int matrix : {AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT709, AVCOL_SPC_BT2020_NCL}) {
            for (const int range : {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG}) {
                for (int location = AVCHROMA_LOC_LEFT; location < AVCHROMA_LOC_NB; ++location) {
                    for (const int interlaced : {0, 1}) {
                        EXPECT_TRUE(
                            ExpectAsPlain(shown, subtitle,
                                          {GetParam(), matrix, range, location, interlaced, 0, interlaced == 1}) ||
                            opacity == 1);
                        ASSERT_FALSE(HasFailure());
                    }
                }
            }
        }
    }
}

TEST_P(NaturalFrameFormats, EveryOrientationIsAsPlain)
{
    Shown shown(45, 32, "Rg \xF0\x9F\xA6\x8A", 9);
    const PlainNatural subtitle = shown.Plain();
    EXPECT_FALSE(subtitle.picture.IsEmpty()) << "a colour glyph";
    for (int orientation = 0; orientation < 8; ++orientation) {
        for (const int interlaced : {0, 1}) {
            ASSERT_TRUE(ExpectAsPlain(
                shown, subtitle,
                {GetParam(), AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, AVCHROMA_LOC_LEFT, interlaced, orientation}));
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(NaturalFrameFormats, OddSizesAreAsPlain)
{
    int drawn = 0;
    for (int width = 1; width <= 9; ++width) {
        for (int height = 1; height <= 9; ++height) {
            Shown shown(width, height, "W", 9);
            for (const int opacity : {128, 255}) {
                shown.Renderer().SetAlpah(static_cast<uchar>(opacity));
                const PlainNatural subtitle = shown.Plain();
                for (const int location : {AVCHROMA_LOC_LEFT, AVCHROMA_LOC_CENTER, AVCHROMA_LOC_BOTTOM}) {
                    drawn += ExpectAsPlain(
                        shown, subtitle,
                        {GetParam(), AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG, location, opacity == 128, 0, height == 3});
                    ASSERT_FALSE(HasFailure());
                }
            }
        }
    }
    EXPECT_GT(drawn, 100);
}

TEST_P(NaturalFrameFormats, PicturesAreAsPlain)
{
    PictureUnit unit = PictureUnit::Filled(7, 5, 41, 22);
    for (std::size_t i = 0; i < unit.listPixels.size(); ++i)
        unit.listPixels[i] = static_cast<std::uint8_t>(i / 5 % 4);
    unit.nContrasts = 0xF8A3;
    VobSubPair pair(60, 40, {{1000, unit.Encode(), {}}});
    pair.palette[0] = 0xFFFF00;
    pair.palette[1] = 0x00FF40;
    const TemporaryFolder folder;
    Shown shown(91, 63, pair.Write(folder));
    for (const int opacity : {1, 128, 255}) {
        shown.Renderer().SetAlpah(static_cast<uchar>(opacity));
        const PlainNatural subtitle = shown.Plain();
        EXPECT_FALSE(subtitle.picture.IsEmpty());
        for (const int range : {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG}) {
            EXPECT_TRUE(ExpectAsPlain(shown, subtitle, {GetParam(), AVCOL_SPC_BT709, range}) || opacity == 1);
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(NaturalFrameFormats, SeveralPicturesAtOnceAreAsPlain)
{
    const auto picture = [](int x, int y, unsigned contrasts) {
        PictureUnit unit = PictureUnit::Filled(x, y, 31, 22);
        for (std::size_t i = 0; i < unit.listPixels.size(); ++i)
            unit.listPixels[i] = static_cast<std::uint8_t>(i / 7 % 4);
        unit.nContrasts = contrasts;
        const std::vector<std::uint8_t> bytes = unit.Encode();
        return std::string(bytes.begin(), bytes.end());
    };
    const TemporaryFolder folder;
    const std::string file = (folder.Path() / "a.mkv").string();
    MuxSubtitles(
        file, {"dvd_subtitle"}, {{0, 1000, 2000, picture(3, 5, 0xF8A3)}, {0, 1200, 2000, picture(21, 14, 0x6F3C)}},
        1000,
        "size: 60x40\npalette: ffff00, 00ff40, 3060ff, ff2080, 000000, 000000, 000000, 000000, 000000, 000000, "
        "000000, 000000, 000000, 000000, 000000, 000000\n");
    Shown shown(91, 63, file);
    for (const int opacity : {128, 255}) {
        shown.Renderer().SetAlpah(static_cast<uchar>(opacity));
        const PlainNatural subtitle = shown.Plain();
        EXPECT_GT(subtitle.picture.nColumns, 60) << "both";
        EXPECT_TRUE(ExpectAsPlain(shown, subtitle, {GetParam(), AVCOL_SPC_BT709, AVCOL_RANGE_MPEG}));
        ASSERT_FALSE(HasFailure());
    }
}

INSTANTIATE_TEST_SUITE_P(All, NaturalFrameFormats, testing::ValuesIn(Formats),
                         [](const auto &info) { return std::string(info.param); });

TEST(NaturalFrame, NothingIsDueAtOpacity0)
{
    Shown shown(60, 40, "text", 9);
    EXPECT_EQ(IsSubtitleDue(shown.Burner()), 1);
    shown.Renderer().SetAlpah(0);
    EXPECT_EQ(IsSubtitleDue(shown.Burner()), 0);
    shown.Renderer().SetAlpah(1);
    EXPECT_EQ(IsSubtitleDue(shown.Burner()), 1);
    shown.Renderer().SetTimeStamp(2500);
    EXPECT_EQ(IsSubtitleDue(shown.Burner()), 0);
}

TEST(NaturalFrame, SettersRefuseWhatIsOutOfRange)
{
    Shown shown(60, 40, "text", 9);
    for (const int look : {-1, 2})
        EXPECT_EQ(SetSubtitleBurnerLook(shown.Burner(), look), -1);
    for (const double width : {-0.1, 20.1, std::nan("")})
        EXPECT_EQ(SetSubtitleBurnerOutline(shown.Burner(), width), -1);
    for (const double percent : {-0.1, 25.1, std::nan("")})
        EXPECT_EQ(SetSubtitleBurnerSafeArea(shown.Burner(), percent), -1);
    for (const auto &[width, height] : {std::pair(0, 1), {1, 0}, {-1, -1}, {101, 10}, {10, 101}})
        EXPECT_EQ(SetSubtitleBurnerPixelAspect(shown.Burner(), width, height), -1);
    EXPECT_EQ(SetSubtitleBurnerPixelAspect(nullptr, 1, 1), -1);
    for (const auto &[width, height] : {std::pair(INT_MAX, INT_MAX), {100, 10}, {10, 100}})
        EXPECT_EQ(SetSubtitleBurnerPixelAspect(shown.Burner(), width, height), 0);
    EXPECT_EQ(SetSubtitleBurnerLook(nullptr, SUBTITLE_LOOK_NATURAL), -1);
    EXPECT_EQ(SetSubtitleBurnerOutline(nullptr, 2), -1);
    EXPECT_EQ(SetSubtitleBurnerSafeArea(nullptr, 2.5), -1);
    EXPECT_EQ(SetSubtitleBurnerOutline(shown.Burner(), 0), 0);
    EXPECT_EQ(SetSubtitleBurnerSafeArea(shown.Burner(), 25), 0);
}

TEST(NaturalFrame, LooksTakeTurns)
{
    Shown shown(120, 80, "text", 14);
    const auto burnt = [&](int look) {
        PlaneFrame frame(AV_PIX_FMT_YUV420P, 120, 80);
        const SubtitleFrame record = frame.Frame();
        EXPECT_EQ(SetSubtitleBurnerLook(shown.Burner(), look), 0);
        EXPECT_EQ(BurnSubtitle(shown.Burner(), &record), 0);
        return frame.Bytes();
    };
    const auto exact = burnt(SUBTITLE_LOOK_EXACT);
    const auto natural = burnt(SUBTITLE_LOOK_NATURAL);
    EXPECT_TRUE(exact != natural);
    EXPECT_TRUE(burnt(SUBTITLE_LOOK_EXACT) == exact);
    EXPECT_TRUE(burnt(SUBTITLE_LOOK_NATURAL) == natural);
}

TEST(BlendBytes, AllKernelsGiveTheSameBytes)
{
    std::mt19937 random(3);
    constexpr int Width = 333;
    for (int round = 0; round < 200; ++round) {
        ByteBlend blend;
        for (int row = 0; row < 4; ++row) {
            const int first = static_cast<int>(random() % Width);
            const int count = static_cast<int>(random() % (Width - first)) + 1;
            const std::size_t at = blend.Add(row, first, count);
            for (int i = 0; i < count; ++i) {
                blend.listRests[at + i] = static_cast<std::uint8_t>(random());
                // Keeps base + 255 * rest below 65,535.
                blend.listBases[at + i] =
                    static_cast<std::uint16_t>(random() % (65535 - 255 * blend.listRests[at + i]));
            }
        }
        std::vector<std::uint8_t> bytes(std::size_t{4} * (Width + 9));
        for (auto &byte : bytes)
            byte = static_cast<std::uint8_t>(random());
        std::vector<std::uint8_t> others = bytes;
        PortableBlendBytes().Blend({bytes.data(), Width + 9, Width}, blend);
        BestBlendBytes().Blend({others.data(), Width + 9, Width}, blend);
        ASSERT_TRUE(bytes == others);
    }
}
