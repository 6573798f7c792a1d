#pragma once

#include <geometry/Curve.h>

namespace Renderer {

/// The same function as a pressure profile, to 1e-6, with fewer points: cubics that are straight
/// become lines, and lines that go on in one direction become one.
Geometry::CurveDbl SimplifyPressure(const Geometry::CurveDbl& pressure);

} // namespace Renderer
