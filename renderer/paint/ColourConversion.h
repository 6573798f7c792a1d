#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include <raster/Convert.h>
#include <raster/ICCManager.h>
#include <raster/Pixel.h>

namespace Renderer::ColourConversion {

using ICCProfileSet = Raster::ICCManager::ICCProfileSet;

/// The channels of one pixel as ICCManager::GetFloatTransform takes them; also HSL.
using FloatPixel = std::array<float, 5>;

/// Whether a pixel has colour channels beside alpha.
template<class P>
inline constexpr bool HasColour = P::ColourCount > 0;

/// The colour space of a pixel type that has colour.
template<class P>
inline constexpr Raster::ColourSpace SpaceOf = [] {
    switch (P::Roles[0]) {
    case Raster::ChannelRole::Angle:
        return Raster::ColourSpace::HSL;
    case Raster::ChannelRole::Subtractive:
        return Raster::ColourSpace::CMYK;
    case Raster::ChannelRole::Lightness:
        return Raster::ColourSpace::LAB;
    default:
        return P::ColourCount == 1 ? Raster::ColourSpace::Grey : Raster::ColourSpace::RGB;
    }
}();

/// A stored channel in units of 1.
template<class T>
float ToFloat(T value)
{
    if constexpr (std::is_floating_point_v<T>)
        return value;
    else
        return static_cast<float>(value) *
               (1.0f / static_cast<float>(std::numeric_limits<T>::max()));
}

/// The low bits of a number's integer part; 0 for what no 32-bit integer holds.
template<class T>
T Truncate(float value)
{
    if (!(std::abs(value) < 2147483648.0f))
        return 0;
    return static_cast<T>(static_cast<std::int32_t>(value));
}

/// A channel in units of 1 as it is stored: rounded half up, not clamped.
template<class T>
T FromFloat(float value)
{
    if constexpr (std::is_floating_point_v<T>)
        return value;
    else
        return Truncate<T>(value * static_cast<float>(std::numeric_limits<T>::max()) + 0.5f);
}

/// Clamps to 0…1; not-a-number becomes 0.
inline float Clamp01(float value)
{
    return value > 0.0f ? std::min(value, 1.0f) : 0.0f;
}

/// Brings unpremultiplied channels from one space into another: by the ICC transform of the profile
/// set, else by the fixed formulas. HSL is RGB in other coordinates. Alpha is copied.
void ConvertChannels(Raster::ColourSpace from, const FloatPixel& source, Raster::ColourSpace to,
                     FloatPixel& target, const ICCProfileSet& profiles);

/// The profiles with the alternative RGB profile, that of unbounded float, as their RGB profile.
ICCProfileSet UseAlternativeRGB(const ICCProfileSet& profiles);

template<class P>
FloatPixel Load(const P& pixel)
{
    FloatPixel channels{};
    for (std::size_t c = 0; c < P::ChannelCount; ++c)
        channels[c] = ToFloat(pixel[c]);
    return channels;
}

/// Converts to 8-bit RGB from a colour that is quantised first, with the transform for that
/// storage, so that single colours and bitmaps of the same format come out alike.
template<class Stored>
void ConvertStoredToRGBA8(const Stored& stored, Raster::PixelRGBA8& target,
                          const ICCProfileSet& profiles)
{
    constexpr Raster::Format Format = Raster::FormatOfPixel<Stored>;
    if (!Raster::ICCManager::GetInstance().DoTransform(
            Format, profiles, &stored, Raster::Format::RGBA8, profiles, &target, 1)) {
        FloatPixel rgb{};
        Raster::ConvertFloatPixel(SpaceOf<Stored>, Load(stored).data(), Raster::ColourSpace::RGB,
                                  rgb.data());
        for (std::size_t c = 0; c < 3; ++c)
            target[c] = FromFloat<std::uint8_t>(Clamp01(rgb[c]));
    }
    target.Alpha() = FromFloat<std::uint8_t>(ToFloat(stored.Alpha()));
}

inline void ConvertPixel(const Raster::PixelCMYKAF& source, Raster::PixelRGBA8& target,
                         const ICCProfileSet& profiles)
{
    Raster::PixelCMYKA8 stored;
    std::transform(source.channels.begin(), source.channels.end(), stored.channels.begin(),
                   FromFloat<std::uint8_t>);
    ConvertStoredToRGBA8(stored, target, profiles);
}

inline void ConvertPixel(const Raster::PixelIAF& source, Raster::PixelRGBA8& target,
                         const ICCProfileSet& profiles)
{
    // Cut, not rounded, unlike everywhere else.
    Raster::PixelIA16 stored;
    std::transform(source.channels.begin(), source.channels.end(), stored.channels.begin(),
                   [](float value) { return Truncate<std::uint16_t>(value * 65535.0f); });
    ConvertStoredToRGBA8(stored, target, profiles);
}

inline void ConvertPixel(const Raster::PixelLABA16& source, Raster::PixelRGBA8& target,
                         const ICCProfileSet& profiles)
{
    ConvertStoredToRGBA8(source, target, profiles);
}

/// Converts between any two pixel types. Colours that stay in their space only change depth; RGB is
/// clamped unless the target is unbounded, and so is everything that a conversion made and that is
/// stored in integers.
template<class Source, class Target>
void ConvertPixel(const Source& source, Target& target, const ICCProfileSet& profiles)
{
    constexpr bool Unbounded = std::is_same_v<Target, Raster::PixelRGBAUF>;
    using Channel = typename Target::ChannelType;
    if constexpr (HasColour<Target>) {
        constexpr bool SameSpace = SpaceOf<Source> == SpaceOf<Target>;
        constexpr bool IsRGB = SpaceOf<Target> == Raster::ColourSpace::RGB;
        constexpr bool Clamps =
            !Unbounded && (IsRGB || (!SameSpace && !std::is_floating_point_v<Channel>));
        FloatPixel channels = Load(source);
        if constexpr (!SameSpace && Unbounded)
            ConvertChannels(SpaceOf<Source>, Load(source), SpaceOf<Target>, channels,
                            UseAlternativeRGB(profiles));
        else if constexpr (!SameSpace)
            ConvertChannels(SpaceOf<Source>, Load(source), SpaceOf<Target>, channels, profiles);
        for (std::size_t c = 0; c < Target::ColourCount; ++c)
            target[c] = FromFloat<Channel>(Clamps ? Clamp01(channels[c]) : channels[c]);
    }
    target.Alpha() = FromFloat<Channel>(ToFloat(source.Alpha()));
}

/// The value that a channel has on bare paper.
template<class T>
constexpr T PaperWhite(Raster::ChannelRole role)
{
    switch (role) {
    case Raster::ChannelRole::Subtractive:
        return 0;
    case Raster::ChannelRole::Opponent:
        return static_cast<T>(0x8080); // a* = b* = 0: 128/255 of the 16-bit range
    default:
        return std::is_floating_point_v<T> ? T(1) : std::numeric_limits<T>::max();
    }
}

/// Mixes the colour channels with paper white: c·t + W·(1 − t) in single precision, integers
/// rounded half up. Alpha is kept. Tints outside 0…1 are clamped.
template<class P>
void ApplyTint(P& pixel, double tint)
{
    if (!(tint < 1.0))
        return;
    const float t = Clamp01(static_cast<float>(tint));
    using Channel = typename P::ChannelType;
    for (std::size_t c = 0; c < P::ColourCount; ++c) {
        const float white = static_cast<float>(PaperWhite<Channel>(P::Roles[c]));
        const float mixed = static_cast<float>(pixel[c]) * t + white * (1.0f - t);
        if constexpr (std::is_floating_point_v<Channel>)
            pixel[c] = mixed;
        else
            pixel[c] = Truncate<Channel>(mixed + 0.5f);
    }
}

/// Hue, saturation and luminosity do not mix one by one: the colour is tinted as RGB, which leaves
/// the hue as it is.
inline void ApplyTint(Raster::PixelHSLAF& pixel, double tint)
{
    if (!(tint < 1.0))
        return;
    const float hue = pixel[0];
    Raster::PixelRGBAF rgb;
    Raster::ConvertFloatPixel(Raster::ColourSpace::HSL, &pixel[0], Raster::ColourSpace::RGB,
                              &rgb[0]);
    ApplyTint<Raster::PixelRGBAF>(rgb, tint);
    Raster::ConvertFloatPixel(Raster::ColourSpace::RGB, &rgb[0], Raster::ColourSpace::HSL,
                              &pixel[0]);
    pixel[0] = hue;
}

} // namespace Renderer::ColourConversion
