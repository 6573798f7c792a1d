#pragma once

#include <algorithm>
#include <type_traits>
#include <utility>

#include <kernel/Counted.h>
#include <raster/AffineTransform.h>
#include <raster/Convert.h>
#include <raster/DynamicBuffer.h>
#include <raster/ICCManager.h>
#include <raster/Resample.h>
#include <renderer/core/span/OrderedDither.h>

namespace Renderer {

/// Whether pixels of a format know more than 8 bits of a channel.
inline bool IsDeepFormat(Raster::Format format)
{
    return Raster::WithPixelOfFormat(format, false, [](auto pixel) {
        return sizeof(typename decltype(pixel)::ChannelType) > 1;
    });
}

/// The deep pixel of the same channels as an 8-bit one; void where buffers hold none.
template<class Pixel>
using DeepPixelOf = std::conditional_t<
    std::is_same_v<Pixel, Raster::PixelRGBA8>, Raster::PixelRGBA16,
    std::conditional_t<std::is_same_v<Pixel, Raster::PixelIA8>, Raster::PixelIA16, void>>;

/// The space of a deep pixel's colours.
template<class Deep>
inline constexpr Raster::ColourSpace SpaceOfDeepPixel =
    std::is_same_v<Deep, Raster::PixelIA16>     ? Raster::ColourSpace::Grey
    : std::is_same_v<Deep, Raster::PixelLABA16> ? Raster::ColourSpace::LAB
                                                : Raster::ColourSpace::RGB;

/// Brings deep premultiplied pixels into float, of the same channels.
template<class Deep>
class DeepChannels
{
public:
    template<class FloatPixel>
    void Convert(const Deep* deep, unsigned count, FloatPixel* out) const noexcept
    {
        constexpr float scale = 1.0F / static_cast<float>(Deep::Max);
        for (unsigned i = 0; i < count; ++i)
            for (std::size_t c = 0; c < Deep::ChannelCount; ++c)
                out[i][c] = static_cast<float>(deep[i][c]) * scale;
    }
};

/// Brings deep premultiplied pixels into float inks, by profiles where there are some.
template<class Deep>
class DeepInks
{
public:
    /// \param space of the pixels.
    /// \param transform between unpremultiplied float pixels; null for the fixed formulas.
    DeepInks(Raster::ColourSpace space, Kernel::Counted<const Raster::ICCTransform> transform)
        : m_space(space), m_transform(std::move(transform))
    {}

    /// \param count at most BlockLength.
    template<class FloatPixel>
    void Convert(const Deep* deep, unsigned count, FloatPixel* out) const
    {
        float plain[BlockLength][Deep::ChannelCount];
        for (unsigned i = 0; i < count; ++i)
            Unpremultiply(deep[i], plain[i]);
        if (m_transform) {
            m_transform->Apply(plain, out, count);
        } else {
            for (unsigned i = 0; i < count; ++i)
                Raster::ConvertFloatPixel(m_space, plain[i], Raster::ColourSpace::CMYK,
                                          out[i].data());
        }
        for (unsigned i = 0; i < count; ++i)
            for (std::size_t c = 0; c + 1 < out[i].size(); ++c)
                out[i][c] *= out[i].back();
    }

private:
    static constexpr unsigned BlockLength = 64;

    static void Unpremultiply(const Deep& pixel, float* plain) noexcept
    {
        const auto alpha = static_cast<float>(pixel.Alpha());
        const float scale = alpha > 0.0F ? 1.0F / alpha : 0.0F;
        for (std::size_t c = 0; c < Deep::ColourCount; ++c)
            plain[c] = static_cast<float>(pixel[c]) * scale;
        plain[Deep::AlphaIndex] = alpha / static_cast<float>(Deep::Max);
    }

    Raster::ColourSpace m_space;
    Kernel::Counted<const Raster::ICCTransform> m_transform;
};

/// Paints the pixels of a bitmap or buffer of deep channels, dithered into a format of 8 bits.
/// \tparam Conversion DeepChannels or DeepInks.
template<class ProcessorT, class Deep, class Conversion>
class DeepBitmapPopulator
{
public:
    using Processor = ProcessorT;
    using Pixel = typename Processor::Pixel;

    /// \param source premultiplied pixels of type Deep; kept alive.
    /// \param isOpaque whether all of them have full alpha.
    DeepBitmapPopulator(Kernel::Counted<const Raster::DynamicBuffer> source,
                        const Raster::AffineTransform::Params& deviceToUnit,
                        Raster::ResamplerType up, Raster::ResamplerType down,
                        Raster::ExtendType extend, bool isOpaque, Conversion conversion)
        : m_sampler(std::move(source), deviceToUnit, up, down, extend),
          m_conversion(std::move(conversion)),
          m_isOpaque(isOpaque && m_sampler.KeepsOpacity())
    {}

    bool IsOpaque() const noexcept { return m_isOpaque; }
    bool IsConcurrent() const noexcept { return m_sampler.IsConcurrent(); }

    void Populate(int x, int y, unsigned length, Pixel* out)
    {
        constexpr unsigned BlockLength = Processor::BlockLength;
        while (length > 0) {
            const unsigned count = std::min(length, BlockLength);
            Deep deep[BlockLength];
            typename Processor::FloatPixel colours[BlockLength];
            float thresholds[BlockLength];
            m_sampler.Sample(x, y, count, deep);
            m_conversion.Convert(deep, count, colours);
            OrderedDither::GetThresholds(x, y, count, thresholds);
            for (unsigned i = 0; i < count; ++i)
                out[i] = Processor::StorePremultiplied(colours[i], thresholds[i]);
            x += static_cast<int>(count);
            out += count;
            length -= count;
        }
    }

private:
    Raster::SpanSampler<Deep> m_sampler;
    Conversion m_conversion;
    bool m_isOpaque;
};

} // namespace Renderer
