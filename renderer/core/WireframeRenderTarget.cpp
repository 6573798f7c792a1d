#include <renderer/core/WireframeRenderTarget.h>

#include <utility>

namespace Renderer {

using Kernel::Counted;
using Kernel::RectT;

WireframeRenderTarget::WireframeRenderTarget(Raster::ICCManager::ICCProfileSet profiles)
    : Base(std::move(profiles)),
      m_ink(FillDescriptorConst::CreateSolid(Raster::PixelRGBA8{{0, 0, 0, 255}})),
      m_pen(1.0)
{
    SetAllowEffects(false);
}

WireframeRenderTarget::~WireframeRenderTarget() = default;

void WireframeRenderTarget::DrawOutline(const PolyPolygon& polygons)
{
    const auto lines = Kernel::MakeCounted<PolyPolygon>();
    for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i) {
        const auto polygon = polygons.GetPolygon(i);
        lines->BeginPolygon(false);
        if (!polygon.closed || polygon.points.size() < 2) {
            lines->AddPoints(polygon.points);
            continue;
        }
        // Polylines have ends. Those of a closed one meet in the middle of its first edge, so that
        // every corner gets a join.
        const auto& first = polygon.points.front();
        const auto middle = 0.5 * (first + polygon.points[1]);
        lines->AddPoint(middle);
        lines->AddPoints(polygon.points.subspan(1));
        lines->AddPoint(first);
        lines->AddPoint(middle);
    }
    Base::DrawPolyPolyline(lines, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(), m_ink, {},
                           m_pen);
}

void WireframeRenderTarget::DrawPolyCurve(Counted<const Geometry::PolyCurveDbl> curve, float,
                                          FillBlendMode::BlendMode, const BlendOptions&,
                                          const FillDescriptorConst&, const FillDescriptorConst&,
                                          const FillDescriptorConst&,
                                          const LineStyleDescriptorConst&,
                                          Geometry::WindingOrderMode, bool, bool)
{
    if (!curve)
        return;
    PolyPolygon polygons;
    curve->ExpandAdaptive(GetLogicalExpansionTolerance(), polygons);
    DrawOutline(polygons);
}

void WireframeRenderTarget::DrawPolyPolygon(Counted<const PolyPolygon> polygons, float,
                                            FillBlendMode::BlendMode, const BlendOptions&,
                                            const FillDescriptorConst&, const FillDescriptorConst&,
                                            Geometry::WindingOrderMode, bool, bool)
{
    if (polygons)
        DrawOutline(*polygons);
}

void WireframeRenderTarget::DrawBitmap(const RectT<double>& dest,
                                       Counted<const Raster::DynamicBitmap> bitmap, float,
                                       FillBlendMode::BlendMode, const BlendOptions&, bool)
{
    if (bitmap)
        DrawOutline(PolyPolygon(dest));
}

void WireframeRenderTarget::DrawBuffer(const RectT<double>& dest,
                                       Counted<const Raster::DynamicBuffer> buffer, float,
                                       FillBlendMode::BlendMode, const BlendOptions&, bool)
{
    if (buffer)
        DrawOutline(PolyPolygon(dest));
}

void WireframeRenderTarget::PushClipPath(Counted<const PolyPolygon>, Geometry::WindingOrderMode) {}

void WireframeRenderTarget::PushClipCurvesPath(Counted<const Geometry::PolyCurveDbl>,
                                               Geometry::WindingOrderMode)
{}

void WireframeRenderTarget::PushClipPolyCurvesPath(Counted<const ConstPolyPolyCurve>,
                                                   Geometry::WindingOrderMode)
{}

void WireframeRenderTarget::PopClipPath() {}

void WireframeRenderTarget::PushClipPathGroup() {}

void WireframeRenderTarget::PopClipPathGroup() {}

void WireframeRenderTarget::PushClippingMask(const RectT<double>&,
                                             Counted<const Raster::DynamicBuffer>)
{}

void WireframeRenderTarget::PopClippingMask() {}

void WireframeRenderTarget::PushComposite(CompositeInit, FillBlendMode::BlendMode,
                                          const BlendOptions&, float)
{}

void WireframeRenderTarget::PopCompositeAsTransparency(const FillDescriptorConst&,
                                                       const FillDescriptorConst&)
{}

void WireframeRenderTarget::PopCompositeAsFill(const FillDescriptorConst&,
                                               const FillDescriptorConst&)
{}

void WireframeRenderTarget::PopCompositeAsFillAndInterpolate(const FillDescriptorConst&) {}

void WireframeRenderTarget::PopCompositeAsTransparencyAndInterpolate(const FillDescriptorConst&) {}

BitmapRenderTarget*
RenderTargetFactory::CreateWireframeRenderTarget(const Raster::ICCManager::ICCProfileSet& profiles)
{
    return new WireframeRenderTarget(profiles);
}

} // namespace Renderer
