#pragma once

#include <string_view>
#include <vector>

namespace Svg {

/// The elements that the reader tells apart.
enum class Tag
{
    Unknown, ///< an element of SVG without a meaning here; it is not drawn
    A,
    Circle,
    ClipPath,
    Defs,
    Ellipse,
    Filter,
    ForeignObject,
    Group,
    Image,
    Line,
    LinearGradient,
    Marker,
    Mask,
    Path,
    Pattern,
    Polygon,
    Polyline,
    RadialGradient,
    Rect,
    Stop,
    Style,
    Svg,
    Switch,
    Symbol,
    Text,
    TextPath,
    Tref,
    Tspan,
    Use,
};

/// Whether an element is a basic shape or a path.
bool IsShape(Tag tag) noexcept;
/// Whether an element is drawn where it stands, or holds what is.
bool IsDrawable(Tag tag) noexcept;

struct Attribute
{
    std::string_view name; ///< with its prefix
    std::string_view value;
};

struct Element;

/// Text that an element within a text element holds itself.
struct CharacterData
{
    std::string_view text;
    const Element* after = nullptr; ///< the child before it; null: it stands before all
};

/// One element of the SVG namespace. Elements of other namespaces are left out of the tree. The
/// texts belong to the document.
struct Element
{
    Tag tag = Tag::Unknown;
    std::string_view name; ///< without prefix
    std::string_view id;
    std::vector<Attribute> attributes;
    std::vector<CharacterData> texts; ///< within text elements only
    Element* parent = nullptr;
    Element* firstChild = nullptr;
    Element* nextSibling = nullptr;
    const Element* previousSibling = nullptr;
    int index = 1;      ///< among the parent's children, from 1
    int childCount = 0; ///< of its own children
    int order = 0;      ///< in the document, over all elements
    int lastOrder = 0;  ///< that of the last element within it, or its own

    /// The value of an attribute, or an empty text.
    std::string_view Get(std::string_view attribute) const noexcept;
    bool Has(std::string_view attribute) const noexcept;
    /// Whether \p other is this element or lies within it.
    bool Holds(const Element& other) const noexcept
    {
        return order <= other.order && other.order <= lastOrder;
    }
    /// What the element refers to: `href` or `xlink:href`, whatever the prefix is.
    std::string_view GetReference() const noexcept;
};

} // namespace Svg
