#include <renderer/core/BitmapRenderTarget.h>

#include <renderer/core/RenderTargetFactory.h>

namespace Renderer {

BitmapRenderTarget::BitmapRenderTarget() = default;

BitmapRenderTarget::~BitmapRenderTarget() = default;

BitmapRenderTarget* BitmapRenderTarget::Create(Raster::Format format,
                                               Raster::ICCManager::ICCProfileSet profiles)
{
    switch (format) {
    case Raster::Format::RGBA8:
        return RenderTargetFactory::CreateRGBA8RenderTarget(profiles);
    default:
        return nullptr;
    }
}

Kernel::Counted<RenderTarget>
BitmapRenderTarget::PushSubRender(const Kernel::RectT<double>& bounds, Raster::Format format,
                                  const Raster::ICCManager::ICCProfileSet& profiles)
{
    PushLogicalDeviceClip(bounds);
    const Kernel::RectT<int> clip = GetDeviceClip();
    Kernel::Counted<BitmapRenderTarget> target;
    if (!clip.IsEmpty())
        target = Create(format, profiles);
    // The buffer spans from the device origin to the clip's far corner, so that device pixels
    // agree.
    if (!target || clip.right <= 0 || clip.bottom <= 0 ||
        !target->CreateBuffer(unsigned(clip.right), unsigned(clip.bottom))) {
        PopDeviceClip();
        return {};
    }
    m_subRender = target;
    target->SetAbortPointer(GetAbortingPointer());
    target->SetDithering(GetDithering());
    target->SetPerfectClipping(GetPerfectClipping());
    target->SetLogToDevTransform(GetCurrentTransform());
    return target;
}

void BitmapRenderTarget::PopSubRender(Kernel::Consolidated<Colour> matte)
{
    if (!m_subRender)
        return;
    m_subRender->Matte(std::move(matte));
    const Kernel::Counted<Raster::DynamicBuffer> buffer = m_subRender->GetBuffer();
    Raster::AffineTransform::Params toLogical;
    if (buffer && Raster::AffineTransform::Invert(GetCurrentTransform(), toLogical)) {
        const auto bitmap =
            Kernel::MakeCounted<Raster::DynamicBitmap>(buffer, m_subRender->GetProfile());
        const Kernel::RectT<double> page{0.0, 0.0, double(buffer->GetWidth()),
                                         double(buffer->GetHeight())};
        PushTransform(toLogical, TransformScalarMode::Inherit);
        DrawBitmap(page, bitmap, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(), true);
        PopTransform();
    }
    PopDeviceClip();
    m_subRender.Reset();
}

} // namespace Renderer
