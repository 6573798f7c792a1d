#include <geometry/CombineRegions.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include <geometry/region/CurveEdges.h>
#include <geometry/region/RegionLoops.h>

namespace Geometry {
namespace {

using Loop = std::span<const RegionLoops::Edge>;

/// A part of a segment on the way around a loop.
struct Part
{
    const CurveEdges::Segment* segment;
    double from, to; ///< its parameters
    Point start;     ///< where it begins; it ends where the next one begins
};

double Cross(Point a, Point b) noexcept
{
    return a.x * b.y - a.y * b.x;
}

double GetLength(Point a) noexcept
{
    return std::hypot(a.x, a.y);
}

/// Whether a loop is thinner than \p width on average.
bool IsThin(Loop loop, const Grid& grid, double width)
{
    double area = 0.0, length = 0.0;
    const Point origin = grid.GetPoint(loop.front().from);
    for (const RegionLoops::Edge& edge : loop) {
        const Point from = grid.GetPoint(edge.from) - origin;
        const Point to = grid.GetPoint(edge.to) - origin;
        area += 0.5 * Cross(from, to);
        length += GetLength(to - from);
    }
    return std::abs(area) < 0.5 * width * length;
}

/// The edges of a loop joined to parts of segments.
std::vector<Part> FindParts(Loop loop, const CurveEdges& edges, const Grid& grid)
{
    const auto goesOn = [&](std::size_t i) {
        const RegionLoops::Edge &edge = loop[i], &next = loop[(i + 1) % loop.size()];
        return edge.isForward == next.isForward &&
               edges.IsNext(edge.source, next.source, edge.isForward);
    };
    std::size_t first = 0; // an edge that begins a part
    while (first + 1 < loop.size() && goesOn((first + loop.size() - 1) % loop.size()))
        ++first;
    std::vector<Part> parts;
    for (std::size_t k = 0; k < loop.size(); ++k) {
        const RegionLoops::Edge& edge = loop[(first + k) % loop.size()];
        if (k == 0 || !goesOn((first + k - 1) % loop.size()))
            parts.push_back({&edges.GetSegment(edge.source),
                             edges.GetParameter(edge.source, edge.from), 0.0,
                             grid.GetPoint(edge.from)});
        parts.back().to = edges.GetParameter(edge.source, edge.to);
    }
    return parts;
}

/// Moves the point where two parts meet, which is one of their chords, to where they do, if that is
/// near: a few steps by Newton's method, or the ends of their segments.
void RefineMeeting(Part& before, Part& after, double tolerance)
{
    double s = before.to, t = after.from;
    const auto isEnd = [](double parameter) { return parameter == 0.0 || parameter == 1.0; };
    for (int step = 0; step < 6; ++step) {
        const Point a = before.segment->GetDerivative(s), b = after.segment->GetDerivative(t);
        const Point apart = after.segment->Evaluate(t) - before.segment->Evaluate(s);
        const double determinant = Cross(a, b);
        if (apart == Point{} || std::abs(determinant) <= 1e-6 * GetLength(a) * GetLength(b))
            break;
        s = std::clamp(s + Cross(apart, b) / determinant, 0.0, 1.0);
        t = std::clamp(t + Cross(apart, a) / determinant, 0.0, 1.0);
    }
    if (isEnd(before.to) && isEnd(after.from)) {
        s = before.to;
        t = after.from;
    }
    const Point meeting = before.segment->Evaluate(s);
    if (GetLength(meeting - after.segment->Evaluate(t)) > 1e-3 * tolerance ||
        GetLength(meeting - after.start) > 2.0 * tolerance)
        return;
    before.to = s;
    after.from = t;
    after.start = meeting;
}

/// The part of a cubic, its ends moved to where it meets its neighbours.
void AddCubic(const Part& part, Point end, CurveDbl& run)
{
    const auto points = part.segment->GetPart(part.from, part.to);
    run.CurveTo(points[1] + (part.start - points[0]), points[2] + (end - points[3]), end);
}

CurveDbl MakeRun(const std::vector<Part>& parts)
{
    CurveDbl run(parts.front().start);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const Point end = parts[(i + 1) % parts.size()].start;
        if (!parts[i].segment->isLine)
            AddCubic(parts[i], end, run);
        else if (i + 1 < parts.size()) // the last line closes the run
            run.LineTo(end);
    }
    run.SetClosed(true);
    return run;
}

/// The box of all runs that can be worked with, controls included.
void AddBox(const PolyCurveDbl& path, BoundingBoxT<double>& box)
{
    for (const CurveDbl& run : path.GetCurves())
        if (CurveEdges::IsUsable(run))
            for (const Point point : run.GetPoints())
                box.Add(point);
}

} // namespace

bool CombineRegions(const PolyCurveDbl& a, WindingOrderMode ruleA, const PolyCurveDbl& b,
                    WindingOrderMode ruleB, RegionOperation operation, double tolerance,
                    PolyCurveDbl& out)
{
    BoundingBoxT<double> box;
    AddBox(a, box);
    AddBox(b, box);
    if (!box.IsValid())
        return true;
    const Grid grid(box);
    CurveEdges edges(grid, 0.25 * tolerance);
    edges.Add(a, 0);
    edges.Add(b, 1);
    RegionLoops loops;
    if (!loops.Build(edges.GetEdges(), ruleA, ruleB, operation))
        return false;
    for (std::size_t i = 0; i < loops.GetCount(); ++i) {
        if (IsThin(loops.GetLoop(i), grid, tolerance))
            continue;
        std::vector<Part> parts = FindParts(loops.GetLoop(i), edges, grid);
        for (std::size_t k = 0; k < parts.size(); ++k)
            RefineMeeting(parts[k], parts[(k + 1) % parts.size()], tolerance);
        out.AddCurve(MakeRun(parts));
    }
    return true;
}

} // namespace Geometry
