#include <kernel/Format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <system_error>

namespace Kernel {
namespace {

// More digits than any document needs; they bound the memory that a call can ask for.
constexpr int MaxDigits = 1000;
constexpr int DefaultDecimals = 6;

void TrimDecimals(std::string& digits, std::size_t separator, std::size_t minDecimals)
{
    const std::size_t shortest = separator + 1 + minDecimals;
    while (digits.size() > shortest && digits.back() == '0')
        digits.pop_back();
    if (digits.back() == '.')
        digits.pop_back();
}

/// The text of the magnitude, without sign.
std::string FormatMagnitude(double magnitude, int minIntegerDigits, int minDecimals,
                            int maxDecimals)
{
    minDecimals = std::clamp(minDecimals, 0, MaxDigits);
    maxDecimals =
        std::clamp(maxDecimals <= 0 ? DefaultDecimals : maxDecimals, minDecimals, MaxDigits);

    const auto room =
        static_cast<std::size_t>(std::numeric_limits<double>::max_exponent10 + 3 + maxDecimals);
    std::string digits(room, '\0');
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), magnitude,
                                            std::chars_format::fixed, maxDecimals);
    digits.resize(static_cast<std::size_t>(end - digits.data()));

    const std::size_t separator = digits.find('.'); // there: maxDecimals is at least 1
    TrimDecimals(digits, separator, static_cast<std::size_t>(minDecimals));
    const auto integerDigits = static_cast<std::size_t>(std::clamp(minIntegerDigits, 0, MaxDigits));
    if (separator < integerDigits)
        digits.insert(0, integerDigits - separator, '0');
    else if (integerDigits == 0 && digits.starts_with("0."))
        digits.erase(0, 1);
    return digits;
}

String FormatInteger(unsigned long long magnitude, bool negative, int minDigits)
{
    std::string digits = std::to_string(magnitude);
    const auto wanted = static_cast<std::size_t>(std::clamp(minDigits, 1, MaxDigits));
    if (digits.size() < wanted)
        digits.insert(0, wanted - digits.size(), '0');
    if (negative)
        digits.insert(0, 1, '-');
    return String(std::move(digits));
}

} // namespace

void AppendFormat(String& text, std::string_view format,
                  std::span<const std::string_view> arguments)
{
    while (!format.empty()) {
        const std::size_t percent = std::min(format.find('%'), format.size());
        text += format.substr(0, percent);
        format.remove_prefix(percent);
        if (format.empty())
            return;
        const char next = format.size() > 1 ? format[1] : '\0';
        if (next == '%') {
            text += "%";
            format.remove_prefix(2);
        } else if (next >= '1' && next <= '9' &&
                   static_cast<std::size_t>(next - '1') < arguments.size()) {
            text += arguments[static_cast<std::size_t>(next - '1')];
            format.remove_prefix(2);
        } else {
            text += "%";
            format.remove_prefix(1);
        }
    }
}

String ToString(double value, int minIntegerDigits, int minDecimals, int maxDecimals)
{
    if (!std::isfinite(value))
        value = 0.0;
    std::string text =
        FormatMagnitude(std::fabs(value), minIntegerDigits, minDecimals, maxDecimals);
    const bool isZero = text.find_first_of("123456789") == std::string::npos;
    if (value < 0.0 && !isZero)
        text.insert(0, 1, '-');
    return String(std::move(text));
}

String ToString(float value, int minIntegerDigits, int minDecimals, int maxDecimals)
{
    return ToString(static_cast<double>(value), minIntegerDigits, minDecimals, maxDecimals);
}

String ToString(long long value, int minDigits)
{
    // Negation in unsigned arithmetic is right for the most negative number, too.
    const auto bits = static_cast<unsigned long long>(value);
    return FormatInteger(value < 0 ? 0 - bits : bits, value < 0, minDigits);
}

String ToString(unsigned long long value, int minDigits)
{
    return FormatInteger(value, false, minDigits);
}

} // namespace Kernel
