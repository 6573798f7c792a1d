#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Raster {

/// All channels of a pixel as numbers, in one vector register where the processor has them. Lanes
/// beyond the channels are 0. The results are those of scalar arithmetic, to the bit.
template<class P>
class ChannelVector
{
public:
    using Channel = typename P::ChannelType;
    /// Single precision is exact enough for 8 bits (errors of weighted sums stay below 1e-4 of a
    /// step) and twice as fast.
    using Real = std::conditional_t<sizeof(Channel) == 1, float, double>;

    ChannelVector() noexcept = default;
    explicit ChannelVector(const P& pixel) noexcept
    {
        if constexpr (std::is_same_v<Channel, std::uint8_t> && P::ChannelCount == 4) {
            // Interleaving with zeros widens all bytes at once; compilers convert them one by one.
            std::uint32_t bits = 0;
            std::memcpy(&bits, &pixel, sizeof(bits));
            const auto bytes =
                std::bit_cast<VectorOf<std::uint8_t, 16>>(VectorOf<std::uint32_t, 4>{bits});
            const auto words = std::bit_cast<VectorOf<std::uint16_t, 8>>(__builtin_shufflevector(
                bytes, decltype(bytes){}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
            m_values = __builtin_convertvector(
                std::bit_cast<VectorOf<std::int32_t, 4>>(
                    __builtin_shufflevector(words, decltype(words){}, 0, 8, 1, 9, 2, 10, 3, 11)),
                Values);
        } else {
            VectorOf<Channel, Lanes> channels{};
            std::memcpy(&channels, &pixel, sizeof(P));
            if constexpr (std::is_floating_point_v<Channel>)
                m_values = __builtin_convertvector(channels, Values);
            else
                m_values = __builtin_convertvector(
                    __builtin_convertvector(channels, VectorOf<std::int32_t, Lanes>), Values);
        }
    }

    /// Adds \p weight times \p other.
    void Add(Real weight, const ChannelVector& other) noexcept
    {
        m_values += weight * other.m_values;
    }

    Real operator[](std::size_t channel) const noexcept { return m_values[channel]; }

private:
    static constexpr std::size_t Lanes = std::bit_ceil(P::ChannelCount);

    template<class T, std::size_t Count>
    struct VectorType
    {
        using Type [[gnu::vector_size(sizeof(T) * Count)]] = T;
    };
    template<class T, std::size_t Count>
    using VectorOf = typename VectorType<T, Count>::Type;

    using Values = VectorOf<Real, Lanes>;
    Values m_values{};
};

} // namespace Raster
