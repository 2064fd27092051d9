// What a renderer shows in the natural look: scaled pictures in their colours, and when it repaints.
#include "render/naturalpicture.h"
#include "render/videosubtitle.h"
#include "support/callingvisitor.h"
#include "support/pictureunit.h"
#include "support/temporaryfolder.h"
#include "support/vobsubpair.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace
{

using Visitor = CallingVisitor<NaturalVisitor, NaturalSubtitle>;

double Cubic(double x)
{
    constexpr double B = 0;
    constexpr double C = 0.5;
    x = std::abs(x);
    if (x < 1)
        return ((12 - 9 * B - 6 * C) * x * x * x + (-18 + 12 * B + 6 * C) * x * x + 6 - 2 * B) / 6;
    if (x < 2)
        return ((-B - 6 * C) * x * x * x + (6 * B + 30 * C) * x * x + (-12 * B - 48 * C) * x + 8 * B + 24 * C) / 6;
    return 0;
}

/** The scaler's weights of the canvas's pixels for one pixel of the frame, along one axis. */
std::vector<double> SharesAt(int pixel, int canvas, int frame)
{
    const double scale = static_cast<double>(canvas) / frame;
    const double stretch = std::max(1.0, scale);
    const double centre = (pixel + 0.5) * scale - 0.5;
    std::vector<double> shares(canvas);
    double sum = 0;
    for (int i = -20; i < canvas + 20; ++i) {
        const double share = Cubic((i - centre) / stretch);
        sum += share;
        if (i >= 0 && i < canvas)
            shares[i] = share;
    }
    for (double &share : shares)
        share /= sum;
    return shares;
}

/** Expected alpha and premultiplied red, green and blue at a position of the frame, 0 to 255. */
std::array<double, 4> ScaledAt(const ColorPicture &picture, int x, int y, int width, int height)
{
    const std::vector<double> columns = SharesAt(x, picture.nCanvasWidth, width);
    const std::vector<double> rows = SharesAt(y, picture.nCanvasHeight, height);
    std::array<double, 4> sum = {};
    for (int row = 0; row < picture.nRows; ++row) {
        for (int column = 0; column < picture.nColumns; ++column) {
            const std::uint32_t pixel = picture.listPixels[static_cast<std::size_t>(row) * picture.nColumns + column];
            const double share = columns[picture.nLeft + column] * rows[picture.nTop + row];
            const double alpha = pixel >> 24;
            sum[0] += share * alpha;
            for (int i = 1; i < 4; ++i)
                sum[i] += share * (pixel >> (24 - 8 * i) & 255) * alpha / 255;
        }
    }
    sum[0] = std::min(255.0, std::max(0.0, sum[0]));
    for (int i = 1; i < 4; ++i)
        sum[i] = std::min(sum[0], std::max(0.0, sum[i]));
    return sum;
}

void ExpectAsPlain(const ColorPicture &picture, int width, int height, int offset)
{
    const ScaledPicture scaled = ScalePicture(picture, width, height, offset);
    const FrameArea &area = scaled.area;
    EXPECT_GE(area.nLeft, 0);
    EXPECT_GE(area.nTop, 0);
    EXPECT_LE(area.nLeft + area.nColumns, width);
    EXPECT_LE(area.nTop + area.nRows, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool isInside =
                x >= area.nLeft && x < area.nLeft + area.nColumns && y >= area.nTop && y < area.nTop + area.nRows;
            const std::uint32_t pixel =
                isInside ? scaled.listPixels[static_cast<std::size_t>(y - area.nTop) * area.nColumns + (x - area.nLeft)]
                         : 0;
            const std::array<double, 4> plain = ScaledAt(picture, x, y - offset, width, height);
            const double alpha = pixel >> 24;
            ASSERT_NEAR(alpha, plain[0], 0.51) << x << " " << y;
            for (int i = 1; i < 4; ++i)
                ASSERT_NEAR((pixel >> (24 - 8 * i) & 255) * alpha / 255, plain[i], 1.02) << x << " " << y;
        }
    }
}

ColorPicture RandomPicture(int canvasWidth, int canvasHeight, unsigned seed)
{
    std::mt19937 random(seed);
    ColorPicture picture;
    picture.nCanvasWidth = canvasWidth;
    picture.nCanvasHeight = canvasHeight;
    picture.nLeft = static_cast<int>(random() % (canvasWidth / 2));
    picture.nTop = static_cast<int>(random() % (canvasHeight / 2));
    picture.nColumns = canvasWidth / 2;
    picture.nRows = canvasHeight / 2;
    for (int i = 0; i < picture.nColumns * picture.nRows; ++i)
        picture.listPixels.push_back((random() % 3 == 0 ? 0 : random()) | (random() % 2 ? 0xFF000000 : 0));
    return picture;
}

TEST(NaturalPicture, IsScaledAsItIsDefined)
{
    unsigned seed = 1;
    for (const auto &[width, height] : {std::pair(24, 18), std::pair(48, 36), std::pair(61, 23), std::pair(11, 9)}) {
        for (const int offset : {0, 5, -7, 100}) {
            ExpectAsPlain(RandomPicture(24, 18, seed++), width, height, offset);
            ASSERT_FALSE(testing::Test::HasFailure()) << width << "x" << height << " offset " << offset;
        }
    }
}

