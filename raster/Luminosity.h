#pragma once

namespace Raster {

/// How bright a colour of red, green and blue is, in the encoding that it is in: the luminosity of
/// the non-separable blend modes (W3C Compositing and Blending Level 1).
constexpr float GetLuminosity(float red, float green, float blue) noexcept
{
    return 0.30f * red + 0.59f * green + 0.11f * blue;
}

} // namespace Raster
