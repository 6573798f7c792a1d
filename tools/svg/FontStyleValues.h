#pragma once

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Properties.h"
#include "Style.h"

namespace Svg {

/// Sets one property of fonts but their size. \return whether the value was understood; nothing for
/// properties of other kinds.
std::optional<bool> ApplyFont(Style& style, const Style& parent, Property property,
                              std::string_view value);

/// The properties that a value of `font` sets; none when it is not understood. The texts lie in the
/// value, or are constant.
std::vector<std::pair<Property, std::string_view>> ExpandFont(std::string_view value);

} // namespace Svg
