#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include <renderer/core/blend/CoverageWeights.h>
#include <renderer/core/blend/IntegerArithmetic.h>
#include <renderer/core/blend/PixelPlanes.h>
#include <renderer/core/blend/PixelWord.h>
#include <renderer/core/blend/SpanLoop.h>

/// \file
/// Interpolation between what lies below and the paint: d + w·(p − d) of every channel.

namespace Renderer::Blending {

/// Of integer pixels. Weights are in units of 1/65535 whatever the channel's depth, and the sum is
/// rounded once: weights 0 and 1 give the two ends exactly.
template<class PixelT>
struct InterpolateFlat
{
    using ChannelType = typename PixelT::ChannelType;
    using Words = IntegerArithmetic<std::uint16_t>;
    static constexpr unsigned Channels = PixelT::ChannelCount;

    static void Apply(PixelT* __restrict destination, const PixelT* __restrict paint,
                      const std::uint16_t* __restrict weights, unsigned count)
    {
        alignas(32) ChannelType alphas[BlockLength * Channels];
        alignas(32) std::uint16_t flatWeights[BlockLength * Channels];
        for (std::size_t i = 0; i < WholeGroups(count); ++i) {
            Repeat<Channels>(alphas + i * Channels, GetChannel<Channels - 1>(paint + i));
            Repeat<Channels>(flatWeights + i * Channels, weights[i]);
        }
        auto* __restrict d = reinterpret_cast<ChannelType*>(destination);
        const auto* __restrict p = reinterpret_cast<const ChannelType*>(paint);
        for (std::size_t i = 0; i < WholeGroups(count) * Channels; ++i) {
            const std::uint32_t colour = p[i] < alphas[i] ? p[i] : alphas[i];
            const std::uint32_t weight = flatWeights[i];
            d[i] = static_cast<ChannelType>(
                Words::DivideByMax(colour * weight + d[i] * (Words::Max - weight)));
        }
    }
};

/// Of float pixels.
template<class PixelT>
struct InterpolatePlanes
{
    static void Apply(PixelPlanes<PixelT>* __restrict destination,
                      const PixelPlanes<PixelT>* __restrict paint, const float* __restrict weights,
                      unsigned count)
    {
        for (std::size_t c = 0; c < PixelT::ChannelCount; ++c) {
            for (std::size_t i = 0; i < WholeGroups(count); ++i)
                destination->planes[c][i] = destination->planes[c][i] * (1.0f - weights[i]) +
                                            paint->planes[c][i] * weights[i];
        }
    }
};

/// The kernel over both.
/// \tparam Code the processor to compile for.
template<class PixelT, class Code>
struct InterpolationKernel
{
    using Pixel = PixelT;
    using Weight = std::conditional_t<IsUnbounded<PixelT>, float, std::uint16_t>;

    /// \param count a multiple of GroupLength, at most BlockLength.
    static void Block(PixelT* destination, const PixelT* paint, const Weight* weights,
                      unsigned count)
    {
        if constexpr (IsUnbounded<PixelT>) {
            PixelPlanes<PixelT> below, above;
            Code::template Call<LoadPlanes<PixelT>>(&below, destination, count);
            Code::template Call<LoadPlanes<PixelT>>(&above, paint, count);
            Code::template Call<InterpolatePlanes<PixelT>>(&below, &above, weights, count);
            Code::template Call<StorePlanes<PixelT>>(destination, &below, weights, count);
        } else {
            Code::template Call<InterpolateFlat<PixelT>>(destination, paint, weights, count);
        }
    }
};

/// The functions of SpanInterpolation over a kernel.
template<class KernelT>
struct InterpolationFunctions
{
    using Pixel = typename KernelT::Pixel;
    using Weight = typename KernelT::Weight;

    static void BeginWeights(void* weights, unsigned length)
    {
        Pixel full{};
        full.Alpha() = Pixel::Max;
        std::fill_n(static_cast<Pixel*>(weights), length, full);
    }

    template<class Covers>
    static void Interpolate(void* destination, const unsigned char* mask, const void* paint,
                            const void* weights, Covers covers, double gammaRatio, unsigned length)
    {
        const auto d = static_cast<Pixel*>(destination);
        const auto p = static_cast<const Pixel*>(paint);
        const auto w = static_cast<const Pixel*>(weights);
        const CoverageGamma* gamma = gammaRatio == 1.0 ? nullptr : &GetCoverageGamma(gammaRatio);
        alignas(32) Weight block[BlockLength];
        for (unsigned begin = 0; begin < length; begin += BlockLength) {
            const unsigned count = std::min(length - begin, BlockLength);
            FillWeights(block, covers + begin, mask ? mask + begin : nullptr, gamma, count);
            for (unsigned i = 0; i < count; ++i)
                block[i] = Scale(block[i], w[begin + i].Alpha());
            CompositeBlock<KernelT>(d + begin, p + begin, block, count);
        }
    }

    static void Run(void* destination, const unsigned char* mask, const void* paint,
                    const void* weights, unsigned char cover, double gammaRatio, unsigned length)
    {
        if (cover != 0)
            Interpolate(destination, mask, paint, weights, OneCover{cover}, gammaRatio, length);
    }

    static void Mask(void* destination, const unsigned char* mask, const void* paint,
                     const void* weights, const unsigned char* covers, double gammaRatio,
                     unsigned length)
    {
        Interpolate(destination, mask, paint, weights, covers, gammaRatio, length);
    }

    static constexpr SpanInterpolation Entry{&BeginWeights, &Run, &Mask};

private:
    static float Scale(float weight, float alpha)
    {
        return weight * Least(Greatest(GetFinite(alpha), 0.0f), 1.0f);
    }

    static std::uint16_t Scale(std::uint16_t weight, typename Pixel::ChannelType alpha) requires
        std::is_integral_v<typename Pixel::ChannelType>
    {
        using Words = IntegerArithmetic<std::uint16_t>;
        constexpr std::uint32_t unit = Words::Max / static_cast<std::uint32_t>(Pixel::Max);
        return Words::DivideByMax(std::uint32_t{weight} * (alpha * unit));
    }
};

} // namespace Renderer::Blending
