#include "RecordingTarget.h"

#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillGradient.h>

namespace Benchmarks {

using Kernel::Counted;
using Renderer::FillGradient;

namespace {

/// Polygons as a path; \p close closes all of them.
Path MakePath(const Renderer::PolyPolygon& polygons, bool close)
{
    auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i) {
        const auto polygon = polygons.GetPolygon(i);
        if (polygon.points.empty())
            continue;
        path->MoveTo(polygon.points.front());
        for (const auto& point : polygon.points.subspan(1))
            path->LineTo(point);
        if (close || polygon.closed)
            path->Close();
    }
    return path;
}

bool IsExpressible(const Renderer::FillBitmap& fill)
{
    using enum Raster::ExtendType;
    return fill.GetBitmap() && fill.GetBitmap()->GetFormat() == Raster::Format::RGBA8 &&
           !fill.GetIgnoreAlpha() &&
           (fill.GetExtendType() == Clamp || fill.GetExtendType() == Wrap);
}

bool IsExpressible(const Renderer::FillDescriptorConst& descriptor)
{
    if (descriptor.IsFillNone())
        return true;
    const Renderer::Fill& fill = *descriptor.GetFill();
    if (fill.HasNoise())
        return false;
    if (fill.GetKind() == Renderer::Fill::Kind::Solid)
        return true;
    if (fill.GetKind() == Renderer::Fill::Kind::Bitmap)
        return IsExpressible(static_cast<const Renderer::FillBitmap&>(fill));
    if (fill.GetKind() != Renderer::Fill::Kind::Gradient)
        return false;
    const auto& gradient = static_cast<const FillGradient&>(fill);
    const bool followsFrame =
        gradient.IsTransformCorrected() || !gradient.IsSubjectToTransformCorrection();
    Transform inverse;
    return gradient.GetType() != FillGradient::Conical && followsFrame &&
           !gradient.HasNonLinearMapping() &&
           Raster::AffineTransform::Invert(descriptor.GetTransform(), inverse);
}

} // namespace

bool RecordingTarget::IsPlain(Mode mode, const Options& options,
                              const FillDescriptor& transparency) const
{
    return mode == Renderer::FillBlendMode::Normal && options.IsIdentity() &&
           transparency.IsFillNone();
}

void RecordingTarget::DrawPolyCurve(Path curve, float opacity, Mode mode, const Options& options,
                                    const FillDescriptor& fill, const FillDescriptor& transparency,
                                    const FillDescriptor& lineFill, const LineStyle& lineStyle,
                                    Winding winding, bool antialias, bool antialiasUnderClip)
{
    const bool plainLine = !lineStyle.IsLineStyleVisible(lineFill) ||
                           (lineStyle.GetScale() && !lineStyle.GetPressure() &&
                            !lineStyle.GetLineStyle()->GetResIndependent() &&
                            lineStyle.GetStrokeAlignment() == LineStyle::Centre);
    if (!curve || !antialias || !antialiasUnderClip || !plainLine ||
        !IsPlain(mode, options, transparency) || !IsExpressible(fill) || !IsExpressible(lineFill))
        return LeaveOut();
    m_scene.commands.emplace_back(
        Benchmarks::DrawPath{curve, opacity, fill, lineFill, lineStyle, winding});
}

void RecordingTarget::DrawPolyPolygon(Counted<const Renderer::PolyPolygon> polygons, float opacity,
                                      Mode mode, const Options& options, const FillDescriptor& fill,
                                      const FillDescriptor& transparency, Winding winding,
                                      bool antialias, bool antialiasUnderClip)
{
    if (polygons)
        DrawPolyCurve(MakePath(*polygons, true), opacity, mode, options, fill, transparency, {}, {},
                      winding, antialias, antialiasUnderClip);
}

void RecordingTarget::DrawPolyPolyline(Counted<const Renderer::PolyPolygon> polylines,
                                       float opacity, Mode mode, const Options& options,
                                       const FillDescriptor& fill,
                                       const FillDescriptor& transparency,
                                       const LineStyle& lineStyle)
{
    if (polylines)
        DrawPolyCurve(MakePath(*polylines, false), opacity, mode, options, {}, transparency, fill,
                      lineStyle, Winding::NonZero, true, true);
}

