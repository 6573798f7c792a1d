#pragma once

#include <string>
#include <string_view>

namespace Svg {

/// The text with each `%` and two hexadecimal digits replaced by the byte that they stand for.
std::string DecodePercents(std::string_view text);

} // namespace Svg
