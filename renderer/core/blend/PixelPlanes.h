#pragma once

#include <cstdint>

#include <renderer/core/blend/BlendAlgebra.h>

namespace Renderer::Blending {

/// Pixels are composited in blocks of this many.
inline constexpr unsigned BlockLength = 64;

/// Vector code handles this many pixels at a time.
inline constexpr unsigned GroupLength = 8;

/// Lets the compiler know that a count is of whole groups, so that vector loops need no tails.
constexpr std::size_t WholeGroups(unsigned count)
{
    return count / GroupLength * GroupLength;
}

/// A block of pixels in floats, one plane per channel: the form in which the compiler can work on
/// many pixels in one instruction.
template<class PixelT>
struct PixelPlanes
{
    alignas(32) float planes[PixelT::ChannelCount][BlockLength];

    FloatPixel<PixelT> Get(std::size_t index) const
    {
        FloatPixel<PixelT> pixel;
        for (std::size_t c = 0; c < PixelT::ColourCount; ++c)
            pixel.colour[c] = planes[c][index];
        pixel.alpha = planes[PixelT::AlphaIndex][index];
        return pixel;
    }

    void Set(std::size_t index, const FloatPixel<PixelT>& pixel)
    {
        for (std::size_t c = 0; c < PixelT::ColourCount; ++c)
            planes[c][index] = pixel.colour[c];
        planes[PixelT::AlphaIndex][index] = pixel.alpha;
    }
};

/// 0 for what is not finite.
inline float GetFinite(float value)
{
    return value - value == 0.0f ? value : 0.0f;
}

/// Makes a loaded pixel a valid one: finite with alpha in 0…1, or integer colour up to its alpha.
template<class PixelT>
FloatPixel<PixelT> Sanitise(FloatPixel<PixelT> pixel)
{
    if constexpr (IsUnbounded<PixelT>) {
        for (float& channel : pixel.colour)
            channel = GetFinite(channel);
        pixel.alpha = Least(Greatest(GetFinite(pixel.alpha), 0.0f), 1.0f);
    } else {
        for (float& channel : pixel.colour)
            channel = Least(channel, pixel.alpha);
    }
    return pixel;
}

/// Pixels to planes.
template<class PixelT>
struct LoadPlanes
{
    static void Apply(PixelPlanes<PixelT>* __restrict planes, const PixelT* __restrict pixels,
                      unsigned count)
    {
        for (std::size_t i = 0; i < WholeGroups(count); ++i) {
            FloatPixel<PixelT> pixel;
            for (std::size_t c = 0; c < PixelT::ColourCount; ++c)
                pixel.colour[c] = static_cast<float>(pixels[i].channels[c]);
            pixel.alpha = static_cast<float>(pixels[i].channels[PixelT::AlphaIndex]);
            planes->Set(i, Sanitise(pixel));
        }
    }
};

/// Planes to pixels, rounded to nearest and integer colour not above its alpha; pixels of weight 0
/// keep their bytes.
template<class PixelT>
struct StorePlanes
{
    using ChannelType = typename PixelT::ChannelType;

    static void Apply(PixelT* __restrict pixels, const PixelPlanes<PixelT>* __restrict planes,
                      const float* __restrict weights, unsigned count)
    {
        for (std::size_t i = 0; i < WholeGroups(count); ++i) {
            const float alpha = planes->planes[PixelT::AlphaIndex][i];
            const bool touched = weights[i] > 0.0f;
            for (std::size_t c = 0; c < PixelT::ChannelCount; ++c) {
                const ChannelType value = GetStored(planes->planes[c][i], alpha);
                pixels[i].channels[c] = touched ? value : pixels[i].channels[c];
            }
        }
    }

private:
    static ChannelType GetStored(float value, float alpha)
    {
        if constexpr (IsUnbounded<PixelT>) {
            return value;
        } else {
            const float bounded = Least(Greatest(value, 0.0f), alpha) + 0.5f;
            return static_cast<ChannelType>(static_cast<std::int32_t>(bounded));
        }
    }
};

/// Composites planes over planes.
template<class PixelT, BlendMode mode>
struct CompositePlanes
{
    static void Apply(PixelPlanes<PixelT>* __restrict backdrops,
                      const PixelPlanes<PixelT>* __restrict sources,
                      const float* __restrict weights, unsigned count)
    {
        for (std::size_t i = 0; i < WholeGroups(count); ++i) {
            backdrops->Set(
                i, CompositePixel<mode, PixelT>(backdrops->Get(i), sources->Get(i), weights[i]));
        }
    }
};

/// Composites a block of pixels in planes of floats.
/// \tparam Code the processor to compile for.
template<class PixelT, BlendMode mode, class Code>
struct PlaneKernel
{
    using Pixel = PixelT;
    using Weight = float;

    /// \param weights the source's weight at every pixel, 0…1.
    /// \param count a multiple of GroupLength, at most BlockLength.
    static void Block(PixelT* destination, const PixelT* source, const float* weights,
                      unsigned count)
    {
        PixelPlanes<PixelT> backdrops;
        PixelPlanes<PixelT> sources;
        Code::template Call<LoadPlanes<PixelT>>(&backdrops, destination, count);
        Code::template Call<LoadPlanes<PixelT>>(&sources, source, count);
        Code::template Call<CompositePlanes<PixelT, mode>>(&backdrops, &sources, weights, count);
        Code::template Call<StorePlanes<PixelT>>(destination, &backdrops, weights, count);
    }
};

} // namespace Renderer::Blending
