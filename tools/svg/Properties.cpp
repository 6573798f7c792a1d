#include "Properties.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Scanner.h"

namespace Svg {

namespace {

constexpr std::array<std::pair<std::string_view, Property>, PropertyCount> PropertyNames{{
    {"alignment-baseline", Property::AlignmentBaseline},
    {"baseline-shift", Property::BaselineShift},
    {"clip-path", Property::ClipPath},
    {"clip-rule", Property::ClipRule},
    {"color", Property::Colour},
    {"color-interpolation", Property::ColourInterpolation},
    {"direction", Property::Direction},
    {"display", Property::Display},
    {"dominant-baseline", Property::DominantBaseline},
    {"fill", Property::Fill},
    {"fill-opacity", Property::FillOpacity},
    {"fill-rule", Property::FillRule},
    {"filter", Property::Filter},
    {"font", Property::Font},
    {"font-family", Property::FontFamily},
    {"font-feature-settings", Property::FontFeatureSettings},
    {"font-kerning", Property::FontKerning},
    {"font-size", Property::FontSize},
    {"font-stretch", Property::FontStretch},
    {"font-style", Property::FontStyle},
    {"font-variant", Property::FontVariant},
    {"font-variant-caps", Property::FontVariantCaps},
    {"font-variant-ligatures", Property::FontVariantLigatures},
    {"font-weight", Property::FontWeight},
    {"image-rendering", Property::ImageRendering},
    {"isolation", Property::Isolation},
    {"kerning", Property::Kerning},
    {"letter-spacing", Property::LetterSpacing},
    {"marker", Property::Marker},
    {"marker-end", Property::MarkerEnd},
    {"marker-mid", Property::MarkerMid},
    {"marker-start", Property::MarkerStart},
    {"mask", Property::Mask},
    {"mask-type", Property::MaskType},
    {"mix-blend-mode", Property::MixBlendMode},
    {"opacity", Property::Opacity},
    {"overflow", Property::Overflow},
    {"paint-order", Property::PaintOrder},
    {"shape-rendering", Property::ShapeRendering},
    {"stop-color", Property::StopColour},
    {"stop-opacity", Property::StopOpacity},
    {"stroke", Property::Stroke},
    {"stroke-dasharray", Property::StrokeDashArray},
    {"stroke-dashoffset", Property::StrokeDashOffset},
    {"stroke-linecap", Property::StrokeLineCap},
    {"stroke-linejoin", Property::StrokeLineJoin},
    {"stroke-miterlimit", Property::StrokeMitreLimit},
    {"stroke-opacity", Property::StrokeOpacity},
    {"stroke-width", Property::StrokeWidth},
    {"text-anchor", Property::TextAnchor},
    {"text-decoration", Property::TextDecoration},
    {"text-decoration-line", Property::TextDecorationLine},
    {"text-transform", Property::TextTransform},
    {"transform", Property::Transform},
    {"transform-box", Property::TransformBox},
    {"transform-origin", Property::TransformOrigin},
    {"unicode-bidi", Property::UnicodeBidi},
    {"vector-effect", Property::VectorEffect},
    {"visibility", Property::Visibility},
    {"white-space", Property::WhiteSpace},
    {"word-spacing", Property::WordSpacing},
    {"writing-mode", Property::WritingMode},
}};

static_assert(PropertyNames.back().second == Property::WritingMode);

/// Takes `!important` off the end.
bool TakeImportant(std::string_view& value)
{
    const std::size_t mark = value.rfind('!');
    if (mark == value.npos || !EqualsIgnoringCase(Trim(value.substr(mark + 1)), "important"))
        return false;
    value = Trim(value.substr(0, mark));
    return true;
}

void AddDeclaration(std::string_view text, std::vector<Declaration>& out)
{
    const std::size_t colon = text.find(':');
    if (colon == text.npos)
        return;
    const auto property = FindProperty(Trim(text.substr(0, colon)));
    std::string_view value = Trim(text.substr(colon + 1));
    const bool important = TakeImportant(value);
    if (property && !value.empty())
        out.push_back({*property, std::string(value), important});
}

} // namespace

std::optional<Property> FindProperty(std::string_view name) noexcept
{
    const auto found = std::ranges::find_if(
        PropertyNames, [&](const auto& entry) { return EqualsIgnoringCase(entry.first, name); });
    return found == PropertyNames.end() ? std::nullopt : std::optional(found->second);
}

std::vector<Declaration> ParseDeclarations(std::string_view text)
{
    std::vector<Declaration> declarations;
    while (!text.empty()) {
        const std::size_t end = FindOutsideBrackets(text, ";");
        AddDeclaration(text.substr(0, end), declarations);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return declarations;
}

std::string RemoveComments(std::string_view text)
{
    std::string result;
    char quote = '\0';
    while (!text.empty()) {
        if (quote == '\0' && text.starts_with("/*")) {
            const std::size_t end = text.find("*/", 2);
            text.remove_prefix(end == text.npos ? text.size() : end + 2);
            result += ' ';
            continue;
        }
        const char c = text.front();
        if (quote == '\0' ? c == '"' || c == '\'' : c == quote)
            quote = quote == '\0' ? c : '\0';
        result += c;
        text.remove_prefix(1);
    }
    return result;
}

std::size_t FindOutsideBrackets(std::string_view text, std::string_view characters) noexcept
{
    char quote = '\0';
    int depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote != '\0') {
            if (c == quote)
                quote = '\0';
            else if (c == '\\')
                ++i;
            continue;
        }
        if (depth == 0 && characters.find(c) != characters.npos)
            return i;
        if (c == '"' || c == '\'')
            quote = c;
        else if (c == '(' || c == '[' || c == '{')
            ++depth;
        else if ((c == ')' || c == ']' || c == '}') && depth > 0)
            --depth;
    }
    return text.size();
}

} // namespace Svg
