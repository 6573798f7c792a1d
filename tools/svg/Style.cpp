#include "Style.h"

#include <algorithm>

namespace Svg {

bool Style::IsBelow(PaintLayer layer, PaintLayer other) const noexcept
{
    return std::ranges::find(paintOrder, layer) < std::ranges::find(paintOrder, other);
}

Style Style::MakeChild() const
{
    const Style initial;
    Style child = *this;
    child.displayed = initial.displayed;
    child.transform.clear();
    child.transformOrigin = initial.transformOrigin;
    child.transformsInOwnBox = initial.transformsInOwnBox;
    child.nonScalingStroke = initial.nonScalingStroke;
    child.overflowVisible = initial.overflowVisible;
    child.opacity = initial.opacity;
    child.clipPath.clear();
    child.mask.clear();
    child.hasFilter = initial.hasFilter;
    child.blendMode = initial.blendMode;
    child.isolated = initial.isolated;
    child.alphaMask = initial.alphaMask;
    child.stopColour = initial.stopColour;
    child.stopOpacity = initial.stopOpacity;
    child.inlineText = initial.inlineText;
    return child;
}

} // namespace Svg
