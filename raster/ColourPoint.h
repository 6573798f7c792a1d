#pragma once

#include <array>

#include <raster/Pixel.h>

namespace Raster {

/// A colour with alpha as a point in space, for finding the palette entry that looks most like it.
///
/// Two colours with alpha look alike when they do on every backdrop; the distance taken here is the
/// mean over a black and a white one. With premultiplied channels c and alpha a, a colour channel
/// is c on black and c + 1 − a on white, so that the squared differences add up to Σ dc² + (dc −
/// da)² = ½·(Σ (2dc − da)² + 3da²): a Euclidean distance of the points (2r − a, 2g − a, 2b − a,
/// √3·a). Among opaque colours it is that of RGB. The last axis is kept without its factor, which
/// GetWeight has: the points of 8-bit colours are then whole numbers, and their distances, below
/// 2²⁴, are exact in float.
using ColourPoint = std::array<float, 4>;

/// The factor of the squared difference along an axis.
constexpr float GetWeight(std::size_t axis) noexcept
{
    return axis == 3 ? 3.0F : 1.0F;
}

inline float GetSquaredDistance(const ColourPoint& a, const ColourPoint& b) noexcept
{
    float sum = 0.0F;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += GetWeight(i) * (a[i] - b[i]) * (a[i] - b[i]);
    return sum;
}

/// The point of a premultiplied colour.
inline ColourPoint MakeColourPoint(const PixelRGBA8& pixel) noexcept
{
    const int alpha = pixel.Alpha();
    return {float(2 * pixel[0] - alpha), float(2 * pixel[1] - alpha), float(2 * pixel[2] - alpha),
            float(alpha)};
}

} // namespace Raster
