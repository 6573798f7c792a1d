#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Geometry {

/// More names than any list has that means to be followed; looking fonts up takes time by the
/// square of their number.
inline constexpr std::size_t MaxFamilies = 32;

/// The names in a list that commas separate, without blanks around them and empty ones: the first
/// of them, up to MaxFamilies.
std::vector<std::string> SplitFamilies(std::string_view families);

/// Whether a name stands for a kind of fonts, such as `serif`, not for a family.
bool IsGenericFamily(std::string_view family);

/// Whether two names mean the same family: blanks and the case of ASCII letters matter not.
bool IsSameFamily(std::string_view a, std::string_view b);

} // namespace Geometry
