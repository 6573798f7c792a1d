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
    m_subRenders.push_back(target);
    target->SetAbortPointer(GetAbortingPointer());
    target->SetDithering(GetDithering());
    target->SetPerfectClipping(GetPerfectClipping());
    target->SetLogToDevTransform(GetCurrentTransform());
    return target;
}

namespace {

/// Makes logical coordinates those of the device for a while, exactly: the inverse of the current
/// transform in front of it would be right up to rounding only.
class DeviceSpace
{
public:
    explicit DeviceSpace(RenderTarget& target)
        : m_target(target), m_logToDev(target.GetLogToDevTransform())
    {
        target.PushTransform({}, RenderTarget::TransformScalarMode::Inherit);
        target.SetWorldTransform({});
        target.SetLogToDevTransform({});
    }
    DeviceSpace(const DeviceSpace&) = delete;
    DeviceSpace& operator=(const DeviceSpace&) = delete;
    ~DeviceSpace()
    {
        m_target.SetLogToDevTransform(m_logToDev);
        m_target.PopTransform();
    }

private:
    RenderTarget& m_target;
    const Raster::AffineTransform::Params m_logToDev;
};

} // namespace

void BitmapRenderTarget::PopSubRender(Kernel::Consolidated<Colour> matte)
{
    if (m_subRenders.empty())
        return;
    const Kernel::Counted<BitmapRenderTarget> subRender = std::move(m_subRenders.back());
    m_subRenders.pop_back();
    subRender->Matte(std::move(matte));
    const Kernel::Counted<Raster::DynamicBuffer> buffer = subRender->GetBuffer();
    if (buffer) {
        const auto bitmap =
            Kernel::MakeCounted<Raster::DynamicBitmap>(buffer, subRender->GetProfile());
        const Kernel::RectT<double> page{0.0, 0.0, double(buffer->GetWidth()),
                                         double(buffer->GetHeight())};
        const DeviceSpace space(*this);
        DrawBitmap(page, bitmap, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(), true);
    }
    PopDeviceClip();
}

} // namespace Renderer
