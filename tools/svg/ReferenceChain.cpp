#include "ReferenceChain.h"

#include <algorithm>

namespace Svg {

namespace {

constexpr std::size_t MaxLength = 100;

} // namespace

ReferenceChain::ReferenceChain(const Element& first, const Document& document, Belongs belongs,
                               Notices& notices)
{
    for (const Element* next = &first; next && belongs(*next);
         next = document.FindByReference(next->GetReference())) {
        if (m_elements.size() == MaxLength ||
            std::ranges::find(m_elements, next) != m_elements.end()) {
            notices.Add("a gradient or pattern refers to itself or through too many others; "
                        "that reference is left out");
            return;
        }
        m_elements.push_back(next);
    }
}

const Element* ReferenceChain::Find(std::string_view attribute, bool sameKind) const
{
    const auto found = std::ranges::find_if(m_elements, [&](const Element* element) {
        return (!sameKind || element->tag == GetFirst().tag) && element->Has(attribute);
    });
    return found == m_elements.end() ? nullptr : *found;
}

std::string_view ReferenceChain::Get(std::string_view attribute) const
{
    const Element* source = Find(attribute);
    return source ? source->Get(attribute) : std::string_view();
}

const Element* ReferenceChain::FindOwner(Belongs counts) const
{
    const auto found = std::ranges::find_if(m_elements, [&](const Element* element) {
        const Element* child = element->firstChild;
        while (child && !counts(*child))
            child = child->nextSibling;
        return child != nullptr;
    });
    return found == m_elements.end() ? nullptr : *found;
}

} // namespace Svg
