#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <renderer/paint/FillBlendMode.h>

#include "ColourValue.h"
#include "Length.h"
#include "TextStyle.h"

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
    enum class Context
    {
        None,
        Fill,   ///< `context-fill`: that of the shape whose marker is drawn
        Stroke, ///< `context-stroke`
    };

    Context context = Context::None;
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

/// The point that a transform leaves where it is, before what it translates by.
struct TransformOrigin
{
    Length x;
    Length y;
};

/// What a shape consists of; paint-order puts it in order.
enum class PaintLayer
{
    Fill,
    Stroke,
    Markers,
};

/// The computed style of an element, as far as the reader draws it. Lengths keep their units, since
/// percentages depend on the viewport of the element that uses them.
struct Style
{
    /// \name Inherited
    /// @{
    Paint fill{Paint::Context::None, {}, StyleColour{}};
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
    /// The lowest first.
    std::array<PaintLayer, 3> paintOrder{PaintLayer::Fill, PaintLayer::Stroke, PaintLayer::Markers};
    bool pixelatedImages = false;
    std::string markerStart; ///< a reference, or empty; likewise the next two
    std::string markerMid;
    std::string markerEnd;
    bool linearLuminance = false; ///< color-interpolation: masks weigh linear light
    TextStyle text;
    /// @}

    /// \name Of the element alone
    /// @{
    bool displayed = true;
    std::string transform; ///< in the grammar of ParseTransformList
    TransformOrigin transformOrigin;
    bool transformsInOwnBox = false;
    bool nonScalingStroke = false;
    bool overflowVisible = false; ///< nested drawings and symbols are not clipped to their viewport
    double opacity = 1.0;
    std::string clipPath; ///< a reference, or empty
    std::string mask;     ///< as clipPath
    bool hasFilter = false;
    Renderer::FillBlendMode::BlendMode blendMode = Renderer::FillBlendMode::Normal;
    bool isolated = false;  ///< what is inside does not blend with what is below
    bool alphaMask = false; ///< of a mask: its alpha counts alone, not its luminance
    StyleColour stopColour;
    double stopOpacity = 1.0;
    InlineStyle inlineText;
    /// @}

    bool HasMarkers() const noexcept
    {
        return !markerStart.empty() || !markerMid.empty() || !markerEnd.empty();
    }
    /// Whether \p layer is drawn before \p other.
    bool IsBelow(PaintLayer layer, PaintLayer other) const noexcept;

    /// The style that a child starts with: what is inherited, and initial values for the rest.
    Style MakeChild() const;
};

} // namespace Svg
