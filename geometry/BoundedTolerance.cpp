#include <geometry/BoundedTolerance.h>

#include <algorithm>
#include <cmath>

#include <geometry/StepPace.h>

namespace Geometry {
namespace {

/// The larger second difference of a cubic's control points.
double GetBend(const Point* p) noexcept
{
    const Point a = p[0] - 2.0 * p[1] + p[2], b = p[1] - 2.0 * p[2] + p[3];
    return std::max(std::hypot(a.x, a.y), std::hypot(b.x, b.y));
}

/// How many points a path takes at most, beside one per segment: of cubics √(¾·bend/tolerance)
/// (Wang, 1984), and never more than what flattening ends at.
double CountPoints(const PolyCurveDbl& path, double tolerance) noexcept
{
    double count = 0.0;
    for (const CurveDbl& curve : path.GetCurves())
        for (std::size_t i = 0; i < curve.GetSegmentCount(); ++i)
            if (curve.GetSegment(i) == CurveDbl::Segment::Cubic)
                count += std::min(std::sqrt(0.75 * GetBend(&curve.GetPoints()[3 * i]) / tolerance),
                                  double(MaximumCubicPieces));
    return count;
}

} // namespace

double GetBoundedTolerance(const PolyCurveDbl& path, double tolerance) noexcept
{
    if (!(tolerance > 0.0))
        return tolerance;
    double most = 1 << 20;
    for (const CurveDbl& curve : path.GetCurves())
        most += 16.0 * double(curve.GetSegmentCount());
    // Cubics that have reached their own end of refinement need the tolerance grown repeatedly.
    for (double count; (count = CountPoints(path, tolerance)) > most;)
        tolerance *= std::max(4.0, (count / most) * (count / most));
    return tolerance;
}

} // namespace Geometry
