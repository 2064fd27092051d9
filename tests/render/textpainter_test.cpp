#include "support/textpaintertest.h"

#include <QFontInfo>
#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>

namespace
{

const QSize Sizes[] = {{1, 1},   {1, 50},   {50, 1},    {2, 2},     {3, 5},     {7, 7},      {16, 9},     {37, 23},
                       {64, 48}, {160, 90}, {333, 187}, {720, 576}, {853, 480}, {1280, 720}, {1920, 1080}};

const char16_t *const Texts[] = {
    u"",
    u" ",
    u"\n",
    u"x",
    u"Hello, World",
    u"The quick brown fox jumps over\nthe lazy dog",
    u"A line that is so long that it has to be wrapped at the words, in every frame but the very widest of them all, "
    u"and goes on and on and on until nobody reads it any more",
    u"Donaudampfschifffahrtselektrizitätenhauptbetriebswerkbauunterbeamtengesellschaftsvorstandsvorsitzender",
    u"Ünïcödé ŁÓŹ ÅÄÖ fi fl ffi",
    u"Ελληνικά, Русский, Հայերեն",
    u"مرحبا بالعالم، كيف حالك",
    u"שלום עולם",
    u"你好，世界。これはテストです。안녕하세요",
    u"Z\u0351\u036B\u0343\u036A\u0302\u036B\u033D\u034F\u0334\u0319\u0324\u031E\u0349\u035A\u032F\u031E\u0320\u034Da"
    u"\u0300\u0301\u0302\u0303lgo",
    u"emoji 😀👍🏽👨‍👩‍👧 in text",
    u"tab\there, trailing spaces   \n  and leading ones",
    u"VAWATo jjj ﷽ ﷺ",
    u"mixed عربي and English 中文 text",
    u"a\u202Eb\u202Cc\u200Bd\u00ADe",
    u"<i>markup</i> & ampersand",
    u"\n\nthree\n\nlines\n",
};

} // namespace

TEST(TextPainter, TestFontIsInstalled)
{
    EXPECT_EQ(QFontInfo(TestFont(20)).family(), QStringLiteral("DejaVu Sans"));
}

TEST(TextPainter, PaintsAsTheSingleDrawsAtEverySize)
{
    for (const QSize &size : Sizes) {
        for (const char16_t *text : Texts)
            ExpectAsPlain(Style(TestFont(std::max(1, size.height() / 14))), size, QString::fromUtf16(text));
    }
}

TEST(TextPainter, PaintsAsTheSingleDrawsInEveryStyle)
{
    for (const Look &look : {Look{true, false}, Look{false, true}, Look{true, true}}) {
        for (const char16_t *text : Texts) {
            ExpectAsPlain(Style(TestFont(9), look), {100, 60}, QString::fromUtf16(text));
            ExpectAsPlain(Style(TestFont(41), look), {720, 576}, QString::fromUtf16(text));
        }
    }
}

TEST(TextPainter, PaintsAsTheSingleDrawsAboveAndBelowTheGlyphCachesLimit)
{
    for (const int pixelSize : {1, 2, 3, 5, 8, 63, 64, 65, 66, 90, 150, 300}) {
        for (const char16_t *text : Texts)
            ExpectAsPlain(Style(TestFont(pixelSize)), {640, 360}, QString::fromUtf16(text));
    }
}

TEST(TextPainter, PaintsTinyTextOfAnyGlyphs)
{
    for (const char *family : {"DejaVu Sans", "DejaVu Serif", "DejaVu Sans Mono"}) {
        for (const int pixelSize : {1, 2, 3, 7}) {
            QFont font(QString::fromLatin1(family));
            font.setPixelSize(pixelSize);
            TextStyle style = Style(font, {pixelSize == 3, false});
            for (ushort first = 0x20; first < 0x2800; first += 0x200) {
                QString text;
                for (ushort n = 0; n < 0x200; ++n)
                    text += QChar(static_cast<ushort>(first + n));
                style.bOutline = !style.bOutline;
                EXPECT_EQ(PaintText(style, 3000, 40, text).image.size(), QSize(3000, 40));
            }
        }
    }
    const QImage image = PaintText(Style(TestFont(2)), 100, 10, QStringLiteral("MMM")).image;
    EXPECT_NE(image, CreateTextCanvas(100, 10));
}

// Some of these glyphs differ in a pixel when they are drawn two pixels further to the right.
TEST(TextPainter, PaintsAsTheSingleDrawsWherePathsAreRoundedFromPlaceToPlace)
{
    ExpectAsPlain(Style(TestFont(68), {true, true}), {457, 312}, QStringLiteral("글ДfÄ!Ж.ф !gД"));
}

