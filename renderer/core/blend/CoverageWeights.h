#pragma once

#include <cstdint>

#include <renderer/core/blend/CoverageGamma.h>

namespace Renderer::Blending {

/// The coverage of a span that has one for all pixels; reads like an array of coverage bytes.
struct OneCover
{
    unsigned char cover;

    unsigned char operator[](unsigned) const { return cover; }
    OneCover operator+(unsigned) const { return *this; }
};

/// What a source is scaled by at each pixel of a block: coverage to the power of the gamma ratio,
/// times the mask. \tparam Weight float: a fraction; std::uint16_t: in units of 1/65535; unsigned
/// char: the coverage
///                itself, for neither gamma nor mask.
/// \tparam Covers OneCover or coverage bytes.
/// \param mask may be null.
/// \param gamma null where the ratio is 1.
template<class Weight, class Covers>
void FillWeights(Weight* weights, Covers covers, const unsigned char* mask,
                 const CoverageGamma* gamma, unsigned count);

} // namespace Renderer::Blending
