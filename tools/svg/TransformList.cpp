#include "TransformList.h"

#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "Scanner.h"

namespace Svg {

namespace {

constexpr std::size_t MaxArguments = 6;

/// What stands between a pair of brackets: angles in degrees, all else in user units.
struct Arguments
{
    std::array<double, MaxArguments> values{};
    std::size_t count = 0;

    double Get(std::size_t index, double fallback) const noexcept
    {
        return index < count ? values[index] : fallback;
    }
};

/// Takes the unit of an angle. \return how many degrees it is.
double ScanAngleUnit(Scanner& scanner)
{
    static constexpr std::array<std::pair<std::string_view, double>, 4> units{
        {{"deg", 1.0}, {"grad", 0.9}, {"rad", 180.0 / std::numbers::pi}, {"turn", 360.0}}};
    for (const auto& [name, degrees] : units) {
        if (scanner.AcceptWord(name))
            return degrees;
    }
    return 1.0;
}

/// Percentages are of the width for the first argument and of the height for others, and for
/// translations alone; elsewhere they are hundredths.
std::optional<Arguments> ScanArguments(Scanner& scanner, std::string_view name,
                                       const LengthContext& lengths)
{
    scanner.SkipSpace();
    if (!scanner.Accept('('))
        return std::nullopt;
    Arguments arguments;
    scanner.SkipSpace();
    const bool moves = name.starts_with("translate");
    while (!scanner.Accept(')')) {
        const auto length = ScanLength(scanner);
        if (!length || arguments.count == MaxArguments)
            return std::nullopt;
        const bool across = arguments.count == 0 && name != "translateY";
        double value = length->value;
        if (moves)
            value =
                length->Resolve(lengths, across ? LengthAxis::Horizontal : LengthAxis::Vertical);
        else if (length->IsPercentage())
            value /= 100.0;
        arguments.values[arguments.count++] = value * ScanAngleUnit(scanner);
        scanner.SkipCommaSpace();
    }
    return arguments;
}

double Radians(double degrees) noexcept
{
    return degrees * std::numbers::pi / 180.0;
}

Transform MakeRotation(const Arguments& a)
{
    using Raster::AffineTransform;
    const Transform turn = AffineTransform::Rotation(Radians(a.values[0]));
    if (a.count == 1)
        return turn;
    const double x = a.values[1];
    const double y = a.values[2];
    return AffineTransform::Concatenate(
        AffineTransform::Concatenate(AffineTransform::Translation(-x, -y), turn),
        AffineTransform::Translation(x, y));
}

std::optional<Transform> Make(std::string_view name, const Arguments& a)
{
    using Raster::AffineTransform;
    const auto& v = a.values;
    if (name == "matrix" && a.count == 6)
        return Transform{v[0], v[2], v[4], v[1], v[3], v[5]};
    if (name == "translate" && (a.count == 1 || a.count == 2))
        return AffineTransform::Translation(v[0], a.Get(1, 0.0));
    if (name == "scale" && (a.count == 1 || a.count == 2))
        return AffineTransform::Scaling(v[0], a.Get(1, v[0]));
    if (name == "rotate" && (a.count == 1 || a.count == 3))
        return MakeRotation(a);
    if (name == "translateX" && a.count == 1)
        return AffineTransform::Translation(v[0], 0.0);
    if (name == "translateY" && a.count == 1)
        return AffineTransform::Translation(0.0, v[0]);
    if (name == "scaleX" && a.count == 1)
        return AffineTransform::Scaling(v[0], 1.0);
    if (name == "scaleY" && a.count == 1)
        return AffineTransform::Scaling(1.0, v[0]);
    if (name == "skew" && (a.count == 1 || a.count == 2))
        return Transform{1, std::tan(Radians(v[0])), 0, std::tan(Radians(a.Get(1, 0.0))), 1, 0};
    if (name == "skewX" && a.count == 1)
        return Transform{1, std::tan(Radians(v[0])), 0, 0, 1, 0};
    if (name == "skewY" && a.count == 1)
        return Transform{1, 0, 0, std::tan(Radians(v[0])), 1, 0};
    return std::nullopt;
}

} // namespace

std::optional<Transform> ParseTransformList(std::string_view text, const LengthContext& lengths)
{
    Scanner scanner(Trim(text));
    Transform result;
    if (scanner.Rest() == "none")
        return result;
    while (!scanner.AtEnd()) {
        const std::string_view name = scanner.Word();
        const auto arguments = ScanArguments(scanner, name, lengths);
        if (!arguments)
            return std::nullopt;
        const auto transform = Make(name, *arguments);
        if (!transform)
            return std::nullopt;
        result = Raster::AffineTransform::Concatenate(*transform, result);
        scanner.SkipCommaSpace();
    }
    return result;
}

} // namespace Svg
