#pragma once

#include <geometry/BoundingBox.h>

#include "Context.h"

namespace Svg {

/// The exact box of what an element shows, without strokes, in the coordinates that its content is
/// in (after its own transform).
/// \param style the element's style.
Geometry::BoundingBoxT<double> MeasureBounds(Context& context, const Element& element,
                                             const Style& style, const LengthContext& lengths);

} // namespace Svg
