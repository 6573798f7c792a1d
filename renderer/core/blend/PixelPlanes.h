#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

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

/// Whether pixels have an odd size just below a word's. No vector code reads such strides: their
/// blocks become words first.
template<class PixelT>
inline constexpr bool NeedsPadding =
    std::is_integral_v<typename PixelT::ChannelType> && sizeof(PixelT) % 2 != 0 &&
    sizeof(PixelT) > 4 &&
    sizeof(PixelT) < sizeof(std::uint64_t) && std::endian::native == std::endian::little;

/// A block of pixels as words with the first channel in the low bits; above the last one lies what
/// does not count.
template<class PixelT>
struct PaddedPixels
{
    static constexpr unsigned ChannelBits = 8 * sizeof(typename PixelT::ChannelType);

    alignas(32) std::uint64_t words[BlockLength];

    void Load(const PixelT* __restrict pixels, unsigned count)
    {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(pixels);
        const std::size_t last = WholeGroups(count) - 1;
        for (std::size_t i = 0; i < last; ++i) // reads into the next one
            std::memcpy(&words[i], bytes + i * sizeof(PixelT), sizeof(words[i]));
        words[last] = 0;
        std::memcpy(&words[last], bytes + last * sizeof(PixelT), sizeof(PixelT));
    }

    void Store(PixelT* __restrict pixels, unsigned count) const
    {
        auto* const bytes = reinterpret_cast<unsigned char*>(pixels);
        const std::size_t last = WholeGroups(count) - 1;
        for (std::size_t i = 0; i < last; ++i) // the next one mends what this overwrites
            std::memcpy(bytes + i * sizeof(PixelT), &words[i], sizeof(words[i]));
        std::memcpy(bytes + last * sizeof(PixelT), &words[last], sizeof(PixelT));
    }

    float Get(std::size_t index, std::size_t channel) const
    {
        constexpr std::uint64_t mask = (std::uint64_t{1} << ChannelBits) - 1;
        return static_cast<float>(
            static_cast<std::int32_t>((words[index] >> (ChannelBits * channel)) & mask));
    }
};

/// The same reading for pixels that need no padding: their own memory.
template<class PixelT>
struct PlainPixels
{
    const PixelT* __restrict pixels;

    void Load(const PixelT* source, unsigned) { pixels = source; }
    float Get(std::size_t index, std::size_t channel) const
    {
        return static_cast<float>(pixels[index].channels[channel]);
    }
};

/// Pixels to planes.
template<class PixelT>
struct LoadPlanes
{
    static void Apply(PixelPlanes<PixelT>* __restrict planes, const PixelT* __restrict pixels,
                      unsigned count)
    {
        std::conditional_t<NeedsPadding<PixelT>, PaddedPixels<PixelT>, PlainPixels<PixelT>> source;
        source.Load(pixels, count);
        for (std::size_t i = 0; i < WholeGroups(count); ++i) {
            FloatPixel<PixelT> pixel;
            for (std::size_t c = 0; c < PixelT::ColourCount; ++c)
                pixel.colour[c] = source.Get(i, c);
            pixel.alpha = source.Get(i, PixelT::AlphaIndex);
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
        if constexpr (NeedsPadding<PixelT>)
            return ApplyPadded(pixels, planes, weights, count);
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
    static void ApplyPadded(PixelT* __restrict pixels, const PixelPlanes<PixelT>* __restrict planes,
                            const float* __restrict weights, unsigned count)
    {
        PaddedPixels<PixelT> padded;
        padded.Load(pixels, count);
        for (std::size_t i = 0; i < WholeGroups(count); ++i) {
            const float alpha = planes->planes[PixelT::AlphaIndex][i];
            std::uint64_t word = 0;
            for (std::size_t c = 0; c < PixelT::ChannelCount; ++c)
                word |= std::uint64_t{static_cast<std::uint32_t>(
                            GetStored(planes->planes[c][i], alpha))}
                        << (padded.ChannelBits * c);
            padded.words[i] = weights[i] > 0.0f ? word : padded.words[i];
        }
        padded.Store(pixels, count);
    }

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
