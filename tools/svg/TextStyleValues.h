#pragma once

#include <optional>
#include <string_view>

#include "Properties.h"
#include "Style.h"

namespace Svg {

/// Sets one property of text. \return whether the value was understood; nothing for properties of
/// other kinds.
std::optional<bool> ApplyText(Style& style, const Style& parent, Property property,
                              std::string_view value);

/// Brings lengths of text that refer to the size of an element's own font to user units, so that
/// its children inherit those.
void ResolveTextLengths(Style& style);

} // namespace Svg
