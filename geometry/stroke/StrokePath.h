#pragma once

#include <vector>

#include <geometry/Flatten.h>
#include <geometry/Polygon.h>
#include <geometry/stroke/StrokeVector.h>
#include <geometry/Stroker.h>

namespace Geometry {

/// A vertex of a flattened path that still knows the directions of the path itself.
struct StrokeVertex
{
    Point point;
    Point in;  ///< unit tangent of the path where it arrives
    Point out; ///< unit tangent where it goes on; the same as \c in on the way along a curve
    bool corner = false; ///< where two segments meet: gets the join of the user
};

/// A run flattened for a pen of a certain width. No two neighbours coincide.
struct StrokePath
{
    std::vector<StrokeVertex> vertices; ///< a closed run's first vertex is not repeated
    bool closed = false;
    bool isDot = false; ///< a run without length that caps may show: one vertex
};

/// How finely a pen has to be followed.
struct StrokePrecision
{
    double curve;    ///< largest distance between the path and its flattened form
    double halfTurn; ///< cosine of half the largest turn between neighbouring normals
    double shortest; ///< lengths below are as good as none

    /// Half of the tolerance goes to the path, half to the pen's edge: a polyline within d of a
    /// curve gives, under a round pen, an outline within d of the curve's (sums of sets with one
    /// disc), and turning the normal by θ at once cuts radius·(1 − cos(θ/2)) off the round edge.
    static StrokePrecision Make(double radius, double tolerance) noexcept;
};

/// Flattens one run after another, keeping the memory.
class StrokePathBuilder
{
public:
    explicit StrokePathBuilder(const StrokePrecision& precision) noexcept : m_precision(precision)
    {}

    /// The flattened run; without vertices when there is nothing to stroke or a coordinate is not
    /// finite (or so large, beyond 1e100, that its square would not be).
    StrokePath& Build(const CurveDbl& curve);
    StrokePath& Build(const PolyPolygonType<double>::View& polygon);

private:
    bool Start(std::span<const Point> points, bool closed);
    void AddLine(Point end);
    void AddCubic(const Point* p);
    void AddPiece(const CubicPolynomial& cubic, double t0, Point tangent0, double t1, Point p1,
                  Point tangent1, int depth);
    void Finish(bool hasSegments);

    Point FirstDirection(Point fallback, std::initializer_list<Point> candidates) const;
    Point TangentAt(const CubicPolynomial& cubic, double t, Point fallback) const;

    StrokePrecision m_precision;
    StrokePath m_path;
    /// How often pieces of the present cubic may still be halved: far from the origin of pixels,
    /// where rounding turns tangents at random, halving would never end.
    std::size_t m_halvings = 0;
};

} // namespace Geometry
