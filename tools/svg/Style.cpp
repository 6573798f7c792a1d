#include "Style.h"

namespace Svg {

Style Style::MakeChild() const
{
    const Style initial;
    Style child = *this;
    child.displayed = initial.displayed;
    child.overflowVisible = initial.overflowVisible;
    child.opacity = initial.opacity;
    child.clipPath.clear();
    child.mask.clear();
    child.hasFilter = initial.hasFilter;
    child.hasBlendMode = initial.hasBlendMode;
    child.stopColour = initial.stopColour;
    child.stopOpacity = initial.stopOpacity;
    return child;
}

} // namespace Svg
