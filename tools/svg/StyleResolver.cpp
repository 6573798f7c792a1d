#include "StyleResolver.h"

#include <bitset>
#include <vector>

#include "FontStyleValues.h"
#include "StyleValues.h"
#include "TextStyleValues.h"

namespace Svg {

StyleResolver::StyleResolver(const Document& document, const ReadSheet& read)
{
    for (const StyleSource& sheet : document.GetStyleSheets()) {
        if (sheet.address.empty())
            m_sheet.Add(sheet.text, read);
        else
            m_sheet.AddFile(sheet.address, read);
    }
}

namespace {

/// A value that some part of a style gives to a property.
struct Value
{
    Property property;
    std::string_view text;
};

/// Adds a value; `marker` and `font` stand for several properties.
void AddValue(std::vector<Value>& values, Property property, std::string_view text)
{
    if (property == Property::Font) {
        for (const auto& [part, value] : ExpandFont(text))
            values.push_back({part, value});
        return;
    }
    if (property != Property::Marker)
        return values.push_back({property, text});
    for (const Property part : {Property::MarkerStart, Property::MarkerMid, Property::MarkerEnd})
        values.push_back({part, text});
}

/// Sets each property to the strongest value that is understood.
/// \param values the weakest first.
void ApplyStrongest(const std::vector<Value>& values, Style& style, const Style& parent)
{
    std::bitset<PropertyCount> done;
    for (auto value = values.rbegin(); value != values.rend(); ++value) {
        const auto index = static_cast<std::size_t>(value->property);
        if (!done[index])
            done[index] = ApplyProperty(style, parent, value->property, value->text);
    }
}

} // namespace

Style StyleResolver::Resolve(const Element& element, const Style& parent) const
{
    std::vector<Value> values;
    for (const Attribute& attribute : element.attributes) {
        if (const auto property = FindProperty(attribute.name))
            AddValue(values, *property, attribute.value);
    }
    const std::vector<const Declaration*> rules = m_sheet.Match(element);
    const std::vector<Declaration> own = ParseDeclarations(RemoveComments(element.Get("style")));
    for (const bool important : {false, true}) {
        for (const Declaration* rule : rules) {
            if (rule->important == important)
                AddValue(values, rule->property, rule->value);
        }
        for (const Declaration& declaration : own) {
            if (declaration.important == important)
                AddValue(values, declaration.property, declaration.value);
        }
    }
    Style style = parent.MakeChild();
    ApplyStrongest(values, style, parent);
    ResolveTextLengths(style);
    return style;
}

const Style& StyleResolver::ResolveInPlace(const Element& element) const
{
    // From the nearest ancestor with a known style downwards.
    std::vector<const Element*> path;
    const Style* parent = nullptr;
    for (const Element* e = &element; e && !parent; e = e->parent) {
        const auto known = m_inPlace.find(e);
        if (known == m_inPlace.end())
            path.push_back(e);
        else
            parent = &known->second;
    }
    const Style initial;
    for (; !path.empty(); path.pop_back()) {
        Style style = Resolve(*path.back(), parent ? *parent : initial);
        parent = &m_inPlace.emplace(path.back(), std::move(style)).first->second;
    }
    return *parent;
}

} // namespace Svg
