#include <renderer/paint/PressureProfile.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

namespace Renderer {

namespace {

using Geometry::CurveDbl;
using Geometry::Point;

/// Half of what may change: curves become lines, and lines become one.
constexpr double Tolerance = 0.5e-6;

/// Whether points lie on the straight function between two others.
bool AreBetween(std::span<const Point> points, Point a, Point b)
{
    return std::all_of(points.begin(), points.end(), [&](Point p) {
        if (!(p.x >= a.x && p.x <= b.x))
            return false;
        const double share = b.x > a.x ? (p.x - a.x) / (b.x - a.x) : 0.0;
        return std::abs(p.y - std::lerp(a.y, b.y, share)) <= Tolerance;
    });
}

} // namespace

CurveDbl SimplifyPressure(const CurveDbl& pressure)
{
    const std::vector<Point>& points = pressure.GetPoints();
    if (points.empty())
        return pressure;
    CurveDbl simple(points.front());
    std::vector<Point> passed; // the ends of lines since the last point that is kept
    const auto flush = [&] {
        if (!passed.empty())
            simple.LineTo(passed.back());
        passed.clear();
    };
    for (std::size_t i = 0; i < pressure.GetSegmentCount(); ++i) {
        const Point* p = &points[3 * i];
        // A curve whose controls lie on the line between its ends is that line.
        if (pressure.GetSegment(i) == CurveDbl::Segment::Cubic &&
            !AreBetween({p + 1, 2}, p[0], p[3])) {
            flush();
            simple.CurveTo(p[1], p[2], p[3]);
            continue;
        }
        if (!AreBetween(passed, simple.GetPoints().back(), p[3]))
            flush();
        passed.push_back(p[3]);
    }
    flush();
    simple.SetClosed(pressure.IsClosed());
    return simple;
}

} // namespace Renderer
