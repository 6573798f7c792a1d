#pragma once

#include <cmath>

#include <kernel/Format.h>
#include <kernel/String.h>

namespace Renderer {

/// A channel's value for the user: rounded half away from zero.
inline Kernel::String ToRoundedString(double value)
{
    return Kernel::ToString(std::isfinite(value) ? std::round(value) : 0.0);
}

} // namespace Renderer
