#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Svg {

/// The style properties that the reader knows.
enum class Property
{
    AlignmentBaseline,
    BaselineShift,
    ClipPath,
    ClipRule,
    Colour,
    ColourInterpolation,
    Direction,
    Display,
    DominantBaseline,
    Fill,
    FillOpacity,
    FillRule,
    Filter,
    Font,
    FontFamily,
    FontFeatureSettings,
    FontKerning,
    FontSize,
    FontStretch,
    FontStyle,
    FontVariant,
    FontVariantCaps,
    FontVariantLigatures,
    FontWeight,
    ImageRendering,
    Isolation,
    Kerning,
    LetterSpacing,
    Marker,
    MarkerEnd,
    MarkerMid,
    MarkerStart,
    Mask,
    MaskType,
    MixBlendMode,
    Opacity,
    Overflow,
    PaintOrder,
    ShapeRendering,
    StopColour,
    StopOpacity,
    Stroke,
    StrokeDashArray,
    StrokeDashOffset,
    StrokeLineCap,
    StrokeLineJoin,
    StrokeMitreLimit,
    StrokeOpacity,
    StrokeWidth,
    TextAnchor,
    TextDecoration,
    TextDecorationLine,
    TextTransform,
    Transform,
    TransformBox,
    TransformOrigin,
    UnicodeBidi,
    VectorEffect,
    Visibility,
    WhiteSpace,
    WordSpacing,
    WritingMode,
};

inline constexpr std::size_t PropertyCount = static_cast<std::size_t>(Property::WritingMode) + 1;

/// The property of a name as it stands in files, such as `stroke-miterlimit`; case matters not.
std::optional<Property> FindProperty(std::string_view name) noexcept;

/// One property with the value that a style gives it.
struct Declaration
{
    Property property;
    std::string value;
    bool important = false;
};

/// Reads `name: value; …` as it stands in style attributes and rules. Comments are taken out
/// before. What is not understood is left out.
std::vector<Declaration> ParseDeclarations(std::string_view text);

/// The text without its comments, which strings may hold without meaning one.
std::string RemoveComments(std::string_view text);

/// Where a text at the same level of brackets, outside strings, first has one of \p characters; its
/// length when nowhere.
std::size_t FindOutsideBrackets(std::string_view text, std::string_view characters) noexcept;

} // namespace Svg
