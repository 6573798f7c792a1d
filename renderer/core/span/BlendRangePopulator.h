#pragma once

#include <array>
#include <cstdint>

#include <kernel/Point.h>
#include <raster/DynamicBuffer.h>
#include <renderer/core/blend/BlendAlgebra.h>
#include <renderer/core/blend/IntegerArithmetic.h>
#include <renderer/core/span/PopulatorStore.h>
#include <renderer/core/span/SpanPopulator.h>
#include <renderer/paint/BlendOptions.h>

namespace Renderer {

/// Scales pixels by blend ranges: by the product of all curves of the source, at the values of the
/// paint, and of the destination, at the values of what lies below.
///
/// Values are unpremultiplied and in 0…1, in the encoding that the format stores; those of 8-bit
/// formats are bytes, for which each curve is a table. The master curve sees the lightness: the
/// luminosity of additive channels (ink c under black k lets (1 − c)(1 − k) through), the channel
/// itself of greys and Lab. A pixel without alpha has no colour: only the curve of the alpha
/// channel sees it.
template<class ProcessorT>
class BlendRangePopulator
{
public:
    using Processor = ProcessorT;
    using Pixel = typename Processor::Pixel;

    /// The pixels that paint will be blended with.
    struct Below
    {
        const Raster::DynamicBuffer& buffer;
        Kernel::PointT<int> origin; ///< the device pixel of its left top corner
        bool isPlain;               ///< whether its colour is not premultiplied
    };

    /// \param options is referred to, not copied, like what \p below names.
    /// \param store holds the tables.
    BlendRangePopulator(const BlendOptions& options, const Below& below, PopulatorStore& store)
        : m_below(below)
    {
        for (const auto side : {BlendOptions::Side::Source, BlendOptions::Side::Destination}) {
            AddCurve(side, options.GetMasterCurve(side), Lightness, store);
            for (std::size_t c = 0; c < Pixel::ChannelCount; ++c)
                AddCurve(side, options.GetChannelCurve(side, static_cast<int>(c)), c, store);
        }
    }

    bool IsIdentity() const { return m_counts[0] + m_counts[1] == 0; }

    /// Valid as long as this.
    SpanScaler GetScaler() const
    {
        return {[](const void* context, const void* paint, void* pixels, int x, int y,
                   unsigned length) {
                    static_cast<const BlendRangePopulator*>(context)->Scale(
                        static_cast<const Pixel*>(paint), static_cast<Pixel*>(pixels), x, y,
                        length);
                },
                this};
    }

private:
    static constexpr bool UsesTables = Processor::UsesTables;
    /// What values count as 1.
    static constexpr float Unit = UsesTables ? 255.0F : 1.0F;
    /// The place of the lightness among a pixel's values.
    static constexpr std::size_t Lightness = Pixel::ChannelCount;
    using Values = std::array<float, Pixel::ChannelCount + 1>;

    struct Range
    {
        const Geometry::Spline* curve;
        const float* table; // by the byte
        std::size_t value;
    };

    void AddCurve(BlendOptions::Side side, const BlendOptions::Curve& curve, std::size_t value,
                  PopulatorStore& store)
    {
        if (BlendOptions::IsIdentitySpline(curve))
            return;
        float* table = nullptr;
        if constexpr (UsesTables) {
            table = store.AllocateArray<float>(256);
            for (unsigned i = 0; i < 256; ++i)
                table[i] = Evaluate(*curve, i / 255.0);
        }
        const auto index = static_cast<std::size_t>(side);
        m_ranges[index][m_counts[index]++] = {curve.Get(), table, value};
    }

    static float Evaluate(const Geometry::Spline& curve, double value)
    {
        return Processor::Clamp(static_cast<float>(curve.Evaluate(value)));
    }

    void Scale(const Pixel* paint, Pixel* pixels, int x, int y, unsigned length) const
    {
        const auto row = static_cast<unsigned>(y - m_below.origin.y);
        const auto* const below =
            reinterpret_cast<const Pixel*>(m_below.buffer.GetRow(row)) + (x - m_below.origin.x);
        for (unsigned i = 0; i < length; ++i) {
            const float weight = Weigh(0, paint[i], false) * Weigh(1, below[i], m_below.isPlain);
            for (auto& channel : pixels[i].channels)
                channel = ScaleChannel(channel, weight);
        }
    }

    /// The product of a side's curves at a pixel.
    float Weigh(std::size_t side, const Pixel& pixel, bool isPlain) const
    {
        if (m_counts[side] == 0)
            return 1.0F;
        const bool hasColour = pixel.Alpha() > 0;
        const Values values = GetValues(pixel, isPlain);
        float weight = 1.0F;
        for (std::size_t i = 0; i < m_counts[side]; ++i) {
            const Range& range = m_ranges[side][i];
            if (!hasColour && range.value != Pixel::AlphaIndex)
                continue;
            const float value = values[range.value];
            if constexpr (UsesTables)
                weight *= range.table[static_cast<int>(value + 0.5F)];
            else
                weight *= Evaluate(*range.curve, value);
        }
        return weight;
    }

    static Values GetValues(const Pixel& pixel, bool isPlain)
    {
        const auto max = static_cast<float>(Pixel::Max);
        const float alpha = isPlain ? max : static_cast<float>(pixel.Alpha());
        Blending::FloatPixel<Pixel> plain{};
        Values values{};
        for (std::size_t c = 0; c < Pixel::ColourCount; ++c) {
            // One division: for opaque bytes the byte itself.
            const float value = alpha > 0 ? static_cast<float>(pixel[c]) * Unit / alpha : 0.0F;
            values[c] = plain.colour[c] = ClampToUnit(value);
        }
        values[Pixel::AlphaIndex] = ClampToUnit(static_cast<float>(pixel.Alpha()) * Unit / max);
        plain.alpha = Unit;
        values[Lightness] = GetLightness(plain);
        return values;
    }

    /// What is not a number becomes 0.
    static float ClampToUnit(float value)
    {
        const float low = value > 0.0F ? value : 0.0F;
        return low < Unit ? low : Unit;
    }

    static float GetLightness(const Blending::FloatPixel<Pixel>& plain)
    {
        using enum Blending::ColourLayout;
        constexpr auto layout = Blending::GetLayout<Pixel>();
        if constexpr (layout == Grey || layout == Lab)
            return plain.colour[0];
        const float luminosity = Blending::Luminosity100(Blending::GetAdditive(plain)) / 100.0F;
        if constexpr (layout == CMYK)
            return luminosity * (Unit - plain.colour[3]) / Unit;
        return luminosity;
    }

    static typename Pixel::ChannelType ScaleChannel(typename Pixel::ChannelType channel,
                                                    float weight)
    {
        if constexpr (Processor::IsInteger) {
            using Words = Blending::IntegerArithmetic<std::uint16_t>;
            const auto word = static_cast<std::uint32_t>(weight * 65535.0F + 0.5F);
            return static_cast<typename Pixel::ChannelType>(Words::DivideByMax(channel * word));
        } else {
            return channel * weight;
        }
    }

    Below m_below;
    std::array<std::array<Range, Pixel::ChannelCount + 1>, 2> m_ranges; // source, destination
    std::array<std::size_t, 2> m_counts{};
};

} // namespace Renderer
