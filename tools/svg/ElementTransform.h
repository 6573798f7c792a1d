#pragma once

#include <functional>

#include <geometry/BoundingBox.h>

#include "Length.h"
#include "Style.h"
#include "TransformList.h"

namespace Svg {

/// The `transform` of an element about its `transform-origin` (CSS Transforms Module Level 1, 4, 5
/// and 8); the identity without one.
/// \param lengths what lengths refer to: the nearest viewport, in whose coordinates the origin is
///        unless `transform-box` asks for the element's own box.
/// \param measure finds that box, in the element's own coordinates; called only where it is needed.
Transform MakeElementTransform(const Style& style, const LengthContext& lengths,
                               const std::function<Geometry::BoundingBoxT<double>()>& measure);

/// Reads a `transform-origin`; nothing for what breaks the grammar.
std::optional<TransformOrigin> ParseTransformOrigin(std::string_view value);

} // namespace Svg