void RecordingTarget::DrawBitmap(const Kernel::RectT<double>& dest,
                                 Counted<const Raster::DynamicBitmap> bitmap, float opacity,
                                 Mode mode, const Options& options, bool antialiasUnderClip)
{
    if (!bitmap || bitmap->GetFormat() != Raster::Format::RGBA8 || !antialiasUnderClip ||
        !IsPlain(mode, options, {}))
        return LeaveOut();
    m_scene.commands.emplace_back(
        Benchmarks::DrawBitmap{dest, bitmap, opacity, GetUpResamplerType()});
}

void RecordingTarget::DrawBuffer(const Kernel::RectT<double>&, Counted<const Raster::DynamicBuffer>,
                                 float, Mode, const Options&, bool)
{
    LeaveOut();
}

void RecordingTarget::Interpolate(float, Mode, const Options&, const FillDescriptor&,
                                  const FillDescriptor&)
{
    LeaveOut();
}

void RecordingTarget::Blend(float, Mode, const Options&, const FillDescriptor&,
                            const FillDescriptor&)
{
    LeaveOut();
}

bool RecordingTarget::PushFilterEffects(Effects, Kernel::RectT<double>)
{
    LeaveOut();
    return false;
}

// ---- groups ----

void RecordingTarget::PushComposite(CompositeInit init, Mode mode, const Options& options,
                                    float opacity)
{
    const bool clear = init == CompositeInit::Clear || init == CompositeInit::ClearOnTouch;
    m_groups.push_back(clear && IsPlain(mode, options, {}));
    if (m_groups.back())
        m_scene.commands.emplace_back(Benchmarks::PushGroup{opacity});
    else
        LeaveOut();
}

void RecordingTarget::PopGroup(bool expressible)
{
    if (m_groups.back())
        m_scene.commands.emplace_back(Benchmarks::PopGroup{});
    if (!expressible)
        LeaveOut();
    m_groups.pop_back();
}

void RecordingTarget::PopCompositeAsFill(const FillDescriptor& fill,
                                         const FillDescriptor& transparency)
{
    PopGroup(fill.IsFillNone() && transparency.IsFillNone());
}

void RecordingTarget::PopCompositeAsTransparency(const FillDescriptor&, const FillDescriptor&)
{
    PopGroup(false);
}

void RecordingTarget::PopCompositeAsFillAndInterpolate(const FillDescriptor&)
{
    PopGroup(false);
}

void RecordingTarget::PopCompositeAsTransparencyAndInterpolate(const FillDescriptor&)
{
    PopGroup(false);
}

// ---- clips ----

void RecordingTarget::AddClip(Path path, Winding winding)
{
    if (m_clipGroups != 0)
        return;
    m_clips.push_back(static_cast<bool>(path));
    if (path)
        m_scene.commands.emplace_back(Benchmarks::PushClip{path, winding});
    else
        LeaveOut();
}

void RecordingTarget::PushClipPath(Counted<const Renderer::PolyPolygon> polygons, Winding winding)
{
    AddClip(polygons ? MakePath(*polygons, true) : Path{}, winding);
}

void RecordingTarget::PushClipCurvesPath(Path curve, Winding winding)
{
    AddClip(curve, winding);
}

void RecordingTarget::PushClipPolyCurvesPath(Counted<const Renderer::ConstPolyPolyCurve>, Winding)
{
    AddClip({}, Winding::NonZero);
}

void RecordingTarget::PushLogicalDeviceClip(Kernel::RectT<double> rect)
{
    AddClip(Kernel::MakeCounted<Geometry::PolyCurveDbl>(rect), Winding::NonZero);
}

void RecordingTarget::PopClipPath()
{
    if (m_clipGroups != 0)
        return;
    if (m_clips.back())
        m_scene.commands.emplace_back(Benchmarks::PopClip{});
    m_clips.pop_back();
}

void RecordingTarget::PopClipPathGroup()
{
    if (--m_clipGroups == 0)
        AddClip({}, Winding::NonZero);
}

// ---- transforms ----

void RecordingTarget::PushTransform(Transform transform, Transform scalar)
{
    if (!(transform == scalar))
        LeaveOut();
    RenderTarget::PushTransform(transform, scalar);
    m_scene.commands.emplace_back(Benchmarks::PushTransform{transform});
}

void RecordingTarget::PushTransform(Transform transform, TransformScalarMode mode)
{
    if (mode != TransformScalarMode::Concatenate)
        LeaveOut();
    RenderTarget::PushTransform(transform, mode);
    m_scene.commands.emplace_back(Benchmarks::PushTransform{transform});
}

void RecordingTarget::PopTransform()
{
    RenderTarget::PopTransform();
    m_scene.commands.emplace_back(Benchmarks::PopTransform{});
}

} // namespace Benchmarks
