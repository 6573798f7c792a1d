#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

namespace Renderer::Blending {

/// The weight of a source that is not scaled.
struct FullWeight
{};

/// Normal composition of one integer channel, in units of 1/Max. The one place where it is written:
/// roads for special cases use it and so give the same bytes.
template<class ChannelT>
struct IntegerArithmetic
{
    using Wide = std::conditional_t<sizeof(ChannelT) == 1, std::uint16_t, std::uint32_t>;
    static constexpr unsigned Bits = 8 * sizeof(ChannelT);
    static constexpr Wide Max = std::numeric_limits<ChannelT>::max();

    /// value/Max, rounded to nearest. Exact for value ≤ Max² + Max/2, and never overflows there.
    static constexpr ChannelT DivideByMax(Wide value)
    {
        DivideInPlace(value);
        return static_cast<ChannelT>(value);
    }

    /// The same for one number or a vector of them. \tparam Number Wide or a vector of Wide.
    template<class Number>
    [[gnu::always_inline]] static constexpr void DivideInPlace(Number& value)
    {
        value = static_cast<Number>(value + Wide{Max / 2 + 1});
        value = static_cast<Number>(static_cast<Number>(value + (value >> Bits)) >> Bits);
    }

    /// value times a weight, in units of 1/Max².
    static constexpr Wide Scale(ChannelT value, FullWeight)
    {
        return static_cast<Wide>(value * Max);
    }

    /// \param weight as wide as a channel: in units of 1/Max; or, for bytes, a word in units of
    ///               1/65535 (a byte weight c and the word 257·c give the same).
    template<class WeightT>
    static constexpr Wide Scale(ChannelT value, WeightT weight)
    {
        if constexpr (sizeof(WeightT) == sizeof(ChannelT)) {
            return static_cast<Wide>(Wide{value} * Wide{weight});
        } else {
            using Words = IntegerArithmetic<std::uint16_t>;
            const auto scaled = static_cast<std::uint16_t>(value * 255);
            return Words::DivideByMax(std::uint32_t{scaled} * std::uint32_t{weight});
        }
    }

    /// What remains of the backdrop: Max − weight·alpha, the product rounded.
    template<class WeightT>
    static constexpr ChannelT Keep(ChannelT alpha, WeightT weight)
    {
        return static_cast<ChannelT>(Max - DivideByMax(Scale(alpha, weight)));
    }

    static constexpr ChannelT Keep(ChannelT alpha, FullWeight)
    {
        return static_cast<ChannelT>(Max - alpha);
    }

    /// A premultiplied source channel, weighted, over what remains of a backdrop channel (see
    /// Keep); the sum is rounded once. Doesn't overflow while the source's colour is not above its
    /// alpha. Monotonic in colour, so the result's colour is not above its alpha either.
    template<class WeightT>
    static constexpr ChannelT Over(ChannelT source, WeightT weight, ChannelT backdrop,
                                   ChannelT keep)
    {
        const Wide rest = static_cast<Wide>(Wide{backdrop} * Wide{keep});
        if constexpr (std::is_same_v<WeightT, FullWeight>)
            return static_cast<ChannelT>(source + DivideByMax(rest));
        else
            return DivideByMax(static_cast<Wide>(Scale(source, weight) + rest));
    }
};

} // namespace Renderer::Blending
