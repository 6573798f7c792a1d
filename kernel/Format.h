#pragma once

#include <concepts>
#include <span>
#include <string_view>

#include <kernel/Export.h>
#include <kernel/String.h>

namespace Kernel {

/// Appends \p format to \p text, with "%1" to "%9" replaced by the arguments of that number and
/// "%%" by a percent sign. A placeholder without argument and any other use of "%" stay as they
/// are. Arguments are not searched for placeholders.
KERNEL_EXPORT void AppendFormat(String& text, std::string_view format,
                                std::span<const std::string_view> arguments);

/// The same for arguments that are given one by one: strings, or what ToString() made of numbers.
template<std::convertible_to<std::string_view>... Arguments>
void AppendFormatVT(String& text, std::string_view format, const Arguments&... arguments)
{
    // The last element keeps the array from being empty; it is not passed on.
    const std::string_view views[] = {std::string_view(arguments)..., std::string_view()};
    AppendFormat(text, format, std::span(views, sizeof...(arguments)));
}

/// A new string from a format as AppendFormatVT() takes it.
template<std::convertible_to<std::string_view>... Arguments>
String FormatVT(std::string_view format, const Arguments&... arguments)
{
    String text;
    AppendFormatVT(text, format, arguments...);
    return text;
}

/// Writes a number in fixed notation with "." as decimal separator, whatever the locale.
///
/// The exact value is rounded to the nearest number of \p maxDecimals decimals (ties to even), then
/// zeros at the end go away as long as \p minDecimals remain. Zero never has a sign. Non-finite
/// values count as 0, so that a document always gets a number.
/// \param minIntegerDigits pads with leading zeros; 0 leaves out the zero before the separator.
/// \param maxDecimals 0 means 6; raised to \p minDecimals where that is larger.
KERNEL_EXPORT String ToString(double value, int minIntegerDigits = 1, int minDecimals = 0,
                              int maxDecimals = 0);
KERNEL_EXPORT String ToString(float value, int minIntegerDigits = 1, int minDecimals = 0,
                              int maxDecimals = 0);

/// Writes an integer in decimal, padded with leading zeros to \p minDigits digits.
KERNEL_EXPORT String ToString(long long value, int minDigits = 1);
KERNEL_EXPORT String ToString(unsigned long long value, int minDigits = 1);

template<std::integral T>
requires(!std::same_as<T, bool> && !std::same_as<T, char>) String
    ToString(T value, int minDigits = 1)
{
    if constexpr (std::signed_integral<T>)
        return ToString(static_cast<long long>(value), minDigits);
    else
        return ToString(static_cast<unsigned long long>(value), minDigits);
}

} // namespace Kernel
