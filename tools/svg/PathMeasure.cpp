#include "PathMeasure.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Svg {

using Geometry::Point;

namespace {

/// Nodes and weights of Gauss and Legendre for five points on [−1, 1].
constexpr std::array<std::array<double, 2>, 5> Nodes{{{0.0, 0.5688888888888889},
                                                      {-0.5384693101056831, 0.47862867049936647},
                                                      {0.5384693101056831, 0.47862867049936647},
                                                      {-0.906179845938664, 0.23692688505618908},
                                                      {0.906179845938664, 0.23692688505618908}}};

double Norm(Point p) noexcept
{
    return std::hypot(p.x, p.y);
}

} // namespace

Point PathMeasure::Segment::Evaluate(double t) const noexcept
{
    const double s = 1.0 - t;
    return s * s * s * points[0] + 3.0 * s * s * t * points[1] + 3.0 * s * t * t * points[2] +
           t * t * t * points[3];
}

Point PathMeasure::Segment::Derive(double t) const noexcept
{
    const double s = 1.0 - t;
    return 3.0 * s * s * (points[1] - points[0]) + 6.0 * s * t * (points[2] - points[1]) +
           3.0 * t * t * (points[3] - points[2]);
}

/// The length from the start: the integral of the speed, in eight parts.
double PathMeasure::Segment::MeasureTo(double t) const noexcept
{
    constexpr int parts = 8;
    const double half = t / (2.0 * parts);
    double length = 0.0;
    for (int i = 0; i < parts; ++i) {
        const double middle = (2.0 * i + 1.0) * half;
        for (const auto& [node, weight] : Nodes)
            length += weight * half * Norm(Derive(middle + node * half));
    }
    return length;
}

double PathMeasure::Segment::FindParameter(double length) const noexcept
{
    // Newton's method; halves where that would leave the interval which holds the parameter.
    double low = 0.0, high = 1.0, t = 0.5;
    for (int i = 0; i < 64 && high - low > 1e-9; ++i) {
        const double excess = MeasureTo(t) - length;
        const double step = -excess / Norm(Derive(t)); // no number where both are 0
        if (std::abs(step) <= 1e-9)
            break;
        (excess < 0.0 ? low : high) = t;
        const double next = t + step;
        t = next > low && next < high ? next : (low + high) / 2.0;
    }
    return t;
}

/// Where the speed is 0, at a control on an end, the direction is that towards the next point.
Point PathMeasure::Segment::FindDirection(double t) const noexcept
{
    Point direction = Derive(t);
    const double extent =
        Norm(points[3] - points[0]) + Norm(points[1] - points[0]) + Norm(points[2] - points[0]);
    if (Norm(direction) <= 1e-6 * extent)
        direction = t < 0.5 ? points[2] - points[0] : points[3] - points[1];
    if (Norm(direction) <= 1e-6 * extent)
        direction = points[3] - points[0];
    const double length = Norm(direction);
    return length > 0.0 ? (1.0 / length) * direction : Point{1.0, 0.0};
}

PathMeasure::PathMeasure(const Geometry::PolyCurveDbl& path)
{
    for (const Geometry::CurveDbl& run : path.GetCurves()) {
        const auto& points = run.GetPoints();
        for (std::size_t i = 0; i < run.GetSegmentCount(); ++i) {
            const Point* const p = points.data() + 3 * i;
            if (run.GetSegment(i) == Geometry::CurveDbl::Segment::Line)
                AddLine(p[0], p[3]);
            else
                Add(p[0], p[1], p[2], p[3]);
        }
        if (run.IsClosed() && !points.empty())
            AddLine(points.back(), points.front());
    }
    m_isLoop = path.GetCurves().size() == 1 && path.GetCurves().front().IsClosed();
}

void PathMeasure::Add(Point a, Point b, Point c, Point d)
{
    const Segment segment{{a, b, c, d}};
    const double length = segment.MeasureTo(1.0);
    if (!(length > 0.0))
        return;
    m_lengths.push_back(GetLength() + length);
    m_segments.push_back(segment);
}

void PathMeasure::AddLine(Point a, Point b)
{
    Add(a, a + (1.0 / 3.0) * (b - a), a + (2.0 / 3.0) * (b - a), b);
}

PathMeasure::Place PathMeasure::Locate(double distance) const
{
    distance = std::clamp(distance, 0.0, GetLength());
    const auto found = std::lower_bound(m_lengths.begin(), m_lengths.end() - 1, distance);
    const auto index = static_cast<std::size_t>(found - m_lengths.begin());
    const Segment& segment = m_segments[index];
    const double before = index > 0 ? m_lengths[index - 1] : 0.0;
    const double t = segment.FindParameter(distance - before);
    return {segment.Evaluate(t), segment.FindDirection(t)};
}

} // namespace Svg
