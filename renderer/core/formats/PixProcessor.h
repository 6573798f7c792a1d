#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

#include <raster/ICCManager.h>
#include <raster/Pixel.h>
#include <renderer/core/blend/IntegerArithmetic.h>
#include <renderer/core/blend/PixelWord.h>
#include <renderer/paint/Colour.h>

namespace Renderer {

/// The span populators' arithmetic of one pixel format.
///
/// \tparam PixelT the premultiplied pixel that spans hold.
/// \tparam AlphaOnly computes alpha alone and leaves the colour channels 0: for transparency
///         populators and for drawing of which only the alpha is wanted.
template<class PixelT, bool AlphaOnly>
struct PixProcessor
{
    using Pixel = PixelT;
    using ChannelType = typename Pixel::ChannelType;
    using Profiles = Raster::ICCManager::ICCProfileSet;
    /// An unpremultiplied colour: the channels in the pixel's order, 1 standing for Max.
    using FloatPixel = std::array<float, Pixel::ChannelCount>;
    /// The pixel that stores alpha alone at the same depth.
    using AlphaPixel =
        std::conditional_t<std::is_same_v<ChannelType, std::uint8_t>, Raster::PixelAlpha8,
                           std::conditional_t<std::is_same_v<ChannelType, std::uint16_t>,
                                              Raster::PixelAlpha16, Raster::PixelAlphaF>>;

    static constexpr bool IsAlphaOnly = AlphaOnly;
    static constexpr bool IsInteger = std::is_integral_v<ChannelType>;
    /// Whether look-up tables hold a colour as well as computing it does.
    static constexpr bool UsesTables = sizeof(ChannelType) == 1;
    /// Whether paint that is known more finely can be dithered into the format.
    static constexpr bool CanDither = sizeof(ChannelType) == 1 && !AlphaOnly;
    /// The first channel that is computed.
    static constexpr std::size_t FirstChannel = AlphaOnly ? Pixel::AlphaIndex : 0;
    /// Pixels that are worked on at once: large enough to vectorise, small enough for the stack.
    static constexpr unsigned BlockLength = 64;

    /// The colour in the format, unpremultiplied, with its tint.
    static Pixel GetPixel(const Colour& colour, const Profiles& profiles)
    {
        Pixel pixel{};
        if constexpr (AlphaOnly) {
            AlphaPixel alpha{};
            colour.GetColour(alpha, true, profiles);
            pixel.Alpha() = alpha.Alpha();
        } else {
            colour.GetColour(pixel, true, profiles);
        }
        return pixel;
    }

    /// An unpremultiplied pixel in float.
    static constexpr FloatPixel ToFloat(const Pixel& pixel) noexcept
    {
        FloatPixel result{};
        for (std::size_t i = FirstChannel; i < Pixel::ChannelCount; ++i)
            result[i] = static_cast<float>(pixel[i]) / static_cast<float>(Pixel::Max);
        return result;
    }

    /// The unpremultiplied colour of a premultiplied pixel; all zero where alpha is.
    static constexpr FloatPixel Unpremultiply(const Pixel& pixel) noexcept
    {
        FloatPixel result{};
        const auto alpha = static_cast<float>(pixel.Alpha());
        if (!(alpha > 0.0F))
            return result;
        for (std::size_t i = FirstChannel; i < Pixel::ColourCount; ++i)
            result[i] = static_cast<float>(pixel[i]) / alpha;
        result[Pixel::AlphaIndex] = alpha / static_cast<float>(Pixel::Max);
        return result;
    }

    /// Premultiplies an unpremultiplied pixel in the arithmetic of its channels, exactly rounded.
    static constexpr Pixel Premultiply(Pixel pixel) noexcept
    {
        const ChannelType alpha = ClampAlpha(pixel.Alpha());
        for (std::size_t i = FirstChannel; i < Pixel::ColourCount; ++i)
            pixel[i] = Multiply(pixel[i], alpha);
        pixel.Alpha() = alpha;
        return pixel;
    }

    /// Premultiplies and stores, rounding to nearest. Integer channels and alpha are clamped to
    /// 0…1.
    /// \param rounding what is added to integers before they are cut.
    static constexpr Pixel Store(const FloatPixel& colour, float rounding = 0.5F) noexcept
    {
        Pixel result{};
        const float alpha = Clamp(colour[Pixel::AlphaIndex]);
        for (std::size_t i = FirstChannel; i < Pixel::ColourCount; ++i)
            result[i] =
                StoreChannel(IsInteger ? Clamp(colour[i]) * alpha : colour[i] * alpha, rounding);
        result.Alpha() = StoreChannel(alpha, rounding);
        return result;
    }

    /// The integer as which Store's pixels can be moved; void where their size is no integer's.
    using Word = typename Blending::WordOfSize<sizeof(Pixel)>::Type;
    static constexpr bool HasWords = Blending::MakesWord<ChannelType, Pixel::ChannelCount>;

