#include "MarkerVertices.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include "PathData.h"

namespace Svg {

namespace {

using Geometry::CurveDbl;
using Geometry::Point;

using Direction = std::optional<double>;

/// The direction from the first of some points to the next that is elsewhere.
Direction FindDirection(const Point* first, int step, int count)
{
    for (int i = 1; i < count; ++i) {
        const Point& to = first[i * step];
        const double x = (to.x - first->x) * step;
        const double y = (to.y - first->y) * step;
        if (x != 0.0 || y != 0.0)
            return std::atan2(y, x);
    }
    return std::nullopt;
}

/// A segment's directions at its start and its end.
struct Tangents
{
    Direction start;
    Direction end;
};

std::vector<Tangents> FindTangents(const CurveDbl& curve)
{
    std::vector<Tangents> tangents;
    const std::vector<Point>& points = curve.GetPoints();
    for (std::size_t i = 0; i + 3 < points.size(); i += 3)
        tangents.push_back({FindDirection(&points[i], 1, 4), FindDirection(&points[i + 3], -1, 4)});
    if (curve.IsClosed()) {
        const Point ends[]{points.back(), points.front()};
        const Direction closing = FindDirection(ends, 1, 2);
        tangents.push_back({closing, closing});
    }
    // Without a length: as before, and where nothing is before, as after.
    Direction last;
    for (Tangents& t : tangents) {
        if (!t.start)
            t = {last, last};
        last = t.end;
    }
    last.reset();
    for (auto t = tangents.rbegin(); t != tangents.rend(); ++t) {
        if (!t->start)
            *t = {last, last};
        last = t->start;
    }
    return tangents;
}

/// The angle half way between two directions, by the shorter way round.
double Bisect(Direction in, Direction out)
{
    if (!in || !out)
        return in.value_or(out.value_or(0.0));
    const double turn = std::remainder(*out - *in, 2.0 * std::numbers::pi);
    return *in + turn / 2.0;
}

void AddRun(const CurveDbl& curve, std::size_t run, const std::vector<PathJoint>& innerJoints,
            std::vector<MarkerVertex>& out)
{
    const std::vector<Point>& points = curve.GetPoints();
    const std::vector<Tangents> tangents = FindTangents(curve);
    const bool closed = curve.IsClosed() && !tangents.empty();
    const Direction none;
    const auto in = [&](std::size_t i) {
        return i > 0 ? tangents[i - 1].end : closed ? tangents.back().end : none;
    };
    const auto after = [&](std::size_t i) {
        return i < tangents.size() ? tangents[i].start : closed ? tangents.front().start : none;
    };
    for (std::size_t i = 0; i <= tangents.size(); ++i) {
        if (std::ranges::binary_search(innerJoints, PathJoint{run, i}))
            continue;
        const std::size_t index = 3 * i < points.size() ? 3 * i : 0;
        out.push_back({points[index], Bisect(in(i), after(i))});
    }
}

} // namespace

std::vector<MarkerVertex> FindMarkerVertices(const Geometry::PolyCurveDbl& shape,
                                             const Element& element)
{
    std::vector<PathJoint> innerJoints;
    if (element.tag == Tag::Path)
        innerJoints = ParsePathData(element.Get("d")).innerJoints;
    std::vector<MarkerVertex> vertices;
    const auto& runs = shape.GetCurves();
    for (std::size_t run = 0; run < runs.size(); ++run) {
        if (!runs[run].IsEmpty())
            AddRun(runs[run], run, innerJoints, vertices);
    }
    return vertices;
}

} // namespace Svg
