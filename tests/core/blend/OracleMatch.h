#pragma once

#include <algorithm>
#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

#include "Oracle.h"

/// \file
/// Stored pixels against the oracle: what storage rounds away is allowed for, nothing else.

namespace BlendTests {

template<class P>
constexpr bool IsFloat = std::is_floating_point_v<typename P::ChannelType>;

template<class P>
RealPixel ToReal(const P& pixel)
{
    RealPixel real{};
    for (std::size_t c = 0; c < P::ChannelCount; ++c)
        real[c] = static_cast<double>(pixel.channels[c]) / static_cast<double>(P::Max);
    return real;
}

template<class P>
OracleFormat MakeFormat()
{
    return {P::Roles, P::ColourCount, IsFloat<P>};
}

/// How far the result of one channel may be from the exact one.
template<class P>
double GetTolerance(const OracleInput& input, double exact, std::size_t channel)
{
    if constexpr (IsFloat<P>) {
        // The largest term bounds what rounding can do to the sum.
        double size = std::abs(exact);
        for (std::size_t c = 0; c < P::ChannelCount; ++c) {
            if (c == channel || !IsSeparable(input.mode))
                size = std::max({size, std::abs(input.source[c]), std::abs(input.backdrop[c])});
        }
        return 1e-5 * size + 1e-7;
    } else {
        return (sizeof(typename P::ChannelType) == 1 ? 1.0 : 2.0) / P::Max;
    }
}

template<class P>
bool Matches(const OracleInput& input, const RealPixel& exact, const RealPixel& ours,
             std::size_t channel)
{
    return std::abs(ours[channel] - exact[channel]) <=
           GetTolerance<P>(input, exact[channel], channel) + 1e-12;
}

template<class P>
bool Matches(const OracleInput& input, const RealPixel& exact, const RealPixel& ours)
{
    for (std::size_t c = 0; c < P::ChannelCount; ++c) {
        if (!Matches<P>(input, exact, ours, c))
            return false;
    }
    return true;
}

/// Half of what storage can tell apart.
template<class P>
double GetHalfStep(double value)
{
    return IsFloat<P> ? std::abs(value) * 6e-8 : 0.5 / P::Max;
}

/// A colour of a neutral Lab pixel where rounding to storage hides that it is one.
template<class P>
void MakeNeutral(RealPixel& pixel)
{
    if (P::Roles[1] != Raster::ChannelRole::Opponent)
        return;
    const double neutral = pixel[P::AlphaIndex] * 128.0 / 255.0;
    const double half = GetHalfStep<P>(1.0) * 1.0001;
    if (std::abs(pixel[1] - neutral) <= half && std::abs(pixel[2] - neutral) <= half)
        pixel[1] = pixel[2] = neutral;
}

/// Whether some input within half a step of the given one has this result. Separable modes answer
/// channel by channel, the others for all channels at once.
template<class P>
bool MatchesNearby(const OracleFormat& format, const OracleInput& input, const RealPixel& ours)
{
    const std::size_t colours = P::ColourCount;
    const RealPixel exact = Composite(format, input);
    std::vector<bool> matched(colours + 1);
    for (std::size_t c = 0; c <= colours; ++c)
        matched[c] = Matches<P>(input, exact, ours, c);
    OracleInput neutral = input;
    MakeNeutral<P>(neutral.source);
    MakeNeutral<P>(neutral.backdrop);
    if (Matches<P>(input, Composite(format, neutral), ours))
        return true;

    if (IsSeparable(input.mode)) {
        for (const double ds : {-1.0, -1e-6, 0.0, 1e-6, 1.0}) {
            for (const double db : {-1.0, -1e-6, 0.0, 1e-6, 1.0}) {
                OracleInput near = input;
                for (std::size_t c = 0; c < colours; ++c) {
                    near.source[c] += ds * GetHalfStep<P>(near.source[c]);
                    near.backdrop[c] += db * GetHalfStep<P>(near.backdrop[c]);
                }
                const RealPixel result = Composite(format, near);
                for (std::size_t c = 0; c < colours; ++c)
                    matched[c] = matched[c] || Matches<P>(input, result, ours, c);
            }
        }
        return std::find(matched.begin(), matched.end(), false) == matched.end();
    }
    std::size_t count = 1;
    for (std::size_t c = 0; c < 2 * colours; ++c)
        count *= 3;
    for (std::size_t code = 0; code < count; ++code) {
        OracleInput near = input;
        std::size_t digits = code;
        for (std::size_t c = 0; c < 2 * colours; ++c, digits /= 3) {
            double& value = c < colours ? near.source[c] : near.backdrop[c - colours];
            value += (static_cast<double>(digits % 3) - 1) * GetHalfStep<P>(value);
        }
        if (Matches<P>(input, Composite(format, near), ours))
            return true;
    }
    return false;
}

inline std::string Describe(const OracleInput& input, const RealPixel& ours, const RealPixel& exact,
                            double max)
{
    std::string text = "mode " + std::to_string(input.mode) + " cover " +
                       std::to_string(input.cover) + " mask " + std::to_string(input.mask);
    const auto append = [&](const char* name, const RealPixel& pixel) {
        text += std::string(" ") + name;
        for (const double channel : pixel)
            text += " " + std::to_string(channel * max);
    };
    append("source", input.source);
    append("backdrop", input.backdrop);
    append("ours", ours);
    append("exact", exact);
    return text;
}

} // namespace BlendTests
