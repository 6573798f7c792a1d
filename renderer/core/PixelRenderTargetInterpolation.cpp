// Interpolation in PixelRenderTarget: moving what lies below towards a paint, alpha included.
//
// The blend mode has no part in it. Blend ranges scale the weight, and the blend gamma acts on the
// coverage of clips, as everywhere.

#include <renderer/core/CallScope.h>
#include <renderer/core/DevicePixels.h>
#include <renderer/core/PixelRenderTarget.h>

namespace Renderer {

using Kernel::RectT;

void PixelRenderTarget::Interpolate(float opacity, FillBlendMode::BlendMode,
                                    const BlendOptions& options, const FillDescriptorConst& fill,
                                    const FillDescriptorConst& transparency)
{
    if (!CanDraw(opacity) || fill.IsFillNone())
        return;
    const RectT<int> area = CommonPart(UpdateClipRasterizer().window, GetUnmaskedRect());
    if (area.IsEmpty())
        return;
    CallScope scope(*this, options);
    const ClippingMask& mask = GetMask();
    m_rasterizer.SelectBlend(FillBlendMode::Normal, options.GetBlendGamma(), mask.buffer.Get(),
                             mask.origin);
    m_rasterizer.SelectInterpolation();
    if (!AddFillPopulator(fill, area))
        return;
    AddColourTransformPopulators();
    AddBlendRangePopulator(options);
    if (!AddTransPopulator(transparency, area))
        return;
    AddOpacityPopulator(opacity);
    const Coverage::ClipCoverage* const clip =
        m_clipPaths.IsEmpty() ? nullptr : UpdateClipRasterizer().coverage.Get();
    Touch(area);
    m_rasterizer.SetClipBox(area);
    const WriteScope write(*this, area);
    PrepareColours(area);
    m_rasterizer.RenderRect(area, clip, GetAbortingPointer());
}

void PixelRenderTarget::PopCompositeAsFillAndInterpolate(const FillDescriptorConst& fill)
{
    if (m_groups.empty())
        return;
    CompositeGroup group = CloseComposite();
    PaintGroup(group, fill, {}, PopulatorRole::Colour, true);
    Recycle(group);
}

void PixelRenderTarget::PopCompositeAsTransparencyAndInterpolate(const FillDescriptorConst& fill)
{
    if (m_groups.empty())
        return;
    CompositeGroup group = CloseComposite();
    if (!fill.IsFillNone())
        PaintGroup(group, fill, {}, PopulatorRole::Transparency, true);
    Recycle(group);
}

} // namespace Renderer
