// The natural look of text: its outline, compared with the definition in doubles; its layout, compared with the exact
// look's; and text that does not fit.
#include "render/coveragedisc.h"
#include "render/messagesilencer.h"
#include "render/naturaltext.h"
#include "render/textfitter.h"
#include "support/fonts.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace
{

double OutlineAt(const ByteMask &text, double radius, double pixelAspect, int x, int y)
{
    double greatest = 0;
    for (int row = 0; row < text.nRows; ++row) {
        for (int column = 0; column < text.nColumns; ++column) {
            const double covered = text.Row(row)[column] / 255.0;
            const double distance = std::hypot((x - (text.nLeft + column)) * pixelAspect, y - (text.nTop + row));
            if (covered > 0)
                greatest = std::max(greatest, std::min(1.0, covered + radius - distance));
        }
    }
    return greatest;
}

int At(const ByteMask &mask, int x, int y)
{
    const int column = x - mask.nLeft;
    const int row = y - mask.nTop;
    return column >= 0 && column < mask.nColumns && row >= 0 && row < mask.nRows ? mask.Row(row)[column] : 0;
}

ByteMask RandomText(std::mt19937 &random)
{
    ByteMask text = MakeByteMask(-3, 5, 1 + static_cast<int>(random() % 40), 1 + static_cast<int>(random() % 12));
    for (auto &byte : text.listBytes) {
        const unsigned kind = random() % 4;
        byte = static_cast<std::uint8_t>(kind == 0 ? 255 : kind == 1 ? random() : 0);
    }
    return text;
}

TEST(CoverageDisc, SpreadsAsItIsDefined)
{
    std::mt19937 random(5);
    for (const double radius : {0.1, 0.5, 1.0, 1.333, 2.0, 3.0, 6.0, 6.5}) {
        for (const double pixelAspect : {1.0, 1.0, 64 / 45.0, 10.0, 8 / 9.0, 0.3}) {
            const ByteMask text = RandomText(random);
            const ByteMask outline = CoverageDisc(radius, pixelAspect).Spread(text);
            const int reach = static_cast<int>((radius + 1) / std::min(1.0, pixelAspect)) + 3;
            for (int y = text.nTop - reach; y < text.nTop + text.nRows + reach; ++y) {
                for (int x = text.nLeft - reach; x < text.nLeft + text.nColumns + reach; ++x)
                    ASSERT_NEAR(At(outline, x, y), 255 * OutlineAt(text, radius, pixelAspect, x, y), 1)
                        << radius << " " << pixelAspect;
            }
        }
    }
}

TEST(CoverageDisc, OfNoWidthMakesNoOutline)
{
    std::mt19937 random(5);
    EXPECT_EQ(CoverageDisc(0).Spread(RandomText(random)).nRows, 0);
    EXPECT_EQ(CoverageDisc(2).Spread({}).nRows, 0);
}

const char16_t *const Texts[] = {
    u"x",
    u"Hello, World",
    u"The quick brown fox jumps over\nthe lazy dog",
    u"A line that is so long that it has to be wrapped at the words, in every frame but the widest, and goes on and on",
    u"Ünïcödé ŁÓŹ ÅÄÖ fi fl ffi",
    u"Ελληνικά, Русский, Հայերեն",
    u"مرحبا بالعالم، كيف حالك",
    u"你好，世界。これはテストです。안녕하세요",
    u"VAWATo jjj ﷽ ﷺ",
    u"mixed عربي and English 中文 text",
    u"\n\nthree\n\nlines\n",
};

/** The positions of all glyphs. */
std::vector<std::pair<int, int>> PlacesOf(const TextLayout &layout)
{
    std::vector<std::pair<int, int>> places;
    for (const GlyphRun &run : layout.text.Runs()) {
        for (const FixedPoint place : run.Places())
            places.emplace_back(place.nX, place.nY);
    }
    return places;
}

QFont WithStrategy(QFont font, QFont::StyleStrategy strategy)
{
    font.setStyleStrategy(strategy);
    return font;
}

TEST(NaturalText, IsLaidOutAsTheExactLook)
{
    const MessageSilencer silencer; // Qt may warn when it loads fonts
    for (const QSize &size :
         {QSize(333, 187), QSize(854, 480), QSize(1280, 720), QSize(1920, 1080), QSize(3840, 2160)}) {
        const QFont font = TestFont(size.height() / 14);
        for (const char16_t *units : Texts) {
            const QString text = QString::fromUtf16(units);
            const TextLayout smooth = LayOutText(WithStrategy(font, QFont::PreferAntialias), size, size.width(), text);
            const TextLayout exact = LayOutText(WithStrategy(font, QFont::NoAntialias), size, size.width(), text);
            EXPECT_EQ(smooth.rcBox, exact.rcBox) << text.toStdString();
            EXPECT_EQ(PlacesOf(smooth), PlacesOf(exact)) << size.height() << " " << text.toStdString();
        }
    }
}

TextStyle Style(int pixelSize)
{
    return {TestFont(pixelSize), 0xFFFFFFFF, 0xFF0A0A0A, true};
}

/** The bounding box of all pixels that are covered at all. */
QRect Covered(const TextCoverage &ink)
{
    QRect covered;
    for (const ByteMask *mask : {&ink.text, &ink.outline}) {
        for (int row = 0; row < mask->nRows; ++row) {
            for (int column = 0; column < mask->nColumns; ++column) {
                if (mask->Row(row)[column] > 0)
                    covered |= QRect(mask->nLeft + column, mask->nTop + row, 1, 1);
            }
        }
    }
    return covered;
}

TextCoverage Paint(const QSize &frame, const QStringList &texts, int position = 85, int pixelSize = 0)
{
    static NaturalText painter;
    TextCoverage ink;
    painter.Paint(Style(pixelSize > 0 ? pixelSize : frame.height() / 14), frame, texts, position, {2, 2.5}, ink);
    return ink;
}

QString Lines(int count)
{
    QStringList lines;
    for (int i = 0; i < count; ++i)
        lines.append(QStringLiteral("Hjg%1").arg(i % 10));
    return lines.join(QLatin1Char('\n'));
}

/** The row after the last one of the text, without its outline. */
int BottomOf(const TextCoverage &ink)
{
    int bottom = 0;
    for (int row = 0; row < ink.text.nRows; ++row) {
        const std::uint8_t *bytes = ink.text.Row(row);
        if (std::any_of(bytes, bytes + ink.text.nColumns, [](std::uint8_t byte) { return byte > 127; }))
            bottom = ink.text.nTop + row + 1;
    }
    return bottom;
}

/** Divides a row into parts that are @p pixels wide; returns the mean coverage of each of the first @p count. */
std::vector<double> Means(const ByteMask &mask, int row, double pixels, int count)
{
    std::vector<double> means(count);
    for (int part = 0; part < count; ++part) {
        const double first = part * pixels;
        const double end = first + pixels;
        for (int x = static_cast<int>(first); x < end; ++x)
            means[part] += At(mask, x, row) * (std::min<double>(end, x + 1) - std::max<double>(first, x)) / pixels;
    }
    return means;
}

TEST(NaturalText, LettersKeepTheirShapeInPixelsThatAreNotSquare)
{
    const MessageSilencer silencer;
    NaturalSettings settings;
    for (const auto &[width, shownWidth] : {std::pair(720, 1024), {1080, 720}}) {
        for (const int pixelSize : {30, 90}) {
            TextCoverage square;
            NaturalText().Paint(Style(pixelSize), {shownWidth, 576}, {QStringLiteral("Some words\nin lines")}, 85,
                                settings, square);
            settings.dPixelAspect = static_cast<double>(shownWidth) / width;
            TextCoverage ink;
            NaturalText().Paint(Style(pixelSize), {width, 576}, {QStringLiteral("Some words\nin lines")}, 85, settings,
                                ink);
            settings.dPixelAspect = 1;
            // Small letters are hinted, and fitted to whole rows, only where pixels are square.
            const double allowed = pixelSize > 64 ? 5 : 25;
            for (const auto &[mask, expected] :
                 {std::pair(&ink.text, &square.text), std::pair(&ink.outline, &square.outline)}) {
                double difference = 0;
                double sum = 0;
                for (int row = 0; row < 576; ++row) {
                    const std::vector<double> means =
                        Means(*expected, row, static_cast<double>(shownWidth) / width, width);
                    for (int column = 0; column < width; ++column) {
                        difference += std::abs(At(*mask, column, row) - means[column]);
                        sum += means[column];
                    }
                }
                EXPECT_GT(sum, 0);
                EXPECT_LT(difference, sum * allowed / 100) << width << " " << pixelSize;
            }
        }
    }
}

TEST(NaturalText, LiesWhereTheExactLookDoes)
{
    const QSize frame(1280, 720);
    for (const int lines : {1, 2}) {
        TextPainter painter;
        const PaintedText exact = painter.Paint(Style(51), frame.width(), frame.height(), Lines(lines));
        ASSERT_TRUE(exact.ink);
        const int offset = frame.height() * 85 / 100 - exact.nTextHeight / 2;
        const TextCoverage natural = Paint(frame, {Lines(lines)});
        // Pixels that are text in only one of the looks when the natural one is moved.
        const auto differing = [&](int dx, int dy) {
            int count = 0;
            for (int y = 0; y < frame.height(); ++y) {
                for (int x = 0; x < frame.width(); ++x) {
                    const BitMask &mask = exact.ink->text;
                    const int row = y - offset - mask.nTop;
                    const int bit = x - mask.nLeft;
                    const bool isText = row >= 0 && row < mask.nRows && bit >= 0 && bit < 64 * mask.nWords &&
                                        (mask.Row(row)[bit / 64] >> (bit % 64) & 1);
                    count += isText != (At(natural.text, x + dx, y + dy) > 127);
                }
            }
            return count;
        };
        const int least = differing(0, 0);
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx)
                EXPECT_TRUE((dx == 0 && dy == 0) || differing(dx, dy) > least) << lines << " " << dx << " " << dy;
        }
    }
}

