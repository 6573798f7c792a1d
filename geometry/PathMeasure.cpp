#include <geometry/PathMeasure.h>

#include <algorithm>
#include <cmath>

#include <geometry/stroke/StrokeVector.h>

namespace Geometry {
namespace {

double GetNorm(Point a)
{
    return std::hypot(a.x, a.y); // whatever the magnitude
}

/// The unit tangent of a cubic that is no point.
Point FindDirection(const CubicPolynomial& cubic, double t)
{
    constexpr double standStill = 1e-11; // rounding is far smaller
    const Point first = cubic.Derivative(t), second = 6.0 * cubic.SecondDifference(t);
    const Point third = 6.0 * (cubic.SecondDifference(1.0) - cubic.SecondDifference(0.0));
    const double least = standStill * (GetNorm(first) + GetNorm(second) + GetNorm(third));
    // Before a point where all derivatives up to one are 0, the curve runs along that one: with its
    // sign, or against it if that is an even one.
    const double sign = t > 1.0 - 1e-9 ? -1.0 : 1.0;
    const Point direction = FirstDirection({first, sign * second, third}, least);
    return direction == Point{} ? Point{1.0, 0.0} : direction;
}

} // namespace

PathMeasure::PathMeasure(const PolyCurveDbl& path)
{
    for (const CurveDbl& run : path.GetCurves()) {
        const std::vector<Point>& points = run.GetPoints();
        for (std::size_t i = 0; i < run.GetSegmentCount(); ++i) {
            if (run.GetSegment(i) == CurveDbl::Segment::Line)
                AddLine(points[3 * i], points[3 * i + 3]);
            else
                AddCubic(&points[3 * i]);
        }
        if (run.IsClosed() && !points.empty())
            AddLine(points.back(), points.front());
    }
    m_isLoop = path.GetCurves().size() == 1 && path.GetCurves().front().IsClosed();
}

void PathMeasure::AddLine(Point from, Point to)
{
    Segment segment{{from, from, to, to}, {}, true};
    segment.arc.length = GetNorm(to - from);
    Add(segment);
}

void PathMeasure::AddCubic(const Point* p)
{
    Add({{p[0], p[1], p[2], p[3]}, m_arcs.Measure({p[0], p[1], p[2], p[3]}, 0.0, 1.0), false});
}

void PathMeasure::Add(const Segment& segment)
{
    if (!(segment.arc.length > 0.0) || !std::isfinite(segment.arc.length))
        return;
    m_segments.push_back(segment);
    m_lengths.push_back(GetLength() + segment.arc.length);
}

PathMeasure::Place PathMeasure::Locate(double distance) const
{
    distance = std::clamp(distance, 0.0, GetLength());
    const auto found = std::lower_bound(m_lengths.begin(), m_lengths.end() - 1, distance);
    const auto index = static_cast<std::size_t>(found - m_lengths.begin());
    const Segment& segment = m_segments[index];
    const auto& p = segment.points;
    const double along = distance - (index > 0 ? m_lengths[index - 1] : 0.0);
    if (segment.isLine) {
        const Point way = p[3] - p[0];
        return {p[0] + std::min(along / segment.arc.length, 1.0) * way,
                (1.0 / segment.arc.length) * way};
    }
    const CubicPolynomial cubic(p[0], p[1], p[2], p[3]);
    const double t = m_arcs.FindParameter(cubic, segment.arc, along);
    return {t < 1.0 ? cubic.Evaluate(t) : cubic.End(), FindDirection(cubic, t)};
}

} // namespace Geometry
