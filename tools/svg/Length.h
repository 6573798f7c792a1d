#pragma once

#include <optional>
#include <string_view>

namespace Svg {

/// Pixels of a drawing per inch: the reference pixel of CSS.
inline constexpr double PixelsPerInch = 96.0;

enum class LengthUnit
{
    None, ///< a plain number: user units
    Px,
    Pt,
    Pc,
    Mm,
    Cm,
    In,
    Q, ///< a quarter of a millimetre
    Em,
    Ex,
    Percent,
};

/// Which extent of the viewport a percentage refers to.
enum class LengthAxis
{
    Horizontal,
    Vertical,
    Diagonal, ///< sqrt((width² + height²) / 2)
};

/// What relative lengths refer to.
struct LengthContext
{
    double viewportWidth = 0.0; ///< in user units, as viewportHeight
    double viewportHeight = 0.0;
    double fontSize = 16.0;

    friend bool operator==(const LengthContext&, const LengthContext&) = default;
};

/// A number with its unit.
struct Length
{
    double value = 0.0;
    LengthUnit unit = LengthUnit::None;

    /// The length in user units.
    double Resolve(const LengthContext& context, LengthAxis axis) const noexcept;
    bool IsPercentage() const noexcept { return unit == LengthUnit::Percent; }
};

class Scanner;

/// Takes a length off the front; nothing for anything else. An unknown unit is left where it is.
std::optional<Length> ScanLength(Scanner& scanner) noexcept;
/// Reads a text that is one length and nothing else.
std::optional<Length> ParseLength(std::string_view text) noexcept;
/// Reads a text that is one number and nothing else.
std::optional<double> ParseNumber(std::string_view text) noexcept;
/// A number from 0 to 1, clamped, or a percentage.
std::optional<double> ParseFraction(std::string_view text) noexcept;

} // namespace Svg
