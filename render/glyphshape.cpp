#include "render/glyphshape.h"

#include "render/textink.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace
{

constexpr int AllRows = std::numeric_limits<int>::max() / 2;

using Corner = GlyphOutline::Corner;

FixedPoint Moved(FixedPoint point, FixedPoint by)
{
    return {point.nX + by.nX, point.nY + by.nY};
}

/** One of the four points that a corner may be rounded to. */
FixedPoint Rounding(const Corner &corner, unsigned choice, FixedPoint moved)
{
    return Moved({choice & 1 ? corner.other.nX : corner.point.nX, choice & 2 ? corner.other.nY : corner.point.nY},
                 moved);
}

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

/** Whether the edge's columns depend on how its ends are rounded. */
bool IsDelicate(const Corner &from, const Corner &to, FixedPoint moved)
{
    if (from.point == from.other && to.point == to.other)
        return false;
    for (unsigned choice = 1; choice < 16; ++choice)
        if (!CrossesSameColumns(Rounding(from, 0, moved), Rounding(to, 0, moved), Rounding(from, choice, moved),
                                Rounding(to, choice >> 2, moved)))
            return true;
    return false;
}

void AddEdges(const std::vector<Corner> &corners, FixedPoint moved, int firstRow, int lastRow, PolygonFiller &filler)
{
    for (std::size_t i = 1; i < corners.size(); ++i) {
        PolygonEdge edge = {};
        if (!corners[i - 1].bLast &&
            MakeEdge(Moved(corners[i - 1].point, moved), Moved(corners[i].point, moved), firstRow, lastRow, edge))
            filler.Add(edge);
    }
}

} // namespace

GlyphShape::GlyphShape(const GlyphOutline &outline, FixedPoint fraction, PolygonFiller &filler) :
    m_pOutline(&outline), m_fraction(fraction)
{
    AddEdges(m_pOutline->Corners(), m_fraction, -AllRows, AllRows, filler);
    m_mask = filler.Fill();
    m_nDirection = !filler.IsOneSided() ? 0 : filler.IsPositive() ? 1 : -1;
    FindDelicateCurves();
}

void GlyphShape::FindDelicateCurves()
{
    const std::vector<Corner> &corners = m_pOutline->Corners();
    std::set<int> delicate = m_pOutline->UnsureCurves();
    for (std::size_t i = 1; i < corners.size(); ++i) {
        if (!corners[i - 1].bLast && IsDelicate(corners[i - 1], corners[i], m_fraction))
            delicate.insert(std::max(corners[i - 1].nCurve, corners[i].nCurve));
    }
    for (const int curve : delicate) {
        DelicateCurve item = {curve, {}};
        for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
            if (corners[i].nCurve != curve)
                continue;
            if (item.listCorners.empty())
                item.listCorners.push_back(Moved(corners[i - 1].point, m_fraction));
            item.listCorners.push_back(Moved(corners[i].point, m_fraction));
            if (corners[i + 1].nCurve != curve)
                item.listCorners.push_back(Moved(corners[i + 1].point, m_fraction));
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
        corner = Moved(corner, {-64 * x, -64 * y});
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
    AddEdges(m_pOutline->Flatten(Origin(x, y)), {0, 0}, 0, lastRow, filler);
    return filler.Fill();
}
