#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ColourValue.h"
#include "Length.h"

namespace Svg {

/// A colour that may be `currentColor`.
struct StyleColour
{
    bool isCurrent = false;
    ColourValue value;

    const ColourValue& Resolve(const ColourValue& current) const noexcept
    {
        return isCurrent ? current : value;
    }
};

/// The value of `fill` or `stroke`.
struct Paint
{
    /// The reference to a paint server, such as `#gradient`; empty for plain colours and none.
    std::string server;
    /// The paint, or what takes the place of a server that is missing; empty for none.
    std::optional<StyleColour> colour;
};

enum class LineCap
{
    Butt,
    Round,
    Square,
};

enum class LineJoin
{
    Mitre,
    Round,
    Bevel,
};

/// The computed style of an element, as far as the reader draws it. Lengths keep their units, since
/// percentages depend on the viewport of the element that uses them.
struct Style
{
    /// \name Inherited
    /// @{
    Paint fill{{}, StyleColour{}};
    Paint stroke;
    ColourValue colour;
    double fillOpacity = 1.0;
    double strokeOpacity = 1.0;
    bool fillEvenOdd = false;
    bool clipEvenOdd = false;
    Length strokeWidth{1.0, LengthUnit::None};
    LineCap lineCap = LineCap::Butt;
    LineJoin lineJoin = LineJoin::Mitre;
    double mitreLimit = 4.0;
    std::shared_ptr<const std::vector<Length>> dashes; ///< null: solid
    Length dashOffset;
    double fontSize = 16.0; ///< in user units
    bool visible = true;
    bool strokeFirst = false; ///< paint-order: the stroke lies below the fill
    bool pixelatedImages = false;
    bool hasMarkers = false;
    /// @}

    /// \name Of the element alone
    /// @{
    bool displayed = true;
    bool overflowVisible = false; ///< nested drawings and symbols are not clipped to their viewport
    double opacity = 1.0;
    std::string clipPath; ///< a reference, or empty
    std::string mask;     ///< as clipPath
    bool hasFilter = false;
    bool hasBlendMode = false;
    StyleColour stopColour;
    double stopOpacity = 1.0;
    /// @}

    /// The style that a child starts with: what is inherited, and initial values for the rest.
    Style MakeChild() const;
};

} // namespace Svg
