#include "render/glyphoutline.h"

#include "render/recordedtext.h"

#include <cmath>

namespace
{

/** Control points of the cubic curve that equals a quadratic one, computed as Qt does. */
QPointF FirstControl(QPointF from, QPointF control)
{
    return (2 * control + from) / 3;
}

QPointF SecondControl(QPointF control, QPointF end)
{
    return (2 * control + end) / 3;
}

bool IsSame(QPointF a, QPointF b)
{
    return a.x() == b.x() && a.y() == b.y(); // QPointF's == is fuzzy
}

double RoundTo64th(double value)
{
    return std::round(value * 64) / 64;
}

/**
 * Whether a curve is subdivided into the same points at every position. Where rounding errors of doubles could change a
 * decision, a slightly larger or smaller scale changes it too.
 */
bool IsSurelyDivided(QPointF start, QPointF first, QPointF second, QPointF end)
{
    constexpr double Little = 1e-6;    // far above rounding errors of doubles
    constexpr double SamePoint = 1e-2; // pixels; the scale moves points by far less, a subdivision by far more
    const QPolygonF points = CurvePoints(start, first, second, end);
    for (const double scale : {1 - Little, 1 + Little}) {
        const QPolygonF scaled = CurvePoints(start * scale, first * scale, second * scale, end * scale);
        if (scaled.size() != points.size())
            return false;
        for (int i = 0; i < points.size(); ++i) {
            if ((scaled[i] - points[i]).manhattanLength() > SamePoint)
                return false;
        }
    }
    return true;
}

/**
 * The other 64th that a coordinate may be rounded to if it lies so close to the middle between two 64ths that rounding
 * errors decide; else @p rounded.
 */
int OtherRounding(double exact, int rounded)
{
    constexpr double TooClose = 1e-6; // in 64ths; far above rounding errors of doubles
    const double value = exact * 64 + 0.5;
    if (std::abs(value - std::round(value)) >= TooClose)
        return rounded;
    return rounded > exact * 64 ? rounded - 1 : rounded + 1;
}

/** Rounds halves up, negative ones too, as Qt 5 does everywhere. */
int RoundHalfUp(double value)
{
    constexpr double Half = 0.5;
    const int below = static_cast<int>(value - 1);
    return value >= 0 ? static_cast<int>(value + Half) : static_cast<int>(value - below + Half) + below;
}

/**
 * A position as Qt rounds it.
 * @param isPlaced  false if the glyph lies at (0, 0) because its place in a frame is not known yet. All its coordinates
 *                  will most likely be positive there, where halves are rounded up; Qt 6 would round negative ones away
 *                  from zero.
 */
FixedPoint ToFixed(QPointF point, bool isPlaced)
{
    if (isPlaced)
        return {qRound(point.x() * 64), qRound(point.y() * 64)};
    return {RoundHalfUp(point.x() * 64), RoundHalfUp(point.y() * 64)};
}

GlyphOutline::Corner MakeCorner(QPointF exact, int curve, bool isPlaced)
{
    const FixedPoint point = ToFixed(exact, isPlaced);
    // End points of curves are exact in binary, so they are always rounded alike.
    const FixedPoint other =
        curve < 0 ? point : FixedPoint{OtherRounding(exact.x(), point.nX), OtherRounding(exact.y(), point.nY)};
    return {point, other, curve, false};
}

} // namespace

GlyphOutline::GlyphOutline(const QPainterPath &path)
{
    QPointF from;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element &element = path.elementAt(i);
        const QPointF end(element);
        if (element.isCurveTo()) {
            AddCurve(from, end, path.elementAt(i + 1), path.elementAt(i + 2));
            i += 2;
        } else {
            m_listElements.push_back({element.isMoveTo() ? Kind::Move : Kind::Line, from, {}, {}, end});
        }
        from = m_listElements.back().end;
    }
    m_listCorners = Flatten({0, 0});
}

void GlyphOutline::AddCurve(QPointF from, QPointF first, QPointF second, QPointF end)
{
    if (!IsSurelyDivided(from, first, second, end))
        m_setUnsureCurves.insert(static_cast<int>(m_listCurves.size()));
    const QPointF control(RoundTo64th((3 * first.x() - from.x()) / 2), RoundTo64th((3 * first.y() - from.y()) / 2));
    if (IsSame(FirstControl(from, control), first) && IsSame(SecondControl(control, end), second))
        m_listElements.push_back({Kind::Quadratic, from, control, {}, end});
    else
        m_listElements.push_back({Kind::Cubic, from, first, second, end});
    m_listCurves.push_back(m_listElements.back());
}

void GlyphOutline::AddCorners(const Element &element, QPointF origin, int curve, std::vector<Corner> &corners)
{
    const QPointF start = element.start + origin;
    const QPointF end = element.end + origin;
    const QPointF control = element.control + origin;
    const bool isPlaced = !origin.isNull();
    QPolygonF points;
    if (element.kind == Kind::Quadratic)
        points = CurvePoints(start, FirstControl(start, control), SecondControl(control, end), end);
    else if (element.kind == Kind::Cubic)
        points = CurvePoints(start, control, element.second + origin, end);
    else
        corners.push_back(MakeCorner(end, -1, isPlaced));
    for (int i = 0; i < points.size(); ++i)
        corners.push_back(MakeCorner(points[i], i + 1 < points.size() ? curve : -1, isPlaced));
}

std::vector<GlyphOutline::Corner> GlyphOutline::Flatten(QPointF origin) const
{
    std::vector<Corner> corners;
    corners.reserve(m_listCorners.size());
    int curve = 0;
    QPointF start;
    const auto close = [&] {
        if (corners.empty())
            return;
        corners.push_back(MakeCorner(start + origin, -1, !origin.isNull()));
        corners.back().bLast = true;
    };
    for (const Element &element : m_listElements) {
        if (element.kind == Kind::Move) {
            close();
            start = element.end;
        }
        AddCorners(element, origin, curve, corners);
        curve += element.kind == Kind::Quadratic || element.kind == Kind::Cubic;
    }
    close();
    return corners;
}

std::vector<GlyphOutline::Corner> GlyphOutline::FlattenCurve(int curve, QPointF origin) const
{
    std::vector<Corner> corners;
    corners.reserve(16); // more than most curves have
    corners.push_back(MakeCorner(m_listCurves[curve].start + origin, -1, !origin.isNull()));
    AddCorners(m_listCurves[curve], origin, curve, corners);
    return corners;
}
