#pragma once

#include "render/polygonfiller.h"

#include <QPainterPath>
#include <QPointF>
#include <QPolygonF>

#include <set>
#include <vector>

/**
 * A glyph's outline relative to its origin, and the polygons that QPainter makes of it where it fills text as a path.
 *
 * Qt adds a glyph's position to its points before it flattens the curves, and rounds the flattened points to 1/64 pixel.
 * Curves of TrueType fonts have control points that are not exact in binary, so that a point in the middle between two
 * 64ths may be rounded up in one place and down in another. Flatten() does as Qt does, operation by operation.
 */
class GlyphOutline
{
public:
    /** @param path  of one glyph at position (0, 0), as the font engine delivers it. */
    explicit GlyphOutline(const QPainterPath &path);

    /** A corner of closed polygons that follow one another. */
    struct Corner {
        FixedPoint point;
        FixedPoint other; ///< where it may be rounded to in another place; the same point if it is always rounded alike
        int nCurve;       ///< number of the curve that the corner lies within, -1 for an end point
        bool bLast;       ///< of its polygon
    };

    /** Flattened at (0, 0). */
    const std::vector<Corner> &Corners() const { return m_listCorners; }

    /** Curves that may be divided differently in another place. */
    const std::set<int> &UnsureCurves() const { return m_setUnsureCurves; }

    /** @param origin  the glyph's position. */
    std::vector<Corner> Flatten(QPointF origin) const;

    /** The corners of one curve, with both ends, as Flatten() has them. */
    std::vector<Corner> FlattenCurve(int curve, QPointF origin) const;

private:
    enum class Kind { Move, Line, Quadratic, Cubic };
    struct Element {
        Kind kind;
        QPointF start;
        QPointF control; ///< of a quadratic curve; the first of a cubic one
        QPointF second;  ///< control point of a cubic curve
        QPointF end;
    };

    void AddCurve(QPointF from, QPointF first, QPointF second, QPointF end);
    /** All but the first. @param curve  its number, where it is one */
    static void AddCorners(const Element &element, QPointF origin, int curve, std::vector<Corner> &corners);

    std::vector<Element> m_listElements;
    std::vector<Element> m_listCurves; ///< those of the elements that are curves
    std::vector<Corner> m_listCorners;
    std::set<int> m_setUnsureCurves;
};
