// Glyph outlines whose flattening may depend on their position, and whether GlyphShape knows where it does.
#include "render/glyphshape.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <utility>
#include <vector>

namespace
{

/** A closed path with one curve, scaled. */
QPainterPath Bow(double scale)
{
    QPainterPath path;
    path.moveTo(0, 0);
    path.cubicTo(QPointF(11, 40) * scale, QPointF(60, 50) * scale, QPointF(90, 0) * scale);
    path.lineTo(0, 0);
    return path;
}

std::size_t CornersOf(double scale)
{
    return GlyphOutline(Bow(scale)).Corners().size();
}

/** The least scale at which flattening divides the curve once more, with an error of at most 1e-12. */
double DividingScale()
{
    double below = 1;
    double above = 1;
    while (CornersOf(above) == CornersOf(below))
        above *= 1.1;
    while (above - below > 1e-12) {
        const double middle = (below + above) / 2;
        (CornersOf(middle) == CornersOf(below) ? below : above) = middle;
    }
    return above;
}

using Pixels = std::vector<std::pair<int, int>>; ///< row, column

/** The pixels of a moved mask in the rows [firstRow, firstRow + rows). */
Pixels PixelsOf(const BitMask &mask, FixedPoint move, int firstRow, int rows)
{
    Pixels pixels;
    for (int row = 0; row < mask.nRows; ++row) {
        for (int column = 0; column < mask.nColumns; ++column) {
            const int y = mask.nTop + row + move.nY;
            if (y >= firstRow && y < firstRow + rows && mask.Row(row)[column / 64] >> (column % 64) & 1)
                pixels.emplace_back(y, mask.nLeft + column + move.nX);
        }
    }
    return pixels;
}

} // namespace

TEST(GlyphOutline, CurveAtTheEdgeOfADivisionIsUnsure)
{
    const double scale = DividingScale();
    EXPECT_EQ(GlyphOutline(Bow(scale)).UnsureCurves(), std::set<int>{0});
    EXPECT_EQ(GlyphOutline(Bow(scale * (1 - 1e-7))).UnsureCurves(), std::set<int>{0});
    EXPECT_EQ(GlyphOutline(Bow(scale * 1.001)).UnsureCurves(), std::set<int>{});
    EXPECT_EQ(GlyphOutline(Bow(scale * 0.999)).UnsureCurves(), std::set<int>{});
}

TEST(GlyphShape, FitsAsItSays)
{
    constexpr int Height = 120;
    std::mt19937 random(1);
    const double scale = DividingScale();
    int uncacheable = 0;
    int unlikeMask = 0;
    for (int n = 0; n < 3000; ++n) {
        const GlyphOutline outline(Bow(n % 3 == 0 ? scale : 0.4 + static_cast<double>(random() % 1000) / 700));
        PolygonFiller filler;
        const GlyphShape shape(outline, {static_cast<int>(random() % 64), static_cast<int>(random() % 64)}, filler);
        const int x = static_cast<int>(random() % 16000);
        const int y = static_cast<int>(random() % (Height + 80)) - 40;
        const GlyphFit fit = shape.FindFit(x, y, Height);
        const BitMask here = shape.FillAt(x, y, filler);
        if (fit.bMaskFits) {
            ASSERT_EQ(PixelsOf(here, {0, 0}, y - 200, 400), PixelsOf(shape.Mask(), {x, y}, y - 200, 400));
        }
        for (std::size_t i = 0; i < fit.uncacheable.size(); ++i) {
            const Offset offset = i < OutlineOffsets.size() ? OutlineOffsets[i] : Offset{0, 0};
            if (!fit.uncacheable[i]) {
                ASSERT_EQ(PixelsOf(shape.FillAt(x + offset.nX, y + offset.nY, Height, filler), {0, 0}, 0, Height),
                          PixelsOf(here, {offset.nX, offset.nY}, 0, Height));
            }
        }
        uncacheable += fit.uncacheable.any();
        unlikeMask += !fit.bMaskFits;
    }
    EXPECT_GT(uncacheable, 0) << uncacheable;
    EXPECT_LT(uncacheable, 300);
    EXPECT_GT(unlikeMask, 0);
    EXPECT_LT(unlikeMask, 600);
}

TEST(GlyphShape, OfAnImageFitsEverywhere)
{
    const GlyphFit fit = GlyphShape(MakeMask(0, 0, 5, 5)).FindFit(0, 0, 5);
    EXPECT_TRUE(fit.bMaskFits);
    EXPECT_TRUE(fit.uncacheable.none());
}
