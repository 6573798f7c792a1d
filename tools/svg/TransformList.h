#pragma once

#include <optional>
#include <string_view>

#include <raster/AffineTransform.h>

#include "Length.h"

namespace Svg {

using Transform = Raster::AffineTransform::Params;

/// Reads a list of transforms, the last of which acts first: matrix, translate, scale, rotate,
/// skewX and skewY, and those that CSS adds for the plane (CSS Transforms Module Level 1, 11.1).
/// Lengths and angles may have units; without one they are in user units and degrees. An empty list
/// is the identity. \param lengths what percentages and other relative lengths refer to. \return
/// nothing when the text breaks the grammar.
std::optional<Transform> ParseTransformList(std::string_view text,
                                            const LengthContext& lengths = {});

} // namespace Svg
