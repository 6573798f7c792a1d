#include <renderer/core/BitmapRenderTarget.h>

#include <renderer/core/MakeRoom.h>
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
    case Raster::Format::RGBA16:
        return RenderTargetFactory::CreateRGBA16RenderTarget(profiles);
    case Raster::Format::IA8:
        return RenderTargetFactory::CreateIA8RenderTarget(profiles);
    case Raster::Format::IA16:
        return RenderTargetFactory::CreateIA16RenderTarget(profiles);
    case Raster::Format::CMYKA8:
        return RenderTargetFactory::CreateCMYKA8RenderTarget(profiles);
    case Raster::Format::LABA16:
        return RenderTargetFactory::CreateLABA16RenderTarget(profiles);
    case Raster::Format::RGBAUF:
        return RenderTargetFactory::CreateRGBAUFRenderTarget(profiles);
    default:
        return nullptr;
    }
}

namespace {

/// Pops the device clip at the end of a block, unless it is kept.
class PoppedClip
{
public:
    explicit PoppedClip(RenderTarget& target) : m_target(&target) {}
    PoppedClip(const PoppedClip&) = delete;
    PoppedClip& operator=(const PoppedClip&) = delete;
    ~PoppedClip()
    {
        if (m_target)
            m_target->PopDeviceClip();
    }
    void Keep() { m_target = nullptr; }

private:
    RenderTarget* m_target;
};

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

Kernel::Counted<RenderTarget>
BitmapRenderTarget::PushSubRender(const Kernel::RectT<double>& bounds, Raster::Format format,
                                  const Raster::ICCManager::ICCProfileSet& profiles)
{
    MakeRoomForOne(m_subRenders);
    PushLogicalDeviceClip(bounds);
    PoppedClip popped(*this);
    const Kernel::RectT<int> clip = GetDeviceClip();
    Kernel::Counted<BitmapRenderTarget> target;
    if (!clip.IsEmpty())
        target = Create(format, profiles);
    // The buffer spans from the device origin to the clip's far corner, so that device pixels
    // agree.
    if (!target || clip.right <= 0 || clip.bottom <= 0 ||
        !target->CreateBuffer(unsigned(clip.right), unsigned(clip.bottom)))
        return {};
    popped.Keep();
    m_subRenders.push_back(target);
    target->SetAbortPointer(GetAbortingPointer());
    target->SetDithering(GetDithering());
    target->SetPerfectClipping(GetPerfectClipping());
    target->SetLogToDevTransform(GetCurrentTransform());
    return target;
}

void BitmapRenderTarget::PopSubRender(Kernel::Consolidated<Colour> matte)
{
    if (m_subRenders.empty())
        return;
    const Kernel::Counted<BitmapRenderTarget> subRender = std::move(m_subRenders.back());
    m_subRenders.pop_back();
    const PoppedClip popped(*this);
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
}

} // namespace Renderer
