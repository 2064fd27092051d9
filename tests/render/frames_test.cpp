// What the renderer draws into frames and returns as bitmaps.
#include "support/fonts.h"
#include "support/videosubtitletest.h"

#include <algorithm>

extern "C" {
#include <libavutil/mem.h>
}

namespace
{

/** A text that is exactly @p width pixels wide in the font; null if none is found. */
QString TextOfWidth(const QFont &font, int width)
{
    QImage image(1, 1, QImage::Format_ARGB32);
    image.setDotsPerMeterX(3780);
    image.setDotsPerMeterY(3780);
    QPainter painter(&image);
    painter.setFont(font);
    for (const char *letters : {"mi", "ml", "et", "ar", "sj"}) {
        for (int first = 0; first < 20; ++first) {
            for (int second = 0; second < 40; ++second) {
                const QString text = QString(first, QLatin1Char(letters[0])) + QString(second, QLatin1Char(letters[1]));
                if (painter.boundingRect(QRect(0, 0, 720, 576), Qt::TextWordWrap, text).width() == width)
                    return text;
            }
        }
    }
    return {};
}

} // namespace

TEST_F(VideoSubtitleTest, FrameWithNothingDueIsUntouchedAndStaysDirty)
{
    OpenCues();
    m_renderer.SetTimeStamp(500);
    ExpectFrameUntouched();
    EXPECT_EQ(m_peer.Dirty(), 1);
}

TEST_F(VideoSubtitleTest, FrameShowsTheDueTextAndClearsDirty)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    for (const int padding : {0, 1, 19})
        ExpectFrameShows(QStringLiteral("one"), padding);
    EXPECT_EQ(m_peer.Dirty(), 0);
    m_renderer.SetTimeStamp(3500);
    ExpectFrameShows(QStringLiteral("two"));
}

TEST_F(VideoSubtitleTest, RowsMayLieBottomUp)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    for (const int alpha : {255, 128}) {
        m_renderer.SetAlpah(static_cast<uchar>(alpha));
        GuardedFrame frame(Width, Height, 5);
        GuardedFrame expected(Width, Height, 5);
        frame.TurnOver();
        AVPicture picture = frame.Picture();
        picture.data[0] += static_cast<std::ptrdiff_t>(Height - 1) * picture.linesize[0];
        picture.linesize[0] *= -1;
        EXPECT_EQ(m_renderer.ProcessFrame(&picture), 0);
        frame.TurnOver();
        Process(expected);
        EXPECT_TRUE(frame.Bytes() == expected.Bytes());
    }
}

TEST_F(VideoSubtitleTest, TextOnDisplayStaysUntilTheTimeIsSetInANewFile)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    ExpectFrameShows(QStringLiteral("one"));
    const std::string strOther = m_folder.Write("other.srt", "00:00:01,000 --> 00:00:02,000\nother\n");
    ASSERT_EQ(m_renderer.SetSubtitleFile(strOther.c_str(), 0), 0);
    ExpectFrameShows(QStringLiteral("one"));
    m_renderer.SetTimeStamp(1500);
    ExpectFrameShows(QStringLiteral("other"));
}

TEST_F(VideoSubtitleTest, UnchangedSubtitleIsBlendedAgainFromTheKeptImage)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    ExpectFrameShows(QStringLiteral("one"));
    const std::uint64_t *ink = m_peer.Ink();
    m_renderer.SetTimeStamp(1600);
    m_renderer.SetAlpah(100);
    ExpectFrameShows(QStringLiteral("one"));
    m_renderer.SetLogoPos(20);
    ExpectFrameShows(QStringLiteral("one"));
    EXPECT_EQ(m_peer.Ink(), ink);
}

