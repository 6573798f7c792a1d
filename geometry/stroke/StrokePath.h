#pragma once

#include <span>
#include <vector>

#include <geometry/Curve.h>
#include <geometry/stroke/StrokePrecision.h>
#include <geometry/stroke/StrokeVector.h>
#include <geometry/stroke/StrokeWalker.h>

namespace Geometry {

/// A vertex of a flattened path that still knows the directions of the path itself.
struct StrokeVertex
{
    Point point;
    Point in;  ///< unit tangent of the path where it arrives
    Point out; ///< unit tangent where it goes on; the same as \c in on the way along a curve
    bool corner = false; ///< where two segments meet: gets the join of the user
    /// Where the pen's edges bend along a curve: by how much to the left of the point, and in radii
    /// how far from there. They lie a little outside the true ones there, so that between the
    /// vertices they lie as much outside as inside.
    double aside = 0.0;
    double reach = 1.0;
};

/// A run flattened for a pen of a certain width. Between two vertices either both tangents are the
/// direction from one to the other, and the edge is straight, or they are less than half a right
/// angle from it, and the pen's normals at both ends describe its edges. Neighbours coincide only
/// where the pen turns more than once on the spot, a vertex for each turn: a curve may turn just
/// before or behind a corner.
struct StrokePath
{
    std::vector<StrokeVertex> vertices; ///< a closed run's first vertex is not repeated
    bool closed = false;
    bool isDot = false; ///< a run without length that caps may show: one vertex
};

/// Flattens one run after another, keeping the memory.
class StrokePathBuilder
{
public:
    void SetPrecision(const StrokePrecision& precision) noexcept { m_pen = precision; }

    /// The flattened run; without vertices when there is nothing to stroke or a coordinate is not
    /// finite (or so large, beyond 1e100, that its square would not be).
    StrokePath& Build(const CurveDbl& curve);
    StrokePath& Build(std::span<const Point> points, bool closed);

private:
    bool Start(std::span<const Point> points, bool closed);
    void AddLine(Point end);
    void StartSegment(Point direction);
    void TurnTo(Point direction);
    void RepeatVertex();
    void AddCubic(const Point* points);
    void SetPiece(const StrokeWalker::Piece& piece);
    void AddTinyPiece(Point end, Point tangent);
    void Finish(bool hasSegments);

    StrokePrecision m_pen{};
    StrokePrecision m_precision{}; // of the pen for the present run
    StrokePath m_path;
    StrokeWalker::Piece m_first{}; // the run's first piece, and the one that arrives at the end
    StrokeWalker::Piece m_last{};  // without length where they are no smooth ones
};

} // namespace Geometry
