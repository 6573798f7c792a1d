#pragma once

#include <cstdint>

#include <raster/ChannelTypes.h>

namespace Renderer {

/// The grain that colours with a noise amount show.
///
/// Depends on the page's device pixel alone, so that tiles, passes and paints of equal noise agree:
/// with h = hash(x + hash(y)) the grain is (h >> 8)·2⁻²³ − 1, evenly spread over [−1, 1).
class NoiseField
{
public:
    static constexpr float GetGrain(int x, int y) noexcept
    {
        const std::uint32_t hash =
            Hash(static_cast<std::uint32_t>(x) + Hash(static_cast<std::uint32_t>(y)));
        return static_cast<float>(static_cast<std::int32_t>(hash >> 8)) * 0x1p-23F - 1.0F;
    }

private:
    /// The 32-bit mixing function "lowbias32" that Chris Wellons found by search (2018).
    static constexpr std::uint32_t Hash(std::uint32_t value) noexcept
    {
        value += 0x9e3779b9U; // 0 would map to itself
        value ^= value >> 16;
        value *= 0x7feb352dU;
        value ^= value >> 15;
        value *= 0x846ca68bU;
        return value ^ (value >> 16);
    }
};

/// Adds grain to premultiplied spans: every colour channel moves by amount · grain, lighter where
/// the grain is positive, and stays within 0…1; alpha and the opponent channels of Lab stay.
template<class Processor>
class NoiseShader
{
public:
    using Pixel = typename Processor::Pixel;

    explicit NoiseShader(double amount) noexcept : m_amount(static_cast<float>(amount)) {}

    void Apply(int x, int y, unsigned length, Pixel* pixels) const noexcept
    {
        for (unsigned i = 0; i < length; ++i)
            Shift(pixels[i], m_amount * NoiseField::GetGrain(x + static_cast<int>(i), y));
    }

private:
    static constexpr float GetDirection(Raster::ChannelRole role) noexcept
    {
        switch (role) {
        case Raster::ChannelRole::Additive:
        case Raster::ChannelRole::Lightness:
            return 1.0F;
        case Raster::ChannelRole::Subtractive:
            return -1.0F;
        default:
            return 0.0F;
        }
    }

    static void Shift(Pixel& pixel, float grain) noexcept
    {
        auto colour = Processor::Unpremultiply(pixel);
        for (std::size_t i = 0; i < Pixel::ColourCount; ++i) {
            if (const float direction = GetDirection(Pixel::Roles[i]); direction != 0.0F)
                colour[i] = Limit(colour[i], colour[i] + direction * grain);
        }
        const auto alpha = pixel.Alpha();
        pixel = Processor::Store(colour);
        pixel.Alpha() = alpha;
    }

    /// Grain never leaves 0…1, but what lies outside already keeps its place.
    static constexpr float Limit(float before, float after) noexcept
    {
        const float low = before < 0.0F ? before : 0.0F;
        const float high = before > 1.0F ? before : 1.0F;
        return after < low ? low : (after > high ? high : after);
    }

    float m_amount;
};

} // namespace Renderer
