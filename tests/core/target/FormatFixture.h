#pragma once

#include <vector>

#include <raster/Convert.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillGradient.h>
#include <renderer/paint/FillSolid.h>

#include "TargetFixture.h"

namespace Renderer {

using Raster::Format;
using Profiles = Raster::ICCManager::ICCProfileSet;

inline constexpr Format AllFormats[] = {Format::RGBA8,  Format::RGBA16, Format::IA8,   Format::IA16,
                                        Format::CMYKA8, Format::LABA16, Format::RGBAUF};

inline Kernel::Counted<BitmapRenderTarget>
MakeTarget(Format format, unsigned width, unsigned height, const Profiles& profiles = {})
{
    Kernel::Counted<BitmapRenderTarget> target(BitmapRenderTarget::Create(format, profiles));
    EXPECT_TRUE(target && target->CreateBuffer(width, height));
    return target;
}

/// All pixels of a buffer of that format, row by row.
template<class P>
std::vector<P> PixelsOf(const Raster::DynamicBuffer& buffer)
{
    EXPECT_EQ(buffer.GetFormat(), Raster::FormatOfPixel<P>);
    std::vector<P> pixels;
    for (unsigned y = 0; y < buffer.GetHeight(); ++y) {
        const auto* row = reinterpret_cast<const P*>(buffer.GetRow(y));
        pixels.insert(pixels.end(), row, row + buffer.GetWidth());
    }
    return pixels;
}

template<class P>
std::vector<P> PixelsOf(const Kernel::Counted<BitmapRenderTarget>& target)
{
    return PixelsOf<P>(*target->GetBuffer());
}

/// What a target shows, in sRGB.
inline std::vector<PixelRGBA8> DisplayOf(const Kernel::Counted<BitmapRenderTarget>& target)
{
    const auto profile = target->GetProfiles().GetProfile(target->GetColourFormat());
    const auto buffer = Raster::ConvertBuffer(target->GetBuffer(), profile, Format::RGBA8, {});
    return PixelsOf<PixelRGBA8>(*buffer);
}

inline FillDescriptorConst MakeGradient(FillGradient::FillGradientType type,
                                        const std::vector<PixelRGBA8>& colours,
                                        const Raster::AffineTransform::Params& frame)
{
    std::vector<Gradient::ColourPosition> stops;
    for (const PixelRGBA8& colour : colours)
        stops.push_back(
            {ColourRGB::Create(colour),
             double(stops.size()) / double(std::max<std::size_t>(colours.size(), 2) - 1)});
    return FillDescriptorConst(FillGradient::Create(type, Gradient::Create(stops)), frame);
}

} // namespace Renderer
