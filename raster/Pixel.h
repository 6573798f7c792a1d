#pragma once

#include <array>
#include <cstddef>

#include <raster/ChannelTypes.h>
#include <raster/Format.h>

namespace Raster {

/// One pixel: its channels in memory order, alpha last. Empty slots take no room.
template<class C1, class C2, class C3, class C4, class C5>
struct Pixel
{
    /// The storage type that all channels of the pixel share.
    using ChannelType = typename C1::Type;

    static constexpr std::array<ChannelRole, 5> Roles{C1::Role, C2::Role, C3::Role, C4::Role, C5::Role};

    static constexpr std::size_t ChannelCount = [] {
        std::size_t count = 0;
        while (count < Roles.size() && Roles[count] != ChannelRole::Empty)
            ++count;
        return count;
    }();

    static constexpr std::size_t AlphaIndex = ChannelCount - 1;
    static constexpr std::size_t ColourCount = ChannelCount - 1;
    static constexpr ChannelType Max = C1::Max;

    std::array<ChannelType, ChannelCount> channels{};

    constexpr ChannelType& operator[](std::size_t index) noexcept { return channels[index]; }
    constexpr const ChannelType& operator[](std::size_t index) const noexcept { return channels[index]; }
    constexpr ChannelType& Alpha() noexcept { return channels[AlphaIndex]; }
    constexpr const ChannelType& Alpha() const noexcept { return channels[AlphaIndex]; }

    friend constexpr bool operator==(const Pixel&, const Pixel&) noexcept = default;
};

using PixelAlphaF = Pixel<AlphaF, X2, X3, X4, X5>;
using PixelAlpha16 = Pixel<Alpha16, X2, X3, X4, X5>;
using PixelAlpha8 = Pixel<Alpha8, X2, X3, X4, X5>;
using PixelRGBAUF = Pixel<RedUF, GreenUF, BlueUF, AlphaF, X5>;
using PixelHSLAF = Pixel<HueF, SaturationF, LuminosityF, AlphaF, X5>;
using PixelCMYKAF = Pixel<CyanF, MagentaF, YellowF, BlackF, AlphaF>;
using PixelRGBAF = Pixel<RedF, GreenF, BlueF, AlphaF, X5>;
using PixelRGBA16 = Pixel<Red16, Green16, Blue16, Alpha16, X5>;
using PixelLABA16 = Pixel<Lightness16, AOpponent16, BOpponent16, Alpha16, X5>;
using PixelIA16 = Pixel<Intensity16, Alpha16, X3, X4, X5>;
using PixelIA8 = Pixel<Intensity8, Alpha8, X3, X4, X5>;
using PixelIAF = Pixel<IntensityF, AlphaF, X3, X4, X5>;
using PixelCMYKA8 = Pixel<Cyan8, Magenta8, Yellow8, Black8, Alpha8>;
using PixelRGBA8 = Pixel<Red8, Green8, Blue8, Alpha8, X5>;

static_assert(sizeof(PixelRGBA8) == 4 && sizeof(PixelCMYKA8) == 5 && sizeof(PixelRGBAUF) == 16);

/// The format that stores a pixel type, for those that buffers can have.
template<class P>
inline constexpr Format FormatOfPixel = Format::None;
template<>
inline constexpr Format FormatOfPixel<PixelRGBA8> = Format::RGBA8;
template<>
inline constexpr Format FormatOfPixel<PixelRGBA16> = Format::RGBA16;
template<>
inline constexpr Format FormatOfPixel<PixelIA8> = Format::IA8;
template<>
inline constexpr Format FormatOfPixel<PixelIA16> = Format::IA16;
template<>
inline constexpr Format FormatOfPixel<PixelCMYKA8> = Format::CMYKA8;
template<>
inline constexpr Format FormatOfPixel<PixelLABA16> = Format::LABA16;
template<>
inline constexpr Format FormatOfPixel<PixelRGBAUF> = Format::RGBAUF;
template<>
inline constexpr Format FormatOfPixel<PixelAlpha8> = Format::M8;
template<>
inline constexpr Format FormatOfPixel<PixelAlpha16> = Format::M16;
template<>
inline constexpr Format FormatOfPixel<PixelAlphaF> = Format::MF;

/// Calls \p function with a value-initialised pixel of the type that \p format stores, and returns
/// its answer; for Format::None and unknown values returns \p fallback. The one place that lists the
/// formats: code over all formats is a generic lambda handed to this.
template<class Function, class Result>
Result WithPixelOfFormat(Format format, Result fallback, Function&& function)
{
    switch (format) {
    case Format::RGBA8:
        return function(PixelRGBA8{});
    case Format::RGBA16:
        return function(PixelRGBA16{});
    case Format::IA8:
        return function(PixelIA8{});
    case Format::IA16:
        return function(PixelIA16{});
    case Format::CMYKA8:
        return function(PixelCMYKA8{});
    case Format::LABA16:
        return function(PixelLABA16{});
    case Format::M8:
        return function(PixelAlpha8{});
    case Format::M16:
        return function(PixelAlpha16{});
    case Format::RGBAUF:
        return function(PixelRGBAUF{});
    case Format::MF:
        return function(PixelAlphaF{});
    case Format::None:
        break;
    }
    return fallback;
}

/// Bytes of one pixel; 0 for Format::None and unknown values.
inline std::size_t GetPixelSize(Format format)
{
    return WithPixelOfFormat(format, std::size_t{0}, [](auto pixel) { return sizeof(pixel); });
}

} // namespace Raster
