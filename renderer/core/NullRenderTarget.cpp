#include <renderer/core/NullRenderTarget.h>

#include <utility>

#include <renderer/core/DevicePixels.h>

namespace Renderer {

using Kernel::Counted;
using Kernel::RectT;

namespace {

/// The whole pixels of a rectangle by truncation; unset when it is no rectangle.
RectT<int> TruncateValid(const RectT<double>& rect)
{
    const bool valid = rect.left <= rect.right && rect.top <= rect.bottom;
    return valid ? TruncateToPixels(rect) : RectT<int>::MakeUnset();
}

} // namespace

NullRenderTarget::NullRenderTarget(bool isFinalPass)
{
    SetIsFinalPass(isFinalPass);
    SetDeviceClip({-ClipExtent, -ClipExtent, ClipExtent, ClipExtent});
}

NullRenderTarget::~NullRenderTarget() = default;

void NullRenderTarget::DrawPolyCurve(Counted<const Geometry::PolyCurveDbl>, float,
                                     FillBlendMode::BlendMode, const BlendOptions&,
                                     const FillDescriptorConst&, const FillDescriptorConst&,
                                     const FillDescriptorConst&, const LineStyleDescriptorConst&,
                                     Geometry::WindingOrderMode, bool, bool)
{}

void NullRenderTarget::DrawPolyPolygon(Counted<const PolyPolygon>, float, FillBlendMode::BlendMode,
                                       const BlendOptions&, const FillDescriptorConst&,
                                       const FillDescriptorConst&, Geometry::WindingOrderMode, bool,
                                       bool)
{}

void NullRenderTarget::DrawPolyPolyline(Counted<const PolyPolygon>, float, FillBlendMode::BlendMode,
                                        const BlendOptions&, const FillDescriptorConst&,
                                        const FillDescriptorConst&, const LineStyleDescriptorConst&)
{}

void NullRenderTarget::Interpolate(float, FillBlendMode::BlendMode, const BlendOptions&,
                                   const FillDescriptorConst&, const FillDescriptorConst&)
{}

void NullRenderTarget::Clear() {}

void NullRenderTarget::PushAlphaChannelOnly() {}

void NullRenderTarget::PopAlphaChannelOnly() {}

void NullRenderTarget::SplitFilterEffects(Counted<const FilterEffectsContext> effects,
                                          RectT<double>,
                                          std::vector<Counted<const FilterEffectsContext>>& parts)
{
    parts.push_back(std::move(effects));
}

bool NullRenderTarget::PushFilterEffects(Counted<const FilterEffectsContext>, RectT<double>)
{
    return false;
}

void NullRenderTarget::PopFilterEffects() {}

void NullRenderTarget::PushFilterEffectsSupport(bool, bool, bool, bool, bool,
                                                FillBlendMode::BlendMode, const BlendOptions&,
                                                double)
{}

void NullRenderTarget::PopFilterEffectsSupport() {}

void NullRenderTarget::PushComposite(CompositeInit, FillBlendMode::BlendMode, const BlendOptions&,
                                     float)
{}

void NullRenderTarget::PopCompositeAsTransparency(const FillDescriptorConst&,
                                                  const FillDescriptorConst&)
{}

void NullRenderTarget::PopCompositeAsFill(const FillDescriptorConst&, const FillDescriptorConst&) {}

void NullRenderTarget::PopCompositeAsFillAndInterpolate(const FillDescriptorConst&) {}

void NullRenderTarget::PopCompositeAsTransparencyAndInterpolate(const FillDescriptorConst&) {}

void NullRenderTarget::PushClipPathGroup() {}

void NullRenderTarget::PopClipPathGroup() {}

void NullRenderTarget::PushClipPath(Counted<const PolyPolygon>, Geometry::WindingOrderMode)
{
    ++m_clipPathDepth;
}

void NullRenderTarget::PushClipCurvesPath(Counted<const Geometry::PolyCurveDbl>,
                                          Geometry::WindingOrderMode)
{
    ++m_clipPathDepth;
}

void NullRenderTarget::PushClipPolyCurvesPath(Counted<const ConstPolyPolyCurve>,
                                              Geometry::WindingOrderMode)
{
    ++m_clipPathDepth;
}

void NullRenderTarget::PopClipPath()
{
    --m_clipPathDepth;
}

bool NullRenderTarget::HasClipPaths() const
{
    return m_clipPathDepth > 0;
}

void NullRenderTarget::PushLogicalDeviceClip(RectT<double> rect)
{
    PushClipPath(Kernel::MakeCounted<PolyPolygon>(rect), Geometry::WindingOrderMode::EvenOdd);
    const RectT<double> device = Raster::AffineTransform::MapRect(GetCurrentTransform(), rect);
    m_deviceClips.push_back(GetDeviceClip());
    SetDeviceClip(TruncateValid(device).Intersect(GetDeviceClip()));
}

void NullRenderTarget::PopDeviceClip()
{
    if (m_deviceClips.empty())
        return;
    SetDeviceClip(m_deviceClips.back());
    m_deviceClips.pop_back();
    PopClipPath();
}

void NullRenderTarget::PushColourTransform(Counted<ColourTransform> transform)
{
    m_colourTransforms.push_back(std::move(transform));
}

void NullRenderTarget::PopColourTransform()
{
    if (!m_colourTransforms.empty())
        m_colourTransforms.pop_back();
}

void NullRenderTarget::SetColourTransforms(const ColourTransforms& transforms)
{
    m_colourTransforms = transforms;
}

RenderTarget::ColourTransforms NullRenderTarget::GetColourTransforms() const
{
    return m_colourTransforms;
}

} // namespace Renderer
