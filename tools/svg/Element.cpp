#include "Element.h"

#include <algorithm>

namespace Svg {

bool IsShape(Tag tag) noexcept
{
    return tag == Tag::Path || tag == Tag::Rect || tag == Tag::Circle || tag == Tag::Ellipse ||
           tag == Tag::Line || tag == Tag::Polygon || tag == Tag::Polyline;
}

bool IsDrawable(Tag tag) noexcept
{
    return IsShape(tag) || tag == Tag::Group || tag == Tag::A || tag == Tag::Use ||
           tag == Tag::Image || tag == Tag::Svg || tag == Tag::Switch || tag == Tag::Text;
}

std::string_view Element::Get(std::string_view attribute) const noexcept
{
    const auto found = std::ranges::find(attributes, attribute, &Attribute::name);
    return found == attributes.end() ? std::string_view() : found->value;
}

bool Element::Has(std::string_view attribute) const noexcept
{
    return std::ranges::find(attributes, attribute, &Attribute::name) != attributes.end();
}

std::string_view Element::GetReference() const noexcept
{
    if (Has("href"))
        return Get("href");
    if (Has("xlink:href"))
        return Get("xlink:href");
    const auto isReference = [](const Attribute& a) { return a.name.ends_with(":href"); };
    const auto found = std::ranges::find_if(attributes, isReference);
    return found == attributes.end() ? std::string_view() : found->value;
}

} // namespace Svg
