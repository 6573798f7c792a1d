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
    StrokeJoin join = StrokeJoin::Round;
    /// Mitres longer than this many widths become bevels (mitre length ÷ width, as in SVG and
    /// PostScript). Holds to 1e-6 of itself, so that √2 takes every right angle.
    double mitreLimit = 4.0;
    /// Lengths of dashes and gaps in turn; an odd number is repeated once more. Empty, without any
    /// gap, or with a negative member: solid; so is a run that would get more than a million
    /// dashes.
    std::span<const double> dashes;
    double dashPhase = 0.0; ///< where in the pattern each run begins; any finite value
    /// Largest distance of the outline from the exact one; a thousandth of the width if not
    /// positive.
    double tolerance = 0.1;
};

/// Appends the outline of the stroked path to \p out, as closed polygons to be filled non-zero.
///
/// All parts of the outline have the same orientation, so overlaps never cancel, and a stroke that
/// is wider than its curves are round has no holes. Joins are made where segments meet; along a
/// curve the pen turns smoothly (round at a cusp). Dashes follow the length of the path through its
/// corners; in a closed run those at its end and its start are one when both touch the start. A
/// dash or a run without length is drawn by its caps: round ones give a disc, square ones a square
/// along the path (along the axes where there is no direction), butts nothing. A run that was only
/// started, not closed or drawn on, gives nothing.
///
/// Beyond 16 million points in round joins and caps, and 65,536 subdivisions of a cubic for its
/// turns, an outline is no longer refined, so that no input takes gigabytes.
///
/// Widths that are not positive, and parameters or runs that are not finite (or beyond 1e100), draw
/// nothing.
GEOMETRY_EXPORT void StrokePolyCurve(const PolyCurveDbl& path, const StrokeParameters& parameters,
                                     PolyPolygonType<double>& out);

/// The same for polygons and polylines, whose vertices are all corners.
GEOMETRY_EXPORT void StrokePolyPolygon(const PolyPolygonType<double>& path,
                                       const StrokeParameters& parameters,
                                       PolyPolygonType<double>& out);

} // namespace Geometry
