#pragma once

#include <algorithm>
#include <vector>

#include <kernel/Counted.h>
#include <raster/ColourTransform.h>
#include <raster/Convert.h>
#include <raster/ICCManager.h>
#include <raster/Pixel.h>

namespace Renderer {

/// Applies a list of colour transforms to the scratch span, in blocks of unpremultiplied float RGB.
/// Other formats go to RGB and back by the ICC transform of the profiles where there is one, else
/// by the fixed formulas.
template<class ProcessorT>
class ColourTransformPopulator
{
public:
    using Processor = ProcessorT;
    using Pixel = typename Processor::Pixel;
    using Transforms = std::vector<Kernel::Counted<const Raster::ColourTransform>>;

    /// Both are referred to, not copied; empty transforms change nothing.
    ColourTransformPopulator(const Transforms& transforms,
                             const typename Processor::Profiles& profiles)
        : m_transforms(transforms), m_profiles(profiles)
    {
        if constexpr (Space != Raster::ColourSpace::RGB) {
            auto& manager = Raster::ICCManager::GetInstance();
            m_toRGB =
                manager.GetFloatTransform(Space, profiles, Raster::ColourSpace::RGB, profiles);
            m_fromRGB =
                manager.GetFloatTransform(Raster::ColourSpace::RGB, profiles, Space, profiles);
        }
    }

    void Populate(int, int, unsigned length, Pixel* pixels) const
    {
        while (length > 0) {
            const unsigned count = std::min(length, Processor::BlockLength);
            TransformBlock(pixels, count);
            pixels += count;
            length -= count;
        }
    }

private:
    using FloatPixel = typename Processor::FloatPixel;

    /// The colour space of the format, told by its channels.
    static constexpr Raster::ColourSpace Space = [] {
        switch (Pixel::Roles[0]) {
        case Raster::ChannelRole::Subtractive:
            return Raster::ColourSpace::CMYK;
        case Raster::ChannelRole::Lightness:
            return Raster::ColourSpace::LAB;
        default:
            return Pixel::ColourCount == 1 ? Raster::ColourSpace::Grey : Raster::ColourSpace::RGB;
        }
    }();

    void TransformBlock(Pixel* pixels, unsigned count) const
    {
        FloatPixel plain[Processor::BlockLength];
        Raster::PixelRGBAF rgb[Processor::BlockLength];
        for (unsigned i = 0; i < count; ++i)
            plain[i] = Processor::Unpremultiply(pixels[i]);
        ToRGB(plain, rgb, count);
        for (const auto& transform : m_transforms) {
            if (transform)
                transform->Apply(rgb, count, m_profiles);
        }
        FromRGB(rgb, plain, count);
        for (unsigned i = 0; i < count; ++i)
            pixels[i] = Processor::Store(plain[i]);
    }

    void ToRGB(const FloatPixel* plain, Raster::PixelRGBAF* rgb, unsigned count) const
    {
        if constexpr (Space == Raster::ColourSpace::RGB) {
            for (unsigned i = 0; i < count; ++i)
                rgb[i].channels = plain[i];
        } else if (m_toRGB) {
            m_toRGB->Apply(plain, rgb, count);
        } else {
            for (unsigned i = 0; i < count; ++i)
                Raster::ConvertFloatPixel(Space, plain[i].data(), Raster::ColourSpace::RGB,
                                          rgb[i].channels.data());
        }
    }

    void FromRGB(const Raster::PixelRGBAF* rgb, FloatPixel* plain, unsigned count) const
    {
        if constexpr (Space == Raster::ColourSpace::RGB) {
            for (unsigned i = 0; i < count; ++i)
                plain[i] = rgb[i].channels;
        } else if (m_fromRGB) {
            m_fromRGB->Apply(rgb, plain, count);
        } else {
            for (unsigned i = 0; i < count; ++i)
                Raster::ConvertFloatPixel(Raster::ColourSpace::RGB, rgb[i].channels.data(), Space,
                                          plain[i].data());
        }
    }

    const Transforms& m_transforms;
    const typename Processor::Profiles& m_profiles;
    Kernel::Counted<const Raster::ICCTransform> m_toRGB;
    Kernel::Counted<const Raster::ICCTransform> m_fromRGB;
};

} // namespace Renderer
