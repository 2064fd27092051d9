#include "render/compositor.h"
#include "support/blendoracle.h"
#include "support/guardedframe.h"

#include <gtest/gtest.h>
#include <random>

namespace
{

/** An image of random pixels, many of them in the key colour (the top left pixel's), transparent or opaque. */
QImage RandomImage(int width, int height, unsigned seed)
{
    std::mt19937 random(seed);
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        auto *pixels = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const QRgb color = random() & 0xFFFFFF;
            switch (random() % 4) {
            case 0:
                pixels[x] = color;
                break;
            case 1:
                pixels[x] = 0xFF000000 | color;
                break;
            case 2:
                pixels[x] = x > 0 ? (pixels[x - 1] & 0xFFFFFF) | 0xFF000000 : 0x80123456;
                break;
            default:
                pixels[x] = static_cast<QRgb>(random());
            }
        }
    }
    for (int i = 0; i < width * height / 4; ++i) {
        const int x = static_cast<int>(random() % width);
        const int y = static_cast<int>(random() % height);
        image.setPixel(x, y, (image.pixel(0, 0) & 0xFFFFFF) | (random() << 24));
    }
    return image;
}

/** Blends into two equal frames, with the compositor and with the oracle, and compares all their bytes. */
void ExpectAsPlain(const QImage &image, const QRect &rect, int width, int height, const Placement &placement,
                   int padding = 0)
{
    GuardedFrame frame(width, height, padding);
    GuardedFrame expected(width, height, padding);
    AVPicture picture = frame.Picture();
    Compositor compositor;
    compositor.SetImage(image, rect, width, height);
    compositor.Blend(picture.data[0], picture.linesize[0], placement);
    picture = expected.Picture();
    BlendPlainly(picture.data[0], picture.linesize[0],
                 {image.constBits(), rect.x(), rect.y(), rect.width(), rect.height(), width, height, placement.nAlpha,
                  placement.nOffset});
    EXPECT_TRUE(frame.Bytes() == expected.Bytes())
        << width << "x" << height << " padding " << padding << " rect " << rect.x() << "," << rect.y() << " "
        << rect.width() << "x" << rect.height() << " offset " << placement.nOffset << " alpha "
        << int(placement.nAlpha);
}

/** Blends one pixel onto another. */
std::vector<int> BlendOne(QRgb source, std::uint8_t alpha, std::vector<std::uint8_t> frame)
{
    QImage image(1, 2, QImage::Format_ARGB32);
    image.setPixel(0, 0, 0);
    image.setPixel(0, 1, source);
    Compositor compositor;
    compositor.SetImage(image, QRect(0, 0, 1, 2), 1, 2);
    frame.insert(frame.begin(), 3, 0);
    compositor.Blend(frame.data(), 3, {0, alpha});
    return {frame.begin() + 3, frame.end()};
}

} // namespace

TEST(Compositor, OpaquePixelReplacesTheFrames)
{
    EXPECT_EQ(BlendOne(0xFF112233, 255, {1, 2, 3}), (std::vector<int>{0x11, 0x22, 0x33}));
}

TEST(Compositor, OpacityCountsTwiceAndOuterBytesChangePlaces)
{
    // a = 128, k = 64
    EXPECT_EQ(BlendOne(0xFF0A141E, 128, {200, 100, 50}),
              (std::vector<int>{(64 * 10 + 191 * 50) / 255, (64 * 20 + 191 * 100) / 255, (64 * 30 + 191 * 200) / 255}));
    // a = 10, k = 0: nothing of the source, but bytes 0 and 2 are still swapped
    EXPECT_EQ(BlendOne(0xFF0A141E, 10, {200, 100, 50}), (std::vector<int>{50, 100, 200}));
}

TEST(Compositor, OpacityOfZeroDrawsNothing)
{
    EXPECT_EQ(BlendOne(0xFF0A141E, 0, {200, 100, 50}), (std::vector<int>{200, 100, 50}));
}

TEST(Compositor, TransparentAndKeyedPixelsAreLeftAlone)
{
    EXPECT_EQ(BlendOne(0x000A141E, 255, {200, 100, 50}), (std::vector<int>{200, 100, 50}));
    EXPECT_EQ(BlendOne(0xFF000000, 255, {200, 100, 50}), (std::vector<int>{200, 100, 50}));
    EXPECT_EQ(BlendOne(0xFF000001, 255, {200, 100, 50}), (std::vector<int>{0, 0, 1}));
}

TEST(Compositor, EveryOpacityWithEveryAlpha)
{
    QImage image(256, 3, QImage::Format_ARGB32);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 256; ++x)
            image.setPixel(x, y, qRgba((x * 7 + y * 91) & 255, (x * 13) & 255, (255 - x) & 255, x));
    }
    for (int alpha = 0; alpha < 256; ++alpha)
        ExpectAsPlain(image, image.rect(), 256, 3, {0, static_cast<std::uint8_t>(alpha)});
}

