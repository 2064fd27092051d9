// Outlines whose flattening may depend on the place, and what their shapes say of it.
#include "render/glyphshape.h"

#include <gtest/gtest.h>

namespace
{

/** One closed polygon with one curve, so many times as large. */
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

/** The scale at which the curve begins to be divided once more, to a part in 10^12. */
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

GlyphShape Shape(const GlyphOutline &outline)
{
    PolygonFiller filler;
    return {outline, {0, 0}, filler};
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

TEST(GlyphShape, IsOddEverywhereWithAnUnsureCurve)
{
    const double scale = DividingScale();
    const GlyphOutline unsure(Bow(scale));
    EXPECT_TRUE(Shape(unsure).FindOddPlaces(50, 50, 1000).all());
    const GlyphOutline sure(Bow(scale * 1.001));
    EXPECT_TRUE(Shape(sure).FindOddPlaces(50, 50, 1000).none());
}

TEST(GlyphShape, IsOddEverywhereNextToTheFirstAndLastRow)
{
    const GlyphOutline outline(Bow(1));
    const GlyphShape shape = Shape(outline);
    const int top = shape.Mask().nTop;
    const int bottom = top + shape.Mask().nRows;
    EXPECT_TRUE(shape.FindOddPlaces(0, OutlineRadius - top, 1000).none());
    EXPECT_TRUE(shape.FindOddPlaces(0, OutlineRadius - top - 1, 1000).all());
    EXPECT_TRUE(shape.FindOddPlaces(0, 1000 - OutlineRadius - bottom, 1000).none());
    EXPECT_TRUE(shape.FindOddPlaces(0, 1000 - OutlineRadius - bottom + 1, 1000).all());
}

TEST(GlyphShape, OfAnImageIsNowhereOdd)
{
    const GlyphShape shape(MakeMask(0, 0, 5, 5));
    EXPECT_TRUE(shape.FindOddPlaces(0, 0, 5).none());
}

TEST(GlyphShape, FillsAsItsMaskWhereItIsNotOdd)
{
    const GlyphOutline outline(Bow(1));
    const GlyphShape shape = Shape(outline);
    PolygonFiller filler;
    const BitMask filled = shape.FillAt(30, 40, 999, filler);
    EXPECT_EQ(filled.nLeft, shape.Mask().nLeft + 30);
    EXPECT_EQ(filled.nTop, shape.Mask().nTop + 40);
    EXPECT_EQ(filled.listWords, shape.Mask().listWords);
}
