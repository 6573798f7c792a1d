#pragma once

#include <array>

#include <geometry/PolyCurve.h>
#include <geometry/WindingOrderMode.h>

#include "Random.h"

namespace Benchmarks {

/// A shape that fills the square of a given side, at the origin.
struct Shape
{
    const char* name;
    Geometry::PolyCurveDbl (*make)(double side, Random& random);
    Geometry::WindingOrderMode winding = Geometry::WindingOrderMode::NonZero;
    bool wholePixels = false; ///< placed on whole pixels only
};

extern const std::array<Shape, 13> FilledShapes;

struct StrokedShape
{
    const char* name;
    Geometry::PolyCurveDbl (*make)(double side, Random& random);
    double width;
};

extern const std::array<StrokedShape, 4> StrokedShapes;

} // namespace Benchmarks
