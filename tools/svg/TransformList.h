#pragma once

#include <optional>
#include <string_view>

#include <raster/AffineTransform.h>

namespace Svg {

using Transform = Raster::AffineTransform::Params;

/// Reads a list of transforms: matrix, translate, scale, rotate, skewX, skewY, the last of which
/// acts first. An empty list is the identity.
/// \return nothing when the text breaks the grammar.
std::optional<Transform> ParseTransformList(std::string_view text);

} // namespace Svg
