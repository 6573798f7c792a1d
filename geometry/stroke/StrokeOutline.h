#pragma once

#include <cstddef>
#include <span>

#include <geometry/Polygon.h>
#include <geometry/stroke/StrokeJoinRule.h>
#include <geometry/stroke/StrokePath.h>
#include <geometry/stroke/StrokeSide.h>
#include <geometry/Stroker.h>

namespace Geometry {

/// Draws the edges of a pen that follows flattened paths.
///
/// The outline is, as an oriented boundary, the sum of the boundaries of simple pieces: for every
/// edge of the path a quadrilateral on either side, between the path and the pen's ends; a wedge on
/// the outer side of every turn; the caps. On the inner side of a turn the outline passes through
/// the vertex, so that each quadrilateral stays whole, and where a curve turns there is another
/// wedge. All pieces have the same orientation, hence the winding number of a point is the number
/// of pieces over it and never cancels, whatever the path does. Two details keep that true:
///
/// - Where the pen's normals cross, the quadrilaterals become fans (see StrokeSide).
/// - The inner side of a turn goes directly to where the two inner edges meet if that is in the
///   nearer half of both: each piece then keeps its orientation, and edges of pixels are not
///   covered twice along smooth curves.
class StrokeOutline
{
public:
    /// \param parameters valid, with radius and tolerance positive.
    void SetPen(const StrokeParameters& parameters, const StrokePrecision& precision) noexcept;

    /// One vertex alone draws its caps, back to back.
    void AddOpen(std::span<const StrokeVertex> vertices, PolyPolygonType<double>& out);
    /// \pre at least two vertices.
    void AddClosed(std::span<const StrokeVertex> vertices, PolyPolygonType<double>& out);

private:
    /// The side that the pen's normals cross on along an edge, if any.
    enum class Crossing
    {
        None,
        Left,
        Right,
    };
    /// A turn of the pen at a vertex.
    struct Turn
    {
        Point point;
        Point from, to; ///< where the pen's end on the outer side comes from and goes to
        double cosine;
        double side;                        ///< 1 where the left is the inner side, else -1
        bool straightBefore, straightAfter; ///< whether the edges run along the tangents
        bool besideFan;                     ///< whether the inner side of an edge is a fan
    };

    void AddVertex(const StrokeVertex& vertex, const StrokeVertex* before,
                   const StrokeVertex* after);
    void CloseFans(const StrokeVertex& vertex);
    Crossing FindCrossing(const StrokeVertex& from, const StrokeVertex& to) const;
    bool AddPlainCorner(const StrokeVertex& before, const StrokeVertex& vertex,
                        const StrokeVertex& after);
    bool MeetsInside(const StrokeVertex& before, const StrokeVertex& vertex,
                     const StrokeVertex& after, double twice) const;
    void AddTurn(const StrokeVertex& vertex, const StrokeVertex* before, const StrokeVertex* after);
    bool FindInnerMeeting(const Turn& turn, const StrokeVertex& before, const StrokeVertex& vertex,
                          const StrokeVertex& after, Point& meeting) const;
    void AddInnerTurn(StrokeSide& side, const Turn& turn, bool corner);
    void AddOuterJoin(StrokeSide& side, const Turn& turn, StrokeJoin join);
    void AddArc(StrokeSide& side, Point centre, Point from, Point to, double direction);
    void PrepareArcs();
    void AddCap(Point point, Point direction);
    void AddEllipse(Point point, Point left, Point ahead);

    double m_radius = 0.0;
    StrokeCap m_cap{};
    double m_capLength = 1.0;
    StrokeJoin m_join{};
    StrokeJoinRule m_joinRule;
    double m_arcExcess = 0.0; // 1 - cosine of half a step of an arc (the largest, at first)
    /// Steps of a half turn, and one of them as a rotation; no steps: not known yet.
    double m_arcSteps = 0.0;
    Point m_arcStep;
    /// Points that arcs may still take: a million dashes of a pen a million times as wide would
    /// fill the memory. Further arcs are straight.
    double m_arcPoints = 0.0;
    StrokeSide m_left;
    StrokeSide m_right;
};

} // namespace Geometry
