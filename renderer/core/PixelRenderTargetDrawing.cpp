// Drawing calls of PixelRenderTarget: from paths and paint to the span loop.

#include <algorithm>

#include <renderer/core/CallScope.h>
#include <renderer/core/DevicePixels.h>
#include <renderer/core/Hairline.h>
#include <renderer/core/PixelRenderTarget.h>
#include <renderer/core/VisibleRuns.h>
#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillBuffer.h>
#include <renderer/paint/FillMulti.h>

namespace Renderer {

using Geometry::WindingOrderMode;
using Kernel::Counted;
using Kernel::RectT;
using Raster::AffineTransform;

namespace {

bool HasBlendRanges(const BlendOptions& options)
{
    // Most calls have this one: looking at a dozen curves would cost small shapes something.
    return &options != &BlendOptions::Identity() && !options.IsIdentityCurves();
}

/// Whether a stroke lies on the fill of its path anywhere: not outside of closed runs, but for
/// brushes, which keep to the path.
bool LiesOnFill(const LineStyleDescriptorConst& lineStyle, const Geometry::PolyCurveDbl& path)
{
    return lineStyle.GetStrokeAlignment() != LineStyleDescriptorConst::Outside ||
           lineStyle.GetLineStyle()->PaintsWithBrush() ||
           !std::ranges::all_of(path.GetCurves(),
                                [](const Geometry::CurveDbl& run) { return run.IsClosed(); });
}

} // namespace

// ---- paint ----

PopulatorContext PixelRenderTarget::GetPopulatorContext()
{
    return {GetProfiles(),    GetDownResamplerType(),
            m_current.Get(),  m_currentOrigin,
            m_bitmaps,        m_gradients,
            GetDithering(),   IsAllowDegradedBitmaps(),
            HasPlainColours()};
}

bool PixelRenderTarget::AddFillPopulator(const FillDescriptorConst& fill, const RectT<int>&)
{
    return AddPopulator(fill, PopulatorRole::Colour);
}

bool PixelRenderTarget::AddTransPopulator(const FillDescriptorConst& transparency,
                                          const RectT<int>&)
{
    return transparency.IsFillNone() || AddPopulator(transparency, PopulatorRole::Transparency);
}

bool PixelRenderTarget::AddPopulator(const FillDescriptorConst& paint, PopulatorRole role)
{
    const Fill& fill = *paint.GetFill();
    if (fill.IsFillNone())
        return true;
    if (fill.GetKind() == Fill::Kind::Multi) {
        bool isPainted = false;
        for (const auto& part : static_cast<const FillMulti&>(fill).GetDescriptors()) {
            if (part->IsFillNone())
                continue;
            if (AddPopulator(*part, role)) {
                isPainted = true;
                if (role == PopulatorRole::Colour)
                    role = PopulatorRole::ColourOver;
            } else if (role == PopulatorRole::Transparency) {
                return false;
            } // otherwise damaged pixels, for instance, do not hide the other parts
        }
        return isPainted;
    }
    return AddFill(fill, AffineTransform::Concatenate(paint.GetTransform(), GetCurrentTransform()),
                   role);
}

bool PixelRenderTarget::AddFill(const Fill& fill, const Transform& fillToDevice, PopulatorRole role)
{
    SpanPopulator populator;
    if (!MakeFillPopulator(fill, fillToDevice, role, populator))
        return false;
    if (role == PopulatorRole::Transparency)
        m_rasterizer.AddTransparencySpanPopulator(populator);
    else
        m_rasterizer.AddColourSpanPopulator(populator);
    return true;
}

void PixelRenderTarget::AddColourTransformPopulators()
{
    SpanPopulator populator;
    if (!m_colourTransforms.empty() && MakeColourTransformPopulator(populator))
        m_rasterizer.AddColourSpanPopulator(populator);
}

void PixelRenderTarget::AddBlendRangePopulator(const BlendOptions& options)
{
    if (HasBlendRanges(options))
        m_rasterizer.SetSpanScaler(MakeBlendRangeScaler(options));
}

void PixelRenderTarget::AddOpacityPopulator(float opacity)
{
    if (opacity < 1.0F)
        m_rasterizer.AddTransparencySpanPopulator(
            MakeAlphaPopulator(static_cast<unsigned char>(opacity * 255.0F)));
}

// ---- the road of one call ----

bool PixelRenderTarget::CanDraw(float opacity) const
{
    return m_current && opacity > 0.0F && !IsAborting();
}

double PixelRenderTarget::GetFlatteningTolerance() const
{
    Flattening& last = m_flattening;
    const Transform& current = GetCurrentTransform();
    if (last.device != GetDeviceExpansionTolerance() || last.transform != current) {
        // The tolerance by the library's scale is too coarse where a map stretches one direction
        // far more than (1, 1).
        const double logical = GetLogicalExpansionTolerance();
        const double stretch = AffineTransform::GetLargestSingularValue(current);
        last = {current, GetDeviceExpansionTolerance(),
                stretch > 0.0 ? std::min(logical, GetDeviceExpansionTolerance() / stretch)
                              : logical};
    }
    return last.tolerance;
}

const ClipState& PixelRenderTarget::UpdateClipRasterizer()
{
    return m_clipPaths.Update(GetVisibleRect(), GetPerfectClipping());
}

template<class AddPaint>
void PixelRenderTarget::DrawPainted(const PolyPolygon& polygons, const Transform& transform,
                                    const Composition& composition, const AddPaint& addPaint,
                                    const FillDescriptorConst& transparency, const PathRule& rule)
{
    const RectT<int> visible = GetUnmaskedRect();
    const auto box = polygons.GetBoundingBox();
    if (visible.IsEmpty() || !box.IsValid())
        return;
    // A page that is drawn in tiles is mostly shapes that miss the tile: they cost no paint. The
    // pixel of margin is beyond all rounding.
    const RectT<double> device = AffineTransform::MapRect(transform, box.GetRect());
    if (device.left > visible.right + 1.0 || device.right < visible.left - 1.0 ||
        device.top > visible.bottom + 1.0 || device.bottom < visible.top - 1.0)
        return;
    const RectT<int> bounds = TruncateToPixels(device).Intersect(visible);
    CallScope scope(*this, composition.options);
    scope.SetGammaCurve(composition.options.GetAntialiasingGamma());
    const ClippingMask& mask = GetMask();
    m_rasterizer.SelectBlend(composition.mode, composition.options.GetBlendGamma(),
                             mask.buffer.Get(), mask.origin);
    if (!addPaint(bounds))
        return;
    AddColourTransformPopulators();
    AddBlendRangePopulator(composition.options);
    if (!AddTransPopulator(transparency, bounds))
        return;
    AddOpacityPopulator(composition.opacity);
    RasterizePolyPolygon(polygons, transform, rule);
}

void PixelRenderTarget::DrawPolygons(const PolyPolygon& polygons, const Transform& transform,
                                     const Composition& composition,
                                     const FillDescriptorConst& fill,
                                     const FillDescriptorConst& transparency, const PathRule& rule)
{
    if (!fill.IsFillNone())
        DrawPainted(
            polygons, transform, composition,
            [&](const RectT<int>& bounds) { return AddFillPopulator(fill, bounds); }, transparency,
            rule);
}

void PixelRenderTarget::DrawTexture(const Counted<Raster::DynamicBuffer>& texture,
                                    Kernel::PointT<int> origin, const PolyPolygon& polygons,
                                    const Composition& composition, const FillDescriptorConst& fill,
                                    const FillDescriptorConst& transparency, const PathRule& rule)
{
    const auto addPaint = [&](const RectT<int>& bounds) {
        if (fill.IsFillNone())
            return AddBufferPopulator(texture, origin, PopulatorRole::Colour);
        return AddFillPopulator(fill, bounds) &&
               AddBufferPopulator(texture, origin, PopulatorRole::Transparency);
    };
    DrawPainted(polygons, {}, composition, addPaint, transparency,
                {WindingOrderMode::NonZero, rule.antialias, rule.antialiasUnderClip});
}

bool PixelRenderTarget::IsAntialiased(const PathRule& rule) const
{
    return GetAntialias() && (m_clipPaths.IsEmpty() ? rule.antialias : rule.antialiasUnderClip);
}

void PixelRenderTarget::RasterizePolyPolygon(const PolyPolygon& polygons,
                                             const Transform& transform, const PathRule& rule)
{
    if (IsAborting() || !m_current)
        return;
    const bool clipped = !m_clipPaths.IsEmpty();
    const bool antialias = IsAntialiased(rule);
    RectT<int> window = GetVisibleRect();
    const Coverage::ClipCoverage* clip = nullptr;
    const ClipState* exactClip = nullptr;
    if (clipped) {
        const ClipState& state = UpdateClipRasterizer();
        window = window.Intersect(state.window);
        clip = state.coverage.Get();
        if (clip && antialias && GetPerfectClipping())
            exactClip = &state;
    }
    m_rasterizer.SetClipBox(window);
    const bool evenOdd = m_rasterizer.IsEvenOdd();
    m_rasterizer.SetEvenOdd(rule.winding == WindingOrderMode::EvenOdd);
    if (exactClip) {
        m_shapeRegion.Clear();
        m_shapeRegion.AddPath(polygons, transform, m_rasterizer.IsEvenOdd(), window.top,
                              window.bottom, m_rasterizer.GetStore());
        m_rasterizer.SetClipBox(window);
    }
    m_rasterizer.AddPolygons(polygons, transform);
    if (exactClip)
        m_commonArea.Begin(exactClip->regions, &m_shapeRegion, m_rasterizer.GetBounds(true));
    if (!IsAborting()) {
        const RectT<int> bounds = m_rasterizer.GetBounds(antialias);
        Touch(bounds);
        const WriteScope write(*this, GetVisibleRect());
        PrepareColours(bounds);
        if (exactClip)
            m_rasterizer.RenderCommonArea(*clip, m_commonArea, GetAbortingPointer());
        else
            m_rasterizer.Render(antialias, clip, GetAbortingPointer());
    }
    m_rasterizer.SetEvenOdd(evenOdd);
}

// ---- drawing calls ----

void PixelRenderTarget::DrawPolyPolygon(Counted<const PolyPolygon> polygons, float opacity,
                                        FillBlendMode::BlendMode mode, const BlendOptions& options,
                                        const FillDescriptorConst& fill,
                                        const FillDescriptorConst& transparency,
                                        WindingOrderMode winding, bool antialias,
                                        bool antialiasUnderClip)
{
    if (CanDraw(opacity) && polygons)
        DrawPolygons(*polygons, GetCurrentTransform(), {opacity, mode, options}, fill, transparency,
                     {winding, antialias, antialiasUnderClip});
}

void PixelRenderTarget::DrawPolyCurve(Counted<const Geometry::PolyCurveDbl> curve, float opacity,
                                      FillBlendMode::BlendMode mode, const BlendOptions& options,
                                      const FillDescriptorConst& fill,
                                      const FillDescriptorConst& transparency,
                                      const FillDescriptorConst& lineFill,
                                      const LineStyleDescriptorConst& lineStyle,
                                      WindingOrderMode winding, bool antialias,
                                      bool antialiasUnderClip)
{
    if (!CanDraw(opacity) || !curve || curve->IsEmpty())
        return;
    const PathRule rule{winding, antialias, antialiasUnderClip};
    const bool filled = !fill.IsFillNone();
    const bool stroked = lineStyle.IsLineStyleVisible(lineFill);
    // Fill and stroke that overlap and do not simply cover what is below are one object.
    const bool plain = opacity >= 1.0F && mode == FillBlendMode::Normal &&
                       transparency.IsFillNone() && !GetMask().buffer;
    if (filled && stroked && (!plain || HasBlendRanges(options)) && LiesOnFill(lineStyle, *curve)) {
        const RectT<double> bounds =
            lineStyle.InflateBaseRect(curve->GetBoundingBox().GetRect(), GetCurrentTransform(),
                                      GetScalarTransform(), GetLogToDevTransform());
        // Under a clip path, which is out of force inside the group, its flag decides all the same.
        const bool smooth = m_clipPaths.IsEmpty() ? antialias : antialiasUnderClip;
        ShapeGroup group(*this,
                         GrowToPixels(AffineTransform::MapRect(GetCurrentTransform(), bounds)),
                         {opacity, mode, options});
        // What is about coverage is for the shape, the ranges are for the whole.
        BlendOptions inside;
        inside.SetBlendGamma(options.GetBlendGamma());
        inside.SetAntialiasingGamma(options.GetAntialiasingGamma());
        FillAndStroke(*curve, {1.0F, FillBlendMode::Normal, inside}, fill, {}, lineFill, lineStyle,
                      {winding, smooth, smooth});
        group.Paint(transparency);
        return;
    }
    FillAndStroke(*curve, {opacity, mode, options}, fill, transparency, lineFill, lineStyle, rule);
}

void PixelRenderTarget::FillAndStroke(const Geometry::PolyCurveDbl& curve,
                                      const Composition& composition,
                                      const FillDescriptorConst& fill,
                                      const FillDescriptorConst& transparency,
                                      const FillDescriptorConst& lineFill,
                                      const LineStyleDescriptorConst& lineStyle,
                                      const PathRule& rule)
{
    const bool stroked = lineStyle.IsLineStyleVisible(lineFill);
    if (stroked && lineStyle.GetBehind())
        DrawStroke(curve, composition, lineFill, transparency, lineStyle, rule);
    if (!fill.IsFillNone()) {
        m_polygons.Clear();
        const VisibleRuns runs(GetCurrentTransform(), GetUnmaskedRect(),
                               GetDeviceExpansionTolerance());
        runs.Expand(curve, GetFlatteningTolerance(), m_polygons);
        DrawPolygons(m_polygons, GetCurrentTransform(), composition, fill, transparency, rule);
    }
    if (stroked && !lineStyle.GetBehind())
        DrawStroke(curve, composition, lineFill, transparency, lineStyle, rule);
}

void PixelRenderTarget::DrawPolyPolyline(Counted<const PolyPolygon> polylines, float opacity,
                                         FillBlendMode::BlendMode mode, const BlendOptions& options,
                                         const FillDescriptorConst& fill,
                                         const FillDescriptorConst& transparency,
                                         const LineStyleDescriptorConst& lineStyle)
{
    if (!CanDraw(opacity) || !polylines || polylines->IsEmpty() ||
        !lineStyle.IsLineStyleVisible(fill))
        return;
    DrawStroke(*polylines, {opacity, mode, options}, fill, transparency, lineStyle,
               {WindingOrderMode::NonZero, true, true});
}

template<class Path>
void PixelRenderTarget::DrawStroke(const Path& path, const Composition& composition,
                                   const FillDescriptorConst& lineFill,
                                   const FillDescriptorConst& transparency,
                                   const LineStyleDescriptorConst& lineStyle, const PathRule& rule)
{
    const Transform current = GetCurrentTransform();
    const LineStyle& style = *lineStyle.GetLineStyle();
    StrokeFrame frame{current,
                      GetLineWeightDevice(lineStyle),
                      GetDeviceExpansionTolerance(),
                      GetFlatteningTolerance(),
                      GetRoundMidPixel(),
                      rule.winding};
    if (style.PaintsWithBrush()) {
        DrawBrushStroke(path, frame, composition, lineFill, transparency, lineStyle, rule);
        return;
    }
    Hairline hairline{1.0, composition.opacity};
    if (IsAntialiased(rule)) // otherwise every pixel with area is drawn, however thin the line
        hairline = KeepVisualWeight(
            GetLargestWidth(frame.weight, style.GetResIndependent(), current), composition.opacity);
    frame.penScale = hairline.penScale;
    frame.capLength = 1.0 / hairline.penScale;
    m_outline.Clear();
    if (m_strokeHelper.ProducePolygons(path, lineStyle, frame, m_outline))
        DrawPolygons(m_outline, LineStyleStrokeHelper::GetShapeTransform(lineStyle, frame),
                     {hairline.opacity, composition.mode, composition.options}, lineFill,
                     transparency,
                     {WindingOrderMode::NonZero, rule.antialias, rule.antialiasUnderClip});
}

void PixelRenderTarget::DrawBitmap(const RectT<double>& dest,
                                   Counted<const Raster::DynamicBitmap> bitmap, float opacity,
                                   FillBlendMode::BlendMode mode, const BlendOptions& options,
                                   bool antialiasUnderClip)
{
    if (!CanDraw(opacity) || !bitmap)
        return;
    m_polygons.Clear();
    m_polygons.BeginPolygon();
    m_polygons.AddPoint({dest.left, dest.top});
    m_polygons.AddPoint({dest.right, dest.top});
    m_polygons.AddPoint({dest.right, dest.bottom});
    m_polygons.AddPoint({dest.left, dest.bottom});
    // Only this call reads the fill: looking for an equal one to share would cost more.
    const FillBitmap fill(bitmap, Raster::ExtendType::Clamp, GetUpResamplerType());
    const Transform current = GetCurrentTransform();
    DrawPainted(m_polygons, current, {opacity, mode, options},
                [&](const RectT<int>&) {
                    return AddFill(
                        fill,
                        AffineTransform::Concatenate(AffineTransform::FromRect(dest), current),
                        PopulatorRole::Colour);
                },
                {}, {WindingOrderMode::EvenOdd, true, antialiasUnderClip});
}

void PixelRenderTarget::DrawBuffer(const RectT<double>& dest,
                                   Counted<const Raster::DynamicBuffer> buffer, float opacity,
                                   FillBlendMode::BlendMode mode, const BlendOptions& options,
                                   bool antialiasUnderClip)
{
    if (!CanDraw(opacity) || !buffer)
        return;
    const FillDescriptorConst fill(
        FillBuffer::Create(buffer, Raster::ExtendType::Clamp, GetUpResamplerType()),
        AffineTransform::FromRect(dest));
    const PolyPolygon polygon(dest);
    DrawPolygons(polygon, GetCurrentTransform(), {opacity, mode, options}, fill, {},
                 {WindingOrderMode::EvenOdd, true, antialiasUnderClip});
}

} // namespace Renderer
