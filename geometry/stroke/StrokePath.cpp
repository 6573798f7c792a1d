#include <geometry/stroke/StrokePath.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace Geometry {
namespace {

/// Moves the pen's edges at a vertex where two smooth pieces of a curve meet, so that on average
/// they lie where the true ones are: those of the path by the average of both pieces, those of the
/// pen as the cosine of an angle running from -α to α, whose mean is 1 - α²/6 and not 1 - α²/2.
void CentreEdges(StrokeVertex& vertex, const StrokeWalker::Piece& before,
                 const StrokeWalker::Piece& after)
{
    if (!(before.length > 0.0 && after.length > 0.0 && IsSameDirection(vertex.in, vertex.out)))
        return;
    if (before.middle * after.middle > 0.0)
        vertex.aside = 0.5 * (before.middle + after.middle);
    vertex.reach = 1.0 + (2.0 - before.along / before.length - after.along / after.length) / 3.0;
}

/// Whether the pen turns at a vertex already: at a corner, or where a curve does so on the spot.
bool HasTurn(const StrokeVertex& vertex)
{
    return vertex.corner || !IsSameDirection(vertex.in, vertex.out);
}

} // namespace

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

StrokePath& StrokePathBuilder::Build(std::span<const Point> points, bool closed)
{
    if (!Start(points, closed))
        return m_path;
    for (const Point point : points.subspan(1))
        AddLine(point);
    Finish(points.size() > 1);
    return m_path;
}

bool StrokePathBuilder::Start(std::span<const Point> points, bool closed)
{
    m_path.vertices.clear();
    m_path.closed = closed;
    m_path.isDot = false;
    m_first = m_last = {};
    const double magnitude = GetMagnitude(points);
    if (points.empty() || std::isinf(magnitude))
        return false;
    m_precision = m_pen.At(magnitude);
    m_path.vertices.push_back({points.front(), {1.0, 0.0}, {1.0, 0.0}});
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
    StartSegment(direction);
    SetPiece({});
    m_path.vertices.push_back({end, direction, direction});
}

/// Leaves the last vertex, as a corner, with the direction of another segment.
void StrokePathBuilder::StartSegment(Point direction)
{
    if (m_path.vertices.size() == 1)
        m_path.vertices.front().in = direction;
    else if (HasTurn(m_path.vertices.back()))
        RepeatVertex();
    m_path.vertices.back().out = direction;
    m_path.vertices.back().corner = true;
}

/// Turns the pen at the last vertex, along a curve.
void StrokePathBuilder::TurnTo(Point direction)
{
    if (!IsSameDirection(m_path.vertices.back().out, direction) && HasTurn(m_path.vertices.back()))
        RepeatVertex();
    m_path.vertices.back().out = direction;
}

/// Adds the last vertex again, for another turn there.
void StrokePathBuilder::RepeatVertex()
{
    const StrokeVertex& last = m_path.vertices.back();
    m_path.vertices.push_back({last.point, last.out, last.out});
}

void StrokePathBuilder::AddCubic(const Point* points)
{
    const std::array<Point, 4> p = m_precision.WithoutTinyHandles(points);
    if (IsLine(p)) {
        AddLine(p[3]);
        return;
    }
    const double shortest = m_precision.shortest;
    const Point start = FirstDirection({p[1] - p[0], p[2] - p[0], p[3] - p[0]}, shortest);
    const Point end = FirstDirection({p[3] - p[2], p[3] - p[1], p[3] - p[0]}, shortest);
    if (start == Point{} || end == Point{})
        return; // all four coincide
    StartSegment(start);

    const CubicPolynomial cubic(p[0], p[1], p[2], p[3]);
    StrokeWalker walker(cubic, start, end, m_precision);
    while (!walker.IsAtEnd()) {
        const bool smooth = walker.Advance() && walker.GetPiece().length > m_precision.shortest;
        const StrokeWalker::Step& step = walker.GetStep();
        SetPiece(smooth ? walker.GetPiece() : StrokeWalker::Piece{});
        if (smooth)
            m_path.vertices.push_back({step.point, step.tangent, step.tangent});
        else
            AddTinyPiece(step.point, step.tangent);
    }
}

/// Takes note of the piece that leaves the last vertex; one without length is not smooth.
void StrokePathBuilder::SetPiece(const StrokeWalker::Piece& piece)
{
    if (m_path.vertices.size() == 1)
        m_first = piece;
    else
        CentreEdges(m_path.vertices.back(), m_last, piece);
    m_last = piece;
}

/// Adds a straight piece, at whose ends the pen turns; a point where it is too short even for that.
void StrokePathBuilder::AddTinyPiece(Point end, Point tangent)
{
    const Point chord = end - m_path.vertices.back().point;
    const double length = Length(chord);
    if (length <= m_precision.shortest) {
        TurnTo(tangent);
        return;
    }
    const Point direction = chord * (1.0 / length);
    TurnTo(direction);
    m_path.vertices.push_back({end, direction, tangent});
}

void StrokePathBuilder::Finish(bool hasSegments)
{
    std::vector<StrokeVertex>& vertices = m_path.vertices;
    if (m_path.closed) {
        AddLine(vertices.front().point);
        if (vertices.size() > 1) {
            vertices.front().in = vertices.back().out;
            vertices.front().corner = true;
            if (HasTurn(vertices.back()))
                vertices.back().point = vertices.front().point;
            else
                vertices.pop_back();
            CentreEdges(vertices.front(), m_last, m_first);
        }
    }
    if (vertices.size() == 1) {
        m_path.isDot = hasSegments || m_path.closed;
        vertices.front() = {vertices.front().point, {1.0, 0.0}, {1.0, 0.0}};
    }
}

} // namespace Geometry