TEST(NaturalPicture, KeepsItsPlainParts)
{
    ColorPicture picture;
    picture.nCanvasWidth = picture.nCanvasHeight = 40;
    picture.nLeft = picture.nTop = 10;
    picture.nColumns = picture.nRows = 20;
    picture.listPixels.assign(400, 0xFFFFFF00);
    const ScaledPicture scaled = ScalePicture(picture, 100, 100, 0);
    const auto at = [&](int x, int y) {
        return scaled.listPixels[static_cast<std::size_t>(y - scaled.area.nTop) * scaled.area.nColumns +
                                 (x - scaled.area.nLeft)];
    };
    EXPECT_EQ(at(50, 50), 0xFFFFFF00U);
    // At its edge it is partly transparent, but still pure yellow.
    EXPECT_GT(at(25, 50) >> 24, 127U);
    EXPECT_LT(at(25, 50) >> 24, 255U);
    EXPECT_EQ(at(25, 50) & 0xFFFFFF, 0xFFFF00U);
    EXPECT_EQ(ScalePicture({}, 100, 100, 0).area.nRows, 0);
}

/** A renderer with one picture: four columns, 8 pixels wide, one for each pixel code. */
class NaturalViewTest : public testing::Test
{
protected:
    void Load(unsigned contrasts, const std::array<unsigned int, 4> &colors)
    {
        PictureUnit unit = PictureUnit::Filled(8, 8, 32, 8);
        for (std::size_t i = 0; i < unit.listPixels.size(); ++i)
            unit.listPixels[i] = static_cast<std::uint8_t>(i / 8 % 4);
        unit.nContrasts = contrasts;
        VobSubPair pair(48, 32, {{1000, unit.Encode(), {}}});
        std::copy(colors.begin(), colors.end(), pair.palette.begin());
        m_renderer.CreateVideoSubtitle(48, 32);
        ASSERT_EQ(m_renderer.SetSubtitleFile(pair.Write(m_folder).c_str(), 0), 0);
        m_renderer.SetTimeStamp(1500);
    }
    std::uint32_t PixelAt(int x, int y)
    {
        std::uint32_t pixel = 0;
        Visitor visitor([&](const NaturalSubtitle &shown) {
            const FrameArea &area = shown.picture;
            if (x >= area.nLeft && x < area.nLeft + area.nColumns && y >= area.nTop && y < area.nTop + area.nRows)
                pixel = shown.pPicture[static_cast<std::size_t>(y - area.nTop) * area.nColumns + (x - area.nLeft)];
        });
        EXPECT_EQ(m_renderer.VisitNatural({}, visitor), 0);
        return pixel;
    }
    std::uint64_t Version(const NaturalSettings &settings = {})
    {
        std::uint64_t version = 0;
        Visitor visitor([&](const NaturalSubtitle &shown) { version = shown.nVersion; });
        EXPECT_EQ(m_renderer.VisitNatural(settings, visitor), 0);
        return version;
    }
    void LoadText(const std::string &text)
    {
        m_renderer.CreateVideoSubtitle(320, 180);
        ASSERT_EQ(m_renderer.SetSubtitleFile(m_folder.Write("a.srt", text).c_str(), 0), 0);
    }

    TemporaryFolder m_folder;
    VideoSubtitle m_renderer;
};

TEST_F(NaturalViewTest, PicturesHaveThePalettesColours)
{
    Load(0xFFFF, {0xFFFF00, 0x0000FF, 0x000000, 0xFFFFFF});
    EXPECT_EQ(PixelAt(11, 12), 0xFFFFFF00U);
    EXPECT_EQ(PixelAt(19, 12), 0xFF0000FFU);
    EXPECT_EQ(PixelAt(27, 12), 0xFF000000U) << "no colour is a key";
    EXPECT_EQ(PixelAt(35, 12), 0xFFFFFFFFU);
    EXPECT_EQ(PixelAt(2, 2) >> 24, 0U);
}

TEST_F(NaturalViewTest, ContrastIsAlpha)
{
    Load(0x85F0, {0xFF0000, 0x00FF00, 0x0000FF, 0x102030});
    EXPECT_EQ(PixelAt(11, 12) >> 24, 0U);
    EXPECT_EQ(PixelAt(19, 12) >> 24, 255U);
    EXPECT_EQ(PixelAt(27, 12), 0x550000FFU);
    EXPECT_EQ(PixelAt(35, 12), 0x88102030U);
}

TEST_F(NaturalViewTest, AnIndexShowsOnePictureAtATime)
{
    const auto unit = [](int x) { return PictureUnit::Filled(x, 8, 8, 8, 1).Encode(); };
    // By these times the first and the third overlap.
    const VobSubPair pair(48, 32, {{1000, unit(2), {}}, {9000, unit(16), {}}, {5000, unit(30), {}}});
    m_renderer.CreateVideoSubtitle(48, 32);
    ASSERT_EQ(m_renderer.SetSubtitleFile(pair.Write(m_folder).c_str(), 0), 0);
    for (const auto &[ms, first, third] : {std::tuple(6000, true, false), {9000, true, false}, {9001, false, false}}) {
        m_renderer.SetTimeStamp(ms);
        EXPECT_EQ(PixelAt(4, 12) != 0, first) << ms;
        EXPECT_EQ(PixelAt(34, 12) != 0, third) << ms;
    }
}

