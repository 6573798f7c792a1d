#pragma once

#include <geometry/PolyCurve.h>
#include <kernel/Counted.h>

#include "Element.h"
#include "Length.h"
#include "Notices.h"
#include "TransformList.h"

namespace Svg {

/// The value of a length attribute in user units. Missing and damaged ones give \p fallback.
double ResolveAttribute(const Element& element, std::string_view name, const LengthContext& context,
                        LengthAxis axis, double fallback = 0.0);

/// The outline of a shape in its own coordinates.
/// \return null for elements that draw nothing: no shape, no extent, damaged, or with coordinates
///         that are absurdly large.
Kernel::Counted<const Geometry::PolyCurveDbl>
MakeShape(const Element& element, const LengthContext& context, Notices& notices);

/// Whether all coordinates are small enough to be calculated with.
bool IsInRange(const Geometry::PolyCurveDbl& path) noexcept;

/// A path mapped by a transform.
Kernel::Counted<const Geometry::PolyCurveDbl> MapPath(const Geometry::PolyCurveDbl& path,
                                                      const Transform& transform);

/// The list of transforms in an attribute; the identity for missing and damaged ones.
Transform GetTransform(const Element& element, std::string_view attribute);

} // namespace Svg