TEST_F(VideoSubtitleTest, NewFrameSizeDropsTheSubtitleOnDisplay)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    ExpectFrameShows(QStringLiteral("one"));
    m_renderer.CreateVideoSubtitle(Width / 4, Height / 4);
    GuardedFrame frame(Width / 4, Height / 4, 3);
    Process(frame);
    EXPECT_TRUE(frame.Bytes() == GuardedFrame(Width / 4, Height / 4, 3).Bytes());
}

TEST_F(VideoSubtitleTest, ColoursAndFontTakeEffectAtTheNextFrame)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    ExpectFrameShows(QStringLiteral("one"));
    m_renderer.SetSubFontColor(200, 100, 50);
    ExpectFrameShows(QStringLiteral("one"));
    m_renderer.SetSubOutlineColor(1, 0, 0, 255);
    ExpectFrameShows(QStringLiteral("one"));
    m_renderer.SetFontParam("DejaVu Serif", 30, 3);
    ExpectFrameShows(QStringLiteral("one"));
}

TEST_F(VideoSubtitleTest, EveryOpacityAndPosition)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    m_renderer.SetAlpah(0);
    ExpectFrameUntouched();
    for (int alpha = 1; alpha < 256; alpha += 23) {
        m_renderer.SetAlpah(static_cast<uchar>(alpha));
        ExpectFrameShows(QStringLiteral("one"));
    }
    for (int position = 0; position <= 100; position += 5) {
        m_renderer.SetLogoPos(position);
        ExpectFrameShows(QStringLiteral("one"), 2);
    }
}

TEST_F(VideoSubtitleTest, BlackOutlineDisappearsBlackTextDoesNot)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    m_renderer.SetSubOutlineColor(1, 0, 0, 0);
    ExpectFrameShows(QStringLiteral("one"));
    GuardedFrame frame(Width, Height);
    GuardedFrame original(Width, Height);
    Process(frame);
    int changed = 0;
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            const bool same = std::equal(frame.Pixel(x, y), frame.Pixel(x, y) + 3, original.Pixel(x, y));
            const bool white =
                frame.Pixel(x, y)[0] == 255 && frame.Pixel(x, y)[1] == 255 && frame.Pixel(x, y)[2] == 255;
            EXPECT_TRUE(same || white);
            changed += !same;
        }
    }
    EXPECT_GT(changed, 50);
    m_renderer.SetSubFontColor(0, 0, 0);
    ExpectFrameShows(QStringLiteral("one"));
}

TEST_F(VideoSubtitleTest, TextOfAnySizeStaysInsideTheFrame)
{
    const QString texts[] = {QStringLiteral("Unbreakableunbreakableunbreakableunbreakable"),
                             QStringLiteral("1a\n2b\n3c\n4d\n5e\n6f\n7g\n8h\n9i\n10j\n11k\n12l\n13m\n14n")};
    for (const QString &text : texts) {
        m_peer.Subtitle() = text;
        for (const int points : {5, 12, 40, 90}) {
            m_renderer.SetFontParam("DejaVu Sans", points, 0);
            if (!QtPaints(*m_peer.Font()))
                continue;
            for (const int position : {0, 50, 100}) {
                m_renderer.SetLogoPos(position);
                ExpectFrameAsPlain(text, 5);
            }
        }
    }
}

TEST_F(VideoSubtitleTest, NullFrameOrPlaneDoesNothing)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    EXPECT_EQ(m_renderer.ProcessFrame(nullptr), 0);
    AVPicture empty = {};
    EXPECT_EQ(m_renderer.ProcessFrame(&empty), 0);
    ExpectFrameShows(QStringLiteral("one"));
}

