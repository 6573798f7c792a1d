#include "ColourValue.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Length.h"
#include "Scanner.h"

namespace Svg {

namespace {

int HexDigit(char c) noexcept
{
    if (IsDigit(c))
        return c - '0';
    const char lower = ToLower(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The digits after `#`: 3 or 4 single ones, or 3 or 4 pairs.
std::optional<ColourValue> ParseHex(std::string_view digits)
{
    const std::size_t width = digits.size() <= 4 ? 1 : 2;
    const std::size_t count = digits.size() / width;
    if (count * width != digits.size() || (count != 3 && count != 4))
        return std::nullopt;
    std::array<double, 4> channels{0, 0, 0, 1};
    for (std::size_t i = 0; i < count; ++i) {
        const int high = HexDigit(digits[i * width]);
        const int low = HexDigit(digits[i * width + width - 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        channels[i] = (high * 16 + low) / 255.0;
    }
    return ColourValue{channels[0], channels[1], channels[2], channels[3]};
}

/// The arguments of a colour function; percentages keep their mark.
struct ColourArguments
{
    std::array<Length, 4> values{};
    std::size_t count = 0;
};

std::optional<ColourArguments> ScanColourArguments(Scanner& scanner)
{
    ColourArguments arguments;
    scanner.SkipSpace();
    while (!scanner.Accept(')')) {
        const auto value = ScanLength(scanner);
        if (!value || arguments.count == arguments.values.size())
            return std::nullopt;
        arguments.values[arguments.count++] = *value;
        scanner.AcceptWord("deg");
        scanner.SkipCommaSpace();
        if (arguments.count == 3 && scanner.Accept('/'))
            scanner.SkipSpace();
    }
    if (arguments.count < 3)
        return std::nullopt;
    return arguments;
}

double Fraction(const Length& value, double whole) noexcept
{
    return std::clamp(value.value / (value.IsPercentage() ? 100.0 : whole), 0.0, 1.0);
}

/// Hue in degrees, saturation and lightness from 0 to 1 (CSS Color Module Level 3, 4.2.4).
ColourValue FromHSL(double hue, double saturation, double lightness, double alpha)
{
    const double chroma = saturation * std::min(lightness, 1.0 - lightness);
    const auto channel = [&](double offset) {
        double k = std::fmod(offset + hue / 30.0, 12.0);
        if (k < 0.0)
            k += 12.0;
        return lightness - chroma * std::max(-1.0, std::min({k - 3.0, 9.0 - k, 1.0}));
    };
    return {channel(0.0), channel(8.0), channel(4.0), alpha};
}

std::optional<ColourValue> ScanFunction(Scanner& scanner, std::string_view name)
{
    const auto arguments = ScanColourArguments(scanner);
    if (!arguments)
        return std::nullopt;
    const auto& v = arguments->values;
    const double alpha = arguments->count == 4 ? Fraction(v[3], 1.0) : 1.0;
    if (EqualsIgnoringCase(name, "rgb") || EqualsIgnoringCase(name, "rgba"))
        return ColourValue{Fraction(v[0], 255.0), Fraction(v[1], 255.0), Fraction(v[2], 255.0),
                           alpha};
    if (EqualsIgnoringCase(name, "hsl") || EqualsIgnoringCase(name, "hsla"))
        return FromHSL(std::clamp(v[0].value, -1e6, 1e6), Fraction(v[1], 1.0), Fraction(v[2], 1.0),
                       alpha);
    return std::nullopt;
}

} // namespace

std::optional<ColourValue> ScanColour(Scanner& scanner)
{
    const Scanner start = scanner;
    std::optional<ColourValue> colour;
    if (scanner.Accept('#')) {
        colour = ParseHex(scanner.Word());
    } else {
        const std::string_view name = scanner.Word();
        colour = scanner.Accept('(') ? ScanFunction(scanner, name) : FindNamedColour(name);
    }
    if (!colour)
        scanner = start;
    return colour;
}

std::optional<ColourValue> ParseColour(std::string_view text)
{
    Scanner scanner(Trim(text));
    const auto colour = ScanColour(scanner);
    scanner.SkipSpace();
    return scanner.AtEnd() || scanner.AcceptWord("icc-color(") ? colour : std::nullopt;
}

} // namespace Svg
