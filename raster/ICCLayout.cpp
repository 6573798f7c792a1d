#include <raster/ICCLayout.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <lcms2.h>

namespace Raster {

namespace {

template<class T>
void Load(const void* source, float* values, std::size_t count) noexcept
{
    const T* channels = static_cast<const T*>(source);
    for (std::size_t i = 0; i < count; ++i) {
        if constexpr (std::is_floating_point_v<T>)
            values[i] = std::isfinite(channels[i]) ? channels[i] : 0.0f;
        else
            values[i] = static_cast<float>(channels[i]) / float(std::numeric_limits<T>::max());
    }
}

template<class T>
void Store(const float* values, void* destination, std::size_t count) noexcept
{
    T* channels = static_cast<T*>(destination);
    constexpr float max = float(std::numeric_limits<T>::max());
    for (std::size_t i = 0; i < count; ++i) {
        if constexpr (std::is_floating_point_v<T>)
            channels[i] = values[i];
        else // max(0, NaN) is 0 in this order of arguments
            channels[i] = static_cast<T>(std::min(std::max(0.0f, values[i]), 1.0f) * max + 0.5f);
    }
}

} // namespace

std::optional<ICCLayout> GetICCLayout(Format format) noexcept
{
    switch (format) {
    case Format::RGBA8:
        return ICCLayout{ColourSpace::RGB, ICCDepth::U8};
    case Format::RGBA16:
        return ICCLayout{ColourSpace::RGB, ICCDepth::U16};
    case Format::RGBAUF:
        return ICCLayout{ColourSpace::RGB, ICCDepth::Float};
    case Format::IA8:
        return ICCLayout{ColourSpace::Grey, ICCDepth::U8};
    case Format::IA16:
        return ICCLayout{ColourSpace::Grey, ICCDepth::U16};
    case Format::CMYKA8:
        return ICCLayout{ColourSpace::CMYK, ICCDepth::U8};
    case Format::LABA16:
        return ICCLayout{ColourSpace::LAB, ICCDepth::U16};
    case Format::M8:
    case Format::M16:
    case Format::MF:
    case Format::None:
        break;
    }
    return std::nullopt;
}

unsigned GetICCChannelCount(ColourSpace space) noexcept
{
    return space == ColourSpace::Grey ? 2 : space == ColourSpace::CMYK ? 5 : 4;
}

std::size_t GetICCPixelSize(ICCLayout layout) noexcept
{
    const std::size_t size = layout.depth == ICCDepth::U8    ? 1
                             : layout.depth == ICCDepth::U16 ? 2
                                                             : 4;
    return GetICCChannelCount(layout.space) * size;
}

std::uint32_t GetLcmsPixelType(ICCLayout layout) noexcept
{
    const bool isFloat = layout.depth == ICCDepth::Float;
    const unsigned space = layout.space == ColourSpace::Grey   ? PT_GRAY
                           : layout.space == ColourSpace::CMYK ? PT_CMYK
                           : layout.space == ColourSpace::LAB  ? PT_Lab
                                                               : PT_RGB;
    const unsigned bytes = isFloat ? 4 : layout.depth == ICCDepth::U16 ? 2 : 1;
    return FLOAT_SH(isFloat ? 1u : 0u) | COLORSPACE_SH(space) | EXTRA_SH(1u) |
           CHANNELS_SH(GetICCChannelCount(layout.space) - 1) | BYTES_SH(bytes);
}

void LoadICCChannels(ICCDepth depth, const void* source, float* values, std::size_t count) noexcept
{
    switch (depth) {
    case ICCDepth::U8:
        return Load<std::uint8_t>(source, values, count);
    case ICCDepth::U16:
        return Load<std::uint16_t>(source, values, count);
    case ICCDepth::Float:
        return Load<float>(source, values, count);
    }
}

void StoreICCChannels(ICCDepth depth, const float* values, void* destination,
                      std::size_t count) noexcept
{
    switch (depth) {
    case ICCDepth::U8:
        return Store<std::uint8_t>(values, destination, count);
    case ICCDepth::U16:
        return Store<std::uint16_t>(values, destination, count);
    case ICCDepth::Float:
        return Store<float>(values, destination, count);
    }
}

} // namespace Raster
