#include <geometry/region/CurveEdges.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include <geometry/Flatten.h>

namespace Geometry {
namespace {

Point Mix(Point a, Point b, double t) noexcept
{
    return a + t * (b - a);
}

bool IsBefore(Point a, Point b) noexcept
{
    return std::tie(a.x, a.y) < std::tie(b.x, b.y);
}

/// Whether a cubic runs in the direction that is followed when it is flattened.
bool IsForward(const Point* p) noexcept
{
    return p[0] == p[3] ? !IsBefore(p[2], p[1]) : IsBefore(p[0], p[3]);
}

} // namespace

Point CurveEdges::Segment::Evaluate(double t) const noexcept
{
    const Point a = Mix(points[0], points[1], t), b = Mix(points[1], points[2], t);
    const Point c = Mix(points[2], points[3], t);
    return Mix(Mix(a, b, t), Mix(b, c, t), t);
}

Point CurveEdges::Segment::GetDerivative(double t) const noexcept
{
    const Point a = points[1] - points[0], b = points[2] - points[1], c = points[3] - points[2];
    return 3.0 * Mix(Mix(a, b, t), Mix(b, c, t), t);
}

/// The polar form of the cubic at (from, from, from), (from, from, to) and so on.
std::array<Point, 4> CurveEdges::Segment::GetPart(double from, double to) const noexcept
{
    const auto polar = [this](double r, double s, double t) {
        const Point a = Mix(points[0], points[1], r), b = Mix(points[1], points[2], r);
        const Point c = Mix(points[2], points[3], r);
        return Mix(Mix(a, b, s), Mix(b, c, s), t);
    };
    return {polar(from, from, from), polar(from, from, to), polar(from, to, to), polar(to, to, to)};
}

bool CurveEdges::IsUsable(const CurveDbl& run)
{
    constexpr double largest = 1e100;
    return std::all_of(run.GetPoints().begin(), run.GetPoints().end(), [](Point point) {
        return std::abs(point.x) <= largest && std::abs(point.y) <= largest;
    });
}

void CurveEdges::Add(const PolyCurveDbl& path, int region)
{
    for (const CurveDbl& run : path.GetCurves()) {
        if (run.IsEmpty() || !IsUsable(run))
            continue;
        const std::vector<Point>& points = run.GetPoints();
        for (std::size_t i = 0; i < run.GetSegmentCount(); ++i) {
            if (run.GetSegment(i) == CurveDbl::Segment::Line)
                AddLine(points[3 * i], points[3 * i + 3], region);
            else
                AddCubic(&points[3 * i], region);
        }
        AddLine(points.back(), points.front(), region);
    }
}

void CurveEdges::AddLine(Point from, Point to, int region)
{
    const GridPoint start = m_grid.Round(from), end = m_grid.Round(to);
    if (start == end)
        return;
    m_segments.push_back({{from, Mix(from, to, 1.0 / 3.0), Mix(from, to, 2.0 / 3.0), to}, true});
    AddEdge(start, end, {static_cast<std::uint32_t>(m_segments.size() - 1), 0.0, 1.0}, region);
}

void CurveEdges::AddCubic(const Point* p, int region)
{
    const bool isForward = IsForward(p);
    const CubicPolynomial cubic = isForward ? CubicPolynomial(p[0], p[1], p[2], p[3])
                                            : CubicPolynomial(p[3], p[2], p[1], p[0]);
    m_steps.assign(1, {0.0, cubic.Start()});
    CubicWalker walker(cubic, m_tolerance);
    while (!walker.IsAtEnd()) {
        walker.Advance();
        m_steps.emplace_back(walker.GetStep().t, walker.GetStep().point);
    }
    if (!isForward) {
        std::reverse(m_steps.begin(), m_steps.end());
        for (auto& step : m_steps)
            step.first = 1.0 - step.first;
    }
    m_segments.push_back({{p[0], p[1], p[2], p[3]}, false});
    const auto segment = static_cast<std::uint32_t>(m_segments.size() - 1);
    double from = 0.0;
    GridPoint start = m_grid.Round(p[0]);
    for (const auto& [t, point] : m_steps) {
        const GridPoint end = m_grid.Round(point);
        if (end == start)
            continue;
        AddEdge(start, end, {segment, from, t}, region);
        start = end;
        from = t;
    }
}

void CurveEdges::AddEdge(GridPoint from, GridPoint to, const Span& span, int region)
{
    m_edges.push_back({from, to, region});
    m_spans.push_back(span);
}

bool CurveEdges::IsNext(std::uint32_t edge, std::uint32_t next, bool isForward) const
{
    const std::uint32_t following = isForward ? edge + 1 : edge - 1;
    return next == edge || (next == following && m_spans[next].segment == m_spans[edge].segment);
}

double CurveEdges::GetParameter(std::uint32_t edge, GridPoint point) const
{
    const GridVector way = m_edges[edge].to - m_edges[edge].from;
    const auto along = static_cast<double>(Dot(point - m_edges[edge].from, way));
    const double share = std::clamp(along / static_cast<double>(Dot(way, way)), 0.0, 1.0);
    const Span& span = m_spans[edge];
    return share == 1.0 ? span.to : span.from + share * (span.to - span.from);
}

} // namespace Geometry
