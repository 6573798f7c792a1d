#pragma once

#include <array>
#include <cstddef>

namespace Renderer::Texture {

/// Premultiplied channels in float, alpha last: the FloatPixel of a format's PixProcessor, or a
/// mask's alpha alone.
template<std::size_t N>
using Channels = std::array<float, N>;

template<std::size_t N>
float AlphaOf(const Channels<N>& pixel) noexcept
{
    return pixel[N - 1];
}

template<std::size_t N>
Channels<N> ScaleBy(Channels<N> pixel, float factor) noexcept
{
    for (float& channel : pixel)
        channel *= factor;
    return pixel;
}

/// What scales the texture in a pixel: the share of it that is covered, times the opacity there.
constexpr float CombineOpacities(float area, float opacity) noexcept
{
    return area * opacity;
}

/// Lays a part of a stroke over what is there: s + b·(1 − as) on every channel.
template<std::size_t N>
void BlendSrcOver(Channels<N>& below, const Channels<N>& above) noexcept
{
    const float rest = 1.0F - AlphaOf(above);
    for (std::size_t i = 0; i < N; ++i)
        below[i] = above[i] + below[i] * rest;
}

/// A part of a stroke laid over itself: s + s·(1 − as) on every channel.
template<std::size_t N>
Channels<N> BlendOverItself(const Channels<N>& part) noexcept
{
    return ScaleBy(part, 2.0F - AlphaOf(part));
}

/// Keeps whichever has the larger opacity, the later one where both have the same: parts of one
/// stroke that lie over each other then make it no stronger.
template<std::size_t N>
void BlendMaxOpacity(Channels<N>& below, const Channels<N>& above) noexcept
{
    if (AlphaOf(above) > 0.0F && AlphaOf(above) >= AlphaOf(below))
        below = above;
}

/// The sum of pieces that meet: each piece's channels times its area in the pixel, and the areas.
///
/// Pieces that tile the pixel give C = Σ aᵢ·cᵢ with Σ aᵢ = 1, so that no seam shows. Where pieces
/// overlap, the areas exceed 1 and the sum is their mean, C ÷ Σ aᵢ:
/// the sum of areas is held at 1. The order of pieces means nothing.
template<std::size_t N>
struct Sum
{
    Channels<N> channels{};
    float area = 0.0F;

    void Add(const Channels<N>& piece, float pieceArea, float opacity) noexcept
    {
        const float weight = CombineOpacities(pieceArea, opacity);
        for (std::size_t i = 0; i < N; ++i)
            channels[i] += piece[i] * weight;
        area += pieceArea;
    }
    void Add(const Sum& other) noexcept
    {
        for (std::size_t i = 0; i < N; ++i)
            channels[i] += other.channels[i];
        area += other.area;
    }
    Channels<N> Get() const noexcept
    {
        return area > 1.0F ? ScaleBy(channels, 1.0F / area) : channels;
    }
};

} // namespace Renderer::Texture
