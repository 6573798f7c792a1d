#pragma once

#include <string_view>

#include "Properties.h"
#include "Style.h"

namespace Svg {

/// Sets one property. A value that is not understood leaves the style as it is.
/// \param parent where `inherit` takes its value from.
/// \return whether it was understood.
bool ApplyProperty(Style& style, const Style& parent, Property property, std::string_view value);

/// The reference inside `url(…)`, without quotes; empty for anything else. The rest of the text
/// goes to \p rest.
std::string_view ParseUrl(std::string_view text, std::string_view& rest);

} // namespace Svg
