#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "Scanner.h"
#include "Style.h"

namespace Svg {

/// \name What the parsers of style properties have in common
/// @{

/// A word of a property with what it means.
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

/// A parser that is true for everything but one keyword.
inline auto Unless(std::string_view keyword)
{
    return [keyword](std::string_view value) {
        return std::optional(!EqualsIgnoringCase(value, keyword));
    };
}

/// A parser of keywords.
template<std::size_t N, class T>
auto OneOf(const std::array<Keyword<T>, N>& keywords)
{
    return [&keywords](std::string_view value) { return FindKeyword(keywords, value); };
}

/// Sets a value from its parser, or from the parent or the initial style where the text says so.
/// \return whether the text was understood.
template<class T, class Parser>
bool SetValue(T& place, const T& inherited, const T& initial, std::string_view value, Parser parse)
{
    if (EqualsIgnoringCase(value, "inherit"))
        place = inherited;
    else if (EqualsIgnoringCase(value, "initial"))
        place = initial;
    else if (auto parsed = parse(value))
        place = std::move(*parsed);
    else
        return false;
    return true;
}

/// The same for a member of the style.
template<class T, class Parser>
bool Set(T Style::*member, Style& style, const Style& parent, std::string_view value, Parser parse)
{
    return SetValue(style.*member, parent.*member, Style().*member, value, parse);
}

/// And for members of its parts for text.
template<class T, class Parser>
bool Set(T TextStyle::*member, Style& style, const Style& parent, std::string_view value,
         Parser parse)
{
    return SetValue(style.text.*member, parent.text.*member, TextStyle().*member, value, parse);
}

template<class T, class Parser>
bool Set(T InlineStyle::*member, Style& style, const Style& parent, std::string_view value,
         Parser parse)
{
    return SetValue(style.inlineText.*member, parent.inlineText.*member, InlineStyle().*member,
                    value, parse);
}
/// @}

} // namespace Svg
