#include "render/textbitmap.h"

#include <array>
#include <gtest/gtest.h>
#include <vector>

extern "C" {
#include <libavutil/mem.h>
}

namespace
{

class TextBitmapTest : public testing::Test
{
protected:
    ~TextBitmapTest() override
    {
        av_freep(&m_out.data[0]);
        av_freep(&m_out.data[1]);
    }

    std::vector<int> Indexes(const QRect &rect) const
    {
        return {m_out.data[0], m_out.data[0] + rect.width() * rect.height()};
    }

    std::vector<int> Entry(int index) const { return {m_out.data[1] + index * 4, m_out.data[1] + index * 4 + 4}; }

    AVPicture m_out = {};
};

QImage Blank(int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(0);
    return image;
}

constexpr BitmapColors White = {0xFFFFFFFF, 0xFF0A0A0A, 255};

} // namespace

TEST_F(TextBitmapTest, IndexesMarkTextAndOpaqueBlackIsTransparent)
{
    QImage image(3, 2, QImage::Format_ARGB32);
    image.setPixel(0, 0, 0xFFFFFFFF);
    image.setPixel(1, 0, 0xFF0A0A0A);
    image.setPixel(2, 0, 0);
    image.setPixel(0, 1, 0xFF000000);
    image.setPixel(1, 1, 0x80FFFFFF);
    image.setPixel(2, 1, 0xFF123456);
    ASSERT_TRUE(CreateTextBitmap(m_out, image, image.rect(), White));
    EXPECT_EQ(Indexes(image.rect()), (std::vector<int>{1, 2, 2, 0, 2, 2}));
    EXPECT_EQ(m_out.linesize[0], 3);
}

TEST_F(TextBitmapTest, ColumnsBeyondAnEdgeComeFromTheNeighbouringRow)
{
    QImage image(2, 3, QImage::Format_ARGB32);
    image.fill(0xFF000000);
    image.setPixel(1, 0, 0xFFFFFFFF);
    image.setPixel(0, 2, 0xFFFFFFFF);
    const QRect rect(-1, 0, 4, 4);
    ASSERT_TRUE(CreateTextBitmap(m_out, image, rect, White));
    EXPECT_EQ(Indexes(rect), (std::vector<int>{2, 0, 1, 0, //
                                               1, 0, 0, 1, //
                                               0, 1, 0, 2, //
                                               0, 2, 2, 2}));
}

TEST_F(TextBitmapTest, PaletteHoldsTextAndOutlineAsYuvWithAlpha)
{
    const QImage image = Blank(1, 1);
    ASSERT_TRUE(CreateTextBitmap(m_out, image, image.rect(), {0xFFFFFFFF, 0xFF0A0A0A, 77}));
    EXPECT_EQ(Entry(0), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(Entry(1), (std::vector<int>{128, 128, 235, 77}));
    EXPECT_EQ(Entry(2), (std::vector<int>{128, 128, 25, 77}));
    for (int i = 3; i < 256; ++i)
        EXPECT_EQ(Entry(i), (std::vector<int>{0, 0, 0, 0}));
}

TEST_F(TextBitmapTest, PaletteTakesBlueForRed)
{
    const QImage image = Blank(1, 1);
    ASSERT_TRUE(CreateTextBitmap(m_out, image, image.rect(), {0xFF0000FF, 0xFFFF0000, 255}));
    // Pure blue comes out as BT.601's red (Y 82, U 90, V 240), pure red as its blue (Y 41, U 240, V 110).
    EXPECT_EQ(Entry(1), (std::vector<int>{240, 90, 82, 255}));
    EXPECT_EQ(Entry(2), (std::vector<int>{110, 240, 41, 255}));
}

TEST_F(TextBitmapTest, EveryGreyKeepsNeutralChroma)
{
    const QImage image = Blank(1, 1);
    for (unsigned grey = 0; grey < 256; ++grey) {
        const quint32 color = 0xFF000000 | grey << 16 | grey << 8 | grey;
        ASSERT_TRUE(CreateTextBitmap(m_out, image, image.rect(), {color, color, 255}));
        EXPECT_EQ(Entry(1), (std::vector<int>{128, 128, static_cast<int>((220 * grey + 128) / 256 + 16), 255}));
    }
}

TEST_F(TextBitmapTest, SecondBitmapFreesTheFirst)
{
    const QImage image = Blank(20, 20);
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(CreateTextBitmap(m_out, image, image.rect(), White));
}

TEST_F(TextBitmapTest, OtherMembersOfThePictureAreLeftAlone)
{
    m_out.linesize[1] = 4711;
    m_out.data[2] = reinterpret_cast<uint8_t *>(this);
    const QImage image = Blank(2, 2);
    ASSERT_TRUE(CreateTextBitmap(m_out, image, image.rect(), White));
    EXPECT_EQ(m_out.linesize[1], 4711);
    EXPECT_EQ(m_out.data[2], reinterpret_cast<uint8_t *>(this));
}

TEST_F(TextBitmapTest, TooLargeABitmapIsRefused)
{
    const QImage image = Blank(1, 1);
    EXPECT_FALSE(CreateTextBitmap(m_out, image, QRect(0, 0, 1 << 30, 1 << 20), White));
    EXPECT_EQ(m_out.data[0], nullptr);
    EXPECT_EQ(m_out.data[1], nullptr);
}
