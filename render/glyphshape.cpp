#include "render/glyphshape.h"

#include "render/textink.h"

#include <algorithm>
#include <array>
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
    if (a1 == b1 && a2 == b2)
        return true;
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

/** Which coordinates of a corner may be rounded otherwise, as Rounding() counts them. */
unsigned Doubts(const Corner &corner)
{
    return (corner.point.nX != corner.other.nX ? 1U : 0U) | (corner.point.nY != corner.other.nY ? 2U : 0U);
}

/** Whether the edge's columns depend on how its ends are rounded. */
bool IsDelicate(const Corner &from, const Corner &to, FixedPoint moved)
{
    const unsigned doubts = Doubts(from) | Doubts(to) << 2;
    for (unsigned choice = doubts; choice != 0; choice = (choice - 1) & doubts) {
        if (!CrossesSameColumns(Rounding(from, 0, moved), Rounding(to, 0, moved), Rounding(from, choice, moved),
                                Rounding(to, choice >> 2, moved)))
            return true;
    }
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

OddPlaces GlyphShape::FindOddPlaces(int x, int y, int frameHeight) const
{
    OddPlaces odd;
    if (!m_pOutline)
        return odd;
    // Qt cuts the sides at the frame's first and last row before it rounds.
    const int first = y + m_mask.nTop;
    if (first < OutlineRadius || first + m_mask.nRows + OutlineRadius > frameHeight)
        return odd.set();
    for (const DelicateCurve &curve : m_listDelicate)
        odd |= FindOddPlaces(curve, x, y);
    return odd;
}

OddPlaces GlyphShape::FindOddPlaces(const DelicateCurve &curve, int x, int y) const
{
    OddPlaces odd;
    if (m_pOutline->UnsureCurves().count(curve.nCurve) > 0)
        return odd.set();
    // A curve divided alike has columns that do not depend on its row, and rows that do not depend on its column.
    std::array<std::vector<FixedPoint>, 2 * OutlineRadius + 1> moved;
    for (int distance = -OutlineRadius; distance <= OutlineRadius; ++distance) {
        std::vector<FixedPoint> &corners = moved[distance + OutlineRadius];
        corners = m_pOutline->FlattenCurve(curve.nCurve, Origin(x + distance, y + distance));
        for (FixedPoint &corner : corners)
            corner = Moved(corner, {-64 * (x + distance), -64 * (y + distance)});
    }
    const std::vector<FixedPoint> &known = curve.listCorners;
    const auto isSameAt = [&](Offset offset) {
        FixedPoint from = known.front();
        for (std::size_t i = 1; i < known.size(); ++i) {
            const FixedPoint to = i + 1 == known.size() ? known[i]
                                                        : FixedPoint{moved[offset.nX + OutlineRadius][i - 1].nX,
                                                                     moved[offset.nY + OutlineRadius][i - 1].nY};
            if (!CrossesSameColumns(from, to, known[i - 1], known[i]))
                return false;
            from = to;
        }
        return true;
    };
    for (std::size_t i = 0; i < OutlineOffsets.size(); ++i)
        odd[i] = !isSameAt(OutlineOffsets[i]);
    odd[OutlineOffsets.size()] = !isSameAt({0, 0});
    return odd;
}

BitMask GlyphShape::FillAt(int x, int y, int lastRow, PolygonFiller &filler) const
{
    AddEdges(m_pOutline->Flatten(Origin(x, y)), {0, 0}, 0, lastRow, filler);
    return filler.Fill();
}