    /// What Store gives as one word, in a form that loops over pixels vectorise.
    static constexpr auto StoreWord(const FloatPixel& colour,
                                    float rounding = 0.5F) noexcept requires HasWords
    {
        constexpr unsigned Bits = 8 * sizeof(ChannelType);
        const float alpha = Clamp(colour[Pixel::AlphaIndex]);
        auto word =
            static_cast<Word>(Word{StoreChannel(alpha, rounding)} << (Bits * Pixel::AlphaIndex));
        for (std::size_t i = FirstChannel; i < Pixel::ColourCount; ++i)
            word = static_cast<Word>(
                word | static_cast<Word>(Word{StoreChannel(Clamp(colour[i]) * alpha, rounding)}
                                         << (Bits * i)));
        return word;
    }

    /// Stores a premultiplied colour, brought into 0 ≤ colour ≤ alpha ≤ 1.
    static constexpr Pixel StorePremultiplied(const FloatPixel& colour, float rounding) noexcept
    {
        Pixel result{};
        const float alpha = Clamp(colour[Pixel::AlphaIndex]);
        for (std::size_t i = FirstChannel; i < Pixel::ColourCount; ++i) {
            const float value = Clamp(colour[i]);
            result[i] = StoreChannel(value < alpha ? value : alpha, rounding);
        }
        result.Alpha() = StoreChannel(alpha, rounding);
        return result;
    }

    /// Scales all channels of a premultiplied pixel, exactly rounded.
    static constexpr Pixel Scale(Pixel pixel, ChannelType factor) noexcept
    {
        for (auto& channel : pixel.channels)
            channel = Multiply(channel, factor);
        return pixel;
    }

    /// \p source over \p backdrop, mode Normal: s + b·(1 − as). \pre colour is not above alpha.
    static constexpr Pixel Over(const Pixel& source, const Pixel& backdrop) noexcept
    {
        Pixel result = Scale(backdrop, static_cast<ChannelType>(Pixel::Max - source.Alpha()));
        for (std::size_t i = FirstChannel; i < Pixel::ChannelCount; ++i)
            result[i] = static_cast<ChannelType>(result[i] + source[i]);
        return result;
    }

    /// \p source over \p backdrop within the backdrop's alpha, both premultiplied:
    /// s·ab + b·(1 − as), alpha ab.
    static constexpr Pixel Atop(const Pixel& source, const Pixel& backdrop) noexcept
    {
        Pixel result = Scale(source, backdrop.Alpha());
        const Pixel below = Scale(backdrop, static_cast<ChannelType>(Pixel::Max - source.Alpha()));
        for (std::size_t i = FirstChannel; i < Pixel::ColourCount; ++i)
            result[i] = static_cast<ChannelType>(result[i] + below[i]);
        result.Alpha() = backdrop.Alpha();
        return result;
    }

    /// Brings a number into 0…1; NaN becomes 0.
    static constexpr float Clamp(float value) noexcept
    {
        const float low = value > 0.0F ? value : 0.0F;
        return low < 1.0F ? low : 1.0F;
    }

    /// The product of two fractions of Max, exactly rounded for integers.
    static constexpr ChannelType Multiply(ChannelType a, ChannelType b) noexcept
    {
        if constexpr (IsInteger) {
            using Arithmetic = Blending::IntegerArithmetic<ChannelType>;
            return Arithmetic::DivideByMax(Arithmetic::Scale(a, b));
        } else {
            return a * b;
        }
    }

private:
    static constexpr ChannelType ClampAlpha(ChannelType alpha) noexcept
    {
        if constexpr (IsInteger)
            return alpha;
        else
            return Clamp(alpha);
    }

    /// \pre \p value is within 0…1 for integer channels.
    static constexpr ChannelType StoreChannel(float value, float rounding) noexcept
    {
        if constexpr (IsInteger)
            return static_cast<ChannelType>(
                static_cast<int>(value * static_cast<float>(Pixel::Max) + rounding));
        else
            return value;
    }
};

using PixProcessor_RGBA = PixProcessor<Raster::PixelRGBA8, false>;
using PixProcessor_RGBA_Alpha = PixProcessor<Raster::PixelRGBA8, true>;
using PixProcessor_RGBA16 = PixProcessor<Raster::PixelRGBA16, false>;
using PixProcessor_RGBA16_Alpha = PixProcessor<Raster::PixelRGBA16, true>;
using PixProcessor_IA = PixProcessor<Raster::PixelIA8, false>;
using PixProcessor_IA_Alpha = PixProcessor<Raster::PixelIA8, true>;
using PixProcessor_IA16 = PixProcessor<Raster::PixelIA16, false>;
using PixProcessor_IA16_Alpha = PixProcessor<Raster::PixelIA16, true>;
using PixProcessor_CMYKA = PixProcessor<Raster::PixelCMYKA8, false>;
using PixProcessor_CMYKA_Alpha = PixProcessor<Raster::PixelCMYKA8, true>;
using PixProcessor_LABA16 = PixProcessor<Raster::PixelLABA16, false>;
using PixProcessor_LABA16_Alpha = PixProcessor<Raster::PixelLABA16, true>;
using PixProcessor_RGBAUF = PixProcessor<Raster::PixelRGBAUF, false>;
using PixProcessor_RGBAUF_Alpha = PixProcessor<Raster::PixelRGBAUF, true>;

} // namespace Renderer
