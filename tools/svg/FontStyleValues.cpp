#include "FontStyleValues.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <geometry/text/FontFamilies.h>
#include <geometry/text/ShapeOptions.h>

#include "Scanner.h"
#include "StyleParsing.h"

namespace Svg {

namespace {

constexpr std::array<Keyword<int>, 9> Stretches{{{"ultra-condensed", 1},
                                                 {"extra-condensed", 2},
                                                 {"condensed", 3},
                                                 {"semi-condensed", 4},
                                                 {"normal", 5},
                                                 {"semi-expanded", 6},
                                                 {"expanded", 7},
                                                 {"extra-expanded", 8},
                                                 {"ultra-expanded", 9}}};
/// The widths in percent that the stretches from 1 to 9 stand for (CSS Fonts 4, 2.3).
constexpr std::array<double, 9> StretchPercents{50, 62.5, 75, 87.5, 100, 112.5, 125, 150, 200};
constexpr std::array<Keyword<bool>, 3> Kernings{
    {{"auto", true}, {"normal", true}, {"none", false}}};
constexpr std::array<Keyword<bool>, 3> Variants{
    {{"normal", false}, {"small-caps", true}, {"all-small-caps", true}}};
constexpr std::array<std::string_view, 9> SizeWords{
    "xx-small", "x-small", "small", "medium", "large", "x-large", "xx-large", "larger", "smaller"};

/// Relative weights (CSS Fonts 4, 2.2.1).
int MakeBolder(int weight)
{
    return weight < 350 ? 400 : weight < 550 ? 700 : std::max(weight, 900);
}

int MakeLighter(int weight)
{
    return weight < 550 ? std::min(weight, 100) : weight < 750 ? 400 : 700;
}

std::optional<int> ParseWeight(std::string_view value, int parent)
{
    if (EqualsIgnoringCase(value, "normal"))
        return Kernel::Font::NormalWeight;
    if (EqualsIgnoringCase(value, "bold"))
        return Kernel::Font::BoldWeight;
    if (EqualsIgnoringCase(value, "bolder"))
        return MakeBolder(parent);
    if (EqualsIgnoringCase(value, "lighter"))
        return MakeLighter(parent);
    const auto number = ParseNumber(value);
    return number && *number >= 1.0 && *number <= 1000.0 ? std::optional(int(std::lround(*number)))
                                                         : std::nullopt;
}

std::optional<int> ParseStretch(std::string_view value)
{
    if (const auto stretch = FindKeyword(Stretches, value))
        return stretch;
    const auto length = ParseLength(value);
    if (!length || !length->IsPercentage() || length->value < 0.0)
        return std::nullopt;
    const auto isFarther = [&](double a, double b) {
        return std::abs(a - length->value) < std::abs(b - length->value);
    };
    const auto nearest = std::ranges::min_element(StretchPercents, isFarther);
    return int(nearest - StretchPercents.begin()) + 1;
}

std::optional<bool> ParseSlant(std::string_view value)
{
    const std::string_view word = value.substr(0, value.find_first_of(" \t\n"));
    if (EqualsIgnoringCase(word, "normal"))
        return false;
    const bool slanted = EqualsIgnoringCase(word, "italic") || EqualsIgnoringCase(word, "oblique");
    return slanted ? std::optional(true) : std::nullopt;
}

bool IsQuoted(std::string_view text)
{
    return text.size() >= 2 && (text.front() == '"' || text.front() == '\'') &&
           text.back() == text.front();
}

/// Whether a text is made of identifiers of CSS, as names without quotes are.
bool IsMadeOfIdentifiers(std::string_view text)
{
    const auto isOther = [](char c) {
        return !(IsDigit(c) || (ToLower(c) >= 'a' && ToLower(c) <= 'z') || c == '-' || c == '_' ||
                 c == '\\' || static_cast<unsigned char>(c) >= 0x80);
    };
    const auto isBad = [&](std::string_view word) {
        return IsDigit(word.front()) || std::ranges::any_of(word, isOther);
    };
    return std::ranges::none_of(SplitWords(text), isBad);
}

/// A family's name without quotes and with single blanks; empty for none.
std::string CleanFamily(std::string_view text)
{
    text = Trim(text);
    if (IsQuoted(text))
        text = text.substr(1, text.size() - 2);
    std::string name;
    for (const std::string_view word : SplitWords(text))
        name += (name.empty() ? "" : " ") + std::string(word);
    std::ranges::replace(name, ',', ' '); // names are separated by commas
    return name;
}

std::optional<std::string> ParseFamilies(std::string_view value)
{
    std::string families;
    for (std::size_t count = 0; !value.empty() && count < Geometry::MaxFamilies; ++count) {
        const std::size_t end = FindOutsideBrackets(value, ",");
        const std::string_view item = Trim(value.substr(0, end));
        if (!IsQuoted(item) && !IsMadeOfIdentifiers(item))
            return std::nullopt;
        const std::string name = CleanFamily(item);
        if (!name.empty())
            families += (families.empty() ? "" : ",") + name;
        value.remove_prefix(std::min(end + 1, value.size()));
    }
    return families.empty() ? std::nullopt : std::optional(families);
}

/// `kerning` of SVG 1.1: a length instead of the font's own kerning, but for `auto`.
std::optional<bool> ParseOldKerning(std::string_view value)
{
    if (EqualsIgnoringCase(value, "auto"))
        return true;
    return ParseLength(value) ? std::optional(false) : std::nullopt;
}

std::optional<bool> ParseSmallCaps(std::string_view value)
{
    for (const std::string_view word : SplitWords(value)) {
        if (FindKeyword(Variants, word).value_or(false))
            return true;
    }
    return false;
}

std::optional<bool> ParseLigatures(std::string_view value)
{
    const auto words = SplitWords(value);
    const auto isNone = [](std::string_view word) {
        return EqualsIgnoringCase(word, "none") || EqualsIgnoringCase(word, "no-common-ligatures");
    };
    return std::ranges::none_of(words, isNone);
}

using Features = std::shared_ptr<const std::vector<std::string>>;

/// `"smcp" on, "aalt" 2` as HarfBuzz wants it: `smcp=1`, `aalt=2`.
std::optional<Features> ParseFeatures(std::string_view value)
{
    if (EqualsIgnoringCase(value, "normal"))
        return Features();
    std::vector<std::string> features;
    Scanner list(value);
    while (!list.AtEnd() && features.size() < Geometry::ShapeOptions::MaxFeatures) {
        const auto words = SplitWords(list.Until(','));
        if (words.empty() || words.size() > 2)
            return std::nullopt;
        const std::string tag = CleanFamily(words[0]);
        const std::string_view setting = words.size() > 1 ? words[1] : "on";
        if (tag.size() != 4)
            return std::nullopt;
        features.push_back(tag + "=" +
                           (EqualsIgnoringCase(setting, "on")    ? "1"
                            : EqualsIgnoringCase(setting, "off") ? "0"
                                                                 : std::string(setting)));
    }
    return std::make_shared<const std::vector<std::string>>(std::move(features));
}

/// Whether a word of `font` is a size, perhaps with the height of lines behind it.
bool IsSize(std::string_view word)
{
    const std::string_view size = word.substr(0, word.find('/'));
    const auto isNamed = [&](std::string_view name) { return EqualsIgnoringCase(name, size); };
    return ParseLength(size).has_value() || std::ranges::any_of(SizeWords, isNamed);
}

/// What a word before the size in `font` sets.
std::optional<Property> FindFontPart(std::string_view word)
{
    if (ParseSlant(word))
        return Property::FontStyle;
    if (FindKeyword(Variants, word))
        return Property::FontVariant;
    if (ParseWeight(word, Kernel::Font::NormalWeight))
        return Property::FontWeight;
    return FindKeyword(Stretches, word) ? std::optional(Property::FontStretch) : std::nullopt;
}

} // namespace

std::optional<bool> ApplyFont(Style& style, const Style& parent, Property property,
                              std::string_view value)
{
    const auto weight = [&](std::string_view text) {
        return ParseWeight(text, parent.text.weight);
    };
    switch (property) {
    case Property::FontFamily:
        return Set(&TextStyle::family, style, parent, value, ParseFamilies);
    case Property::FontFeatureSettings:
        return Set(&TextStyle::features, style, parent, value, ParseFeatures);
    case Property::FontKerning:
        return Set(&TextStyle::kerning, style, parent, value, OneOf(Kernings));
    case Property::FontStretch:
        return Set(&TextStyle::stretch, style, parent, value, ParseStretch);
    case Property::FontStyle:
        return Set(&TextStyle::italic, style, parent, value, ParseSlant);
    case Property::FontVariant:
    case Property::FontVariantCaps:
        return Set(&TextStyle::smallCaps, style, parent, value, ParseSmallCaps);
    case Property::FontVariantLigatures:
        return Set(&TextStyle::ligatures, style, parent, value, ParseLigatures);
    case Property::FontWeight:
        return Set(&TextStyle::weight, style, parent, value, weight);
    case Property::Kerning:
        return Set(&TextStyle::kerning, style, parent, value, ParseOldKerning);
    default:
        return std::nullopt;
    }
}

std::vector<std::pair<Property, std::string_view>> ExpandFont(std::string_view value)
{
    using Values = std::vector<std::pair<Property, std::string_view>>;
    value = Trim(value);
    Values values;
    const bool isInherited =
        EqualsIgnoringCase(value, "inherit") || EqualsIgnoringCase(value, "initial");
    for (const Property part :
         {Property::FontStyle, Property::FontVariant, Property::FontWeight, Property::FontStretch})
        values.emplace_back(part, isInherited ? value : "normal");
    if (isInherited) {
        values.emplace_back(Property::FontSize, value);
        values.emplace_back(Property::FontFamily, value);
        return values;
    }
    const auto takeWord = [&] {
        const std::size_t end = std::min(value.find_first_of(" \t\r\n\f"), value.size());
        const std::string_view word = value.substr(0, end);
        value = Trim(value.substr(end));
        return word;
    };
    std::string_view word = takeWord();
    // A plain number is a weight where a size follows.
    const auto isWeight = [&] {
        return ParseNumber(word) && IsSize(value.substr(0, value.find_first_of(" \t\r\n\f")));
    };
    for (; !IsSize(word) || isWeight(); word = takeWord()) {
        if (EqualsIgnoringCase(word, "normal"))
            continue; // any of them may be, and is
        const auto part = FindFontPart(word);
        if (!part)
            return {};
        values.emplace_back(*part, word);
    }
    values.emplace_back(Property::FontSize, word.substr(0, word.find('/')));
    if (value.starts_with('/')) { // the height of lines, with a blank before it
        value = Trim(value.substr(1));
        takeWord();
    }
    if (!ParseFamilies(value))
        return {};
    values.emplace_back(Property::FontFamily, value);
    return values;
}

} // namespace Svg
