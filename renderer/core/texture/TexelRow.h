#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <renderer/core/texture/TextureSampler.h>

namespace Renderer::Texture {

/// What the pixels of a row read from a texture, in planes: the same as TextureSampler gives one by
/// one. All but fetching texels is done in loops that become vector code.
template<class TexelT, std::size_t MostPixels>
class TexelRow
{
public:
    using Pixel = typename TexelT::Pixel;
    static constexpr std::size_t N = TexelT::ChannelCount;
    using Plane = std::array<float, MostPixels>;

    /// Fetches the four texels about each place. \pre the texture does not wrap.
    /// \param lanes at least \p count; as many places are there.
    void Fetch(const TextureSampler<TexelT>& sampler, std::size_t count, std::size_t lanes,
               const Plane& u, const Plane& v) noexcept
    {
        FindNeighbours(sampler.GetWidth(), lanes, u.data(), m_columns);
        FindNeighbours(sampler.GetHeight(), lanes, v.data(), m_rows);
        for (std::size_t i = 0; i < count; ++i) {
            const Pixel* const upper = sampler.GetRow(m_rows.first[i]);
            const Pixel* const lower = sampler.GetRow(m_rows.second[i]);
            m_texels[0][i] = Read(upper[m_columns.first[i]]);
            m_texels[1][i] = Read(upper[m_columns.second[i]]);
            m_texels[2][i] = Read(lower[m_columns.first[i]]);
            m_texels[3][i] = Read(lower[m_columns.second[i]]);
        }
    }

    /// A channel of the pixels. That of pixels which were not fetched may be anything.
    void Mix(std::size_t channel, std::size_t lanes, Plane& out) const noexcept
    {
        for (std::size_t i = 0; i < lanes; ++i) {
            const auto mix = [&](std::size_t texel) {
                const float a = GetChannel(m_texels[texel][i], channel);
                return a + m_columns.share[i] * (GetChannel(m_texels[texel + 1][i], channel) - a);
            };
            const float a = mix(0);
            out[i] = (a + m_rows.share[i] * (mix(2) - a)) * (1.0F / static_cast<float>(Pixel::Max));
        }
    }

private:
    /// Texels as they are fetched: masks as their one channel, pixels of four bytes as words.
    static constexpr bool IsMask = N == 1;
    static constexpr bool IsWord = sizeof(Pixel) == 4;
    using Raw = std::conditional_t<IsMask, float, std::conditional_t<IsWord, std::int32_t, Pixel>>;

    struct Neighbours
    {
        std::array<std::int32_t, MostPixels> first;
        std::array<std::int32_t, MostPixels> second;
        Plane share;
    };

    static Raw Read(const Pixel& pixel) noexcept
    {
        if constexpr (IsMask)
            return static_cast<float>(pixel[TexelT::FirstChannel]);
        else if constexpr (IsWord)
            return std::bit_cast<std::int32_t>(pixel);
        else
            return pixel;
    }
    static float GetChannel(const Raw& raw, std::size_t channel) noexcept
    {
        if constexpr (IsMask) {
            return raw;
        } else if constexpr (IsWord) {
            constexpr int bits = 8 * sizeof(Pixel) / N;
            const std::size_t place =
                std::endian::native == std::endian::little ? channel : N - 1 - channel;
            return static_cast<float>(raw >> (int(place) * bits) & ((1 << bits) - 1));
        } else {
            return static_cast<float>(raw[channel]);
        }
    }

    static void FindNeighbours(int size, std::size_t lanes, const float* __restrict places,
                               Neighbours& __restrict out) noexcept
    {
        for (std::size_t i = 0; i < lanes; ++i) {
            const auto found = TextureSampler<TexelT>::Find(places[i], size, false);
            out.first[i] = found.first;
            out.second[i] = found.second;
            out.share[i] = found.share;
        }
    }

    Neighbours m_columns{};
    Neighbours m_rows{};
    std::array<std::array<Raw, MostPixels>, 4> m_texels{};
};

} // namespace Renderer::Texture
