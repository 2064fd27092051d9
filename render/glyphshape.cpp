#include "render/glyphshape.h"

#include "render/textink.h"

#include <algorithm>
#include <array>
#include <limits>
#include <set>

namespace
{

using Corner = GlyphOutline::Corner;

FixedPoint Moved(FixedPoint point, FixedPoint by)
{
    return {point.nX + by.nX, point.nY + by.nY};
}

/** One of the four points that a corner may be rounded to. @param choice  bit 0: the other x, bit 1: the other y */
FixedPoint RoundingCandidate(const Corner &corner, unsigned choice, FixedPoint moved)
{
    return Moved({choice & 1 ? corner.other.nX : corner.point.nX, choice & 2 ? corner.other.nY : corner.point.nY},
                 moved);
}

/** Rows of a frame, both included, relative to a glyph's position. */
struct Rows {
    int nFirst;
    int nLast;
};

constexpr Rows AllRows = {std::numeric_limits<int>::min() / 2, std::numeric_limits<int>::max() / 2};

Rows RowsOfFrame(int height, int y)
{
    return {-y, height - 1 - y};
}

/** Whether edge a, clipped to @p rows, crosses each of these rows in the same column as edge b, unclipped. */
bool CrossesSameColumns(FixedPoint a1, FixedPoint a2, const Rows &rows, FixedPoint b1, FixedPoint b2)
{
    const auto [top1, bottom1] = std::minmax({a1.nY >> 6, a2.nY >> 6});
    if (a1 == b1 && a2 == b2 && top1 >= rows.nFirst && bottom1 < rows.nLast)
        return true;
    PolygonEdge a = {};
    PolygonEdge b = {};
    const bool hasA = MakeEdge(a1, a2, rows.nFirst, rows.nLast, a);
    bool hasB = MakeEdge(b1, b2, AllRows.nFirst, AllRows.nLast, b);
    const int top = std::max(b.nTop, rows.nFirst);
    const int bottom = std::min(b.nBottom, rows.nLast);
    hasB = hasB && top <= bottom;
    if (!hasA || !hasB)
        return hasA == hasB;
    if (a.nTop != top || a.nBottom != bottom || a.nWinding != b.nWinding)
        return false;
    for (int row = top; row <= bottom; ++row)
        if (a.Column(row) != b.Column(row))
            return false;
    return true;
}

/** Which coordinates of a corner may be rounded in two ways, as bits like the choice of RoundingCandidate(). */
unsigned UncertainCoordinates(const Corner &corner)
{
    return (corner.point.nX != corner.other.nX ? 1U : 0U) | (corner.point.nY != corner.other.nY ? 2U : 0U);
}

/** Whether the columns that an edge crosses depend on how its ends are rounded. */
bool IsRoundingSensitive(const Corner &from, const Corner &to, FixedPoint moved)
{
    const unsigned uncertain = UncertainCoordinates(from) | UncertainCoordinates(to) << 2;
    for (unsigned choice = uncertain; choice != 0; choice = (choice - 1) & uncertain) {
        if (!CrossesSameColumns(RoundingCandidate(from, choice, moved), RoundingCandidate(to, choice >> 2, moved),
                                AllRows, RoundingCandidate(from, 0, moved), RoundingCandidate(to, 0, moved)))
            return true;
    }
    return false;
}

void AddEdges(const std::vector<Corner> &corners, FixedPoint moved, const Rows &rows, PolygonFiller &filler)
{
    for (std::size_t i = 1; i < corners.size(); ++i) {
        PolygonEdge edge = {};
        if (!corners[i - 1].bLast &&
            MakeEdge(Moved(corners[i - 1].point, moved), Moved(corners[i].point, moved), rows.nFirst, rows.nLast, edge))
            filler.Add(edge);
    }
}

/** A glyph's corners at its position and at the outline's offsets from there, each relative to its position. */
class CornersAround
{
public:
    /**
     * @param flatten   returns the corners for an offset.
     * @param isUnsure  number and places of the corners may change with the offset (see GlyphOutline::UnsureCurves()).
     *                  If false, a corner's column depends on the offset's column alone and its row on the offset's
     *                  row, so that the offsets (n, n) are enough.
     */
    template <typename Flatten>
    CornersAround(Flatten flatten, bool isUnsure) : m_bUnsure(isUnsure)
    {
        for (int y = 0; y < Side; ++y) {
            for (int x = 0; x < Side; ++x) {
                if (isUnsure || x == y)
                    m_listCorners[std::size_t{Side} * y + x] = flatten(x - OutlineRadius, y - OutlineRadius);
            }
        }
    }

    /** The corners at offset (0, 0). */
    const std::vector<Corner> &Here() const { return Corners({0, 0}); }

    FixedPoint At(std::size_t i, Offset offset) const
    {
        if (m_bUnsure)
            return Corners(offset)[i].point;
        return {Corners({offset.nX, offset.nX})[i].point.nX, Corners({offset.nY, offset.nY})[i].point.nY};
    }

