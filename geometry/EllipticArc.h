#pragma once

#include <geometry/Curve.h>
#include <geometry/Export.h>
#include <geometry/PolyCurve.h>

namespace Geometry {

/// How far the control points of a cubic that stands for an arc of the unit circle lie from its
/// ends, along the tangents, for an arc of \p angle radians (at most about π/2 for good results).
///
/// The classic 4/3·tan(angle/4) puts the middle of the arc on the circle, and every other point
/// outside of it, by 2.7e-4 of the radius for a quarter. The length returned here is shortened by
/// 6.7e-4·(angle/(π/2))⁴ of itself, which spreads the error evenly to both sides: 2.0e-4 of the
/// radius for a quarter, and 64 times less whenever the angle is halved.
GEOMETRY_EXPORT double GetArcHandleLength(double angle) noexcept;

/// An elliptic arc by its end point, as paths describe it (SVG 1.1, F.6).
struct EllipticArc
{
    double radiusX = 0.0; ///< signs don't matter; grown when too small to reach the end
    double radiusY = 0.0;
    double rotation = 0.0; ///< of the ellipse's x axis, in radians, from the x axis to the y axis
    bool largeArc = false; ///< of the two arcs, the one of more than 180°
    bool sweep = false;    ///< drawn with growing angle (clockwise where y points down)
    Point end;
};

/// Adds \p arc to the run's end, as cubics of at most 90° each. A radius of 0 (or one that is not
/// finite) gives a straight line; an arc that ends where it starts adds nothing.
/// \pre the run was started.
GEOMETRY_EXPORT void AppendEllipticArc(CurveDbl& curve, const EllipticArc& arc);

/// The same for the pen of a path, whose present point is \p start.
GEOMETRY_EXPORT void AppendEllipticArc(PolyCurveDbl& path, Point start, const EllipticArc& arc);

} // namespace Geometry
