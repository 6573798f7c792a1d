#include "Length.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "Scanner.h"

namespace Svg {

namespace {

constexpr std::array<std::pair<std::string_view, LengthUnit>, 10> UnitNames{{
    {"px", LengthUnit::Px},
    {"pt", LengthUnit::Pt},
    {"pc", LengthUnit::Pc},
    {"mm", LengthUnit::Mm},
    {"cm", LengthUnit::Cm},
    {"in", LengthUnit::In},
    {"q", LengthUnit::Q},
    {"em", LengthUnit::Em},
    {"ex", LengthUnit::Ex},
    {"%", LengthUnit::Percent},
}};

double PercentageBase(const LengthContext& context, LengthAxis axis) noexcept
{
    switch (axis) {
    case LengthAxis::Horizontal:
        return context.viewportWidth;
    case LengthAxis::Vertical:
        return context.viewportHeight;
    case LengthAxis::Diagonal:
        break;
    }
    return std::hypot(context.viewportWidth, context.viewportHeight) / std::sqrt(2.0);
}

} // namespace

double Length::Resolve(const LengthContext& context, LengthAxis axis) const noexcept
{
    switch (unit) {
    case LengthUnit::None:
    case LengthUnit::Px:
        return value;
    case LengthUnit::Pt:
        return value * PixelsPerInch / 72.0;
    case LengthUnit::Pc:
        return value * PixelsPerInch / 6.0;
    case LengthUnit::Mm:
        return value * PixelsPerInch / 25.4;
    case LengthUnit::Cm:
        return value * PixelsPerInch / 2.54;
    case LengthUnit::In:
        return value * PixelsPerInch;
    case LengthUnit::Q:
        return value * PixelsPerInch / 101.6;
    case LengthUnit::Em:
        return value * context.fontSize;
    case LengthUnit::Ex:
        return value * context.fontSize / 2.0; // the customary height of an x
    case LengthUnit::Percent:
        break;
    }
    return value / 100.0 * PercentageBase(context, axis);
}

std::optional<Length> ScanLength(Scanner& scanner) noexcept
{
    const auto number = scanner.Number();
    if (!number)
        return std::nullopt;
    for (const auto& [name, unit] : UnitNames) {
        if (scanner.AcceptWord(name))
            return Length{*number, unit};
    }
    return Length{*number, LengthUnit::None};
}

std::optional<Length> ParseLength(std::string_view text) noexcept
{
    Scanner scanner(Trim(text));
    const auto length = ScanLength(scanner);
    return scanner.AtEnd() ? length : std::nullopt;
}

std::optional<double> ParseNumber(std::string_view text) noexcept
{
    Scanner scanner(Trim(text));
    const auto number = scanner.Number();
    return scanner.AtEnd() ? number : std::nullopt;
}

std::optional<double> ParseFraction(std::string_view text) noexcept
{
    const auto length = ParseLength(text);
    if (!length || (length->unit != LengthUnit::None && !length->IsPercentage()))
        return std::nullopt;
    return std::clamp(length->IsPercentage() ? length->value / 100.0 : length->value, 0.0, 1.0);
}

} // namespace Svg
