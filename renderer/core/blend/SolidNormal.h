#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include <renderer/core/blend/CoverageWeights.h>
#include <renderer/core/blend/IntegerArithmetic.h>
#include <renderer/core/blend/PixelPlanes.h>
#include <renderer/core/blend/WordNormal.h>

/// \file
/// Normal composition of one pixel over rows with one coverage, for pixels that are no words. The
/// same bytes as the kernels of spans: what depends on the source is computed once, and the rest
/// runs over channels without regard to pixels.

namespace Renderer::Blending {

/// What becomes of the channels of a backdrop.
/// \tparam pixels so many at once, channel after channel.
template<class PixelT, unsigned pixels, bool isUnbounded = IsUnbounded<PixelT>>
struct SolidChannels;

/// In integers; see CompositeFlat.
template<class PixelT, unsigned pixels>
struct SolidChannels<PixelT, pixels, false>
{
    using ChannelType = typename PixelT::ChannelType;
    using Arithmetic = IntegerArithmetic<ChannelType>;
    using Wide = typename Arithmetic::Wide;
    static constexpr std::size_t Count = pixels * PixelT::ChannelCount;

    SolidChannels(const PixelT& source, unsigned char cover)
    {
        const auto weight = static_cast<ChannelType>(cover * (PixelT::Max / 255));
        const ChannelType alpha = source.channels[PixelT::AlphaIndex];
        keep = Arithmetic::Keep(alpha, weight);
        for (std::size_t i = 0; i < Count; ++i) {
            const ChannelType channel = source.channels[i % PixelT::ChannelCount];
            scaled[i] = Arithmetic::Scale(channel < alpha ? channel : alpha, weight);
        }
    }

    ChannelType Over(ChannelType backdrop, std::size_t index) const
    {
        const auto rest = static_cast<Wide>(Wide{backdrop} * keep);
        return Arithmetic::DivideByMax(static_cast<Wide>(scaled[index] + rest));
    }

    alignas(32) Wide scaled[Count];
    Wide keep;
};

/// In float; see CompositePixel.
template<class PixelT, unsigned pixels>
struct SolidChannels<PixelT, pixels, true>
{
    using ChannelType = float;
    static constexpr std::size_t Count = pixels * PixelT::ChannelCount;

    SolidChannels(const PixelT& source, unsigned char cover)
    {
        FloatPixel<PixelT> valid;
        for (std::size_t c = 0; c < PixelT::ColourCount; ++c)
            valid.colour[c] = source.channels[c];
        valid.alpha = source.channels[PixelT::AlphaIndex];
        valid = Sanitise(valid);
        float k = 0.0f;
        FillWeights(&k, OneCover{cover}, nullptr, nullptr, 1);
        keep = 1.0f - k * valid.alpha * (1.0f / PixelT::Max);
        constexpr float infinity = std::numeric_limits<float>::infinity();
        for (std::size_t i = 0; i < Count; ++i) {
            const std::size_t c = i % PixelT::ChannelCount;
            const bool isAlpha = c == PixelT::AlphaIndex;
            scaled[i] = (isAlpha ? valid.alpha : valid.colour[c]) * k;
            low[i] = isAlpha ? 0.0f : -infinity;
            high[i] = isAlpha ? PixelT::Max : infinity;
        }
    }

    float Over(float backdrop, std::size_t index) const
    {
        const float valid = Least(Greatest(GetFinite(backdrop), low[index]), high[index]);
        return Least(valid * keep + scaled[index], high[index]);
    }

    alignas(32) float scaled[Count];
    alignas(32) float low[Count]; ///< what channels of backdrops and results may be
    alignas(32) float high[Count];
    float keep;
};

/// See above.
template<class PixelT>
struct SolidFlatRun
{
    /// As SpanBlend::SolidRunFunction.
    static void Apply(void* destination, std::ptrdiff_t stride, unsigned rows, const void* pixel,
                      unsigned char cover, unsigned length)
    {
        const PixelT source = *static_cast<const PixelT*>(pixel);
        if (cover == 255 && source.channels[PixelT::AlphaIndex] == PixelT::Max) {
            ForRows<PixelT>(destination, stride, rows,
                            [&](PixelT* row) { FillRow(row, source, length); });
            return;
        }
        const SolidChannels<PixelT, 1> single(source, cover);
        if (length < 2 * GroupPixels) {
            ForRows<PixelT>(destination, stride, rows,
                            [&](PixelT* row) { BlendPixels(row, single, length); });
            return;
        }
        const SolidChannels<PixelT, GroupPixels> group(source, cover);
        const unsigned whole = length / GroupPixels * GroupPixels;
        ForRows<PixelT>(destination, stride, rows, [&](PixelT* row) {
            BlendPixels(row, group, whole);
            BlendPixels(row + whole, single, length - whole);
        });
    }

private:
    /// Pixels whose channels are whole vectors, whatever their number.
    static constexpr unsigned GroupPixels = 16;

    static void FillRow(PixelT* pixels, const PixelT& source, unsigned length)
    {
        unsigned i = 0;
        if (length >= 2 * GroupPixels) {
            PixelT group[GroupPixels];
            for (PixelT& place : group)
                place = source;
            for (; i + GroupPixels <= length; i += GroupPixels)
                std::memcpy(pixels + i, group, sizeof(group));
        }
        for (; i < length; ++i)
            pixels[i] = source;
    }

    /// \param length whole groups.
    template<unsigned pixels>
    static void BlendPixels(PixelT* row, const SolidChannels<PixelT, pixels>& channels,
                            unsigned length)
    {
        for (unsigned i = 0; i < length; i += pixels) {
            auto* __restrict d = reinterpret_cast<typename PixelT::ChannelType*>(row + i);
            for (std::size_t c = 0; c < channels.Count; ++c)
                d[c] = channels.Over(d[c], c);
        }
    }
};

/// The solid forms of Normal for pixels that are no words.
/// \tparam General the functions of spans.
template<class General, class Code>
struct SolidFlatFunctions
{
    using Pixel = typename General::Pixel;

    static void Run(void* destination, std::ptrdiff_t stride, unsigned rows, const void* pixel,
                    unsigned char cover, unsigned length)
    {
        if (cover != 0)
            Code::template Call<SolidFlatRun<Pixel>>(destination, stride, rows, pixel, cover,
                                                     length);
    }

    static void Mask(void* destination, std::ptrdiff_t stride, unsigned rows, const void* pixel,
                     const unsigned char* covers, unsigned length)
    {
        Pixel source[BlockLength];
        const unsigned filled = length < BlockLength ? length : BlockLength;
        for (unsigned i = 0; i < filled; ++i)
            source[i] = *static_cast<const Pixel*>(pixel);
        ForRows<Pixel>(destination, stride, rows, [&](Pixel* row) {
            for (unsigned begin = 0; begin < length; begin += BlockLength) {
                const unsigned count = length - begin < BlockLength ? length - begin : BlockLength;
                General::Mask(row + begin, nullptr, source, covers + begin, 1.0, count);
            }
        });
    }
};

} // namespace Renderer::Blending