TEST(Compositor, EveryWidthAndPadding)
{
    for (int width = 1; width <= 200; ++width) {
        const QImage image = RandomImage(width, 5, static_cast<unsigned>(width));
        for (const int padding : {0, 1, 5, 32}) {
            ExpectAsPlain(image, image.rect(), width, 5, {0, 255}, padding);
            ExpectAsPlain(image, image.rect(), width, 5, {0, 170}, padding);
        }
    }
}

TEST(Compositor, PositionsBeyondEveryEdge)
{
    const QImage image = RandomImage(37, 23, 7);
    for (int offset = -25; offset <= 25; ++offset)
        ExpectAsPlain(image, image.rect(), 37, 23, {offset, 200}, 7);
    for (const int x : {-100, -37, -36, -3, 0, 1, 30, 36, 37, 100}) {
        for (const int y : {-100, -23, -22, -1, 0, 2, 22, 23, 100}) {
            for (const QSize size : {QSize(1, 1), QSize(5, 4), QSize(37, 23), QSize(80, 60), QSize(200, 200)})
                ExpectAsPlain(image, QRect(QPoint(x, y), size), 37, 23, {3, 255}, 2);
        }
    }
}

TEST(Compositor, RandomImagesPlacesAndOpacities)
{
    std::mt19937 random(42);
    const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    for (int i = 0; i < 500; ++i) {
        const int width = 1 + below(70);
        const int height = 1 + below(40);
        const QRect rect(below(width + 10) - 10, below(height + 10) - 10, 1 + below(90), 1 + below(60));
        ExpectAsPlain(RandomImage(width, height, random()), rect, width, height,
                      {below(2 * height) - height, static_cast<std::uint8_t>(below(256))}, below(9));
    }
}

TEST(Compositor, EmptyRectangleDrawsNothing)
{
    const QImage image = RandomImage(9, 9, 3);
    for (const QRect &rect : {QRect(), QRect(0, 0, 9, 0), QRect(0, 0, 0, 9), QRect(3, 3, -5, -5), QRect(0, 5, 9, -4)})
        ExpectAsPlain(image, rect, 9, 9, {0, 255});
}

TEST(Compositor, ImageWithoutTheRowsToReadDrawsNothing)
{
    GuardedFrame frame(16, 16);
    const auto before = frame.Bytes();
    AVPicture picture = frame.Picture();
    Compositor compositor;
    for (const QImage &image : {QImage(), RandomImage(16, 8, 1), RandomImage(15, 16, 1),
                                RandomImage(16, 16, 1).convertToFormat(QImage::Format_RGB888)}) {
        compositor.SetImage(image, QRect(0, 0, 16, 16), 16, 16);
        compositor.Blend(picture.data[0], picture.linesize[0], {0, 255});
        EXPECT_TRUE(frame.Bytes() == before);
    }
}

TEST(Compositor, ImageOfRowsEnoughIsEnough)
{
    ExpectAsPlain(RandomImage(16, 8, 5), QRect(0, 0, 16, 8), 16, 16, {4, 255});
}

TEST(Compositor, SeesThatTheImageOrItsPlaceChanged)
{
    GuardedFrame frame(8, 8);
    GuardedFrame expected(8, 8);
    AVPicture picture = frame.Picture();
    AVPicture plain = expected.Picture();
    Compositor compositor;
    QImage image = RandomImage(8, 8, 1);
    const auto blendBoth = [&](const QRect &rect) {
        compositor.SetImage(image, rect, 8, 8);
        compositor.Blend(picture.data[0], picture.linesize[0], {0, 255});
        BlendPlainly(plain.data[0], plain.linesize[0],
                     {image.constBits(), rect.x(), rect.y(), rect.width(), rect.height(), 8, 8, 255, 0});
        EXPECT_TRUE(frame.Bytes() == expected.Bytes());
    };
    blendBoth(QRect(0, 0, 8, 3));
    blendBoth(QRect(0, 2, 8, 6));
    image.setPixel(4, 4, 0xFF00FF00);
    blendBoth(QRect(0, 2, 8, 6));
    image = RandomImage(8, 8, 2);
    blendBoth(QRect(0, 2, 8, 6));
}

TEST(Compositor, RowsMayLieBottomUp)
{
    const QImage image = RandomImage(11, 6, 9);
    GuardedFrame frame(11, 6);
    GuardedFrame expected(11, 6);
    Compositor compositor;
    compositor.SetImage(image, image.rect(), 11, 6);
    compositor.Blend(frame.Pixel(0, 5), -frame.Picture().linesize[0], {0, 99});
    BlendPlainly(expected.Pixel(0, 5), -expected.Picture().linesize[0], {image.constBits(), 0, 0, 11, 6, 11, 6, 99, 0});
    EXPECT_TRUE(frame.Bytes() == expected.Bytes());
}
