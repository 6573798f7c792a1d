#include "StyleResolver.h"

#include <vector>

#include "StyleValues.h"

namespace Svg {

StyleResolver::StyleResolver(const Document& document)
{
    for (const std::string& text : document.GetStyleSheets())
        m_sheet.Add(text);
}

Style StyleResolver::Resolve(const Element& element, const Style& parent) const
{
    Style style = parent.MakeChild();
    const auto apply = [&](const Declaration& declaration) {
        ApplyProperty(style, parent, declaration.property, declaration.value);
    };
    for (const Attribute& attribute : element.attributes) {
        if (const auto property = FindProperty(attribute.name))
            ApplyProperty(style, parent, *property, attribute.value);
    }
    const std::vector<const Declaration*> rules = m_sheet.Match(element);
    const std::vector<Declaration> own = ParseDeclarations(RemoveComments(element.Get("style")));
    for (const bool important : {false, true}) {
        for (const Declaration* rule : rules) {
            if (rule->important == important)
                apply(*rule);
        }
        for (const Declaration& declaration : own) {
            if (declaration.important == important)
                apply(declaration);
        }
    }
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
