#pragma once

#include <array>
#include <cstdint>

namespace Renderer::Blending {

/// Coverage bytes raised to a power: entry c is (c/255)^ratio, in 0…1, with 0 and 255 kept.
struct CoverageGamma
{
    double ratio;
    std::array<float, 256> fractions;
    /// The same in units of 1/65535, rounded.
    std::array<std::uint16_t, 256> words;
};

/// The table of a ratio; a negative or non-finite ratio counts as 1. The calling thread keeps its
/// last table, which the next call with another ratio overwrites.
const CoverageGamma& GetCoverageGamma(double ratio);

} // namespace Renderer::Blending
