#pragma once

#include "render/polygonfiller.h"

#include <QPainterPath>
#include <QPointF>
#include <QPolygonF>

#include <set>
#include <vector>

/**
 * A glyph's outline relative to its origin, and the polygons that QPainter makes of it when it fills text as a path.
 *
 * Qt adds a glyph's position to its points before it flattens the curves, and rounds the flattened points to 1/64
 * pixel. Control points of TrueType curves are not exact in binary, so a point in the middle between two 64ths may be
 * rounded up at one position and down at another. Flatten() repeats Qt's operations one by one.
 */
class GlyphOutline
{
public:
    /** @param path  of one glyph at position (0, 0), as the font engine delivers it. */
    explicit GlyphOutline(const QPainterPath &path);

    /** A corner of one of the closed polygons, which are stored one after the other. */
    struct Corner {
        FixedPoint point;
        FixedPoint other; ///< what it may be rounded to at another position; else equal to point
        int nCurve;       ///< number of the curve that the corner lies inside, -1 for an end point
        bool bLast;       ///< the last corner of its polygon
    };

    /** The corners for a glyph at (0, 0). */
    const std::vector<Corner> &Corners() const { return m_listCorners; }

    /** Numbers of the curves that may be subdivided differently at another position. */
    const std::set<int> &UnsureCurves() const { return m_setUnsureCurves; }

    /** @param origin  the glyph's position. */
    std::vector<Corner> Flatten(QPointF origin) const;

    /** The corners of one curve, with both end points, as Flatten() returns them. */
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
    /** Appends the corners of an element except its start. @param curve  its number if it is a curve */
    static void AddCorners(const Element &element, QPointF origin, int curve, std::vector<Corner> &corners);

    std::vector<Element> m_listElements;
    std::vector<Element> m_listCurves; ///< the curves among m_listElements, by number
    std::vector<Corner> m_listCorners;
    std::set<int> m_setUnsureCurves;
};
