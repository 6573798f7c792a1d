#pragma once

#include <optional>
#include <string_view>

namespace Svg {

/// A colour of sRGB, not premultiplied; all members from 0 to 1.
struct ColourValue
{
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    double alpha = 1.0;

    friend bool operator==(const ColourValue&, const ColourValue&) = default;
};

class Scanner;

/// The colour of a CSS name, such as `rebeccapurple` or `transparent`, in any case of letters.
std::optional<ColourValue> FindNamedColour(std::string_view name);

/// Takes a colour off the front: `#rgb`, `#rgba`, `#rrggbb`, `#rrggbbaa`, rgb(), rgba(), hsl(),
/// hsla() or a name. Nothing for keywords such as `currentColor`.
std::optional<ColourValue> ScanColour(Scanner& scanner);

/// Reads a text that begins with a colour. An `icc-color(…)` after it is ignored; the colour before
/// it is its sRGB equivalent.
std::optional<ColourValue> ParseColour(std::string_view text);

} // namespace Svg
