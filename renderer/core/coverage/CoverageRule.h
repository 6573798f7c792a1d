#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <renderer/core/coverage/SubPixel.h>

namespace Renderer::Coverage {

/// How accumulated area becomes coverage.
struct CoverageRule
{
    bool evenOdd = true;
    /// 256 coverages, or null for the identity.
    const unsigned char* gamma = nullptr;

    /// \param area the signed area to the left, 512 · 256 for a full pixel.
    unsigned char Apply(std::int32_t area) const noexcept
    {
        const std::int32_t cover = evenOdd ? Fold<true>(area) : Fold<false>(area);
        return gamma ? gamma[cover] : static_cast<unsigned char>(cover);
    }

    /// So many neighbours are summed up at once.
    static constexpr std::size_t Group = 8;

    /// Sums \p groups · Group numbers up, from \p sum on, writes the coverage at each of them and
    /// clears them. \return the sum of all.
    std::uint32_t Accumulate(std::uint32_t* areas, std::size_t groups, std::uint32_t sum,
                             unsigned char* covers) const noexcept
    {
        sum = evenOdd ? AccumulateBy<true>(areas, groups, sum, covers)
                      : AccumulateBy<false>(areas, groups, sum, covers);
        if (gamma) {
            for (std::size_t i = 0; i < groups * Group; ++i)
                covers[i] = gamma[covers[i]];
        }
        return sum;
    }

private:
    // In vectors of the compiler that every processor has. Sums are unsigned, since those of very
    // many overlapping edges wrap around as in the engine.
    using Four [[gnu::vector_size(16)]] = std::int32_t;
    using FourUnsigned [[gnu::vector_size(16)]] = std::uint32_t;

    /// The absolute area, folded or clamped to 0…255; the same text for one number and for four.
    template<bool EvenOdd, class Number>
    static Number Fold(Number area) noexcept
    {
        Number cover = area >> (SubPixelShift + 1);
        cover = (cover ^ (cover >> 31)) - (cover >> 31);
        if constexpr (EvenOdd) {
            cover &= 2 * SubPixelScale - 1;
            cover = cover > SubPixelScale ? 2 * SubPixelScale - cover : cover;
        }
        return cover > SubPixelMask ? Number{} + SubPixelMask : cover;
    }

    /// Sums up four numbers.
    static FourUnsigned LoadSums(const std::uint32_t* areas) noexcept
    {
        FourUnsigned value;
        std::memcpy(&value, areas, sizeof(value));
        value += __builtin_shufflevector(FourUnsigned{}, value, 0, 4, 5, 6);
        value += __builtin_shufflevector(FourUnsigned{}, value, 0, 1, 4, 5);
        return value;
    }

    static FourUnsigned RepeatLast(const FourUnsigned& value) noexcept
    {
        return __builtin_shufflevector(value, value, 3, 3, 3, 3);
    }

    /// Writes eight numbers within 0…255 as bytes.
    static void StoreBytes(const Four& low, const Four& high, unsigned char* bytes) noexcept
    {
        using Shorts [[gnu::vector_size(16)]] = std::uint16_t;
        using Bytes [[gnu::vector_size(8)]] = unsigned char;
        const auto shorts =
            __builtin_shufflevector(reinterpret_cast<Shorts>(low), reinterpret_cast<Shorts>(high),
                                    0, 2, 4, 6, 8, 10, 12, 14);
        const auto packed = __builtin_convertvector(shorts, Bytes);
        std::memcpy(bytes, &packed, sizeof(packed));
    }

    template<bool EvenOdd>
    static std::uint32_t AccumulateBy(std::uint32_t* areas, std::size_t groups, std::uint32_t sum,
                                      unsigned char* covers) noexcept
    {
        const FourUnsigned zero{};
        FourUnsigned carry = zero + sum;
        for (std::size_t group = 0; group < groups; ++group) {
            std::uint32_t* const at = areas + group * Group;
            FourUnsigned low = LoadSums(at);
            FourUnsigned high = LoadSums(at + 4);
            std::memcpy(at, &zero, sizeof(zero));
            std::memcpy(at + 4, &zero, sizeof(zero));
            high += RepeatLast(low);
            low += carry;
            high += carry;
            carry = RepeatLast(high);
            StoreBytes(Fold<EvenOdd>(reinterpret_cast<Four>(low)),
                       Fold<EvenOdd>(reinterpret_cast<Four>(high)), covers + group * Group);
        }
        return carry[0];
    }
};

} // namespace Renderer::Coverage