TEST(NaturalText, MoreLinesKeepTheLowerEdgeOfTwo)
{
    const QSize frame(1280, 720);
    const int bottom = BottomOf(Paint(frame, {Lines(2)}));
    for (const int lines : {3, 4, 5, 8})
        EXPECT_NEAR(BottomOf(Paint(frame, {Lines(lines)})), bottom, 1) << lines;
    // Lines(4) with the second and third line empty.
    const QString last = Lines(4).section(QLatin1Char('\n'), 3);
    EXPECT_NEAR(BottomOf(Paint(frame, {QStringLiteral("M\n\n\n") + last})), bottom, 1);
}

TEST(NaturalText, StaysInTheSafeArea)
{
    const QString longWord(300, QLatin1Char('M'));
    const QString longText = QStringLiteral("many words of a text ").repeated(120);
    for (const QSize &frame : {QSize(320, 180), QSize(854, 480), QSize(1920, 1080), QSize(480, 854)}) {
        const int margin = static_cast<int>(std::lround(frame.height() * 0.025));
        const int side = static_cast<int>(std::lround(frame.width() * 0.025));
        const QRect safe(side - 1, margin, frame.width() - 2 * side + 2, frame.height() - 2 * margin);
        for (const QString &text : {QStringLiteral("text"), Lines(5), Lines(40), longWord, longText}) {
            for (const int position : {0, 50, 85, 100}) {
                const QRect covered = Covered(Paint(frame, {text}, position));
                EXPECT_FALSE(covered.isEmpty());
                EXPECT_TRUE(safe.contains(covered))
                    << frame.height() << " " << position << " " << text.left(20).toStdString() << ": " << covered.left()
                    << " " << covered.top() << " " << covered.right() << " " << covered.bottom();
            }
        }
    }
}

