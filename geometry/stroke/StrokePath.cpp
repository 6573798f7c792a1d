#include <geometry/stroke/StrokePath.h>

#include <algorithm>
#include <numbers>

namespace Geometry {

StrokePrecision StrokePrecision::Make(double radius, double tolerance) noexcept
{
    // At most a right angle at once, even for pens thinner than the tolerance. And no more than
    // some 7,000 steps for a full turn, which keeps the tolerance up to radii five million times as
    // large.
    const double halfTurn =
        std::clamp(1.0 - 0.5 * tolerance / radius, std::numbers::sqrt2 / 2.0, 1.0 - 1e-7);
    return {0.5 * tolerance, halfTurn, 1e-4 * std::min(tolerance, radius)};
}

StrokePath& StrokePathBuilder::Build(const CurveDbl& curve)
{
    const std::vector<Point>& points = curve.GetPoints();
    if (!Start(points, curve.IsClosed()))
        return m_path;
    for (std::size_t i = 0; i < curve.GetSegmentCount(); ++i) {
        if (curve.GetSegment(i) == CurveDbl::Segment::Line)
            AddLine(points[3 * i + 3]);
        else
            AddCubic(&points[3 * i]);
    }
    Finish(curve.GetSegmentCount() > 0);
    return m_path;
}

StrokePath& StrokePathBuilder::Build(const PolyPolygonType<double>::View& polygon)
{
    if (!Start(polygon.points, polygon.closed))
        return m_path;
    for (const Point point : polygon.points.subspan(1))
        AddLine(point);
    Finish(polygon.points.size() > 1);
    return m_path;
}

bool StrokePathBuilder::Start(std::span<const Point> points, bool closed)
{
    constexpr double largest = 1e100;
    m_path.vertices.clear();
    m_path.closed = closed;
    m_path.isDot = false;
    const bool usable = std::all_of(points.begin(), points.end(), [](Point p) {
        return std::abs(p.x) <= largest && std::abs(p.y) <= largest;
    });
    if (!usable || points.empty())
        return false;
    m_path.vertices.push_back({points.front(), {1.0, 0.0}, {1.0, 0.0}, false});
    return true;
}

void StrokePathBuilder::AddLine(Point end)
{
    StrokeVertex& last = m_path.vertices.back();
    const Point step = end - last.point;
    const double length = Length(step);
    if (length <= m_precision.shortest)
        return;
    const Point direction = step * (1.0 / length);
    last.out = direction;
    last.corner = true;
    m_path.vertices.push_back({end, direction, direction, false});
}

void StrokePathBuilder::AddCubic(const Point* p)
{
    const Point start = FirstDirection({}, {p[1] - p[0], p[2] - p[0], p[3] - p[0]});
    const Point end = FirstDirection({}, {p[3] - p[2], p[3] - p[1], p[3] - p[0]});
    if (start == Point{} || end == Point{})
        return; // all four coincide
    m_path.vertices.back().out = start;
    m_path.vertices.back().corner = true;

    const CubicPolynomial cubic(p[0], p[1], p[2], p[3]);
    CubicWalker walker(cubic, m_precision.curve);
    m_halvings = MaximumCubicPieces;
    double t0 = 0.0;
    Point tangent0 = start;
    while (!walker.IsAtEnd()) {
        const CubicWalker::Step& step = walker.Advance();
        const Point tangent1 = walker.IsAtEnd() ? end : TangentAt(cubic, step.t, tangent0);
        AddPiece(cubic, t0, tangent0, step.t, step.point, tangent1, 0);
        t0 = step.t;
        tangent0 = tangent1;
    }
}

/// Adds a piece of a curve, halved until the normals at its ends describe its edges well; where the
/// piece is too short for that to matter (a cusp), the pen turns about a point.
void StrokePathBuilder::AddPiece(const CubicPolynomial& cubic, double t0, Point tangent0, double t1,
                                 Point p1, Point tangent1, int depth)
{
    constexpr int deepest = 24;
    StrokeVertex& last = m_path.vertices.back();
    const Point chord = p1 - last.point;
    const double length = Length(chord);
    if (length > 0.5 * m_precision.curve && depth < deepest && m_halvings > 0) {
        const double least = m_precision.halfTurn * length;
        if (Dot(tangent0, chord) < least || Dot(tangent1, chord) < least) {
            --m_halvings;
            const double t = 0.5 * (t0 + t1);
            const Point tangent = TangentAt(cubic, t, tangent0);
            AddPiece(cubic, t0, tangent0, t, cubic.Evaluate(t), tangent, depth + 1);
            AddPiece(cubic, t, tangent, t1, p1, tangent1, depth + 1);
            return;
        }
    }
    if (length <= m_precision.shortest)
        last.out = tangent1;
    else
        m_path.vertices.push_back({p1, tangent1, tangent1, false});
}

void StrokePathBuilder::Finish(bool hasSegments)
{
    std::vector<StrokeVertex>& vertices = m_path.vertices;
    if (m_path.closed) {
        AddLine(vertices.front().point);
        if (vertices.size() > 1) {
            vertices.front().in = vertices.back().in;
            vertices.front().corner = true;
            vertices.pop_back();
        }
    } else {
        vertices.front().in = vertices.front().out;
        vertices.back().out = vertices.back().in;
    }
    if (vertices.size() == 1) {
        m_path.isDot = hasSegments || m_path.closed;
        vertices.front() = {vertices.front().point, {1.0, 0.0}, {1.0, 0.0}, false};
    }
}

Point StrokePathBuilder::FirstDirection(Point fallback,
                                        std::initializer_list<Point> candidates) const
{
    for (const Point candidate : candidates) {
        const double length = Length(candidate);
        if (length > m_precision.shortest)
            return candidate * (1.0 / length);
    }
    return fallback;
}

/// The tangent at a parameter inside; at a cusp the direction in which the curve leaves it.
Point StrokePathBuilder::TangentAt(const CubicPolynomial& cubic, double t, Point fallback) const
{
    const Point derivative = cubic.Derivative(t);
    const Point second = cubic.SecondDifference(t);
    const double length = Length(derivative), secondLength = Length(second);
    if (length > 1e-9 * secondLength)
        return derivative * (1.0 / length);
    return secondLength > 0.0 ? second * (1.0 / secondLength) : fallback;
}

} // namespace Geometry
