#pragma once

#include <span>
#include <vector>

#include <geometry/Polygon.h>
#include <geometry/stroke/StrokePath.h>
#include <geometry/Stroker.h>

namespace Geometry {

/// Draws the edges of a pen that follows flattened paths.
///
/// The outline is, as an oriented boundary, the sum of the boundaries of simple pieces: a
/// quadrilateral for every edge of the path, between the pen's positions at both ends; a wedge on
/// the outer side of every turn; the caps. On the inner side of a turn the outline passes through
/// the vertex, so that each quadrilateral stays whole. All pieces have the same orientation, hence
/// the winding number of a point is the number of pieces over it and never cancels, whatever the
/// path does. Two details keep that true:
///
/// - A quadrilateral along a curve has the pen's true normals at its ends. Where they would cross
/// (the
///   curve is tighter than the pen is wide) it becomes a rectangle along its chord, and the pen
///   turns at its ends.
/// - The inner side of a turn goes directly to where the two inner edges meet if that is in the
/// nearer
///   half of both: each piece then keeps its orientation, and edges of pixels are not covered twice
///   along smooth curves.
class StrokeOutline
{
public:
    /// \param parameters valid, radius and tolerance positive.
    StrokeOutline(const StrokeParameters& parameters, const StrokePrecision& precision,
                  PolyPolygonType<double>& out);

    /// One vertex alone draws its caps, back to back.
    void AddOpen(std::span<const StrokeVertex> vertices);
    /// \pre at least two vertices.
    void AddClosed(std::span<const StrokeVertex> vertices);

private:
    using Side = std::vector<Point>;

    /// An edge of the path with the pen's directions at its ends.
    struct Edge
    {
        Point from, to;
        Point start, end;
    };

    Edge MakeEdge(const StrokeVertex& from, const StrokeVertex& to) const;
    void AddVertex(const StrokeVertex& vertex, const Edge* before, const Edge* after);
    void AddTurn(Point point, Point in, Point out, StrokeJoin join, const Edge* before,
                 const Edge* after);
    bool FindInnerMeeting(const Edge& before, const Edge& after, double side, Point& meeting) const;
    void AddOuterJoin(Side& side, Point point, Point fromNormal, Point toNormal, double cosine,
                      double turn, StrokeJoin join);
    void AddArc(Side& side, Point centre, Point from, double angle);
    void AddCap(Point point, Point direction);
    void Flush(bool reversed, const Side& side);

    double m_radius;
    StrokeCap m_cap;
    StrokeJoin m_join;
    double m_mitreLimit;
    double m_largestTurn; // radians between neighbouring points of an arc
    double m_slack;       // a corner cut by this much is not seen
    /// Points that arcs may still take: a million dashes of a pen a million times as wide would
    /// fill the memory. Further arcs are straight.
    double m_arcPoints = 1 << 24;
    Side m_left;
    Side m_right;
    PolyPolygonType<double>& m_out;
};

} // namespace Geometry
