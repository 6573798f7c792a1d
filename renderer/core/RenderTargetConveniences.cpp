// The drawing calls with defaults filled in.

#include <renderer/core/RenderTarget.h>

namespace Renderer {

using Geometry::PolyCurveDbl;
using Geometry::WindingOrderMode;
using Kernel::Counted;
using Kernel::MakeCounted;

void RenderTarget::DrawPolyCurve(Counted<const PolyCurveDbl> curve, float opacity,
                                 const FillDescriptorConst& fill,
                                 const FillDescriptorConst& lineFill,
                                 const LineStyleDescriptorConst& lineStyle)
{
    DrawPolyCurve(std::move(curve), opacity, FillBlendMode::Normal, BlendOptions::Identity(), fill,
                  {}, lineFill, lineStyle, WindingOrderMode::EvenOdd, true, false);
}

void RenderTarget::DrawPolyPolyCurve(Counted<const ConstPolyPolyCurve> curves, float opacity,
                                     const FillDescriptorConst& fill,
                                     const FillDescriptorConst& lineFill,
                                     const LineStyleDescriptorConst& lineStyle)
{
    DrawPolyPolyCurve(std::move(curves), opacity, FillBlendMode::Normal, BlendOptions::Identity(),
                      fill, {}, lineFill, lineStyle, WindingOrderMode::EvenOdd, true, false);
}

void RenderTarget::DrawPolyPolygon(Counted<const PolyPolygon> polygons, float opacity,
                                   const FillDescriptorConst& fill)
{
    DrawPolyPolygon(std::move(polygons), opacity, FillBlendMode::Normal, BlendOptions::Identity(),
                    fill, {}, WindingOrderMode::EvenOdd, true, false);
}

void RenderTarget::DrawPolyPolyline(Counted<const PolyPolygon> polylines, float opacity,
                                    const FillDescriptorConst& lineFill,
                                    const LineStyleDescriptorConst& lineStyle)
{
    DrawPolyPolyline(std::move(polylines), opacity, FillBlendMode::Normal, BlendOptions::Identity(),
                     lineFill, {}, lineStyle);
}

void RenderTarget::DrawPolygon(const Geometry::PolygonType<double>& polygon, float opacity,
                               const FillDescriptorConst& fill)
{
    DrawPolyPolygon(MakeCounted<PolyPolygon>(polygon), opacity, fill);
}

void RenderTarget::DrawPolyline(const Geometry::PolygonType<double>& polyline, float opacity,
                                const FillDescriptorConst& lineFill,
                                const LineStyleDescriptorConst& lineStyle)
{
    DrawPolyPolyline(MakeCounted<PolyPolygon>(polyline), opacity, lineFill, lineStyle);
}

void RenderTarget::DrawEllipse(Kernel::PointT<double> centre, Kernel::PointT<double> size,
                               float opacity, const FillDescriptorConst& fill,
                               const FillDescriptorConst& lineFill,
                               const LineStyleDescriptorConst& lineStyle)
{
    auto curve = MakeCounted<PolyCurveDbl>();
    curve->AddEllipse(centre, size.x / 2, size.y / 2);
    DrawPolyCurve(std::move(curve), opacity, fill, lineFill, lineStyle);
}

void RenderTarget::DrawEllipse(const Kernel::RectT<double>& bounds, float opacity,
                               const FillDescriptorConst& fill, const FillDescriptorConst& lineFill,
                               const LineStyleDescriptorConst& lineStyle)
{
    DrawEllipse({(bounds.left + bounds.right) / 2, (bounds.top + bounds.bottom) / 2},
                {bounds.Width(), bounds.Height()}, opacity, fill, lineFill, lineStyle);
}

void RenderTarget::DrawCircle(Kernel::PointT<double> centre, double radius, float opacity,
                              const FillDescriptorConst& fill, const FillDescriptorConst& lineFill,
                              const LineStyleDescriptorConst& lineStyle)
{
    DrawEllipse(centre, {2 * radius, 2 * radius}, opacity, fill, lineFill, lineStyle);
}

void RenderTarget::DrawLine(Kernel::PointT<double> from, Kernel::PointT<double> to, float opacity,
                            const FillDescriptorConst& lineFill,
                            const LineStyleDescriptorConst& lineStyle)
{
    DrawPolyline(Geometry::PolygonType<double>({from, to}, false), opacity, lineFill, lineStyle);
}

void RenderTarget::DrawLine(double x1, double y1, double x2, double y2, float opacity,
                            const FillDescriptorConst& lineFill,
                            const LineStyleDescriptorConst& lineStyle)
{
    DrawLine({x1, y1}, {x2, y2}, opacity, lineFill, lineStyle);
}

void RenderTarget::DrawRectangle(const Kernel::RectT<double>& rect, float opacity,
                                 const FillDescriptorConst& fill,
                                 const FillDescriptorConst& lineFill,
                                 const LineStyleDescriptorConst& lineStyle)
{
    DrawPolyCurve(MakeCounted<PolyCurveDbl>(rect), opacity, fill, lineFill, lineStyle);
}

void RenderTarget::DrawRectangle(double left, double top, double right, double bottom,
                                 float opacity, const FillDescriptorConst& fill,
                                 const FillDescriptorConst& lineFill,
                                 const LineStyleDescriptorConst& lineStyle)
{
    DrawRectangle({left, top, right, bottom}, opacity, fill, lineFill, lineStyle);
}

void RenderTarget::PushClipRectanglePath(const Kernel::RectT<double>& rect)
{
    PushClipPath(MakeCounted<PolyPolygon>(rect), WindingOrderMode::EvenOdd);
}

} // namespace Renderer
