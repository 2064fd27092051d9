// Burnt frames of every format, compared with the definitions computed sample by sample in doubles.
#include "frames/libsubtitleframe.h"
#include "support/frameoracle.h"
#include "support/paintoracle.h"
#include "support/pictureunit.h"
#include "support/temporaryfolder.h"
#include "support/videosubtitlepeer.h"
#include "support/vobsubpair.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>

namespace
{

const char *const Formats[] = {
    "yuv420p",     "yuv422p",     "yuv444p",     "yuvj420p",    "yuvj422p",  "yuvj444p", "yuva420p",    "yuva422p",
    "yuva444p",    "nv12",        "nv21",        "nv16",        "yuyv422",   "uyvy422",  "yuv420p10le", "yuv422p10le",
    "yuv444p10le", "yuv420p12le", "yuv422p12le", "yuv444p12le", "p010le",    "gray",     "gray10le",    "gbrp",
    "gbrp10le",    "rgb24",       "bgr24",       "rgba",        "bgra",      "argb",     "abgr",        "rgb0",
    "bgr0",        "0rgb",        "0bgr",        "rgb48le",     "x2rgb10le",
};
const int Matrices[] = {AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT709, AVCOL_SPC_BT2020_NCL};
const int Ranges[] = {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG};
const int Opacities[] = {0, 1, 128, 254, 255};

/** A renderer that shows a subtitle, and a burner for it. */
class Shown
{
public:
    Shown(int width, int height, const char *text, int pointSize) : m_nWidth(width), m_nHeight(height), m_pText(text)
    {
        m_renderer.CreateVideoSubtitle(width, height);
        m_renderer.SetFontParam("DejaVu Sans", pointSize, SUBTITLE_STYLE_BOLD);
        m_renderer.SetSubFontColor(250, 200, 30);
        m_renderer.SetSubOutlineColor(1, 20, 60, 130);
        const std::string cue = std::string("00:00:01,000 --> 00:00:02,000\n") + text + "\n";
        EXPECT_EQ(m_renderer.SetSubtitleFile(m_folder.Write("cue.srt", cue).c_str(), 0), 0);
        m_renderer.SetLogoPos(60);
        m_renderer.SetTimeStamp(1500);
    }
    /** A picture instead of text. */
    Shown(int width, int height, const VobSubPair &pair) : m_nWidth(width), m_nHeight(height)
    {
        m_renderer.CreateVideoSubtitle(width, height);
        EXPECT_EQ(m_renderer.SetSubtitleFile(pair.Write(m_folder).c_str(), 0), 0);
        m_renderer.SetTimeStamp(1500);
    }
    ~Shown() { DestroySubtitleBurner(m_pBurner); }
    Shown(const Shown &) = delete;
    Shown &operator=(const Shown &) = delete;

    PlainSubtitle Plain()
    {
        const int percent = m_peer.LogoPos() * m_nHeight / 100;
        if (m_pText) {
            const PlainText plain =
                PaintTextPlainly({*m_peer.Font(), m_peer.FontColor(), m_peer.OutlineColor(), m_peer.Outline()},
                                 m_nWidth, m_nHeight, QString::fromUtf8(m_pText));
            return PlainSubtitle({plain.image.constBits(), plain.rcText.x(), plain.rcText.y(), plain.rcText.width(),
                                  plain.rcText.height(), m_nWidth, m_nHeight, m_peer.Alpha(),
                                  percent - plain.nTextHeight / 2});
        }
        EXPECT_EQ(m_renderer.ProcessFrame(&m_anyPicture), 0);
        const QRect rect = m_peer.Rect();
        return PlainSubtitle({m_peer.Image()->constBits(), rect.x(), rect.y(), rect.width(), rect.height(), m_nWidth,
                              m_nHeight, m_peer.Alpha(), percent - m_peer.AnchorOffset()});
    }

