#pragma once

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
    None = 0, ///< the segments end in butts of their own
    Mitre = 1,
    Round = 2,
    Bevel = 3,
};

/// How a path is stroked. Lengths are in the units of the path.
struct StrokeParameters
{
    double width = 1.0;
    StrokeCap cap = StrokeCap::Butt;
    StrokeJoin join = StrokeJoin::Round;
    /// Mitres longer than this many widths become bevels (mitre length ÷ width, as in SVG and
    /// PostScript).
    double mitreLimit = 4.0;
    /// Lengths of dashes and gaps in turn; an odd number is repeated once more. Empty, or with a sum
    /// that is not positive, or with a negative member: solid.
    std::span<const double> dashes;
    double dashPhase = 0.0; ///< where in the pattern the path begins; any finite value
    double tolerance = 0.1; ///< largest distance of the outline from the exact one
};

/// Appends the outline of the stroked path to \p out, as closed polygons to be filled non-zero.
/// Draws nothing for widths that are not positive and finite.
GEOMETRY_EXPORT void StrokePolyCurve(const PolyCurveDbl& path, const StrokeParameters& parameters,
                                     PolyPolygonType<double>& out);

/// The same for polygons and polylines, whose vertices are all corners.
GEOMETRY_EXPORT void StrokePolyPolygon(const PolyPolygonType<double>& path,
                                       const StrokeParameters& parameters,
                                       PolyPolygonType<double>& out);

} // namespace Geometry
