#include "render/polygonfiller.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <random>
#include <vector>

namespace
{

constexpr int Width = 200;
constexpr int Height = 90;

using Polygon = std::vector<FixedPoint>;

QImage FillByPainter(const std::vector<Polygon> &polygons)
{
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    for (const Polygon &polygon : polygons) {
        path.moveTo(polygon[0].nX / 64.0, polygon[0].nY / 64.0);
        for (const FixedPoint &point : polygon)
            path.lineTo(point.nX / 64.0, point.nY / 64.0);
        path.closeSubpath();
    }
    QImage image(Width, Height, QImage::Format_ARGB32);
    image.fill(0);
    QPainter painter(&image);
    painter.fillPath(path, Qt::white);
    return image;
}

BitMask FillByFiller(PolygonFiller &filler, const std::vector<Polygon> &polygons)
{
    for (const Polygon &polygon : polygons) {
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            PolygonEdge edge = {};
            if (MakeEdge(polygon[i], polygon[(i + 1) % polygon.size()], 0, Height - 1, edge))
                filler.Add(edge);
        }
    }
    return filler.Fill();
}

bool IsSet(const BitMask &mask, int x, int y)
{
    const int row = y - mask.nTop;
    const int bit = x - mask.nLeft;
    return row >= 0 && row < mask.nRows && bit >= 0 && bit < 64 * mask.nWords &&
           (mask.Row(row)[bit / 64] >> (bit % 64) & 1);
}

void ExpectAsPainter(PolygonFiller &filler, const std::vector<Polygon> &polygons)
{
    const QImage image = FillByPainter(polygons);
    const BitMask mask = FillByFiller(filler, polygons);
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x)
            ASSERT_EQ(IsSet(mask, x, y), image.pixel(x, y) != 0) << x << " " << y;
}

Polygon Square(int left, int top, int side)
{
    left *= 64;
    top *= 64;
    side *= 64;
    return {{left, top}, {left + side, top}, {left + side, top + side}, {left, top + side}};
}

} // namespace

TEST(PolygonFiller, FillsAsThePainterDoes)
{
    std::mt19937 random(3);
    const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    PolygonFiller filler;
    for (int i = 0; i < 3000; ++i) {
        std::vector<Polygon> polygons(1 + below(3));
        for (Polygon &polygon : polygons)
            for (int n = 3 + below(i % 10 == 0 ? 60 : 6); n > 0; --n)
                polygon.push_back({below(Width * 64), below(Height * 64)});
        ExpectAsPainter(filler, polygons);
        if (HasFatalFailure())
            return;
    }
}

TEST(PolygonFiller, FillsSidesOnPixelCentres)
{
    std::mt19937 random(4);
    PolygonFiller filler;
    for (int i = 0; i < 500; ++i) {
        Polygon polygon(3 + random() % 4);
        for (FixedPoint &point : polygon)
            point = {static_cast<int>(random() % Width) * 64 + 32, static_cast<int>(random() % Height) * 64 + 32};
        ExpectAsPainter(filler, {polygon});
    }
}

TEST(PolygonFiller, EdgesAreCutToTheRowsGiven)
{
    const FixedPoint from = {640, -640};
    const FixedPoint to = {1280, 6400};
    PolygonEdge edge = {};
    ASSERT_TRUE(MakeEdge(from, to, 5, 20, edge));
    EXPECT_EQ(edge.nTop, 5);
    EXPECT_EQ(edge.nBottom, 20);
    EXPECT_EQ(edge.nWinding, 1);
    ASSERT_TRUE(MakeEdge(to, from, 5, 20, edge));
    EXPECT_EQ(edge.nWinding, -1);
    EXPECT_FALSE(MakeEdge(from, to, 100, 200, edge));
    EXPECT_FALSE(MakeEdge({0, 33}, {640, 95}, 0, 200, edge));
}

TEST(PolygonFiller, SaysWhetherWindingsHaveOneSign)
{
    PolygonFiller filler;
    const Polygon clockwise = Square(10, 10, 20);
    const Polygon counterclockwise(clockwise.rbegin(), clockwise.rend());
    FillByFiller(filler, {clockwise});
    EXPECT_TRUE(filler.IsOneSided());
    const bool isPositive = filler.IsPositive();
    FillByFiller(filler, {counterclockwise});
    EXPECT_TRUE(filler.IsOneSided());
    EXPECT_NE(filler.IsPositive(), isPositive);
    FillByFiller(filler, {clockwise, Polygon(counterclockwise)});
    EXPECT_TRUE(filler.IsOneSided());
    const Polygon aside = Square(60, 10, 20);
    FillByFiller(filler, {clockwise, Polygon(aside.rbegin(), aside.rend())});
    EXPECT_FALSE(filler.IsOneSided());
}

TEST(PolygonFiller, NothingGivesAnEmptyMask)
{
    PolygonFiller filler;
    EXPECT_EQ(filler.Fill().nRows, 0);
}
