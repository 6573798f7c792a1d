#pragma once

#include <optional>
#include <string_view>

#include <kernel/Rect.h>

#include "TransformList.h"

namespace Svg {

/// Reads a `viewBox`: left, top, width and height. Nothing for a damaged or negative one; a width
/// or height of 0 is kept, since it means that nothing is drawn.
std::optional<Kernel::RectT<double>> ParseViewBox(std::string_view text);

/// The value of `preserveAspectRatio`.
struct AspectRatio
{
    double alignX = 0.5; ///< 0 left, 0.5 middle, 1 right; likewise alignY
    double alignY = 0.5;
    bool uniform = true; ///< false for `none`: both axes are stretched
    bool slice = false;  ///< cover the viewport instead of fitting into it

    /// Damaged texts give the default, `xMidYMid meet`.
    static AspectRatio Parse(std::string_view text);
};

/// The transform that shows \p box in \p viewport. \pre neither is empty.
Transform FitBox(const Kernel::RectT<double>& box, const Kernel::RectT<double>& viewport,
                 const AspectRatio& ratio);

} // namespace Svg
