#pragma once

namespace Raster {

/// The pixel formats of buffers and bitmaps. Integer channels span their whole range; colour
/// channels are premultiplied by alpha.
enum class Format
{
    RGBA8 = 0,
    RGBA16 = 1,
    IA8 = 2,    ///< intensity (grey) and alpha
    IA16 = 3,
    CMYKA8 = 4, ///< ink amounts and alpha
    LABA16 = 5, ///< CIE L*a*b* D50 in the 16-bit encoding of ICC version 4, and alpha
    M8 = 6,     ///< a mask: one 8-bit channel
    M16 = 7,
    None = 8,
    RGBAUF = 9, ///< unbounded single-precision float
    MF = 10,    ///< a float mask
};

enum class ColourSpace
{
    HSL = 0,
    Grey = 1,
    RGB = 2,
    CMYK = 3,
    LAB = 4,
};

/// How a bitmap is magnified. Minifying averages over the footprint of a pixel first, except with
/// NearestNeighbour.
enum class ResamplerType
{
    NearestNeighbour = 0,
    Bilinear = 1,
    Bicubic = 2, ///< Catmull-Rom
    Lanczos3 = 3,
};

/// What lies outside the unit square of a bitmap (its tiling mode).
enum class ExtendType
{
    Clamp = 0,
    Transparent = 1,
    Mirror = 2,
    MirrorOnce = 3,
    Wrap = 4,
};

} // namespace Raster