    VideoSubtitle &Renderer() { return m_renderer; }
    void *Burner() { return m_pBurner; }

private:
    int m_nWidth, m_nHeight;
    const char *m_pText = nullptr;
    TemporaryFolder m_folder;
    VideoSubtitle m_renderer;
    VideoSubtitlePeer m_peer{m_renderer};
    void *m_pBurner = CreateSubtitleBurner(&m_renderer);
    std::vector<std::uint8_t> m_listAny = std::vector<std::uint8_t>(std::size_t{3} * m_nWidth * m_nHeight);
    AVPicture m_anyPicture = {{m_listAny.data()}, {3 * m_nWidth}};
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

SubtitleFrame FrameOf(PlaneFrame &planes, const Description &description)
{
    SubtitleFrame frame = planes.Frame();
    frame.colorspace = description.nMatrix;
    frame.color_range = description.nRange;
    frame.chroma_location = description.nLocation;
    frame.interlaced = description.nInterlaced;
    frame.orientation = description.nOrientation;
    return frame;
}

/** Greatest error of a mixed sample in code values. It is rounded, and so are the values that it is mixed from. */
double Tolerance(const PlaneFrame &frame, int component)
{
    const AVPixFmtDescriptor &format = frame.Description();
    const int depth = format.comp[component].depth;
    const bool isTruncated = (format.flags & AV_PIX_FMT_FLAG_RGB) && depth == 8;
    return isTruncated ? 1 : 0.5 + 0.04 * (1 << (depth - 8));
}

/** Burns into a frame and compares every byte with the expected one. Returns whether anything changed. */
bool ExpectAsPlain(Shown &shown, const PlainSubtitle &subtitle, const Description &description)
{
    const auto format = static_cast<AVPixelFormat>(SubtitlePixelFormat(description.pFormat));
    const bool isTransposed = description.nOrientation & SUBTITLE_ORIENTATION_TRANSPOSED;
    const int width = isTransposed ? subtitle.Height() : subtitle.Width();
    const int height = isTransposed ? subtitle.Width() : subtitle.Height();
    PlaneFrame frame(format, width, height, description.bBottomUp);
    PlaneFrame expected = frame;
    const PlaneFrame before = frame;
    const SubtitleFrame record = FrameOf(frame, description);
    EXPECT_EQ(BurnSubtitle(shown.Burner(), &record), 0);
    SubtitleFrame literal = record;
    if (std::string(description.pFormat).rfind("yuvj", 0) == 0)
        literal.color_range = AVCOL_RANGE_JPEG;
    const FrameOracle oracle(before, literal, subtitle);
    double worst = 0;
    for (int i = 0; i < frame.Description().nb_components; ++i) {
        for (int y = 0; y < frame.Height(i); ++y) {
            for (int x = 0; x < frame.Width(i); ++x) {
                const PlainSample sample = oracle.Sample(i, x, y);
                if (!sample.bTouched)
                    continue;
                if (subtitle.IsOpaque()) {
                    expected.Set(i, x, y, static_cast<int>(std::floor(sample.value + 0.5)));
                } else {
                    worst = std::max(worst, std::abs(sample.value - frame.Get(i, x, y)) / Tolerance(frame, i));
                    expected.Set(i, x, y, frame.Get(i, x, y));
                }
            }
        }
    }
    EXPECT_LE(worst, 1);
    EXPECT_TRUE(frame.Bytes() == expected.Bytes());
    if (testing::Test::HasFailure())
        ADD_FAILURE() << description.pFormat << " " << width << "x" << height << " matrix " << description.nMatrix
                      << " range " << description.nRange << " location " << description.nLocation << " interlaced "
                      << description.nInterlaced << " orientation " << description.nOrientation << " opaque "
                      << subtitle.IsOpaque();
    return frame.Bytes() != before.Bytes();
}

} // namespace

class FrameBurnerFormats : public testing::TestWithParam<const char *>
{
protected:
    /** A frame changes if the subtitle shows anything. At opacity 1 pictures do not, and grey formats do not change. */
    static void ExpectDrawn(bool isDrawn, const PlainSubtitle &subtitle, int opacity)
    {
        EXPECT_TRUE(subtitle.Shows() || opacity <= 1);
        const bool isGrey = std::string(GetParam()).rfind("gray", 0) == 0;
        EXPECT_EQ(isDrawn, subtitle.Shows() && !(isGrey && opacity == 1));
    }
};

TEST_P(FrameBurnerFormats, EveryMatrixRangeAndChromaPositionIsAsPlain)
{
    Shown shown(50, 38, "Wg", 14);
    for (const int opacity : Opacities) {
        shown.Renderer().SetAlpah(static_cast<uchar>(opacity));
        const PlainSubtitle subtitle = shown.Plain();
        for (const int matrix : Matrices) {
            for (const int range : Ranges) {
                for (int location = AVCHROMA_LOC_LEFT; location < AVCHROMA_LOC_NB; ++location) {
                    for (const int interlaced : {0, 1}) {
                        const bool isDrawn = ExpectAsPlain(
                            shown, subtitle, {GetParam(), matrix, range, location, interlaced, 0, interlaced == 1});
                        ExpectDrawn(isDrawn, subtitle, opacity);
                        ASSERT_FALSE(HasFailure());
                    }
                }
            }
        }
    }
}

TEST_P(FrameBurnerFormats, EveryOrientationIsAsPlain)
{
    Shown shown(45, 32, "Rg", 14);
    for (const int opacity : {128, 255}) {
        shown.Renderer().SetAlpah(static_cast<uchar>(opacity));
        const PlainSubtitle subtitle = shown.Plain();
        for (int orientation = 0; orientation < 8; ++orientation) {
            for (const int interlaced : {0, 1}) {
                ASSERT_TRUE(ExpectAsPlain(
                    shown, subtitle,
                    {GetParam(), AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, AVCHROMA_LOC_LEFT, interlaced, orientation}));
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

TEST_P(FrameBurnerFormats, OddSizesAreAsPlain)
{
    int drawn = 0;
    for (int width = 1; width <= 9; ++width) {
        for (int height = 1; height <= 9; ++height) {
            Shown shown(width, height, "W", 9);
            for (const int opacity : {128, 255}) {
                shown.Renderer().SetAlpah(static_cast<uchar>(opacity));
                const PlainSubtitle subtitle = shown.Plain();
                for (const int interlaced : {0, 1}) {
                    for (const int location : {AVCHROMA_LOC_LEFT, AVCHROMA_LOC_CENTER, AVCHROMA_LOC_BOTTOM}) {
                        drawn += ExpectAsPlain(
                            shown, subtitle,
                            {GetParam(), AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG, location, interlaced, 0, height == 3});
                        ASSERT_FALSE(HasFailure());
                    }
                }
            }
        }
    }
    EXPECT_GT(drawn, 100);
}

TEST_P(FrameBurnerFormats, PicturesAreAsPlain)
{
    const VobSubPair pair(60, 40, {{1000, PictureUnit::Filled(7, 5, 41, 22).Encode(), {}}});
    Shown shown(60, 40, pair);
    for (const int opacity : Opacities) {
        shown.Renderer().SetAlpah(static_cast<uchar>(opacity));
        const PlainSubtitle subtitle = shown.Plain();
        for (const int range : Ranges) {
            const bool isDrawn = ExpectAsPlain(shown, subtitle, {GetParam(), AVCOL_SPC_BT709, range});
            ExpectDrawn(isDrawn, subtitle, opacity);
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(FrameBurnerFormats, ColourEmojiAreAsPlain)
{
    Shown shown(60, 40, "\xF0\x9F\x98\x80", 16);
    for (const int opacity : Opacities) {
        shown.Renderer().SetAlpah(static_cast<uchar>(opacity));
        const PlainSubtitle subtitle = shown.Plain();
        const bool isDrawn = ExpectAsPlain(shown, subtitle, {GetParam(), AVCOL_SPC_BT2020_NCL});
        ExpectDrawn(isDrawn, subtitle, opacity);
        ASSERT_FALSE(HasFailure());
    }
}

INSTANTIATE_TEST_SUITE_P(All, FrameBurnerFormats, testing::ValuesIn(Formats),
                         [](const auto &info) { return std::string(info.param); });
