#include <geometry/stroke/StrokeDash.h>

#include <cmath>

namespace Geometry {
namespace {

/// The length of the path between two vertices: that of the arc of a circle which the tangents at
/// both ends describe, chord·(θ/2)/sin(θ/2) to the second order.
double MeasureEdge(const StrokeVertex& from, const StrokeVertex& to)
{
    const double chord = Length(to.point - from.point);
    const double sine = Cross(from.out, to.in);
    const bool isArc = Dot(from.out, to.in) > 0.5;
    return isArc ? chord * (1.0 + sine * sine / 24.0) : chord;
}

StrokeVertex Cut(const StrokeVertex& from, const StrokeVertex& to, double fraction)
{
    const Point point = from.point + fraction * (to.point - from.point);
    if (from.out == to.in)
        return {point, to.in, to.in, false};
    const Point tangent = from.out + fraction * (to.in - from.out);
    const double length = Length(tangent);
    const Point direction = length > 0.0 ? tangent * (1.0 / length) : to.in;
    return {point, direction, direction, false};
}

/// A flattened run's edges.
class EdgeRun
{
public:
    explicit EdgeRun(const StrokePath& path) : m_path(path) {}
    std::size_t GetEdgeCount() const
    {
        return m_path.closed ? m_path.vertices.size() : m_path.vertices.size() - 1;
    }
    double GetLength(std::size_t edge) const { return MeasureEdge(GetFrom(edge), GetTo(edge)); }
    bool IsClosed() const { return m_path.closed; }

    const StrokeVertex& GetFrom(std::size_t edge) const { return m_path.vertices[edge]; }
    const StrokeVertex& GetTo(std::size_t edge) const
    {
        return edge + 1 < m_path.vertices.size() ? m_path.vertices[edge + 1]
                                                 : m_path.vertices.front();
    }

private:
    const StrokePath& m_path;
};

} // namespace

/// Collects the vertices of dashes and draws them.
class StrokeDash::Dashes
{
public:
    Dashes(StrokeDash& dash, const StrokePath& path, StrokeOutline& outline,
           PolyPolygonType<double>& out)
        : m_piece(dash.m_piece),
          m_first(dash.m_first),
          m_path(path),
          m_run(path),
          m_outline(outline),
          m_out(out)
    {
        m_piece.clear();
        m_first.clear();
    }

    bool HasStart() const { return !m_piece.empty(); }
    bool HasLength() const { return m_piece.size() > 1; }
    void Start(std::size_t edge, double position, double length)
    {
        const StrokeVertex& from = m_run.GetFrom(edge);
        m_piece.push_back(position > 0.0 ? Cut(from, m_run.GetTo(edge), position / length)
                                         : StrokeVertex{from.point, from.out, from.out});
    }
    void Pass(std::size_t edge) { m_piece.push_back(m_run.GetTo(edge)); }
    void End(std::size_t edge, double position, double length)
    {
        const StrokeVertex end = Cut(m_run.GetFrom(edge), m_run.GetTo(edge), position / length);
        if (m_piece.empty() || !(m_piece.back().point == end.point))
            m_piece.push_back(end);
        EndPiece();
    }
    void Draw()
    {
        if (m_path.closed)
            EndPiece();
        m_outline.AddOpen(m_piece, m_out);
        m_piece.clear();
    }
    void Hold()
    {
        m_first.swap(m_piece);
        m_piece.clear();
    }
    void DrawHeld() const
    {
        if (!m_first.empty())
            m_outline.AddOpen(m_first, m_out);
    }
    void JoinHeld()
    {
        if (!m_first.empty())
            m_piece.insert(m_piece.end(), m_first.begin() + 1, m_first.end());
    }
    void DrawWhole() const
    {
        m_path.closed ? m_outline.AddClosed(m_path.vertices, m_out)
                      : m_outline.AddOpen(m_path.vertices, m_out);
    }

private:
    /// Nothing turns at the end of a dash, but for an open run at its own.
    void EndPiece()
    {
        if (m_piece.size() > 1)
            m_piece.back().out = m_piece.back().in;
    }

    std::vector<StrokeVertex>& m_piece;
    std::vector<StrokeVertex>& m_first;
    const StrokePath& m_path;
    EdgeRun m_run;
    StrokeOutline& m_outline;
    PolyPolygonType<double>& m_out;
};

void StrokeDash::Draw(const StrokePath& path, StrokeOutline& outline, PolyPolygonType<double>& out)
{
    Dashes dashes(*this, path, outline, out);
    m_cutter.Cut(EdgeRun(path), dashes);
}

} // namespace Geometry