TEST(NaturalText, TakesTheLargestFontThatFits)
{
    const QSize frame(1280, 720);
    const SafeArea area(frame, {2, 2.5});
    const QFont font = TestFont(51);
    const QStringList texts = {Lines(20)};
    const MessageSilencer silencer;
    const auto heightOf = [&](const std::vector<TextLayout> &layouts) { return layouts[0].rcBox.height() - 1; };
    const int height = heightOf(FitTexts(font, frame, area, texts));
    EXPECT_LE(height, area.nBottom - area.nTop);
    EXPECT_GT(height, (area.nBottom - area.nTop) * 9 / 10);
}

TEST(NaturalText, TextsLieAboveEachOther)
{
    const QSize frame(1280, 720);
    const TextCoverage first = Paint(frame, {QStringLiteral("lower")});
    const TextCoverage both = Paint(frame, {QStringLiteral("lower"), QStringLiteral("upper\ntext")});
    const QRect lower = Covered(first);
    for (int y = lower.top() + 6; y <= lower.bottom(); ++y) {
        for (int x = 0; x < frame.width(); ++x)
            ASSERT_EQ(At(both.text, x, y), At(first.text, x, y)) << "the first stays where it is without others";
    }
    EXPECT_LT(Covered(both).top(), lower.top() - 51);
    const QRect many = Covered(Paint(frame, {Lines(5), Lines(5), Lines(5)}));
    EXPECT_TRUE(QRect(0, 18, 1280, 684).contains(many)) << "all of them fit";
}

TEST(NaturalText, OutlineGrowsWithTheFrame)
{
    const auto outlineOf = [](int height) {
        const TextCoverage ink = Paint({height * 16 / 9, height}, {QStringLiteral("H")});
        const int middle = ink.text.nTop + ink.text.nRows * 3 / 4; // a row that crosses both legs
        double text = 0;
        double outline = 0;
        for (int column = 0; column < ink.text.nColumns; ++column) {
            text += At(ink.text, ink.text.nLeft + column, middle) / 255.0;
            outline += At(ink.outline, ink.text.nLeft + column, middle) / 255.0;
        }
        return (outline - text) / 4; // two legs have four sides
    };
    for (const int height : {360, 720, 1080, 2160})
        EXPECT_NEAR(outlineOf(height), 2 * height / 720.0, 0.3) << height;
}

TEST(NaturalText, PaintsNothingWithoutTexts)
{
    EXPECT_EQ(Paint({1280, 720}, {}).text.nRows, 0);
    EXPECT_EQ(Paint({1280, 720}, {QStringLiteral(" ")}).text.nRows, 0);
    EXPECT_EQ(Paint({0, 720}, {QStringLiteral("x")}, 85, 20).text.nRows, 0);
}

TEST(NaturalText, LeavesColoursOfGlyphs)
{
    const TextCoverage ink = Paint({1280, 720}, {QStringLiteral("\U0001F98A")});
    ASSERT_FALSE(ink.colored.isNull());
    int orange = 0;
    for (int row = 0; row < ink.colored.height(); ++row) {
        for (int column = 0; column < ink.colored.width(); ++column) {
            const QColor color = ink.colored.pixelColor(column, row);
            orange += color.alpha() == 255 && color.red() > 200 && color.blue() < 60;
        }
    }
    EXPECT_GT(orange, 200);
}

} // namespace