TEST_F(NaturalViewTest, VersionsFollowWhatShows)
{
    LoadText("00:00:01,000 --> 00:00:05,000\nlower\n\n2\n00:00:02,000 --> 00:00:03,000\nupper\n");
    m_renderer.SetTimeStamp(500);
    EXPECT_EQ(Version(), 0U);
    m_renderer.SetTimeStamp(1500);
    std::uint64_t last = Version();
    EXPECT_NE(last, 0U);
    m_renderer.SetTimeStamp(1600);
    EXPECT_EQ(Version(), last) << "nothing changed";
    const auto expectAnother = [&](const char *what, const NaturalSettings &settings = {}) {
        EXPECT_NE(Version(settings), last) << what;
        last = Version(settings);
        EXPECT_EQ(Version(settings), last) << what;
    };
    m_renderer.SetTimeStamp(2500);
    expectAnother("a second cue");
    m_renderer.SetTimeStamp(3500);
    expectAnother("it has gone");
    m_renderer.SetSubFontColor(1, 2, 3);
    expectAnother("colour");
    m_renderer.SetSubOutlineColor(1, 2, 3, 4);
    expectAnother("outline");
    m_renderer.SetFontParam(nullptr, 12, 0);
    expectAnother("font");
    m_renderer.SetLogoPos(50);
    expectAnother("position");
    m_renderer.SetAlpah(100);
    expectAnother("opacity");
    expectAnother("width of the outline", {3, 2.5});
    expectAnother("safe area", {3, 10});
    expectAnother("taken rows", {3, 10, 1, TakenRows({{80, 90}})});
    m_renderer.SetTimeStamp(6000);
    EXPECT_EQ(Version(), 0U);
}

TEST_F(NaturalViewTest, PicturesAreMovedClearOfTakenRows)
{
    Load(0x0FF0, {0xFF0000, 0x00FF00, 0x0000FF, 0x102030});
    const auto shown = [&](const std::vector<RowSpan> &taken) {
        std::pair<RowSpan, std::vector<std::uint32_t>> result;
        Visitor visitor([&](const NaturalSubtitle &subtitle) {
            EXPECT_EQ(subtitle.rows.nTop, subtitle.picture.nTop);
            EXPECT_EQ(subtitle.rows.Count(), subtitle.picture.nRows);
            result = {subtitle.rows,
                      {subtitle.pPicture,
                       subtitle.pPicture + std::ptrdiff_t{subtitle.picture.nColumns} * subtitle.picture.nRows}};
        });
        NaturalSettings settings;
        settings.taken = TakenRows(taken);
        EXPECT_EQ(m_renderer.VisitNatural(settings, visitor), 0);
        return result;
    };
    const auto alone = shown({});
    EXPECT_TRUE(alone.first == (RowSpan{8, 16}));
    for (const auto &[taken, top] : {std::pair<std::vector<RowSpan>, int>({{0, 8}, {16, 32}}, 8),
                                     {{{12, 20}}, 4},
                                     {{{6, 10}}, 10},
                                     {{{10, 12}, {0, 1}, {4, 5}}, 12},
                                     {{{4, 26}}, 8}}) {
        const auto moved = shown(taken);
        EXPECT_TRUE(moved.first == (RowSpan{top, top + 8})) << top;
        EXPECT_TRUE(moved.second == alone.second) << top;
    }
}

TEST_F(NaturalViewTest, ExactLookIsNotTouched)
{
    LoadText("00:00:01,000 --> 00:00:05,000\ntext\n");
    m_renderer.SetTimeStamp(1500);
    std::vector<std::uint8_t> before(320 * 180 * 3);
    std::vector<std::uint8_t> after = before;
    AVPicture frame = {{before.data()}, {320 * 3}};
    EXPECT_EQ(m_renderer.ProcessFrame(&frame), 0);
    EXPECT_NE(Version(), 0U);
    frame = {{after.data()}, {320 * 3}};
    EXPECT_EQ(m_renderer.ProcessFrame(&frame), 0);
    EXPECT_TRUE(before == after);
    EXPECT_TRUE(before != std::vector<std::uint8_t>(before.size()));
}

TEST_F(NaturalViewTest, NothingShowsOnARendererThatIsNotConfigured)
{
    VideoSubtitle renderer;
    bool isVisited = false;
    Visitor visitor([&](const NaturalSubtitle &shown) {
        isVisited = true;
        EXPECT_EQ(shown.nVersion, 0U);
        EXPECT_EQ(shown.nFrameWidth, 0);
    });
    EXPECT_EQ(renderer.VisitNatural({}, visitor), 0);
    EXPECT_TRUE(isVisited);
}

} // namespace
