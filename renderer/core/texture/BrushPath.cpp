#include <renderer/core/texture/BrushPath.h>

#include <algorithm>
#include <cmath>

#include <geometry/Flatten.h>

namespace Renderer::Texture {

namespace {

using Point = Geometry::Point;

/// Beyond this squares of coordinates are of no use.
constexpr double MaxCoordinate = 1e100;
/// Pieces into which a step of a curve is cut at most, however sharply it turns.
constexpr int MostParts = 64;

bool IsUsable(std::span<const Point> points) noexcept
{
    return std::ranges::all_of(points, [](Point p) {
        return std::abs(p.x) <= MaxCoordinate && std::abs(p.y) <= MaxCoordinate;
    });
}

double Length(Point v) noexcept
{
    return std::hypot(v.x, v.y);
}

/// \p v brought to length 1, or \p fallback where it has none.
Point Normalise(Point v, Point fallback) noexcept
{
    const double length = Length(v);
    return length > 0.0 ? Point{v.x / length, v.y / length} : fallback;
}

/// The angle from one direction to another.
double GetTurn(Point a, Point b) noexcept
{
    return std::atan2(a.x * b.y - a.y * b.x, a.x * b.x + a.y * b.y);
}

Point Turn(Point direction, double angle) noexcept
{
    const double c = std::cos(angle), s = std::sin(angle);
    return {c * direction.x - s * direction.y, s * direction.x + c * direction.y};
}

} // namespace

bool BrushPath::SetRun(const Geometry::CurveDbl& run, double tolerance, double reach)
{
    // A chord lies reach·turn²/8 inside the edge.
    m_turn = std::clamp(std::sqrt(8.0 * tolerance / reach), 0.1 * MostTurn, MostTurn);
    m_samples.clear();
    const auto& points = run.GetPoints();
    if (!IsUsable(points) || (run.GetSegmentCount() == 0 && !(run.IsClosed() && !run.IsEmpty())))
        return false;
    Begin(points.front(), run.IsClosed());
    for (std::size_t i = 0; i < run.GetSegmentCount(); ++i) {
        const Point* const p = &points[3 * i];
        if (run.GetSegment(i) == Geometry::CurveDbl::Segment::Line)
            AddLine(p[3]);
        else
            AddCubic(p[0], p[1], p[2], p[3], tolerance);
    }
    return Finish();
}

bool BrushPath::SetRun(std::span<const Point> points, bool closed)
{
    m_samples.clear();
    if (!IsUsable(points) || points.size() + (closed ? 1 : 0) < 2)
        return false;
    Begin(points.front(), closed);
    for (const Point point : points.subspan(1))
        AddLine(point);
    return Finish();
}

void BrushPath::Begin(Point start, bool closed)
{
    m_start = m_end = start;
    m_length = 0.0;
    m_closed = closed;
}

void BrushPath::AddLine(Point end)
{
    const Point direction = Normalise(end - m_end, {});
    AddPiece(end, direction, direction);
}

void BrushPath::AddCubic(Point p0, Point p1, Point p2, Point p3, double tolerance)
{
    const Geometry::CubicPolynomial cubic(p0, p1, p2, p3);
    if (!cubic.IsFinite()) {
        AddLine(p3);
        return;
    }
    // Handles without length leave the direction to the next control points.
    const Point first = Normalise(p1 - p0, Normalise(p2 - p0, Normalise(p3 - p0, {})));
    const Point last = Normalise(p3 - p2, Normalise(p3 - p1, Normalise(p3 - p0, {})));
    Geometry::CubicWalker walker(cubic, tolerance);
    double t = 0.0;
    Point from = first;
    while (!walker.IsAtEnd()) {
        walker.Advance();
        const auto& step = walker.GetStep();
        const Point to = walker.IsAtEnd() ? last : Normalise(step.derivative, from);
        const int parts =
            std::clamp(int(std::ceil(std::abs(GetTurn(from, to)) / m_turn)), 1, MostParts);
        for (int i = 1; i <= parts; ++i) {
            const double at = t + (step.t - t) * i / parts;
            const Point direction = i < parts ? Normalise(cubic.Derivative(at), from) : to;
            AddPiece(i < parts ? cubic.Evaluate(at) : step.point, from, direction);
            from = direction;
        }
        t = step.t;
    }
}

void BrushPath::AddPiece(Point end, Point from, Point to)
{
    const double length = Length(end - m_end);
    if (!(length > 0.0))
        return;
    if (m_samples.empty() || !(m_samples.back().direction == from))
        m_samples.push_back({m_end, from, m_length});
    m_end = end;
    m_length += length;
    const double turn = GetTurn(from, to);
    const int steps = static_cast<int>(std::ceil(std::abs(turn) / MostTurn - 1e-3));
    for (int i = steps > 1 ? 0 : steps; i < steps; ++i)
        m_samples.push_back({end, Turn(from, turn * i / steps), m_length});
    m_samples.push_back({end, to, m_length});
}

bool BrushPath::Finish()
{
    if (m_closed && !(m_end == m_start))
        AddLine(m_start);
    if (m_samples.empty())
        m_samples.push_back({m_start, {1.0, 0.0}, 0.0});
    return true;
}

BrushPath::Sample BrushPath::At(double length, std::size_t& hint) const noexcept
{
    while (hint + 1 < m_samples.size() && m_samples[hint + 1].length <= length)
        ++hint;
    const Sample& a = m_samples[hint];
    if (hint + 1 == m_samples.size())
        return a;
    const Sample& b = m_samples[hint + 1];
    const double share = std::clamp((length - a.length) / (b.length - a.length), 0.0, 1.0);
    return {a.point + share * (b.point - a.point),
            Normalise(a.direction + share * (b.direction - a.direction), a.direction), length};
}

} // namespace Renderer::Texture
