#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

#include <renderer/core/blend/PixelPlanes.h>

namespace Renderer::Blending {

/// Another kernel, of whose results only alpha is kept. Integer colour stays byte for byte: who
/// calls keeps it plain for as long. Float colour follows the alpha that it is premultiplied with,
/// which costs it nothing; where alpha is 0 it is plain.
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
            SetAlpha(destination[i], results[i].Alpha());
    }

private:
    using Channel = typename Pixel::ChannelType;

    static void SetAlpha(Pixel& pixel, Channel alpha)
    {
        if constexpr (std::is_floating_point_v<Channel>) {
            const Channel before = pixel.Alpha();
            if (alpha == before)
                return;
            const Channel from = before > 0 ? before : Channel(1);
            const Channel factor = (alpha > 0 ? alpha : Channel(1)) / from;
            for (std::size_t c = 0; c < Pixel::ColourCount; ++c)
                pixel[c] *= factor;
        }
        pixel.Alpha() = alpha;
    }
};

} // namespace Renderer::Blending
