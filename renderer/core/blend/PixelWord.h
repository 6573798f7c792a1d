#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include <raster/Pixel.h>

namespace Renderer::Blending {

/// The unsigned integer of so many bytes; void where there is none.
template<std::size_t bytes>
struct WordOfSize
{
    using Type = void;
};
template<>
struct WordOfSize<2>
{
    using Type = std::uint16_t;
};
template<>
struct WordOfSize<4>
{
    using Type = std::uint32_t;
};
template<>
struct WordOfSize<8>
{
    using Type = std::uint64_t;
};

/// Whether so many channels make up a word whose low bits are the first channel. Vector code
/// handles words much better than channels with a stride.
template<class ChannelT, std::size_t count>
inline constexpr bool MakesWord =
    std::is_integral_v<ChannelT> &&
    !std::is_void_v<typename WordOfSize<count * sizeof(ChannelT)>::Type> &&
    std::endian::native == std::endian::little;

/// Reads channel \p index of a pixel.
template<std::size_t index, class PixelT>
auto GetChannel(const PixelT* pixel)
{
    using ChannelType = typename PixelT::ChannelType;
    if constexpr (MakesWord<ChannelType, PixelT::ChannelCount>) {
        typename WordOfSize<sizeof(PixelT)>::Type word;
        std::memcpy(&word, pixel, sizeof(word));
        return static_cast<ChannelType>(word >> (index * 8 * sizeof(ChannelType)));
    } else {
        return pixel->channels[index];
    }
}

/// Writes \p value to \p count places, which begin at a multiple of their size in bytes.
template<std::size_t count, class T>
void Repeat(T* places, T value)
{
    if constexpr (MakesWord<T, count>) {
        using Word = typename WordOfSize<count * sizeof(T)>::Type;
        constexpr Word ones =
            static_cast<Word>(std::numeric_limits<Word>::max() / std::numeric_limits<T>::max());
        const Word word = static_cast<Word>(std::uint64_t{ones} * value);
        using AliasingWord [[gnu::may_alias]] = Word; // memcpy here keeps loops from vectorising
        *reinterpret_cast<AliasingWord*>(places) = word;
    } else {
        for (std::size_t i = 0; i < count; ++i)
            places[i] = value;
    }
}

} // namespace Renderer::Blending
