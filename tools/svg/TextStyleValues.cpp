#include "TextStyleValues.h"

#include <array>

#include "FontStyleValues.h"
#include "Scanner.h"
#include "StyleParsing.h"

namespace Svg {

namespace {

constexpr std::array<Keyword<TextAnchor>, 3> Anchors{
    {{"start", TextAnchor::Start}, {"middle", TextAnchor::Middle}, {"end", TextAnchor::End}}};
// Those of CSS Inline Layout 3 and of SVG 1.1.
constexpr std::array<Keyword<Baseline>, 20> Baselines{{{"auto", Baseline::Auto},
                                                       {"baseline", Baseline::Auto},
                                                       {"use-script", Baseline::Auto},
                                                       {"no-change", Baseline::Auto},
                                                       {"reset-size", Baseline::Auto},
                                                       {"alphabetic", Baseline::Alphabetic},
                                                       {"ideographic", Baseline::Ideographic},
                                                       {"hanging", Baseline::Hanging},
                                                       {"mathematical", Baseline::Mathematical},
                                                       {"central", Baseline::Central},
                                                       {"center", Baseline::Central},
                                                       {"middle", Baseline::Middle},
                                                       {"text-before-edge", Baseline::TextTop},
                                                       {"before-edge", Baseline::TextTop},
                                                       {"text-top", Baseline::TextTop},
                                                       {"top", Baseline::TextTop},
                                                       {"text-after-edge", Baseline::TextBottom},
                                                       {"after-edge", Baseline::TextBottom},
                                                       {"text-bottom", Baseline::TextBottom},
                                                       {"bottom", Baseline::TextBottom}}};
constexpr std::array<Keyword<WhiteSpace>, 6> WhiteSpaces{{{"normal", WhiteSpace::Collapse},
                                                          {"nowrap", WhiteSpace::Collapse},
                                                          {"pre-line", WhiteSpace::Collapse},
                                                          {"pre", WhiteSpace::Preserve},
                                                          {"pre-wrap", WhiteSpace::Preserve},
                                                          {"break-spaces", WhiteSpace::Preserve}}};
constexpr std::array<Keyword<TextCase>, 4> TextCases{{{"none", TextCase::Unchanged},
                                                      {"uppercase", TextCase::Upper},
                                                      {"lowercase", TextCase::Lower},
                                                      {"capitalize", TextCase::Capitalised}}};
constexpr std::array<Keyword<UnicodeBidi>, 6> Bidis{
    {{"normal", UnicodeBidi::Normal},
     {"embed", UnicodeBidi::Embed},
     {"isolate", UnicodeBidi::Isolate},
     {"bidi-override", UnicodeBidi::Override},
     {"isolate-override", UnicodeBidi::IsolateOverride},
     {"plaintext", UnicodeBidi::Plaintext}}};
constexpr std::array<Keyword<bool>, 2> Directions{{{"ltr", false}, {"rtl", true}}};
constexpr std::array<Keyword<bool>, 11> WritingModes{{{"horizontal-tb", false},
                                                      {"lr-tb", false},
                                                      {"rl-tb", false},
                                                      {"lr", false},
                                                      {"rl", false},
                                                      {"vertical-rl", true},
                                                      {"vertical-lr", true},
                                                      {"sideways-rl", true},
                                                      {"sideways-lr", true},
                                                      {"tb-rl", true},
                                                      {"tb", true}}};
std::optional<Length> ParseSpacing(std::string_view value)
{
    return EqualsIgnoringCase(value, "normal") ? Length() : ParseLength(value);
}

std::optional<BaselineShift> ParseBaselineShift(std::string_view value)
{
    if (EqualsIgnoringCase(value, "baseline"))
        return BaselineShift();
    if (EqualsIgnoringCase(value, "sub"))
        return BaselineShift{BaselineShift::Kind::Sub, {}};
    if (EqualsIgnoringCase(value, "super"))
        return BaselineShift{BaselineShift::Kind::Super, {}};
    const auto length = ParseLength(value);
    return length ? std::optional(BaselineShift{BaselineShift::Kind::Length, *length})
                  : std::nullopt;
}

/// The lines that a decoration names; its colour and style are left out.
std::optional<DecorationLines> ParseDecoration(std::string_view value)
{
    DecorationLines lines;
    for (const std::string_view word : SplitWords(value)) {
        lines.under = lines.under || EqualsIgnoringCase(word, "underline");
        lines.over = lines.over || EqualsIgnoringCase(word, "overline");
        lines.through = lines.through || EqualsIgnoringCase(word, "line-through");
    }
    return lines;
}

} // namespace

std::optional<bool> ApplyText(Style& style, const Style& parent, Property property,
                              std::string_view value)
{
    switch (property) {
    case Property::AlignmentBaseline:
        return Set(&InlineStyle::alignmentBaseline, style, parent, value, OneOf(Baselines));
    case Property::BaselineShift:
        return Set(&InlineStyle::baselineShift, style, parent, value, ParseBaselineShift);
    case Property::Direction:
        return Set(&TextStyle::rightToLeft, style, parent, value, OneOf(Directions));
    case Property::DominantBaseline:
        return Set(&TextStyle::dominantBaseline, style, parent, value, OneOf(Baselines));
    case Property::LetterSpacing:
        return Set(&TextStyle::letterSpacing, style, parent, value, ParseSpacing);
    case Property::TextAnchor:
        return Set(&TextStyle::anchor, style, parent, value, OneOf(Anchors));
    case Property::TextDecoration:
    case Property::TextDecorationLine:
        return Set(&InlineStyle::decoration, style, parent, value, ParseDecoration);
    case Property::TextTransform:
        return Set(&TextStyle::letterCase, style, parent, value, OneOf(TextCases));
    case Property::UnicodeBidi:
        return Set(&InlineStyle::bidi, style, parent, value, OneOf(Bidis));
    case Property::WhiteSpace:
        return Set(&TextStyle::whiteSpace, style, parent, value, OneOf(WhiteSpaces));
    case Property::WordSpacing:
        return Set(&TextStyle::wordSpacing, style, parent, value, ParseSpacing);
    case Property::WritingMode:
        return Set(&TextStyle::vertical, style, parent, value, OneOf(WritingModes));
    default:
        return ApplyFont(style, parent, property, value);
    }
}

void ResolveTextLengths(Style& style)
{
    const LengthContext own{0.0, 0.0, style.fontSize};
    for (Length* length : {&style.text.letterSpacing, &style.text.wordSpacing}) {
        if (length->unit == LengthUnit::Em || length->unit == LengthUnit::Ex)
            *length = {length->Resolve(own, LengthAxis::Horizontal), LengthUnit::None};
    }
}

} // namespace Svg
