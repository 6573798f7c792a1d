#include "StyleValues.h"

#include <algorithm>
#include <array>
#include <utility>

#include "ElementTransform.h"
#include "Scanner.h"
#include "StyleParsing.h"
#include "TextStyleValues.h"
#include "TransformList.h"

namespace Svg {

namespace {

constexpr std::array<Keyword<LineCap>, 3> LineCaps{
    {{"butt", LineCap::Butt}, {"round", LineCap::Round}, {"square", LineCap::Square}}};
constexpr std::array<Keyword<LineJoin>, 5> LineJoins{{{"miter", LineJoin::Mitre},
                                                      {"miter-clip", LineJoin::Mitre},
                                                      {"arcs", LineJoin::Mitre},
                                                      {"round", LineJoin::Round},
                                                      {"bevel", LineJoin::Bevel}}};
constexpr std::array<Keyword<bool>, 2> FillRules{{{"evenodd", true}, {"nonzero", false}}};
constexpr std::array<Keyword<bool>, 3> Visibilities{
    {{"visible", true}, {"hidden", false}, {"collapse", false}}};
constexpr std::array<Keyword<bool>, 4> Overflows{
    {{"visible", true}, {"hidden", false}, {"scroll", false}, {"auto", false}}};
// Sizes in pixels of CSS Fonts Module Level 3, 3.5, for a medium of 16 pixels.
constexpr std::array<Keyword<double>, 7> FontSizes{{{"xx-small", 9.6},
                                                    {"x-small", 12.0},
                                                    {"small", 14.2},
                                                    {"medium", 16.0},
                                                    {"large", 19.2},
                                                    {"x-large", 24.0},
                                                    {"xx-large", 32.0}}};

constexpr std::array<Keyword<bool>, 5> TransformBoxes{{{"fill-box", true},
                                                       {"stroke-box", true},
                                                       {"content-box", true},
                                                       {"border-box", true},
                                                       {"view-box", false}}};
constexpr std::array<Keyword<bool>, 2> VectorEffects{
    {{"non-scaling-stroke", true}, {"none", false}}};
constexpr std::array<Keyword<bool>, 2> Isolations{{{"isolate", true}, {"auto", false}}};
constexpr std::array<Keyword<bool>, 2> MaskTypes{{{"alpha", true}, {"luminance", false}}};
constexpr std::array<Keyword<bool>, 3> Interpolations{
    {{"linearRGB", true}, {"sRGB", false}, {"auto", false}}};
constexpr std::array<Keyword<bool>, 8> ImageRenderings{{{"pixelated", true},
                                                        {"crisp-edges", true},
                                                        {"-moz-crisp-edges", true},
                                                        {"optimizeSpeed", true},
                                                        {"optimizeQuality", false},
                                                        {"smooth", false},
                                                        {"high-quality", false},
                                                        {"auto", false}}};
constexpr std::array<Keyword<PaintLayer>, 3> PaintLayers{
    {{"fill", PaintLayer::Fill}, {"stroke", PaintLayer::Stroke}, {"markers", PaintLayer::Markers}}};

using Renderer::FillBlendMode;
// The modes of Compositing and Blending Level 1, 5.
constexpr std::array<Keyword<FillBlendMode::BlendMode>, 16> BlendModes{
    {{"normal", FillBlendMode::Normal},
     {"multiply", FillBlendMode::Multiply},
     {"screen", FillBlendMode::Screen},
     {"overlay", FillBlendMode::Overlay},
     {"darken", FillBlendMode::Darken},
     {"lighten", FillBlendMode::Lighten},
     {"color-dodge", FillBlendMode::ColorDodge},
     {"color-burn", FillBlendMode::ColorBurn},
     {"hard-light", FillBlendMode::HardLight},
     {"soft-light", FillBlendMode::SoftLight},
     {"difference", FillBlendMode::Difference},
     {"exclusion", FillBlendMode::Exclusion},
     {"hue", FillBlendMode::Hue},
     {"saturation", FillBlendMode::Saturation},
     {"color", FillBlendMode::Color},
     {"luminosity", FillBlendMode::Luminosity}}};

std::optional<StyleColour> ParseStyleColour(std::string_view value)
{
    if (EqualsIgnoringCase(value, "currentColor"))
        return StyleColour{true, {}};
    const auto colour = ParseColour(value);
    return colour ? std::optional(StyleColour{false, *colour}) : std::nullopt;
}

std::optional<Paint> ParsePaint(std::string_view value)
{
    Paint paint;
    if (EqualsIgnoringCase(value, "context-fill"))
        return Paint{Paint::Context::Fill, {}, {}};
    if (EqualsIgnoringCase(value, "context-stroke"))
        return Paint{Paint::Context::Stroke, {}, {}};
    std::string_view rest = value;
    paint.server = ParseUrl(value, rest);
    rest = Trim(rest);
    if (rest.empty() || EqualsIgnoringCase(rest, "none"))
        return paint.server.empty() && rest.empty() ? std::nullopt : std::optional(paint);
    paint.colour = ParseStyleColour(rest);
    return paint.colour || !paint.server.empty() ? std::optional(paint) : std::nullopt;
}

std::optional<std::string> ParseReference(std::string_view value)
{
    std::string_view rest;
    return std::string(ParseUrl(value, rest));
}

/// A text that is a list of transforms.
std::optional<std::string> ParseTransform(std::string_view value)
{
    return ParseTransformList(value) ? std::optional(std::string(value)) : std::nullopt;
}

using PaintOrder = std::array<PaintLayer, 3>;

/// What is not named follows in the usual order (SVG 2, 13.8).
std::optional<PaintOrder> ParsePaintOrder(std::string_view value)
{
    PaintOrder order = Style().paintOrder;
    auto next = order.begin();
    if (EqualsIgnoringCase(value, "normal"))
        return order;
    for (const std::string_view word : SplitWords(value)) {
        const auto layer = FindKeyword(PaintLayers, word);
        const auto place = layer ? std::find(next, order.end(), *layer) : order.end();
        if (place == order.end())
            return std::nullopt;
        std::rotate(next, place, place + 1);
        ++next;
    }
    return order;
}

std::optional<Length> ParsePositiveLength(std::string_view value)
{
    const auto length = ParseLength(value);
    return length && length->value >= 0.0 ? length : std::nullopt;
}

std::optional<double> ParseMitreLimit(std::string_view value)
{
    const auto limit = ParseNumber(value);
    return limit && *limit >= 1.0 ? limit : std::nullopt;
}

using Dashes = std::shared_ptr<const std::vector<Length>>;

std::optional<Dashes> ParseDashes(std::string_view value)
{
    if (EqualsIgnoringCase(value, "none"))
        return Dashes();
    std::vector<Length> dashes;
    Scanner scanner(value);
    while (!scanner.AtEnd()) {
        const auto length = ScanLength(scanner);
        if (!length || length->value < 0.0)
            return std::nullopt;
        dashes.push_back(*length);
        scanner.SkipCommaSpace();
    }
    return std::make_shared<const std::vector<Length>>(std::move(dashes));
}

/// A font size; relative ones refer to that of the parent.
std::optional<double> ParseFontSize(std::string_view value, double parentSize)
{
    if (EqualsIgnoringCase(value, "larger"))
        return parentSize * 1.2;
    if (EqualsIgnoringCase(value, "smaller"))
        return parentSize / 1.2;
    if (const auto size = FindKeyword(FontSizes, value))
        return size;
    const auto length = ParsePositiveLength(value);
    if (!length)
        return std::nullopt;
    // A percentage is one of the parent's size, whatever the viewport.
    const LengthContext context{parentSize, parentSize, parentSize};
    return length->Resolve(context, LengthAxis::Horizontal);
}

std::optional<bool> ApplyStroke(Style& style, const Style& parent, Property property,
                                std::string_view value)
{
    switch (property) {
    case Property::Stroke:
        return Set(&Style::stroke, style, parent, value, ParsePaint);
    case Property::StrokeDashArray:
        return Set(&Style::dashes, style, parent, value, ParseDashes);
    case Property::StrokeDashOffset:
        return Set(&Style::dashOffset, style, parent, value, ParseLength);
    case Property::StrokeLineCap:
        return Set(&Style::lineCap, style, parent, value, OneOf(LineCaps));
    case Property::StrokeLineJoin:
        return Set(&Style::lineJoin, style, parent, value, OneOf(LineJoins));
    case Property::StrokeMitreLimit:
        return Set(&Style::mitreLimit, style, parent, value, ParseMitreLimit);
    case Property::StrokeOpacity:
        return Set(&Style::strokeOpacity, style, parent, value, ParseFraction);
    case Property::StrokeWidth:
        return Set(&Style::strokeWidth, style, parent, value, ParsePositiveLength);
    default:
        return std::nullopt;
    }
}

std::optional<bool> ApplyFill(Style& style, const Style& parent, Property property,
                              std::string_view value)
{
    switch (property) {
    case Property::Fill:
        return Set(&Style::fill, style, parent, value, ParsePaint);
    case Property::FillOpacity:
        return Set(&Style::fillOpacity, style, parent, value, ParseFraction);
    case Property::FillRule:
        return Set(&Style::fillEvenOdd, style, parent, value, OneOf(FillRules));
    case Property::ClipRule:
        return Set(&Style::clipEvenOdd, style, parent, value, OneOf(FillRules));
    case Property::Colour:
        return Set(&Style::colour, style, parent, value, ParseColour);
    case Property::StopColour:
        return Set(&Style::stopColour, style, parent, value, ParseStyleColour);
    case Property::StopOpacity:
        return Set(&Style::stopOpacity, style, parent, value, ParseFraction);
    default:
        return std::nullopt;
    }
}

std::optional<bool> ApplyMarker(Style& style, const Style& parent, Property property,
                                std::string_view value)
{
    switch (property) {
    case Property::MarkerStart:
        return Set(&Style::markerStart, style, parent, value, ParseReference);
    case Property::MarkerMid:
        return Set(&Style::markerMid, style, parent, value, ParseReference);
    case Property::MarkerEnd:
        return Set(&Style::markerEnd, style, parent, value, ParseReference);
    default:
        return std::nullopt;
    }
}

std::optional<bool> ApplyTransform(Style& style, const Style& parent, Property property,
                                   std::string_view value)
{
    switch (property) {
    case Property::Transform:
        return Set(&Style::transform, style, parent, value, ParseTransform);
    case Property::TransformBox:
        return Set(&Style::transformsInOwnBox, style, parent, value, OneOf(TransformBoxes));
    case Property::TransformOrigin:
        return Set(&Style::transformOrigin, style, parent, value, ParseTransformOrigin);
    case Property::VectorEffect:
        return Set(&Style::nonScalingStroke, style, parent, value, OneOf(VectorEffects));
    default:
        return std::nullopt;
    }
}

/// How an element as a whole is laid over what is below.
std::optional<bool> ApplyCompositing(Style& style, const Style& parent, Property property,
                                     std::string_view value)
{
    switch (property) {
    case Property::Opacity:
        return Set(&Style::opacity, style, parent, value, ParseFraction);
    case Property::ClipPath:
        return Set(&Style::clipPath, style, parent, value, ParseReference);
    case Property::Mask:
        return Set(&Style::mask, style, parent, value, ParseReference);
    case Property::MaskType:
        return Set(&Style::alphaMask, style, parent, value, OneOf(MaskTypes));
    case Property::Filter:
        return Set(&Style::hasFilter, style, parent, value, Unless("none"));
    case Property::MixBlendMode:
        return Set(&Style::blendMode, style, parent, value, OneOf(BlendModes));
    case Property::Isolation:
        return Set(&Style::isolated, style, parent, value, OneOf(Isolations));
    default:
        return std::nullopt;
    }
}

bool ApplyOther(Style& style, const Style& parent, Property property, std::string_view value)
{
    const auto fontSize = [&](std::string_view text) {
        return ParseFontSize(text, parent.fontSize);
    };
    switch (property) {
    case Property::Display:
        return Set(&Style::displayed, style, parent, value, Unless("none"));
    case Property::Visibility:
        return Set(&Style::visible, style, parent, value, OneOf(Visibilities));
    case Property::Overflow:
        return Set(&Style::overflowVisible, style, parent, value, OneOf(Overflows));
    case Property::FontSize:
        return Set(&Style::fontSize, style, parent, value, fontSize);
    case Property::PaintOrder:
        return Set(&Style::paintOrder, style, parent, value, ParsePaintOrder);
    case Property::ImageRendering:
        return Set(&Style::pixelatedImages, style, parent, value, OneOf(ImageRenderings));
    case Property::ColourInterpolation:
        return Set(&Style::linearLuminance, style, parent, value, OneOf(Interpolations));
    default:
        return true;
    }
}

} // namespace

bool ApplyProperty(Style& style, const Style& parent, Property property, std::string_view value)
{
    value = Trim(value);
    if (const auto understood = ApplyStroke(style, parent, property, value))
        return *understood;
    if (const auto understood = ApplyFill(style, parent, property, value))
        return *understood;
    if (const auto understood = ApplyMarker(style, parent, property, value))
        return *understood;
    if (const auto understood = ApplyTransform(style, parent, property, value))
        return *understood;
    if (const auto understood = ApplyCompositing(style, parent, property, value))
        return *understood;
    if (const auto understood = ApplyText(style, parent, property, value))
        return *understood;
    return ApplyOther(style, parent, property, value);
}

std::string_view ParseUrl(std::string_view text, std::string_view& rest)
{
    Scanner scanner(Trim(text));
    if (!scanner.AcceptWord("url("))
        return {};
    std::string_view reference = Trim(scanner.Until(')'));
    rest = scanner.Rest();
    if (reference.size() >= 2 && (reference.front() == '"' || reference.front() == '\'') &&
        reference.back() == reference.front())
        reference = Trim(reference.substr(1, reference.size() - 2));
    return reference;
}

} // namespace Svg
