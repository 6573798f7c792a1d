#include <renderer/core/RenderTarget.h>

#include <atomic>
#include <cmath>

#include <renderer/core/MakeRoom.h>

namespace Renderer {

using Raster::AffineTransform;

RenderTarget::RenderTarget() : m_transformStack(1), m_scalarStack(1) {}

RenderTarget::~RenderTarget() = default;

void RenderTarget::SetAbort(bool abort)
{
    std::atomic_ref<bool>(*m_abort).store(abort, std::memory_order_relaxed);
}

bool RenderTarget::IsAborting() const
{
    return std::atomic_ref<bool>(*m_abort).load(std::memory_order_relaxed);
}

double RenderTarget::GetLogicalExpansionTolerance() const
{
    const double scale = AffineTransform::GetScale(GetCurrentTransform());
    return m_deviceExpansionTolerance / (std::abs(scale) <= 1e-128 ? 1.0 : scale);
}

double RenderTarget::GetLineWeightDevice(const LineStyleDescriptorConst& lineStyle) const
{
    return lineStyle.GetEffectiveWeight(GetCurrentTransform(), GetScalarTransform(), m_logToDev);
}

// ---- transforms ----

void RenderTarget::SetLogToDevTransform(AffineTransform::Params transform)
{
    m_logToDev = transform;
    m_worldToDev = AffineTransform::Concatenate(m_world, m_logToDev);
}

void RenderTarget::SetWorldTransform(AffineTransform::Params transform)
{
    m_world = transform;
    m_worldToDev = AffineTransform::Concatenate(m_world, m_logToDev);
}

void RenderTarget::PushTransform(AffineTransform::Params transform, AffineTransform::Params scalar)
{
    MakeRoomForOne(m_scalarStack);
    m_transformStack.push_back(m_world);
    SetWorldTransform(AffineTransform::Concatenate(transform, m_world));
    m_scalarStack.push_back(AffineTransform::Concatenate(scalar, m_scalarStack.back()));
}

void RenderTarget::PushTransform(AffineTransform::Params transform, TransformScalarMode mode)
{
    MakeRoomForOne(m_scalarStack);
    m_transformStack.push_back(m_world);
    SetWorldTransform(AffineTransform::Concatenate(transform, m_world));
    switch (mode) {
    case TransformScalarMode::Concatenate:
        m_scalarStack.push_back(AffineTransform::Concatenate(transform, m_scalarStack.back()));
        break;
    case TransformScalarMode::Inherit:
        m_scalarStack.push_back(AffineTransform::Params(m_scalarStack.back()));
        break;
    case TransformScalarMode::Reset:
        m_scalarStack.push_back({});
        break;
    }
}

void RenderTarget::PopTransform()
{
    SetWorldTransform(m_transformStack.back());
    // The entries that the stacks are created with stay, so that a pop too many does no harm.
    if (m_transformStack.size() > 1)
        m_transformStack.pop_back();
    if (m_scalarStack.size() > 1)
        m_scalarStack.pop_back();
}

void RenderTarget::SetRasterizationScaleFactor(double factor)
{
    m_rasterizationScaleFactor = factor;
    m_roundMidPixel = std::fmod(std::abs(std::round(factor)), 2.0) == 1.0;
}

// ---- clip queries ----

Kernel::RectT<double> RenderTarget::GetLogicalClip() const
{
    if (m_deviceClip.IsUnset())
        return Kernel::RectT<double>::MakeUnset();
    const Kernel::RectT<double> device{double(m_deviceClip.left), double(m_deviceClip.top),
                                       double(m_deviceClip.right), double(m_deviceClip.bottom)};
    AffineTransform::Params inverse;
    if (!AffineTransform::Invert(GetCurrentTransform(), inverse))
        return {};
    return AffineTransform::MapRect(inverse, device);
}

bool RenderTarget::IsRectInClip(const Kernel::RectT<double>& rect, bool wholly) const
{
    const Kernel::RectT<double> clip = GetLogicalClip();
    if (clip.IsUnset())
        return true;
    if (wholly)
        return clip.Contains(rect);
    return rect.left <= clip.right && rect.right >= clip.left && rect.top <= clip.bottom &&
           rect.bottom >= clip.top;
}

// ---- drawing with base behaviour ----

namespace {

Kernel::Counted<Geometry::PolyCurveDbl> MapCurve(const Geometry::PolyCurveDbl& curve,
                                                 const AffineTransform::Params& transform)
{
    Kernel::Counted<Geometry::PolyCurveDbl> mapped = curve.Clone();
    mapped->Transform([&](Kernel::PointT<double> point) { return transform.Map(point); });
    return mapped;
}

} // namespace

void RenderTarget::DrawPolyPolyCurve(Kernel::Counted<const ConstPolyPolyCurve> curves,
                                     float opacity, FillBlendMode::BlendMode mode,
                                     const BlendOptions& options, const FillDescriptorConst& fill,
                                     const FillDescriptorConst& transparency,
                                     const FillDescriptorConst& lineFill,
                                     const LineStyleDescriptorConst& lineStyle,
                                     Geometry::WindingOrderMode winding, bool antialias,
                                     bool antialiasUnderClip)
{
    if (!curves)
        return;
    for (const auto& entry : curves->GetEntries()) {
        if (IsAborting())
            return;
        if (!entry.curve || entry.curve->IsEmpty())
            continue;
        // The transform places the path alone: paint and pen are those of the whole set.
        Kernel::Counted<const Geometry::PolyCurveDbl> curve = entry.curve;
        if (!AffineTransform::IsIdentity(entry.transform, 0.0))
            curve = MapCurve(*entry.curve, entry.transform);
        DrawPolyCurve(std::move(curve), opacity, mode, options, fill, transparency, lineFill,
                      lineStyle, winding, antialias, antialiasUnderClip);
    }
}

namespace {

/// Calls \p function(glyph, map from units of the em to logical units) for every glyph that has an
/// outline, where it stands: at its position, or behind the one before it.
template<class Function>
void ForEachGlyph(Kernel::PointT<double> origin,
                  const std::vector<Kernel::Counted<const Geometry::GlyphMetrics>>& glyphs,
                  double size, const Geometry::GlyphPosition* positions, const Function& function)
{
    Kernel::PointT<double> pen = origin;
    for (std::size_t i = 0; i < glyphs.size(); ++i) {
        if (!glyphs[i])
            continue;
        Geometry::GlyphPosition place{pen.x - origin.x, pen.y - origin.y};
        if (positions)
            place = positions[i];
        pen.x += glyphs[i]->GetAdvance() * size;
        if (!glyphs[i]->GetBounds().IsValid())
            continue;
        const auto turned = AffineTransform::Concatenate(AffineTransform::Scaling(size, size),
                                                         AffineTransform::Rotation(place.rotation));
        function(*glyphs[i],
                 AffineTransform::Concatenate(
                     turned, AffineTransform::Translation(origin.x + place.x, origin.y + place.y)));
    }
}

} // namespace

void RenderTarget::DrawGlyphMetrics(
    Kernel::PointT<double> origin,
    const std::vector<Kernel::Counted<const Geometry::GlyphMetrics>>& glyphs, const Kernel::Font&,
    double size, const Geometry::GlyphPosition* positions, float opacity,
    FillBlendMode::BlendMode mode, const BlendOptions& options, const FillDescriptorConst& fill,
    const FillDescriptorConst& transparency, const FillDescriptorConst& lineFill,
    const LineStyleDescriptorConst& lineStyle, bool antialias)
{
    const bool stroked = lineStyle.IsLineStyleVisible();
    const auto draw = [&](const Geometry::GlyphMetrics& glyph,
                          const AffineTransform::Params& transform) {
        Kernel::RectT<double> bounds =
            AffineTransform::MapRect(transform, glyph.GetBounds().GetRect());
        if (stroked)
            bounds = lineStyle.InflateBaseRect(bounds, GetCurrentTransform(), GetScalarTransform(),
                                               m_logToDev);
        if (!IsAborting() && IsRectInClip(bounds, false))
            DrawPolyCurve(MapCurve(*glyph.GetOutline(), transform), opacity, mode, options, fill,
                          transparency, lineFill, lineStyle, Geometry::WindingOrderMode::NonZero,
                          antialias, true);
    };
    ForEachGlyph(origin, glyphs, size, positions, draw);
}

Kernel::RectT<double> RenderTarget::MeasureGlyphMetrics(
    Kernel::PointT<double> origin,
    const std::vector<Kernel::Counted<const Geometry::GlyphMetrics>>& glyphs, double size,
    const Geometry::GlyphPosition* positions)
{
    Geometry::BoundingBoxT<double> box;
    ForEachGlyph(origin, glyphs, size, positions,
                 [&](const auto& glyph, const AffineTransform::Params& transform) {
                     box.Add(MapCurve(*glyph.GetOutline(), transform)->GetBoundingBox());
                 });
    return box.IsValid() ? box.GetRect() : Kernel::RectT<double>{};
}

void RenderTarget::DrawBitmap(const Kernel::RectT<double>& dest,
                              Kernel::Counted<const Raster::DynamicBitmap> bitmap, float opacity,
                              FillBlendMode::BlendMode mode, const BlendOptions& options,
                              bool antialiasUnderClip)
{
    if (!bitmap)
        return;
    const FillDescriptorConst fill(
        FillDescriptorConst::CreateBitmap(bitmap, Raster::ExtendType::Clamp, m_upResampler),
        AffineTransform::FromRect(dest));
    DrawPolyCurve(Kernel::MakeCounted<Geometry::PolyCurveDbl>(dest), opacity, mode, options, fill,
                  {}, {}, {}, Geometry::WindingOrderMode::EvenOdd, true, antialiasUnderClip);
}

void RenderTarget::DrawBuffer(const Kernel::RectT<double>&,
                              Kernel::Counted<const Raster::DynamicBuffer>, float,
                              FillBlendMode::BlendMode, const BlendOptions&, bool)
{}

void RenderTarget::Blend(float opacity, FillBlendMode::BlendMode mode, const BlendOptions& options,
                         const FillDescriptorConst& fill, const FillDescriptorConst& transparency)
{
    if (IsAborting())
        return;
    DrawPolyPolygon(Kernel::MakeCounted<PolyPolygon>(GetLogicalClip()), opacity, mode, options,
                    fill, transparency, Geometry::WindingOrderMode::EvenOdd, true, false);
}

// ---- operations that the base leaves to specialised targets ----

void RenderTarget::PushClippingMask(const Kernel::RectT<double>&,
                                    Kernel::Counted<const Raster::DynamicBuffer>)
{}

void RenderTarget::PopClippingMask() {}

Kernel::Counted<RenderTarget> RenderTarget::PushSubRender(const Kernel::RectT<double>&,
                                                          Raster::Format,
                                                          const Raster::ICCManager::ICCProfileSet&)
{
    return {};
}

void RenderTarget::PopSubRender(Kernel::Consolidated<Colour>) {}

void RenderTarget::PushLogicalGroup(LogicalGroup) {}

void RenderTarget::PopLogicalGroup() {}

void RenderTarget::PushExportOptions(Kernel::NonCounted<const FileExportOptions>) {}

void RenderTarget::PopExportOptions() {}

void RenderTarget::PushRenderable(Kernel::NonCounted<const Renderable>) {}

void RenderTarget::PopRenderable() {}

void RenderTarget::Matte(Kernel::Consolidated<Colour>) {}

bool RenderTarget::IsAllowOtherFormatBitmaps() const
{
    return false;
}

void RenderTarget::SetIsSuppressAsserts(bool) {}

// ---- stored state ----

void RenderTarget::SetColourFormatAndProfiles(Raster::Format format,
                                              Raster::ICCManager::ICCProfileSet profiles)
{
    m_colourFormat = format;
    m_profiles = std::move(profiles);
}

Kernel::Counted<const Raster::ICCProfile> RenderTarget::GetProfile() const
{
    return m_profiles.GetProfile(m_colourFormat);
}

void RenderTarget::SetUpResamplerType(Raster::ResamplerType type)
{
    m_upResampler = type;
}

void RenderTarget::SetDownResamplerType(Raster::ResamplerType type)
{
    m_downResampler = type;
}

void RenderTarget::SetIsAllowDegradedBitmaps(bool allow)
{
    m_allowDegradedBitmaps = allow;
}

void RenderTarget::SetRenderingFilter(Kernel::Counted<RenderingFilter> filter)
{
    m_renderingFilter = std::move(filter);
}

Kernel::Counted<const RenderingFilter> RenderTarget::GetRenderingFilter() const
{
    return m_renderingFilter;
}

bool RenderTarget::ShouldRender(Kernel::NonCounted<const Renderable> renderable) const
{
    return !m_renderingFilter || m_renderingFilter->ShouldRender(renderable);
}

bool RenderTarget::ShouldRenderContainer(Kernel::NonCounted<const Renderable> renderable) const
{
    return !m_renderingFilter || m_renderingFilter->ShouldRenderContainer(renderable);
}

} // namespace Renderer
