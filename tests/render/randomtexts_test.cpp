// Random texts must be painted as by one QPainter draw for each offset of the outline. Run again with other limits of
// the size up to which Qt draws glyphs from cached images: see CMakeLists.txt.
#include "support/childprocess.h"
#include "support/textpaintertest.h"

#include <QStringList>

#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <string_view>

namespace
{

const std::array<const char16_t *, 14> Scripts = {
    u"The quick brown fox jumps over the lazy dog, fjord affluent AVATAR To. 1984 Wij!",
    u"Žluťoučký kůň příliš Ünïcödé ŁÓŹ çà ñandú straße Þór İstanbul đ",
    u"Съешь же ещё этих мягких французских булок Ђорђе їжак",
    u"Ξεσκεπάζω την ψυχοφθόρα βδελυγμία Ελληνικά",
    u"مرحبا بالعالم كيف حالك اليوم ﷽ لا إله محمد",
    u"שלום עולם מה נשמע היום בָּרוּךְ",
    u"你好世界 这是一个测试 字幕。 今天，天气很好！",
    u"これはテストです 日本語の字幕 カタカナ ｶﾅ 東京",
    u"안녕하세요 세계 자막 테스트 글꼴 한국어",
    u"हिन्दी में उपशीर्षक क्षत्रिय स्त्री नमस्ते",
    u"สวัสดีชาวโลก ภาษาไทย ที่นี่ น้ำ",
    u"😀 👍🏽 👨‍👩‍👧 ☃ ♪ ♫ ★ €",
    u"a\u0301\u0302\u0303 Z\u0351\u036B\u0343 e\u0323\u0308 \u0489 o\u0337",
    u"\t -\tx \u00AD a\u00ADb \u200B \u00A0 \u202Eb\u202C \u3000 …",
};

class RandomTexts : public testing::TestWithParam<unsigned>
{
protected:
    int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }

    QString Text()
    {
        QString text;
        const int script = Below(14);
        for (int n = 1 + Below(12); n > 0; --n) {
            const QStringList words =
                QString::fromUtf16(Scripts[Below(4) == 0 ? Below(14) : script]).split(QLatin1Char(' '));
            text += words[Below(words.size())] + QLatin1Char(Below(7) == 0 ? '\n' : ' ');
        }
        return text;
    }

    /** A random size; small ones are more frequent than large ones. */
    int Size(int least, int greatest)
    {
        const double ratio = static_cast<double>(greatest) / least;
        return static_cast<int>(least * std::pow(ratio, Below(1000) / 1000.0));
    }

    std::mt19937 m_random{GetParam()};
};

} // namespace

TEST_P(RandomTexts, ArePaintedAsTheSingleDraws)
{
    const std::array<const char *, 4> families = {"DejaVu Sans", "DejaVu Serif", "DejaVu Sans Mono",
                                                  "Noto Sans CJK JP"};
    for (int i = 0; i < 700 && !HasFailure(); ++i) {
        const int pixelSize = Below(10) == 0 ? Size(65, 300) : Size(8, 110);
        QFont font(QString::fromLatin1(families[Below(4)]));
        font.setPixelSize(pixelSize);
        const QSize frame(1 + Below(14 * pixelSize), 1 + Below(6 * pixelSize));
        ExpectAsPlain(Style(font, {Below(4) == 0, Below(4) == 0}), frame, Text());
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomTexts, testing::Values(1, 2, 3, 4));

TEST(GlyphLimit, TextOfEverySizeHasInk)
{
    for (int pixelSize = 60; pixelSize < 104; ++pixelSize) {
        // In the narrow frame the text starts left of column 0, so it is drawn anew for each offset of the outline.
        for (const int width : {500, 90}) {
            const QImage image = PaintText(Style(TestFont(pixelSize)), width, 150, QStringLiteral("Ag§g")).image;
            int ink = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    ink += image.pixel(x, y) != 0;
            EXPECT_GT(ink, pixelSize * pixelSize / 4);
            const std::string_view bytes(reinterpret_cast<const char *>(image.constBits()),
                                         static_cast<std::size_t>(image.sizeInBytes()));
            std::printf("%d pixels: %d %zu\n", pixelSize, ink, std::hash<std::string_view>()(bytes));
        }
    }
}

// Qt itself paints no text of sizes between 64 and a larger limit.
TEST(GlyphLimit, LargerLimitChangesNothing)
{
    const auto paint = [](const char *limit) {
        const Outcome outcome =
            ChildProcess::Run({"/proc/self/exe", "--gtest_brief=1", "--gtest_filter=*.TextOfEverySizeHasInk"}, "",
                              {{"QT_MAX_CACHED_GLYPH_SIZE", limit}});
        EXPECT_EQ(outcome.nExit, 0) << outcome.strOut << outcome.strError;
        return outcome.strOut.substr(0, outcome.strOut.find("103 pixels"));
    };
    const std::string usual = paint("");
    EXPECT_NE(usual.find("102 pixels"), std::string::npos) << usual;
    EXPECT_EQ(paint("100"), usual);
}
