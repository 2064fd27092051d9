#include "render/glyphoutline.h"

#include <array>
#include <cmath>

namespace
{

constexpr double FlatEnough = 0.25; // Qt's threshold for paths that are not scaled
constexpr double TooClose = 1e-6;   // far above the errors of doubles, far below what decisions differ by
constexpr int MaxLevel = 9;

/** A cubic Bezier curve by its four points. */
using Curve = std::array<QPointF, 4>;

QPointF Middle(QPointF a, QPointF b)
{
    return (a + b) * 0.5;
}

/** Splits at the middle: @p curve becomes the second half. */
Curve SplitOffFirstHalf(Curve &curve)
{
    const QPointF m12 = Middle(curve[0], curve[1]);
    const QPointF m23 = Middle(curve[1], curve[2]);
    const QPointF m34 = Middle(curve[2], curve[3]);
    const QPointF m123 = Middle(m12, m23);
    const QPointF m234 = Middle(m23, m34);
    const QPointF middle = Middle(m123, m234);
    const Curve first = {curve[0], m12, m123, middle};
    curve = {middle, m234, m34, curve[3]};
    return first;
}

/** Whether the curve passes for a line; @p sure is cleared when that is a close decision. */
bool IsFlat(const Curve &c, bool &sure)
{
    const double dy = c[3].y() - c[0].y();
    const double dx = c[3].x() - c[0].x();
    double length = std::abs(dx) + std::abs(dy);
    double distance = 0;
    if (std::abs(length - 1.0) < TooClose)
        sure = false;
    if (length > 1.0) {
        distance = std::abs(dx * (c[0].y() - c[1].y()) - dy * (c[0].x() - c[1].x())) +
                   std::abs(dx * (c[0].y() - c[2].y()) - dy * (c[0].x() - c[2].x()));
    } else {
        distance = std::abs(c[0].x() - c[1].x()) + std::abs(c[0].y() - c[1].y()) + std::abs(c[0].x() - c[2].x()) +
                   std::abs(c[0].y() - c[2].y());
        length = 1.0;
    }
    if (std::abs(distance - FlatEnough * length) < TooClose)
        sure = false;
    return distance < FlatEnough * length;
}

/** Appends the curve's flattened points, all but the first. */
void FlattenInto(std::vector<QPointF> &points, const Curve &whole, bool &sure)
{
    std::array<Curve, MaxLevel + 1> stack;
    std::array<int, MaxLevel + 1> levels;
    stack[0] = whole;
    levels[0] = MaxLevel;
    int top = 0;
    while (top >= 0) {
        if (IsFlat(stack[top], sure) || levels[top] == 0) {
            points.push_back(stack[top][3]);
            --top;
        } else {
            const Curve first = SplitOffFirstHalf(stack[top]);
            --levels[top];
            levels[top + 1] = levels[top];
            stack[++top] = first;
        }
    }
}

/** The cubic curve's control points for a quadratic curve, as Qt computes them. */
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
    return a.x() == b.x() && a.y() == b.y(); // QPointF's own comparison is a fuzzy one
}

double RoundTo64th(double value)
{
    return std::round(value * 64) / 64;
}

} // namespace

FixedPoint ToFixed(QPointF point)
{
    return {qRound(point.x() * 64), qRound(point.y() * 64)};
}

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
            m_listElements.push_back({element.isMoveTo() ? Kind::Move : Kind::Line, {}, {}, end});
        }
        from = m_listElements.back().end;
    }
}

void GlyphOutline::AddCurve(QPointF from, QPointF first, QPointF second, QPointF end)
{
    m_listCurves.push_back(static_cast<int>(m_listElements.size()));
    const QPointF control(RoundTo64th((3 * first.x() - from.x()) / 2), RoundTo64th((3 * first.y() - from.y()) / 2));
    if (IsSame(FirstControl(from, control), first) && IsSame(SecondControl(control, end), second))
        m_listElements.push_back({Kind::Quadratic, control, {}, end});
    else
        m_listElements.push_back({Kind::Cubic, first, second, end});
}

std::vector<QPointF> GlyphOutline::Points(const Element &element, QPointF from, QPointF origin, bool &sure) const
{
    std::vector<QPointF> points;
    const QPointF start = from + origin;
    const QPointF end = element.end + origin;
    const QPointF control = element.control + origin;
    if (element.kind == Kind::Quadratic)
        FlattenInto(points, {start, FirstControl(start, control), SecondControl(control, end), end}, sure);
    else if (element.kind == Kind::Cubic)
        FlattenInto(points, {start, control, element.second + origin, end}, sure);
    else
        points.push_back(end);
    return points;
}

GlyphOutline::Polygons GlyphOutline::Flatten(QPointF origin) const
{
    Polygons polygons;
    int curve = 0;
    QPointF from;
    QPointF start;
    const auto close = [&] {
        if (polygons.listCorners.empty())
            return;
        polygons.listCorners.push_back({ToFixed(start + origin), start + origin, -1, true});
    };
    for (const Element &element : m_listElements) {
        if (element.kind == Kind::Move) {
            close();
            start = element.end;
        }
        const bool isCurve = element.kind == Kind::Quadratic || element.kind == Kind::Cubic;
        bool sure = true;
        const std::vector<QPointF> points = Points(element, from, origin, sure);
        if (!sure)
            polygons.listUnsureCurves.push_back(curve);
        for (std::size_t i = 0; i < points.size(); ++i) {
            const bool isInside = isCurve && i + 1 < points.size();
            polygons.listCorners.push_back({ToFixed(points[i]), points[i], isInside ? curve : -1, false});
        }
        curve += isCurve;
        from = element.end;
    }
    close();
    return polygons;
}

std::vector<FixedPoint> GlyphOutline::FlattenCurve(int curve, QPointF origin) const
{
    const int element = m_listCurves[curve];
    bool sure = true;
    std::vector<FixedPoint> corners;
    for (const QPointF point : Points(m_listElements[element], m_listElements[element - 1].end, origin, sure))
        corners.push_back(ToFixed(point));
    corners.pop_back();
    return corners;
}
