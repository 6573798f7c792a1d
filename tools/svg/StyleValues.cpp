#include "StyleValues.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Scanner.h"

namespace Svg {

namespace {

template<class T>
using Keyword = std::pair<std::string_view, T>;

template<class T, std::size_t N>
std::optional<T> FindKeyword(const std::array<Keyword<T>, N>& keywords, std::string_view value)
{
    for (const auto& [name, meaning] : keywords) {
        if (EqualsIgnoringCase(name, value))
            return meaning;
    }
    return std::nullopt;
}

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

/// Sets a member from its parser, or from the parent or the initial style where the value says so.
/// \return whether the value was understood.
template<class T, class Parser>
bool Set(T Style::*member, Style& style, const Style& parent, std::string_view value, Parser parse)
{
    if (EqualsIgnoringCase(value, "inherit"))
        style.*member = parent.*member;
    else if (EqualsIgnoringCase(value, "initial"))
        style.*member = Style().*member;
    else if (auto parsed = parse(value))
        style.*member = std::move(*parsed);
    else
        return false;
    return true;
}

/// A parser that is true for everything but one keyword.
auto Unless(std::string_view keyword)
{
    return [keyword](std::string_view value) {
        return std::optional(!EqualsIgnoringCase(value, keyword));
    };
}

template<std::size_t N, class T>
auto OneOf(const std::array<Keyword<T>, N>& keywords)
{
    return [&keywords](std::string_view value) { return FindKeyword(keywords, value); };
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

bool ApplyOther(Style& style, const Style& parent, Property property, std::string_view value)
{
    const auto fontSize = [&](std::string_view text) {
        return ParseFontSize(text, parent.fontSize);
    };
    const auto strokeFirst = [](std::string_view text) {
        return std::optional(text.starts_with("stroke"));
    };
    const auto pixelated = [](std::string_view text) {
        return std::optional(text == "pixelated" || text == "crisp-edges" ||
                             text == "optimizeSpeed");
    };
    switch (property) {
    case Property::Opacity:
        return Set(&Style::opacity, style, parent, value, ParseFraction);
    case Property::ClipPath:
        return Set(&Style::clipPath, style, parent, value, ParseReference);
    case Property::Mask:
        return Set(&Style::mask, style, parent, value, ParseReference);
    case Property::Display:
        return Set(&Style::displayed, style, parent, value, Unless("none"));
    case Property::Visibility:
        return Set(&Style::visible, style, parent, value, OneOf(Visibilities));
    case Property::Overflow:
        return Set(&Style::overflowVisible, style, parent, value, OneOf(Overflows));
    case Property::Filter:
        return Set(&Style::hasFilter, style, parent, value, Unless("none"));
    case Property::MixBlendMode:
        return Set(&Style::hasBlendMode, style, parent, value, Unless("normal"));
    case Property::FontSize:
        return Set(&Style::fontSize, style, parent, value, fontSize);
    case Property::PaintOrder:
        return Set(&Style::strokeFirst, style, parent, value, strokeFirst);
    case Property::ImageRendering:
        return Set(&Style::pixelatedImages, style, parent, value, pixelated);
    case Property::Marker:
    case Property::MarkerStart:
    case Property::MarkerMid:
    case Property::MarkerEnd:
        style.hasMarkers = style.hasMarkers || value.find("url(") != value.npos;
        return true;
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