TEST_F(VideoSubtitleTest, TextToBmpHandsOutTheTextAndItsPlace)
{
    AVPicture out = {};
    int rect[4] = {};
    m_renderer.SetAlpah(200);
    for (const char *text : {"Hello", "Grüße\n世界", "", "Hello"}) {
        ASSERT_EQ(m_renderer.TextToBmp(text, &out, rect), 0);
        const PlainText plain = PaintTextPlainly({*m_peer.Font(), m_peer.FontColor(), m_peer.OutlineColor(), true},
                                                 Width, Height, QString::fromUtf8(text));
        EXPECT_EQ(m_peer.Rect(), plain.rcText);
        EXPECT_TRUE(m_peer.Text() == plain.image);
        EXPECT_EQ(rect[0], plain.rcText.left());
        EXPECT_EQ(rect[1], 85 * Height / 100 - plain.nTextHeight / 2);
        EXPECT_EQ(rect[2], plain.rcText.width());
        EXPECT_EQ(rect[3], plain.nTextHeight + 1);
        EXPECT_EQ(out.linesize[0], rect[2]);
        for (int r = 0; r < rect[3]; ++r) {
            for (int c = 0; c < rect[2]; ++c)
                ASSERT_EQ(out.data[0][r * rect[2] + c], plain.image.pixel(rect[0] + c, r) == 0xFFFFFFFF ? 1 : 2);
        }
        EXPECT_EQ(std::vector<int>(out.data[1], out.data[1] + 12),
                  (std::vector<int>{0, 0, 0, 0, 128, 128, 235, 200, 128, 128, 25, 200}));
    }
    av_freep(&out.data[0]);
    av_freep(&out.data[1]);
}

TEST(VideoSubtitlePlaces, TextOfOddSizesIsTruncatedTowardsTheMiddle)
{
    VideoSubtitle renderer;
    const VideoSubtitlePeer peer(renderer);
    renderer.CreateVideoSubtitle(720, 576);
    *peer.Font() = TestFont(34);
    const QString text = TextOfWidth(*peer.Font(), 301);
    ASSERT_FALSE(text.isEmpty());
    AVPicture out = {};
    int rect[4] = {};
    ASSERT_EQ(renderer.TextToBmp(text.toUtf8().constData(), &out, rect), 0);
    const int height = QT_VERSION_MAJOR < 6 ? 42 : 41; // Qt 5 rounds the ascent and the descent up
    EXPECT_EQ(peer.Rect(), QRect(210, 0, 302, height));
    EXPECT_EQ(peer.AnchorOffset(), 20);
    EXPECT_EQ(rect[0], 210);
    EXPECT_EQ(rect[1], 469);
    EXPECT_EQ(rect[2], 302);
    EXPECT_EQ(rect[3], height);
    av_freep(&out.data[0]);
    av_freep(&out.data[1]);
}

TEST_F(VideoSubtitleTest, TextToBmpRefusesNullAndTakesNullTextForEmpty)
{
    AVPicture out = {};
    int rect[4] = {1, 2, 3, 4};
    EXPECT_EQ(m_renderer.TextToBmp("x", nullptr, rect), -1);
    EXPECT_EQ(m_renderer.TextToBmp("x", &out, nullptr), -1);
    EXPECT_EQ(out.data[0], nullptr);
    EXPECT_EQ(rect[0], 1);
    EXPECT_EQ(m_renderer.TextToBmp(nullptr, &out, rect), 0);
    EXPECT_EQ(rect[2], 2);
    av_freep(&out.data[0]);
    av_freep(&out.data[1]);
}

TEST_F(VideoSubtitleTest, TextToBmpOfTextBeyondTheFrameStaysInItsBuffers)
{
    AVPicture out = {};
    int rect[4] = {};
    m_renderer.SetFontParam("DejaVu Sans", 60, 0);
    const char *text = "Unbreakableunbreakable\nb\nc\nd\ne";
    ASSERT_EQ(m_renderer.TextToBmp(text, &out, rect), 0);
    EXPECT_LT(rect[0], 0);
    EXPECT_GT(rect[3], Height);
    const QImage plain = PaintTextPlainly({*m_peer.Font(), m_peer.FontColor(), m_peer.OutlineColor(), true}, Width,
                                          Height, QString::fromUtf8(text))
                             .image;
    const auto *pixels = reinterpret_cast<const QRgb *>(plain.constBits());
    for (int r = 0; r < rect[3]; ++r) {
        for (int c = 0; c < rect[2]; ++c) {
            const int place = r * Width + rect[0] + c;
            const QRgb pixel = place >= 0 && place < Width * Height ? pixels[place] : 0;
            ASSERT_EQ(out.data[0][r * rect[2] + c], pixel == 0xFFFFFFFF ? 1 : 2) << r << " " << c;
        }
    }
    av_freep(&out.data[0]);
    av_freep(&out.data[1]);
}

