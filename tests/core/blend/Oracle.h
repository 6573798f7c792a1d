#pragma once

#include <array>
#include <cstddef>

#include <raster/Pixel.h>
#include <renderer/paint/FillBlendMode.h>

/// \file
/// A slow compositor in double precision, written from the definitions: unpremultiply, blend,
/// composite. It shares no code with the blend functions it judges.

namespace BlendTests {

/// A pixel in fractions of the channel maximum: premultiplied, alpha where the format has it.
using RealPixel = std::array<double, 5>;

struct OracleFormat
{
    std::array<Raster::ChannelRole, 5> roles;
    std::size_t colours; ///< how many channels precede alpha
    bool unbounded;      ///< float colour may leave 0…1
};

/// What a blend function gets for one pixel.
struct OracleInput
{
    Renderer::FillBlendMode::BlendMode mode;
    RealPixel source;
    RealPixel backdrop;
    unsigned char cover;
    int mask; ///< -1: none
    double ratio;
};

RealPixel Composite(const OracleFormat& format, const OracleInput& input);

/// Whether the mode's formula jumps somewhere, so that inputs closer than storage can tell apart
/// have results far apart.
bool IsDiscontinuous(Renderer::FillBlendMode::BlendMode mode);

/// Whether the mode blends a channel without regard to the others.
bool IsSeparable(Renderer::FillBlendMode::BlendMode mode);

} // namespace BlendTests
