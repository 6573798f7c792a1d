#pragma once

#include <memory>
#include <span>
#include <vector>

#include <geometry/Curve.h>
#include <geometry/Export.h>
#include <geometry/PolyCurve.h>
#include <geometry/Polygon.h>

namespace Geometry {

enum class StrokeCap
{
    Butt = 0,
    Square = 1,
    Round = 2,
};

enum class StrokeJoin
{
    None = 0, ///< the segments end in butts of their own, whatever the cap
    Mitre = 1,
    Round = 2,
    Bevel = 3,
};

/// How a path is stroked. Lengths are in the units of the path.
struct StrokeParameters
{
    double width = 1.0;
    StrokeCap cap = StrokeCap::Butt;
    double capLength = 1.0; ///< how far caps reach beyond the ends, in half widths
    StrokeJoin join = StrokeJoin::Round;
    /// Mitres longer than this many widths become bevels (mitre length ÷ width, as in SVG and
    /// PostScript). Holds to 1e-6 of itself, so that √2 takes every right angle.
    double mitreLimit = 4.0;
    /// Lengths of dashes and gaps in turn; an odd number is repeated once more. Empty, without any
    /// gap, or with a negative member: solid; so is a run that would get more than a million
    /// dashes.
    std::span<const double> dashes;
    double dashPhase = 0.0; ///< where in the pattern each run begins; any finite value
    double dashUnit = 1.0;  ///< what dashes and their phase count, in the units of the path
    /// Largest distance of the outline from the exact one; a thousandth of the width if not
    /// positive.
    double tolerance = 0.1;
};

/// Draws the outlines of stroked runs as closed polygons, which are to be filled non-zero.
///
/// All parts of the outline have the same orientation, so overlaps never cancel, and a stroke that
/// is wider than its curves are round has no holes. Joins are made where segments meet; along a
/// curve the pen turns smoothly, and at a cusp, as at what nearly is one, covers a whole disc.
/// Handles of curves no longer than a tenth of the tolerance give no direction. Dashes follow the
/// length of the path through its corners; in a closed run those at its end and its start are one
/// when both touch the start. A dash or a run without length is drawn by its caps: round ones give
/// a disc, square ones a square along the path (along the axes where there is no direction), butts
/// nothing. A run that was only started, not closed or drawn on, gives nothing.
///
/// Beyond 16 million points in round joins and caps, and 65,536 pieces of a cubic, an outline is no
/// longer refined, so that no input takes gigabytes.
///
/// Widths that are not positive, and parameters or runs that are not finite (or beyond 1e100), draw
/// nothing.
///
/// A stroker keeps its memory: one that has drawn the like before allocates nothing.
class GEOMETRY_EXPORT PathStroker
{
public:
    PathStroker();
    ~PathStroker();
    PathStroker(PathStroker&&) noexcept;
    PathStroker& operator=(PathStroker&&) noexcept;

    /// Takes a pen for the runs that follow. \return false when it draws nothing.
    bool SetPen(const StrokeParameters& parameters);

    /// Appends the outline of a run to \p out. \pre SetPen returned true (so for the next two).
    void Stroke(const CurveDbl& run, PolyPolygonType<double>& out);
    /// The same for a polygon or polyline, whose vertices are all corners.
    void Stroke(std::span<const Point> points, bool closed, PolyPolygonType<double>& out);

    /// Strokes the image of a run.
    /// \tparam Map takes a Point and returns one; affine.
    template<class Map>
    void StrokeMapped(const CurveDbl& run, const Map& map, PolyPolygonType<double>& out)
    {
        m_mapped = run;
        m_mapped.Transform(map);
        Stroke(m_mapped, out);
    }
    /// The same for a polygon or polyline.
    template<class Map>
    void StrokeMapped(std::span<const Point> points, bool closed, const Map& map,
                      PolyPolygonType<double>& out)
    {
        m_mappedPoints.clear();
        for (const Point point : points)
            m_mappedPoints.push_back(map(point));
        Stroke(m_mappedPoints, closed, out);
    }

private:
    class Pen;

    std::unique_ptr<Pen> m_pen;
    CurveDbl m_mapped;
    std::vector<Point> m_mappedPoints;
};

/// Appends the outline of all runs of \p path to \p out; see PathStroker.
GEOMETRY_EXPORT void StrokePolyCurve(const PolyCurveDbl& path, const StrokeParameters& parameters,
                                     PolyPolygonType<double>& out);

/// The same for polygons and polylines, whose vertices are all corners.
GEOMETRY_EXPORT void StrokePolyPolygon(const PolyPolygonType<double>& path,
                                       const StrokeParameters& parameters,
                                       PolyPolygonType<double>& out);

} // namespace Geometry