TEST_F(VideoSubtitleTest, TextToBmpReplacesTheTextOnDisplayUntilItChanges)
{
    OpenCues();
    m_renderer.SetTimeStamp(1500);
    ExpectFrameShows(QStringLiteral("one"));
    AVPicture out = {};
    int rect[4] = {};
    m_renderer.TextToBmp("other", &out, rect);
    av_freep(&out.data[0]);
    av_freep(&out.data[1]);
    ExpectFrameShows(QStringLiteral("other"));
    m_renderer.SetTimeStamp(3500);
    ExpectFrameShows(QStringLiteral("two"));
}

TEST_F(VideoSubtitleTest, ImageWithoutPixelsLeavesTheFrameAlone)
{
    m_peer.Subtitle() = QStringLiteral("x");
    m_peer.SetRect(QRect(0, 0, Width, Height));
    ASSERT_TRUE(m_peer.Image()->isNull());
    ExpectFrameUntouched();
}

TEST_F(VideoSubtitleTest, ImageAndRectangleMayBeOfAnyParsersMaking)
{
    *m_peer.Image() = QImage(Width, Height, QImage::Format_RGB32);
    m_peer.Image()->fill(0);
    for (int i = 0; i < 500; ++i)
        reinterpret_cast<QRgb *>(m_peer.Image()->scanLine(i % Height))[i * 7 % Width] = 0x37000000U * i + i * 4711;
    m_peer.Subtitle() = QStringLiteral("0");
    m_peer.SetRect(m_peer.Image()->rect());
    m_peer.AnchorOffset() = Height * 85 / 100;
    GuardedFrame frame(Width, Height);
    GuardedFrame expected(Width, Height);
    Process(frame);
    AVPicture picture = expected.Picture();
    BlendPlainly(picture.data[0], picture.linesize[0],
                 {m_peer.Image()->constBits(), 0, 0, Width, Height, Width, Height, 255, 0});
    EXPECT_TRUE(frame.Bytes() == expected.Bytes());
}

TEST(VideoSubtitleSizes, FramesOfEverySmallSize)
{
    VideoSubtitle keepsFonts;
    for (int width = 1; width <= 40; width += 3) {
        for (int height = 1; height <= 40; height += 3) {
            VideoSubtitle renderer;
            renderer.CreateVideoSubtitle(width, height);
            const VideoSubtitlePeer peer(renderer);
            peer.Subtitle() = QStringLiteral("Hi jÅ");
            peer.Dirty() = 1;
            GuardedFrame frame(width, height, 3);
            GuardedFrame expected(width, height, 3);
            AVPicture picture = frame.Picture();
            renderer.ProcessFrame(&picture);
            if (!QtPaints(*peer.Font()))
                continue;
            const PlainText plain =
                PaintTextPlainly({*peer.Font(), 0xFFFFFFFF, 0xFF0A0A0A, true}, width, height, QStringLiteral("Hi jÅ"));
            picture = expected.Picture();
            BlendPlainly(picture.data[0], picture.linesize[0],
                         {plain.image.constBits(), plain.rcText.x(), 0, plain.rcText.width(), plain.rcText.height(),
                          width, height, 255, 85 * height / 100 - plain.nTextHeight / 2});
            ASSERT_TRUE(frame.Bytes() == expected.Bytes()) << width << "x" << height;
        }
    }
}
