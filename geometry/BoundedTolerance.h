#pragma once

#include <geometry/Export.h>
#include <geometry/PolyCurve.h>

namespace Geometry {

/// The tolerance by which a path is flattened into no more than a million points and sixteen per
/// segment: \p tolerance for everything of a sane size; as much more as it takes where cubics are
/// so large that it would take gigabytes.
GEOMETRY_EXPORT double GetBoundedTolerance(const PolyCurveDbl& path, double tolerance) noexcept;

} // namespace Geometry