TEST(TextPainter, PaintsAsTheSingleDrawsWhereTextFillsTheFrame)
{
    const QString text = QStringLiteral("Wwwwwwww jjjj Åjjj fff");
    for (const int pixelSize : {12, 30, 70}) {
        const int natural = PaintTextPlainly(Style(TestFont(pixelSize)), 4000, 200, text).rcText.width();
        for (int width = natural - 12; width <= natural + 12; ++width) {
            ExpectAsPlain(Style(TestFont(pixelSize)), {width, 120}, text);
            ExpectAsPlain(Style(TestFont(pixelSize), {true, true}), {width, 120}, text);
        }
    }
}

TEST(TextPainter, PaintsAsTheSingleDrawsInPointSizesAndOtherFamilies)
{
    for (const char *family : {"DejaVu Sans Mono", "DejaVu Serif", "Noto Sans CJK JP", "No Such Family", ""}) {
        QFont font(QString::fromLatin1(family));
        for (const int pointSize : {6, 17, 48, 72}) {
            font.setPointSize(pointSize);
            ExpectAsPlain(Style(font), {800, 450}, QStringLiteral("Hello, World\n你好，世界"));
        }
    }
}

TEST(TextPainter, PaintsAsTheSingleDrawsAtRandom)
{
    std::mt19937 random(20);
    const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    const QString alphabet = QStringLiteral("abcdefgjW,.!  \n\t😀Äßđ\u0301\u0323\u0489ДЖфعربيםש中文字かな한글");
    for (int i = 0; i < 400; ++i) {
        QString text;
        for (int n = below(60); n > 0; --n)
            text += alphabet[below(alphabet.size())];
        TextStyle style = Style(TestFont(1 + below(100)), {below(2) != 0, below(2) != 0});
        style.nFontColor = 0xFF000000 | random();
        style.nOutlineColor = 0xFF000000 | random();
        ExpectAsPlain(style, {1 + below(700), 1 + below(400)}, text);
    }
}

TEST(TextPainter, PaintsBigTextAsTheSingleDrawsAtRandom)
{
    std::mt19937 random(21);
    const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    const QString alphabet = QStringLiteral("abcdefgjkoqsWQ8&@,.!    \nÄŮÅßđ\u0301\u0323ДЖфعربيםש中文かな한");
    const std::array<const char *, 4> families = {"DejaVu Sans", "DejaVu Serif", "DejaVu Sans Mono",
                                                  "Noto Sans CJK JP"};
    for (int i = 0; i < 60; ++i) {
        QString text;
        for (int n = 1 + below(30); n > 0; --n)
            text += alphabet[below(alphabet.size())];
        QFont font(QString::fromLatin1(families[below(4)]));
        font.setPixelSize(65 + below(120));
        ExpectAsPlain(Style(font, {below(3) == 0, below(3) == 0}), {200 + below(1500), 60 + below(500)}, text);
    }
}

TEST(TextPainter, PaintsGreatTextAsTheSingleDraws)
{
    for (const int pixelSize : {64, 65, 511, 512, 513, 700})
        ExpectAsPlain(Style(TestFont(pixelSize)), {1400, 700}, QStringLiteral("Åg"));
}

TEST(TextPainter, PaintsAsTheSingleDrawsWithEqualOrBlackColours)
{
    TextStyle style = Style(TestFont(20));
    style.nOutlineColor = style.nFontColor;
    ExpectAsPlain(style, {200, 100}, QStringLiteral("equal"));
    style.nOutlineColor = 0xFF000000;
    ExpectAsPlain(style, {200, 100}, QStringLiteral("black outline"));
    style.bOutline = false;
    ExpectAsPlain(style, {200, 100}, QStringLiteral("no outline"));
}

TEST(TextPainter, PaintsImagesAsTheSingleDrawsWhereLinesBeginAtTheFramesSide)
{
    for (int width = 40; width < 72; ++width)
        ExpectAsPlain(Style(TestFont(13)), {width, 60}, QStringLiteral("😀👍🏽\n\tx😀 \n\u0634😀😀"));
}

TEST(TextPainter, PaintsAsTheSingleDrawsWhereTextReachesFarBeyondTheFrame)
{
    for (const int pixelSize : {14, 70}) {
        const QString wide = QStringLiteral("W😀").repeated(60).replace(QLatin1Char(' '), QChar(0x00A0));
        ExpectAsPlain(Style(TestFont(pixelSize)), {90, 50}, wide + QStringLiteral("\n").repeated(9) + wide);
        ExpectAsPlain(Style(TestFont(pixelSize)), {91, 50}, QString(200, QLatin1Char('W')));
    }
}

