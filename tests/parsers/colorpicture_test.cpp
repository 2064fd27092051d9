// Pictures over each other, against the definition in doubles.
#include "parsers/colorpicture.h"

#include <array>
#include <gtest/gtest.h>

namespace
{

/** Alpha, red, green and blue, 0 to 255. */
std::array<double, 4> Over(std::uint32_t below, std::uint32_t above)
{
    const double alpha = (above >> 24) / 255.0;
    const double rest = (below >> 24) / 255.0 * (1 - alpha);
    std::array<double, 4> result = {255 * (alpha + rest)};
    for (int i = 1; i < 4; ++i)
        result[i] = ((above >> (24 - 8 * i) & 255) * alpha + (below >> (24 - 8 * i) & 255) * rest) / (alpha + rest);
    return result;
}

ColorPicture Filled(int left, int top, int columns, int rows, std::uint32_t color)
{
    return {
        100, 50, left, top, columns, rows, std::vector<std::uint32_t>(static_cast<std::size_t>(columns) * rows, color)};
}

std::uint32_t At(const ColorPicture &picture, int x, int y)
{
    const int column = x - picture.nLeft;
    const int row = y - picture.nTop;
    const bool isInside = column >= 0 && column < picture.nColumns && row >= 0 && row < picture.nRows;
    return isInside ? picture.listPixels[static_cast<std::size_t>(row) * picture.nColumns + column] : 0;
}

TEST(ColorPicture, ColoursLieOverEachOtherByTheirAlpha)
{
    for (std::uint32_t alpha = 0; alpha < 256; ++alpha) {
        for (std::uint32_t below = 0; below < 256; ++below) {
            if (alpha + below == 0)
                continue;
            const std::uint32_t upper = alpha << 24 | 0xFF8020;
            const std::uint32_t lower = below << 24 | 0x1003C8;
            const std::uint32_t mixed = LaidOver(lower, upper);
            const std::array<double, 4> expected = Over(lower, upper);
            for (int i = 0; i < 4; ++i)
                ASSERT_NEAR(mixed >> (24 - 8 * i) & 255, expected[i], 0.5001) << below << " " << alpha;
        }
    }
    EXPECT_EQ(LaidOver(0, 0) >> 24, 0U);
}

TEST(ColorPicture, PicturesKeepTheirPlaces)
{
    const ColorPicture first = Filled(10, 20, 5, 4, 0xFF0000FF);
    const ColorPicture second = Filled(13, 5, 30, 17, 0xFFFF0000);
    const ColorPicture none;
    const ColorPicture whole = LaidTogether({&first, nullptr, &none, &second});
    EXPECT_EQ(whole.nCanvasWidth, 100);
    EXPECT_EQ(whole.nCanvasHeight, 50);
    for (int y = 0; y < 50; ++y) {
        for (int x = 0; x < 100; ++x) {
            const std::uint32_t above = At(second, x, y);
            ASSERT_EQ(At(whole, x, y), above != 0 ? above : At(first, x, y)) << x << " " << y;
        }
    }
    EXPECT_EQ(LaidTogether({&first}).listPixels, first.listPixels);
    EXPECT_EQ(LaidTogether({}).nColumns, 0);
    EXPECT_EQ(LaidTogether({&none, nullptr}).nColumns, 0);
}

TEST(ColorPicture, AnotherCanvasTakesThePlaceOfThoseBeforeIt)
{
    const ColorPicture first = Filled(10, 20, 5, 4, 0xFF0000FF);
    ColorPicture second = Filled(13, 5, 3, 7, 0xFFFF0000);
    second.nCanvasWidth = 200;
    ColorPicture third = Filled(20, 5, 3, 7, 0xFF00FF00);
    third.nCanvasWidth = 200;
    const ColorPicture whole = LaidTogether({&first, &second, &third});
    EXPECT_EQ(whole.nCanvasWidth, 200);
    EXPECT_EQ(At(whole, 14, 6), 0xFFFF0000U);
    EXPECT_EQ(At(whole, 21, 6), 0xFF00FF00U);
    EXPECT_EQ(At(whole, 11, 21), 0U);
}

} // namespace
