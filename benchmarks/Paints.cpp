#include "Paints.h"

#include <cmath>
#include <map>

#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillGradient.h>

namespace Benchmarks {

namespace {

using Raster::AffineTransform;
using Raster::PixelRGBA8;
using Raster::ResamplerType;
using Renderer::FillDescriptorConst;
using Renderer::FillGradient;
using Rect = Kernel::RectT<double>;

FillDescriptorConst MakeTranslucent(const Rect&)
{
    return FillDescriptorConst::CreateSolid({{200, 60, 30, 140}});
}

FillDescriptorConst MakeOpaque(const Rect&)
{
    return FillDescriptorConst::CreateSolid({{30, 90, 200, 255}});
}

Kernel::Consolidated<Renderer::Gradient> MakeStops()
{
    const auto colour = [](const PixelRGBA8& pixel) { return Renderer::ColourRGB::Create(pixel); };
    return Renderer::Gradient::Create({{colour({{250, 230, 40, 255}}), 0.0},
                                       {colour({{220, 40, 90, 160}}), 0.4},
                                       {colour({{20, 60, 160, 230}}), 1.0}});
}

template<FillGradient::FillGradientType Type>
FillDescriptorConst MakeGradient(const Transform& frame)
{
    static const auto fill = FillGradient::Create(Type, MakeStops());
    return {fill, frame};
}

/// Across the square, a little aslant.
FillDescriptorConst MakeLinear(const Rect& r)
{
    const double along = 0.9 * r.Width();
    const double aside = 0.3 * r.Width();
    return MakeGradient<FillGradient::Linear>(
        {along, -aside, r.left + 0.05 * r.Width(), aside, along, r.top});
}

Transform FitCircle(const Rect& r)
{
    const double radius = 0.6 * r.Width();
    return {radius, 0.0, 0.5 * (r.left + r.right), 0.0, radius, 0.5 * (r.top + r.bottom)};
}

FillDescriptorConst MakeRadial(const Rect& r)
{
    return MakeGradient<FillGradient::Radial>(FitCircle(r));
}

FillDescriptorConst MakeConical(const Rect& r)
{
    return MakeGradient<FillGradient::Conical>(FitCircle(r));
}

/// A bitmap with one pixel per pixel of the page.
template<ResamplerType Resampler>
FillDescriptorConst MakePicture(const Rect& r)
{
    const auto side = unsigned(std::ceil(r.Width()));
    static std::map<unsigned, Kernel::Counted<const Raster::DynamicBitmap>> bitmaps;
    auto& bitmap = bitmaps[side];
    if (!bitmap)
        bitmap = MakeBitmap(side, side);
    const Rect frame{r.left, r.top, r.left + side, r.top + side};
    return {FillDescriptorConst::CreateBitmap(bitmap, Raster::ExtendType::Clamp, Resampler),
            AffineTransform::FromRect(frame)};
}

} // namespace

const std::array<Paint, 7> Paints{{
    {"translucent", MakeTranslucent},
    {"opaque", MakeOpaque},
    {"linear", MakeLinear},
    {"radial", MakeRadial},
    {"conical", MakeConical, false},
    {"nearest", MakePicture<ResamplerType::NearestNeighbour>},
    {"bilinear", MakePicture<ResamplerType::Bilinear>},
}};

Kernel::Counted<const Raster::DynamicBitmap> MakeBitmap(unsigned width, unsigned height)
{
    const auto buffer = Raster::DynamicBuffer::Create(Raster::Format::RGBA8, width, height);
    for (unsigned y = 0; y < height; ++y) {
        unsigned char* pixel = buffer->GetRow(y);
        for (unsigned x = 0; x < width; ++x, pixel += 4) {
            // Smooth, so that resamplers that round differently stay close.
            const unsigned alpha = 128 + 127 * x / width;
            pixel[0] = static_cast<unsigned char>(alpha * (x % 64) / 64);
            pixel[1] = static_cast<unsigned char>(alpha * y / height);
            pixel[2] = static_cast<unsigned char>(alpha / 2);
            pixel[3] = static_cast<unsigned char>(alpha);
        }
    }
    return Kernel::MakeCounted<Raster::DynamicBitmap>(buffer);
}

} // namespace Benchmarks
