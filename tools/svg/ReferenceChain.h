#pragma once

#include <string_view>
#include <vector>

#include "Document.h"
#include "Notices.h"

namespace Svg {

/// A paint server together with those that it refers to for what it leaves out, the nearest first.
class ReferenceChain
{
public:
    using Belongs = bool (*)(const Element&);

    /// \param belongs which elements take part; a reference to any other ends the chain.
    /// \param notices takes in that the chain was cut where it comes back to one of its elements,
    ///        or because it is too long.
    ReferenceChain(const Element& first, const Document& document, Belongs belongs,
                   Notices& notices);

    const Element& GetFirst() const noexcept { return *m_elements.front(); }
    /// The nearest element with an attribute, or null; of the first one's kind only, where asked.
    const Element* Find(std::string_view attribute, bool sameKind = false) const;
    /// The attribute's value, or an empty text.
    std::string_view Get(std::string_view attribute) const;
    /// The nearest element that has a child which \p counts says yes to, or null.
    const Element* FindOwner(Belongs counts) const;

private:
    std::vector<const Element*> m_elements;
};

} // namespace Svg
