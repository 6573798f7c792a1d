#pragma once

#include <cstddef>
#include <cstring>

#include <renderer/core/blend/PixelPlanes.h>

namespace Renderer::Blending {

/// Another kernel, of whose results only alpha is kept: colour channels stay, byte for byte.
template<class KernelT>
struct AlphaOnlyKernel
{
    using Pixel = typename KernelT::Pixel;
    using Weight = typename KernelT::Weight;

    /// \param count a multiple of GroupLength, at most BlockLength.
    template<class WeightT>
    static void Block(Pixel* destination, const Pixel* source, const WeightT* weights,
                      unsigned count)
    {
        alignas(32) std::byte copy[BlockLength * sizeof(Pixel)];
        std::memcpy(copy, destination, count * sizeof(Pixel));
        auto* const results = reinterpret_cast<Pixel*>(copy);
        KernelT::Block(results, source, weights, count);
        for (unsigned i = 0; i < count; ++i)
            destination[i].channels[Pixel::AlphaIndex] = results[i].channels[Pixel::AlphaIndex];
    }
};

} // namespace Renderer::Blending
