#include "render/glyphshape.h"

#include "render/textink.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>

namespace
{

constexpr int AllRows = std::numeric_limits<int>::max() / 2;

using Corner = GlyphOutline::Corner;

/** Whether a coordinate lies so close to the middle between two 64ths that it is rounded up here and down there. */
bool IsUndecided(double exact)
{
    constexpr double TooClose = 1e-6; // in 64ths; far above the errors of doubles
    const double value = exact * 64 + 0.5;
    return std::abs(value - std::round(value)) < TooClose;
}

/** A corner's possible places. */
class Roundings
{
public:
    explicit Roundings(const Corner &corner) :
        m_point(corner.point),
        m_nOtherX(Other(corner.exact.x(), corner.point.nX, corner.nCurve)),
        m_nOtherY(Other(corner.exact.y(), corner.point.nY, corner.nCurve))
    {
    }
    FixedPoint Point(unsigned choice) const
    {
        return {choice & 1 ? m_nOtherX : m_point.nX, choice & 2 ? m_nOtherY : m_point.nY};
    }
    bool IsCertain() const { return m_nOtherX == m_point.nX && m_nOtherY == m_point.nY; }

private:
    /** Ends of curves are exact in binary. */
    static int Other(double exact, int rounded, int curve)
    {
        if (curve < 0 || !IsUndecided(exact))
            return rounded;
        return rounded > exact * 64 ? rounded - 1 : rounded + 1;
    }

    FixedPoint m_point;
    int m_nOtherX;
    int m_nOtherY;
};

bool CrossesSameColumns(FixedPoint a1, FixedPoint a2, FixedPoint b1, FixedPoint b2)
{
    PolygonEdge a = {};
    PolygonEdge b = {};
    const bool hasA = MakeEdge(a1, a2, -AllRows, AllRows, a);
    const bool hasB = MakeEdge(b1, b2, -AllRows, AllRows, b);
    if (hasA != hasB)
        return false;
    if (!hasA)
        return true;
    if (a.nTop != b.nTop || a.nBottom != b.nBottom || a.nWinding != b.nWinding)
        return false;
    for (int row = a.nTop; row <= a.nBottom; ++row)
        if (a.Column(row) != b.Column(row))
            return false;
    return true;
}

/** Whether the side crosses the same columns whichever way its ends are rounded. */
bool IsDelicate(const Roundings &from, const Roundings &to)
{
    if (from.IsCertain() && to.IsCertain())
        return false;
    for (unsigned choice = 1; choice < 16; ++choice)
        if (!CrossesSameColumns(from.Point(0), to.Point(0), from.Point(choice), to.Point(choice >> 2)))
            return true;
    return false;
}

void AddEdges(const std::vector<Corner> &corners, int firstRow, int lastRow, PolygonFiller &filler)
{
    for (std::size_t i = 1; i < corners.size(); ++i) {
        PolygonEdge edge = {};
        if (!corners[i - 1].bLast && MakeEdge(corners[i - 1].point, corners[i].point, firstRow, lastRow, edge))
            filler.Add(edge);
    }
}

} // namespace

GlyphShape::GlyphShape(const GlyphOutline &outline, FixedPoint place, PolygonFiller &filler) :
    m_pOutline(&outline), m_fraction({place.nX & 63, place.nY & 63})
{
    const int x = place.nX >> 6;
    const int y = place.nY >> 6;
    const GlyphOutline::Polygons polygons = m_pOutline->Flatten(Origin(x, y));
    AddEdges(polygons.listCorners, -AllRows, AllRows, filler);
    m_mask = filler.Fill();
    m_mask.nLeft -= x;
    m_mask.nTop -= y;
    m_nDirection = !filler.IsOneSided() ? 0 : filler.IsPositive() ? 1 : -1;
    FindDelicateCurves(polygons);
    for (DelicateCurve &curve : m_listDelicate)
        for (FixedPoint &corner : curve.listCorners)
            corner = {corner.nX - 64 * x, corner.nY - 64 * y};
}

void GlyphShape::FindDelicateCurves(const GlyphOutline::Polygons &polygons)
{
    const std::vector<Corner> &corners = polygons.listCorners;
    std::set<int> delicate(polygons.listUnsureCurves.begin(), polygons.listUnsureCurves.end());
    for (std::size_t i = 1; i < corners.size(); ++i) {
        if (!corners[i - 1].bLast && IsDelicate(Roundings(corners[i - 1]), Roundings(corners[i])))
            delicate.insert(std::max(corners[i - 1].nCurve, corners[i].nCurve));
    }
    for (const int curve : delicate) {
        DelicateCurve item = {curve, {}};
        for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
            if (corners[i].nCurve != curve)
                continue;
            if (item.listCorners.empty())
                item.listCorners.push_back(corners[i - 1].point);
            item.listCorners.push_back(corners[i].point);
            if (corners[i + 1].nCurve != curve)
                item.listCorners.push_back(corners[i + 1].point);
        }
        m_listDelicate.push_back(item);
    }
}

QPointF GlyphShape::Origin(int x, int y) const
{
    return {x + m_fraction.nX / 64.0, y + m_fraction.nY / 64.0};
}

std::vector<FixedPoint> GlyphShape::RelativeCorners(int curve, int x, int y) const
{
    std::vector<FixedPoint> corners = m_pOutline->FlattenCurve(curve, Origin(x, y));
    for (FixedPoint &corner : corners)
        corner = {corner.nX - 64 * x, corner.nY - 64 * y};
    return corners;
}

bool GlyphShape::IsSameAround(int x, int y, int frameHeight) const
{
    if (!m_pOutline)
        return true;
    // Qt cuts the sides at the frame's first and last row before it rounds.
    const int first = y + m_mask.nTop;
    if (first < OutlineRadius || first + m_mask.nRows + OutlineRadius > frameHeight)
        return false;
    return std::all_of(m_listDelicate.begin(), m_listDelicate.end(),
                       [&](const DelicateCurve &curve) { return IsSameAround(curve, x, y); });
}

bool GlyphShape::IsSameAround(const DelicateCurve &curve, int x, int y) const
{
    const auto isSameAt = [&](Offset offset) {
        const std::vector<FixedPoint> corners = RelativeCorners(curve.nCurve, x + offset.nX, y + offset.nY);
        const std::vector<FixedPoint> &known = curve.listCorners;
        if (corners.size() + 2 != std::max<std::size_t>(known.size(), 2))
            return false;
        for (std::size_t i = 0; i + 1 < known.size(); ++i) {
            const FixedPoint from = i == 0 ? known[0] : corners[i - 1];
            const FixedPoint to = i + 2 == known.size() ? known[i + 1] : corners[i];
            if (!CrossesSameColumns(from, to, known[i], known[i + 1]))
                return false;
        }
        return true;
    };
    return isSameAt({0, 0}) && std::all_of(OutlineOffsets.begin(), OutlineOffsets.end(), isSameAt);
}

BitMask GlyphShape::FillAt(int x, int y, int lastRow, PolygonFiller &filler) const
{
    AddEdges(m_pOutline->Flatten(Origin(x, y)).listCorners, 0, lastRow, filler);
    return filler.Fill();
}
