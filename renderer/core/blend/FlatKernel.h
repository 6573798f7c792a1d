#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include <renderer/core/blend/IntegerArithmetic.h>
#include <renderer/core/blend/PixelPlanes.h>
#include <renderer/core/blend/PixelWord.h>

namespace Renderer::Blending {

/// Composites a block of integer pixels by Normal, Erase or Mask. All channels of a pixel, alpha
/// included, go the same way, so the main loop runs over channels without regard to pixels, after
/// alpha and weight have been repeated for every channel.
template<class PixelT, BlendMode mode>
struct CompositeFlat
{
    using ChannelType = typename PixelT::ChannelType;
    using Arithmetic = IntegerArithmetic<ChannelType>;
    static constexpr unsigned Channels = PixelT::ChannelCount;

    /// \param weights the source's weight at every pixel: coverage bytes, words in units of
    /// 1/65535, or
    ///                FullWeight, which is not read.
    template<class WeightT>
    static void Apply(PixelT* __restrict destination, const PixelT* __restrict source,
                      const WeightT* __restrict weights, unsigned count)
    {
        if constexpr (mode == FillBlendMode::Normal && std::is_same_v<WeightT, FullWeight>) {
            if (IsOpaque(source, count)) {
                std::memcpy(destination, source, count * sizeof(PixelT));
                return;
            }
        }
        alignas(32) ChannelType alphas[BlockLength * Channels];
        alignas(32) ChannelType keeps[BlockLength * Channels];
        alignas(32) WeightT flatWeights[BlockLength * Channels];
        for (std::size_t i = 0; i < WholeGroups(count); ++i) {
            const ChannelType alpha = GetChannel<Channels - 1>(source + i);
            const WeightT weight = GetWeight(weights, i);
            Repeat<Channels>(alphas + i * Channels, alpha);
            Repeat<Channels>(keeps + i * Channels, Arithmetic::Keep(GetEraser(alpha), weight));
            if constexpr (std::is_integral_v<WeightT>)
                Repeat<Channels>(flatWeights + i * Channels, weight);
        }
        auto* __restrict d = reinterpret_cast<ChannelType*>(destination);
        const auto* __restrict s = reinterpret_cast<const ChannelType*>(source);
        for (std::size_t i = 0; i < WholeGroups(count) * Channels; ++i) {
            // Colour above alpha would overflow the sum.
            const ChannelType colour = s[i] < alphas[i] ? s[i] : alphas[i];
            if constexpr (mode == FillBlendMode::Normal)
                d[i] = Arithmetic::Over(colour, GetWeight(flatWeights, i), d[i], keeps[i]);
            else
                d[i] = Arithmetic::Over(ChannelType{0}, FullWeight{}, d[i], keeps[i]);
        }
    }

private:
    static bool IsOpaque(const PixelT* __restrict source, unsigned count)
    {
        ChannelType alphas = PixelT::Max;
        for (std::size_t i = 0; i < WholeGroups(count); ++i)
            alphas = static_cast<ChannelType>(alphas & GetChannel<Channels - 1>(source + i));
        return alphas == PixelT::Max;
    }

    /// The alpha by which the backdrop is erased.
    static ChannelType GetEraser(ChannelType alpha)
    {
        return static_cast<ChannelType>(mode == FillBlendMode::Mask ? PixelT::Max - alpha : alpha);
    }

    static FullWeight GetWeight(const FullWeight*, std::size_t) { return {}; }

    template<class WeightT>
    static WeightT GetWeight(const WeightT* weights, std::size_t index)
    {
        return weights[index];
    }
};

/// The kernel over CompositeFlat.
/// \tparam Code the processor to compile for.
template<class PixelT, BlendMode mode, class Code>
struct FlatKernel
{
    using Pixel = PixelT;
    using Weight = std::uint16_t;

    /// \param count a multiple of GroupLength, at most BlockLength.
    template<class WeightT>
    static void Block(PixelT* destination, const PixelT* source, const WeightT* weights,
                      unsigned count)
    {
        Code::template Call<CompositeFlat<PixelT, mode>>(destination, source, weights, count);
    }
};

} // namespace Renderer::Blending