    /** Whether the glyph has the same pixels at @p offset as at (0, 0), within @p rows. */
    bool IsSameAt(Offset offset, const Rows &rows) const
    {
        const std::vector<Corner> &here = Here();
        if (m_bUnsure && Corners(offset).size() != here.size())
            return false;
        for (std::size_t i = 1; i < here.size(); ++i) {
            if (!here[i - 1].bLast &&
                !CrossesSameColumns(At(i - 1, offset), At(i, offset), rows, here[i - 1].point, here[i].point))
                return false;
        }
        return true;
    }

private:
    static constexpr int Side = 2 * OutlineRadius + 1;

    const std::vector<Corner> &Corners(Offset offset) const
    {
        return m_listCorners[std::size_t{Side} * (offset.nY + OutlineRadius) + (offset.nX + OutlineRadius)];
    }

    std::array<std::vector<Corner>, std::size_t{Side} * Side> m_listCorners;
    bool m_bUnsure;
};

bool IsSameShape(const std::vector<Corner> &a, const std::vector<Corner> &b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 1; i < a.size(); ++i)
        if (!CrossesSameColumns(a[i - 1].point, a[i].point, AllRows, b[i - 1].point, b[i].point))
            return false;
    return true;
}

std::vector<Corner> Moved(std::vector<Corner> corners, FixedPoint by)
{
    for (Corner &corner : corners)
        corner.point = Moved(corner.point, by);
    return corners;
}

} // namespace

GlyphShape::GlyphShape(const GlyphOutline &outline, FixedPoint fraction, PolygonFiller &filler) :
    m_pOutline(&outline), m_fraction(fraction)
{
    AddEdges(m_pOutline->Corners(), m_fraction, AllRows, filler);
    m_mask = filler.Fill();
    m_nDirection = !filler.IsOneSided() ? 0 : filler.IsPositive() ? 1 : -1;
    FindRoundingSensitiveCurves();
}

void GlyphShape::FindRoundingSensitiveCurves()
{
    const std::vector<Corner> &corners = m_pOutline->Corners();
    std::set<int> sensitive = m_pOutline->UnsureCurves();
    for (std::size_t i = 1; i < corners.size(); ++i) {
        if (!corners[i - 1].bLast && IsRoundingSensitive(corners[i - 1], corners[i], m_fraction))
            sensitive.insert(std::max(corners[i - 1].nCurve, corners[i].nCurve));
    }
    for (const int curve : sensitive)
        m_listRoundingSensitive.push_back({curve, Moved(m_pOutline->FlattenCurve(curve, {0, 0}), m_fraction)});
}

QPointF GlyphShape::Origin(int x, int y) const
{
    return {x + m_fraction.nX / 64.0, y + m_fraction.nY / 64.0};
}

GlyphFit GlyphShape::FindFit(int x, int y, int frameHeight) const
{
    GlyphFit fit;
    if (!m_pOutline)
        return fit;
    const auto compare = [&](const CornersAround &corners) {
        for (std::size_t i = 0; i < fit.uncacheable.size(); ++i) {
            const Offset offset = i < OutlineOffsets.size() ? OutlineOffsets[i] : Offset{0, 0};
            if (!fit.uncacheable[i])
                fit.uncacheable[i] = !corners.IsSameAt(offset, RowsOfFrame(frameHeight, y + offset.nY));
        }
    };
    const auto around = [&](auto flatten, bool isUnsure) {
        return CornersAround(
            [&](int dx, int dy) {
                return Moved(flatten(Origin(x + dx, y + dy)), {-64 * (x + dx), -64 * (y + dy)});
            },
            isUnsure);
    };
    const std::set<int> &unsure = m_pOutline->UnsureCurves();
    for (const RoundingSensitiveCurve &curve : m_listRoundingSensitive) {
        const CornersAround corners =
            around([&](QPointF origin) { return m_pOutline->FlattenCurve(curve.nCurve, origin); },
                   unsure.count(curve.nCurve) > 0);
        fit.bMaskFits = fit.bMaskFits && IsSameShape(corners.Here(), curve.listCorners);
        compare(corners);
    }
    // QPainter clips edges to the frame's first and last row before it rounds.
    const int first = y + m_mask.nTop;
    if (first < OutlineReach || first + m_mask.nRows + OutlineReach > frameHeight)
        compare(around([&](QPointF origin) { return m_pOutline->Flatten(origin); }, !unsure.empty()));
    return fit;
}

BitMask GlyphShape::FillAt(int x, int y, PolygonFiller &filler) const
{
    AddEdges(m_pOutline->Flatten(Origin(x, y)), {0, 0}, AllRows, filler);
    return filler.Fill();
}

BitMask GlyphShape::FillAt(int x, int y, int frameHeight, PolygonFiller &filler) const
{
    AddEdges(m_pOutline->Flatten(Origin(x, y)), {0, 0}, RowsOfFrame(frameHeight, 0), filler);
    return filler.Fill();
}
