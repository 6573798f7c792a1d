#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include <raster/MappedPicture.h>

namespace Raster::Resampling {

/// The channels of two neighbouring pixels as numbers, in vector registers where the processor has
/// them. The results are those of scalar arithmetic, to the bit.
template<class P>
class PixelPair
{
public:
    using Channel = typename P::ChannelType;
    using Real = RealOf<P>;

    /// Both are 0.
    PixelPair() noexcept = default;

    /// Reads two pixels that follow each other.
    explicit PixelPair(const P* pixels) noexcept
    {
        VectorOf<Channel, Lanes> channels{};
        LoadHalves(pixels, channels);
        if constexpr (std::is_floating_point_v<Channel>)
            m_values = __builtin_convertvector(channels, Values);
        else
            Widen(channels);
    }

    /// Multiplies both.
    void Scale(Real weight) noexcept { m_values *= weight; }
    /// Multiplies the first and the second.
    void Scale(Real first, Real second) noexcept
    {
        [&]<std::size_t... lanes>(std::index_sequence<lanes...>)
        {
            m_values *= Values{(lanes < Half ? first : second)...};
        }
        (std::make_index_sequence<Lanes>{});
    }
    /// The second of one pair and the first of the next.
    static PixelPair Between(const PixelPair& pair, const PixelPair& next) noexcept
    {
        PixelPair result;
        [&]<std::size_t... lanes>(std::index_sequence<lanes...>)
        {
            result.m_values =
                __builtin_shufflevector(pair.m_values, next.m_values, (lanes + Half)...);
        }
        (std::make_index_sequence<Lanes>{});
        return result;
    }
    void Add(const PixelPair& other) noexcept { m_values += other.m_values; }

    /// Writes the sum of the two: ChannelCount numbers.
    void StoreSum(Real* out) const noexcept
    {
        if constexpr (Half == 1) {
            out[0] = m_values[0] + m_values[1];
        } else {
            [&]<std::size_t... lanes>(std::index_sequence<lanes...>)
            {
                const VectorOf<Real, Half> sum =
                    __builtin_shufflevector(m_values, m_values, lanes...) +
                    __builtin_shufflevector(m_values, m_values, (lanes + Half)...);
                std::memcpy(out, &sum, Count * sizeof(Real));
            }
            (std::make_index_sequence<Half>{});
        }
    }

    /// Writes both as pixels, integers rounded to nearest; they are in the range of the channels.
    void StoreRounded(P* out) const noexcept
    {
        if constexpr (std::is_floating_point_v<Channel>) {
            StoreHalves(__builtin_convertvector(m_values, VectorOf<Channel, Lanes>), out);
        } else {
            const auto whole =
                __builtin_convertvector(m_values + Real(0.5), VectorOf<std::int32_t, Lanes>);
            StoreHalves(Narrow(whole), out);
        }
    }

private:
    static constexpr std::size_t Count = P::ChannelCount;
    static constexpr std::size_t Half = std::bit_ceil(Count);
    static constexpr std::size_t Lanes = 2 * Half;

    template<class T, std::size_t N>
    struct VectorType
    {
        using Type [[gnu::vector_size(sizeof(T) * N)]] = T;
    };
    template<class T, std::size_t N>
    using VectorOf = typename VectorType<T, N>::Type;
    using Values = VectorOf<Real, Lanes>;

    /// Lanes beyond the channels stay as they are.
    template<class Source, class Vector>
    static void LoadHalves(const Source* source, Vector& out) noexcept
    {
        const auto* bytes = reinterpret_cast<const unsigned char*>(source);
        if constexpr (Half == Count) {
            std::memcpy(&out, bytes, sizeof(out));
        } else {
            constexpr std::size_t Size = sizeof(out) / Lanes * Count;
            std::memcpy(&out, bytes, Size);
            std::memcpy(reinterpret_cast<unsigned char*>(&out) + sizeof(out) / 2, bytes + Size,
                        Size);
        }
    }

    /// Numbers that fit as channels: whole registers are shuffled, which compilers would narrow one
    /// by one.
    static VectorOf<Channel, Lanes> Narrow(const VectorOf<std::int32_t, Lanes>& whole) noexcept
    {
        static_assert(std::endian::native == std::endian::little);
        constexpr std::size_t Part = Lanes < 8 ? Lanes : 8;
        VectorOf<Channel, Lanes> channels;
        auto* const out = reinterpret_cast<unsigned char*>(&channels);
        const auto* const in = reinterpret_cast<const unsigned char*>(&whole);
        for (std::size_t lane = 0; lane < Lanes; lane += Part) {
            VectorOf<std::uint16_t, 8> low{};
            VectorOf<std::uint16_t, 8> high{};
            std::memcpy(&low, in + lane * 4, Part * 4 < 16 ? Part * 4 : 16);
            if constexpr (Part == 8)
                std::memcpy(&high, in + lane * 4 + 16, 16);
            const auto words = __builtin_shufflevector(low, high, 0, 2, 4, 6, 8, 10, 12, 14);
            if constexpr (sizeof(Channel) == 2) {
                std::memcpy(out + lane * 2, &words, Part * 2);
            } else {
                const auto pairs = std::bit_cast<VectorOf<std::uint8_t, 16>>(words);
                const auto bytes = __builtin_shufflevector(pairs, pairs, 0, 2, 4, 6, 8, 10, 12, 14,
                                                           0, 2, 4, 6, 8, 10, 12, 14);
                std::memcpy(out + lane, &bytes, Part);
            }
        }
        return channels;
    }

    template<class Vector>
    static void StoreHalves(const Vector& channels, P* out) noexcept
    {
        if constexpr (Half == Count) {
            std::memcpy(static_cast<void*>(out), &channels, sizeof(channels));
        } else {
            const auto* bytes = reinterpret_cast<const unsigned char*>(&channels);
            std::memcpy(static_cast<void*>(out), bytes, sizeof(P));
            std::memcpy(static_cast<void*>(out + 1), bytes + sizeof(channels) / 2, sizeof(P));
        }
    }

    /// Interleaving with zeros widens all bytes at once; compilers convert them one by one.
    template<class Channels>
    void Widen(const Channels& channels) noexcept
    {
        if constexpr (sizeof(Channel) == 1 && (Lanes == 4 || Lanes == 8)) {
            // Through a number: by way of memory, a load would wait for two stores.
            using Word = std::conditional_t<Lanes == 8, std::uint64_t, std::uint32_t>;
            VectorOf<std::uint64_t, 2> word{};
            word[0] = std::bit_cast<Word>(channels);
            const auto bytes = std::bit_cast<VectorOf<std::uint8_t, 16>>(word);
            const auto words = std::bit_cast<VectorOf<std::uint16_t, 8>>(__builtin_shufflevector(
                bytes, decltype(bytes){}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
            if constexpr (Lanes == 8)
                Convert(words);
            else
                m_values = __builtin_convertvector(
                    std::bit_cast<VectorOf<std::int32_t, 4>>(__builtin_shufflevector(
                        words, decltype(words){}, 0, 8, 1, 9, 2, 10, 3, 11)),
                    Values);
        } else {
            Convert(channels);
        }
    }

    template<class Channels>
    void Convert(const Channels& channels) noexcept
    {
        m_values = __builtin_convertvector(
            __builtin_convertvector(channels, VectorOf<std::int32_t, Lanes>), Values);
    }

    Values m_values{};
};

} // namespace Raster::Resampling
