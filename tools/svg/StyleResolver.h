#pragma once

#include <unordered_map>

#include "Document.h"
#include "Style.h"
#include "StyleSheet.h"

namespace Svg {

/// Computes the styles of a document's elements: presentation attributes, style sheets, `style`
/// attributes and what is important among them, in the order of the cascade (CSS 2.1, 6.4).
class StyleResolver
{
public:
    /// \param read finds style sheets beside the document.
    /// \pre the document outlives the resolver.
    explicit StyleResolver(const Document& document, const ReadSheet& read = {});

    /// The style of an element below a parent with the style \p parent. Elements that `use` shows
    /// have a parent other than that of the tree.
    Style Resolve(const Element& element, const Style& parent) const;

    /// The style of an element at its own place in the tree, as definitions have it: gradients,
    /// clip paths.
    const Style& ResolveInPlace(const Element& element) const;

private:
    StyleSheet m_sheet;
    mutable std::unordered_map<const Element*, Style> m_inPlace;
};

} // namespace Svg
