#pragma once

namespace Svg {

/// \name The case of letters of all scripts, one for one (Unicode's simple mappings)
/// @{
char32_t ToUpperCase(char32_t letter) noexcept;
char32_t ToLowerCase(char32_t letter) noexcept;
bool IsLetter(char32_t character) noexcept;
/// @}

} // namespace Svg
