#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

namespace Raster {

/// What a channel means; decides how blending and conversion treat it.
enum class ChannelRole
{
    Additive,    ///< light: 0 is black
    Subtractive, ///< ink: 0 is paper
    Lightness,   ///< L*
    Opponent,    ///< a* or b*, stored with an offset
    Angle,       ///< hue, as a fraction of a turn
    Alpha,
    Empty,       ///< a slot that a format does not use
};

/// One channel type. \tparam T its storage. \tparam Name keeps channels of equal storage apart.
template<class T, ChannelRole R, int Name>
struct Channel
{
    using Type = T;
    static constexpr ChannelRole Role = R;
    /// The value that stands for 1.0.
    static constexpr T Max = std::is_floating_point_v<T> ? T(1) : std::numeric_limits<T>::max();
};

template<int Name>
struct EmptyChannel
{
    static constexpr ChannelRole Role = ChannelRole::Empty;
};

using Red8 = Channel<std::uint8_t, ChannelRole::Additive, 0>;
using Green8 = Channel<std::uint8_t, ChannelRole::Additive, 1>;
using Blue8 = Channel<std::uint8_t, ChannelRole::Additive, 2>;
using Alpha8 = Channel<std::uint8_t, ChannelRole::Alpha, 0>;
using Intensity8 = Channel<std::uint8_t, ChannelRole::Additive, 3>;
using Cyan8 = Channel<std::uint8_t, ChannelRole::Subtractive, 0>;
using Magenta8 = Channel<std::uint8_t, ChannelRole::Subtractive, 1>;
using Yellow8 = Channel<std::uint8_t, ChannelRole::Subtractive, 2>;
using Black8 = Channel<std::uint8_t, ChannelRole::Subtractive, 3>;

using Red16 = Channel<std::uint16_t, ChannelRole::Additive, 0>;
using Green16 = Channel<std::uint16_t, ChannelRole::Additive, 1>;
using Blue16 = Channel<std::uint16_t, ChannelRole::Additive, 2>;
using Alpha16 = Channel<std::uint16_t, ChannelRole::Alpha, 0>;
using Intensity16 = Channel<std::uint16_t, ChannelRole::Additive, 3>;
using Lightness16 = Channel<std::uint16_t, ChannelRole::Lightness, 0>;
using AOpponent16 = Channel<std::uint16_t, ChannelRole::Opponent, 0>;
using BOpponent16 = Channel<std::uint16_t, ChannelRole::Opponent, 1>;

using RedF = Channel<float, ChannelRole::Additive, 0>;
using GreenF = Channel<float, ChannelRole::Additive, 1>;
using BlueF = Channel<float, ChannelRole::Additive, 2>;
/// The unbounded float channels may leave 0…1.
using RedUF = Channel<float, ChannelRole::Additive, 10>;
using GreenUF = Channel<float, ChannelRole::Additive, 11>;
using BlueUF = Channel<float, ChannelRole::Additive, 12>;
using AlphaF = Channel<float, ChannelRole::Alpha, 0>;
using IntensityF = Channel<float, ChannelRole::Additive, 3>;
using CyanF = Channel<float, ChannelRole::Subtractive, 0>;
using MagentaF = Channel<float, ChannelRole::Subtractive, 1>;
using YellowF = Channel<float, ChannelRole::Subtractive, 2>;
using BlackF = Channel<float, ChannelRole::Subtractive, 3>;
using HueF = Channel<float, ChannelRole::Angle, 0>;
using SaturationF = Channel<float, ChannelRole::Additive, 4>;
using LuminosityF = Channel<float, ChannelRole::Additive, 5>;

using X2 = EmptyChannel<2>;
using X3 = EmptyChannel<3>;
using X4 = EmptyChannel<4>;
using X5 = EmptyChannel<5>;

} // namespace Raster
