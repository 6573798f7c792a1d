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

    /// Sums \p groups · 4 numbers up, from \p sum on, writes the coverage at each of them and
    /// clears them. \return the sum of all.
    std::uint32_t Accumulate(std::uint32_t* areas, std::size_t groups, std::uint32_t sum,
                             unsigned char* covers) const noexcept
    {
        sum = evenOdd ? AccumulateBy<true>(areas, groups, sum, covers)
                      : AccumulateBy<false>(areas, groups, sum, covers);
        if (gamma) {
            for (std::size_t i = 0; i < groups * 4; ++i)
                covers[i] = gamma[covers[i]];
        }
        return sum;
    }

private:
    // Four neighbours at once, in vectors of the compiler. Sums are unsigned, since those of very
    // many overlapping edges wrap around as in the engine.
    using Four = std::int32_t __attribute__((vector_size(16)));
    using FourUnsigned = std::uint32_t __attribute__((vector_size(16)));
    using FourBytes = unsigned char __attribute__((vector_size(4)));

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

    template<bool EvenOdd>
    static std::uint32_t AccumulateBy(std::uint32_t* areas, std::size_t groups, std::uint32_t sum,
                                      unsigned char* covers) noexcept
    {
        const FourUnsigned zero{};
        FourUnsigned carry = zero + sum;
        for (std::size_t group = 0; group < groups; ++group) {
            FourUnsigned value;
            std::memcpy(&value, areas + group * 4, sizeof(value));
            std::memcpy(areas + group * 4, &zero, sizeof(zero));
            value += __builtin_shufflevector(zero, value, 0, 4, 5, 6);
            value += __builtin_shufflevector(zero, value, 0, 1, 4, 5);
            value += carry;
            carry = __builtin_shufflevector(value, value, 3, 3, 3, 3);
            const auto bytes =
                __builtin_convertvector(Fold<EvenOdd>(reinterpret_cast<Four&>(value)), FourBytes);
            std::memcpy(covers + group * 4, &bytes, sizeof(bytes));
        }
        return carry[0];
    }
};

} // namespace Renderer::Coverage