TEST(TextPainter, PaintsTheBeginningOfEndlessText)
{
    const TextStyle style = Style(TestFont(9));
    constexpr int Size = TextPainter::MaxTextSize;
    const auto height = [&](const QString &text) { return PaintText(style, 64, 64, text).nTextHeight; };
    const int beginning = height(QString(Size, QLatin1Char('\n')));
    EXPECT_EQ(height(QString(50 * Size, QLatin1Char('\n'))), beginning);
    EXPECT_LT(height(QString(Size - 1, QLatin1Char('\n'))), beginning);

    // The text is not cut inside an emoji: half of one would be painted as an empty box.
    const QString lines(Size - 1, QLatin1Char('\n'));
    EXPECT_EQ(PaintText(style, 64, 64, lines + QStringLiteral("😀")).rcText.width(),
              PaintText(style, 64, 64, lines).rcText.width());
}

TEST(TextPainter, PaintsTwoColoursOnly)
{
    for (const int pixelSize : {10, 41, 77, 154}) {
        const TextStyle style = Style(TestFont(pixelSize));
        const QImage image = PaintText(style, 1920, 1080, QStringLiteral("Hello\nWorld")).image;
        int text = 0;
        int outline = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QRgb pixel = reinterpret_cast<const QRgb *>(image.constScanLine(y))[x];
                ASSERT_TRUE(pixel == 0 || pixel == style.nFontColor || pixel == style.nOutlineColor);
                text += pixel == style.nFontColor;
                outline += pixel == style.nOutlineColor;
            }
        }
        EXPECT_GT(text, pixelSize);
        EXPECT_GT(outline, pixelSize);
    }
}

TEST(TextPainter, RectangleIsCentredAndAPixelTallerThanTheText)
{
    const PlainText painted = PaintText(Style(TestFont(41)), 720, 576, QStringLiteral("Hello, World"));
    QImage canvas(720, 576, QImage::Format_ARGB32);
    canvas.setDotsPerMeterX(3780);
    canvas.setDotsPerMeterY(3780);
    QPainter painter(&canvas);
    QFont font = TestFont(41);
    font.setStyleStrategy(QFont::NoAntialias);
    painter.setFont(font);
    const QRect bounds = painter.boundingRect(QRect(0, 0, 720, 576), Qt::TextWordWrap, QStringLiteral("Hello, World"));
    EXPECT_EQ(painted.rcText.left(), 360 - bounds.width() / 2);
    EXPECT_EQ(painted.rcText.top(), 0);
    EXPECT_EQ(painted.rcText.width(), bounds.width() / 2 * 2 + 2);
    EXPECT_EQ(painted.rcText.height(), bounds.height() + 1);
    EXPECT_EQ(painted.nTextHeight, bounds.height());
}

TEST(TextPainter, WideTextWrapsAndGrowsTaller)
{
    const TextStyle style = Style(TestFont(20));
    const QString text = QStringLiteral("one two three four five six seven eight nine ten");
    const int oneLine = PaintText(style, 2000, 200, text).nTextHeight;
    const PlainText wrapped = PaintText(style, 150, 200, text);
    EXPECT_GE(wrapped.nTextHeight, 4 * oneLine - 4);
    EXPECT_LE(wrapped.rcText.width(), 152);
}

TEST(TextPainter, EmptyTextIsTwoPixelsWide)
{
    const PlainText painted = PaintText(Style(TestFont(20)), 200, 100, QString());
    EXPECT_EQ(painted.rcText.width(), 2);
    EXPECT_EQ(painted.rcText.left(), 100);
}

// Qt's rasteriser has 16-bit coordinates.
TEST(TextPainter, PaintsAsTheSingleDrawsInFramesOfAnyWidth)
{
    for (const int width : {16384, 16385, 65536})
        ExpectAsPlain(Style(TestFont(80)), {width, 80}, QStringLiteral("Hello, World"));
    ExpectAsPlain(Style(TestFont(20)), {65536, 20}, QStringLiteral("Hello, World"));
}

TEST(TextPainter, FrameThatNoImageHoldsGivesNone)
{
    const PlainText painted = PaintText(Style(TestFont(20)), 1 << 20, 1 << 20, QStringLiteral("text"));
    EXPECT_TRUE(painted.image.isNull());
}

TEST(TextPainter, ManyGlyphsAreForgottenAndLookTheSameAgain)
{
    const TextStyle style = Style(TestFont(70));
    const QString text = QStringLiteral("Hello, World");
    ExpectAsPlain(style, {1280, 720}, text);
    // 4,500 of the 20,000 ideographs: more glyph shapes than the cache keeps.
    TextPainter painter;
    const PaintedText first = painter.Paint(style, 1280, 720, text);
    ASSERT_TRUE(first.ink);
    for (int nCue = 0; nCue < 90; ++nCue) {
        QString ideographs;
        for (int n = 0; n < 50; ++n)
            ideographs += QChar(0x4E00 + 50 * nCue + n);
        const PaintedText painted = painter.Paint(style, 1280, 720, ideographs);
        ASSERT_TRUE(painted.ink) << nCue;
    }
    const PaintedText again = painter.Paint(style, 1280, 720, text);
    EXPECT_TRUE(MakeImage(again, style, 1280, 720) == MakeImage(first, style, 1280, 720));
}
