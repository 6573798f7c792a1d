#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include <raster/Format.h>

namespace Raster {

/// How one channel is stored.
enum class ICCDepth : std::uint8_t
{
    U8,
    U16,
    Float,
};

/// What a transform reads or writes: unpremultiplied channels of one space, then alpha.
struct ICCLayout
{
    ColourSpace space = ColourSpace::RGB;
    ICCDepth depth = ICCDepth::U8;

    friend bool operator==(const ICCLayout&, const ICCLayout&) = default;
};

/// The layout of a format's pixels; none for masks and Format::None.
std::optional<ICCLayout> GetICCLayout(Format format) noexcept;

/// Channels of a space with alpha; at most MaxICCChannels.
unsigned GetICCChannelCount(ColourSpace space) noexcept;
inline constexpr unsigned MaxICCChannels = 5;

/// Bytes of one pixel.
std::size_t GetICCPixelSize(ICCLayout layout) noexcept;

/// Little CMS's name of a layout.
std::uint32_t GetLcmsPixelType(ICCLayout layout) noexcept;

/// Reads \p count channel values as fractions of the whole range; non-finite floats count as 0.
void LoadICCChannels(ICCDepth depth, const void* source, float* values, std::size_t count) noexcept;
/// Writes channel values, integers clamped and rounded to nearest.
void StoreICCChannels(ICCDepth depth, const float* values, void* destination,
                      std::size_t count) noexcept;

} // namespace Raster
