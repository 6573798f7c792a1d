#pragma once

#include <algorithm>
#include <cstddef>

#include <raster/DynamicBuffer.h>
#include <raster/Pixel.h>
#include <renderer/core/texture/TextureBlend.h>

namespace Renderer::Texture {

/// Texels that are colours: all channels of a pixel.
template<class PixelT>
struct ColourTexel
{
    using Pixel = PixelT;
    static constexpr std::size_t FirstChannel = 0;
    static constexpr std::size_t ChannelCount = Pixel::ChannelCount;
};

/// Texels that are a mask: one channel of a pixel.
template<class PixelT, std::size_t Channel>
struct MaskTexel
{
    using Pixel = PixelT;
    static constexpr std::size_t FirstChannel = Channel;
    static constexpr std::size_t ChannelCount = 1;
};

/// Reads a texture between its texels, bilinearly. Beyond its edges the texture goes on with its
/// last texels, or along u with its first ones again.
template<class TexelT>
class TextureSampler
{
public:
    using Pixel = typename TexelT::Pixel;
    static constexpr std::size_t N = TexelT::ChannelCount;

    /// \param texture stores the texel's pixels; must outlive the sampler.
    /// \param wraps whether u goes round.
    TextureSampler(const Raster::DynamicBuffer& texture, bool wraps) noexcept
        : m_data(texture.GetData()),
          m_stride(texture.GetStride()),
          m_width(int(texture.GetWidth())),
          m_height(int(texture.GetHeight())),
          m_wraps(wraps)
    {}

    /// \param u, v 0 … 1; with wrapping, u within ± 16000.
    Channels<N> Sample(float u, float v) const noexcept
    {
        if (m_wraps)
            u -= static_cast<float>(Floor(u));
        const Neighbours x = Find(u, m_width, m_wraps), y = Find(v, m_height, false);
        const Pixel* const upper = GetRow(y.first);
        const Pixel* const lower = GetRow(y.second);
        Channels<N> result;
        for (std::size_t i = 0; i < N; ++i) {
            const std::size_t channel = TexelT::FirstChannel + i;
            const auto mix = [&](const Pixel* row) {
                const auto a = static_cast<float>(row[x.first][channel]);
                return a + x.share * (static_cast<float>(row[x.second][channel]) - a);
            };
            const float a = mix(upper);
            result[i] = (a + y.share * (mix(lower) - a)) * (1.0F / static_cast<float>(Pixel::Max));
        }
        return result;
    }

    /// Two texels and how far between them a place lies.
    struct Neighbours
    {
        int first;
        int second;
        float share;
    };

    /// \param place 0 … 1 of a side of \p size texels.
    static Neighbours Find(float place, int size, bool wraps) noexcept
    {
        const float at = place * static_cast<float>(size) - 0.5F;
        const int whole = static_cast<int>(at + 1.0F) - 1;
        const float share = at - static_cast<float>(whole);
        if (wraps)
            return {whole < 0 ? size - 1 : std::min(whole, size - 1),
                    whole + 1 < size ? whole + 1 : 0, share};
        return {std::clamp(whole, 0, size - 1), std::clamp(whole + 1, 0, size - 1), share};
    }

    const Pixel* GetRow(int y) const noexcept
    {
        return reinterpret_cast<const Pixel*>(m_data + std::ptrdiff_t(y) * m_stride);
    }
    int GetWidth() const noexcept { return m_width; }
    int GetHeight() const noexcept { return m_height; }

private:
    /// \pre value within ± 16384
    static int Floor(float value) noexcept { return static_cast<int>(value + 16384.0F) - 16384; }

    const unsigned char* m_data;
    std::ptrdiff_t m_stride;
    int m_width;
    int m_height;
    bool m_wraps;
};

} // namespace Renderer::Texture
