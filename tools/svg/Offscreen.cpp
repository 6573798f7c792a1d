#include "Offscreen.h"

#include <algorithm>
#include <cmath>

#include <renderer/paint/FillBitmap.h>

namespace Svg {

using Kernel::Counted;
using Kernel::RectT;
using Raster::AffineTransform;
using Renderer::BitmapRenderTarget;

namespace {

/// Beyond this, targets keep no pixels.
constexpr double MaxDevice = 1 << 20;
/// A gigabyte in eight bits: as large as a picture may be.
constexpr double MaxPixels = 268435456.0;

int ToPixel(double value)
{
    return static_cast<int>(std::clamp(value, -MaxDevice, MaxDevice));
}

} // namespace

RectT<int> Offscreen::FindPixels(const Renderer::RenderTarget& target, const RectT<double>& rect)
{
    const RectT<double> mapped = AffineTransform::MapRect(target.GetCurrentTransform(), rect);
    if (mapped.IsEmpty()) // also when something is not a number
        return {};
    const RectT<int> pixels{ToPixel(std::floor(mapped.left)), ToPixel(std::floor(mapped.top)),
                            ToPixel(std::ceil(mapped.right)), ToPixel(std::ceil(mapped.bottom))};
    const RectT<int>& clip = target.GetDeviceClip();
    return clip.IsUnset() ? pixels : pixels.Intersect(clip);
}

Counted<BitmapRenderTarget> Offscreen::MakeTarget(const Renderer::RenderTarget& model,
                                                  const RectT<int>& rect, Raster::Format format,
                                                  const Raster::ICCManager::ICCProfileSet& profiles)
{
    if (rect.IsEmpty() || !(double(rect.Width()) * rect.Height() <= MaxPixels))
        return {};
    Counted<BitmapRenderTarget> target(BitmapRenderTarget::Create(format, profiles));
    const auto buffer =
        Raster::DynamicBuffer::Create(format, unsigned(rect.Width()), unsigned(rect.Height()));
    if (!target || !buffer || !target->AttachBuffer(buffer, rect))
        return {};
    target->SetAbortPointer(model.GetAbortingPointer());
    target->SetDeviceExpansionTolerance(model.GetDeviceExpansionTolerance());
    target->SetAntialias(model.GetAntialias());
    target->SetIsFinalPass(model.IsFinalPass());
    target->SetDithering(model.GetDithering());
    target->SetPerfectClipping(model.GetPerfectClipping());
    target->SetUpResamplerType(model.GetUpResamplerType());
    target->SetDownResamplerType(model.GetDownResamplerType());
    return target;
}

Counted<BitmapRenderTarget> Offscreen::MakeTarget(const Renderer::RenderTarget& model,
                                                  const RectT<int>& rect)
{
    auto target = MakeTarget(model, rect, model.GetColourFormat(), model.GetProfiles());
    return target ? target : MakeTarget(model, rect, Raster::Format::RGBA8, {});
}

Renderer::FillDescriptorConst
Offscreen::MakeFill(const Renderer::RenderTarget& target, const RectT<int>& rect,
                    const Counted<const Raster::DynamicBitmap>& bitmap)
{
    Transform deviceToLogical;
    if (!AffineTransform::Invert(target.GetCurrentTransform(), deviceToLogical))
        return {};
    const Transform frame = AffineTransform::FromRect(
        {double(rect.left), double(rect.top), double(rect.right), double(rect.bottom)});
    return {Renderer::FillBitmap::Create(bitmap, Raster::ExtendType::Transparent,
                                         Raster::ResamplerType::NearestNeighbour),
            AffineTransform::Concatenate(frame, deviceToLogical)};
}

} // namespace Svg
