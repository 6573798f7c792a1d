#include "Painter.h"

#include <algorithm>
#include <cmath>

#include "Scopes.h"
#include "Shapes.h"
#include "ViewBox.h"

namespace Svg {

using Raster::AffineTransform;
using Renderer::BlendOptions;
using Renderer::FillDescriptorConst;
using Renderer::LineStyleDescriptorConst;

namespace {

/// How far a stroke may reach beyond its path, in user units.
double FindReach(const Style& style, const LengthContext& lengths)
{
    const double half = style.strokeWidth.Resolve(lengths, LengthAxis::Diagonal) / 2.0;
    const double corner = style.lineJoin == LineJoin::Mitre ? style.mitreLimit : 1.0;
    return half * std::max(corner, std::sqrt(2.0));
}

} // namespace

FillDescriptorConst Painter::MakePaint(const Paint& paint, double opacity, const Style& style,
                                       const Geometry::PolyCurveDbl& shape, double reach,
                                       const LengthContext& lengths)
{
    const PaintServers& servers = m_context.GetPaintServers();
    const Element* server = m_context.GetDocument().FindByReference(paint.server);
    if (!server || server->tag != Tag::Pattern)
        return servers.MakeFill(paint, opacity, style.colour, shape, lengths);
    if (const auto fill = m_patterns.MakeFill(*server, opacity, shape, reach, lengths))
        return *fill;
    return servers.MakeFallback(paint, opacity, style.colour);
}

Painter::Outline Painter::MakeOutline(const Kernel::Counted<const Geometry::PolyCurveDbl>& shape,
                                      const Style& style, const LengthContext& lengths)
{
    Outline outline;
    outline.shape = shape;
    outline.fill = MakePaint(style.fill, style.fillOpacity, style, *shape, 0.0, lengths);
    outline.lineFill = MakePaint(style.stroke, style.strokeOpacity, style, *shape,
                                 FindReach(style, lengths), lengths);
    if (!outline.lineFill.IsFillNone())
        outline.line = MakeLineStyle(style, lengths, *shape, m_context.GetNotices());
    return outline;
}

void Painter::DrawOutline(const Outline& outline, const Style& style,
                          const Composition& composition)
{
    if (outline.fill.IsFillNone() && !outline.line.IsLineStyleVisible())
        return;
    m_target.DrawPolyCurve(outline.shape, static_cast<float>(composition.opacity), composition.mode,
                           BlendOptions::Identity(), outline.fill, {}, outline.lineFill,
                           outline.line,
                           style.fillEvenOdd ? Geometry::WindingOrderMode::EvenOdd
                                             : Geometry::WindingOrderMode::NonZero,
                           true, true);
}

/// Draws the fill, the stroke and the markers in the order of the style.
void Painter::DrawLayers(const Element& element, const Outline& outline, const Style& style,
                         const LengthContext& lengths)
{
    const auto drawMarkers = [&] { m_markers.Draw(element, style, *outline.shape, lengths); };
    if (style.paintOrder[1] != PaintLayer::Markers) {
        const bool markersFirst = style.paintOrder[0] == PaintLayer::Markers;
        if (markersFirst)
            drawMarkers();
        DrawOutline(outline, style, {});
        if (!markersFirst)
            drawMarkers();
        return;
    }
    Outline fill = outline;
    fill.line = LineStyleDescriptorConst::CreateNone();
    Outline stroke = outline;
    stroke.fill = {};
    const bool fillFirst = style.paintOrder[0] == PaintLayer::Fill;
    DrawOutline(fillFirst ? fill : stroke, style, {});
    drawMarkers();
    DrawOutline(fillFirst ? stroke : fill, style, {});
}

void Painter::DrawShape(const Element& element, const Style& style, const LengthContext& lengths,
                        const Composition& composition)
{
    if (!style.visible)
        return;
    const auto shape = MakeShape(element, lengths, m_context.GetNotices());
    if (!shape)
        return;
    const Outline outline = MakeOutline(shape, style, lengths);
    if (Markers::HasMarkers(element, style))
        DrawLayers(element, outline, style, lengths);
    else
        DrawOutline(outline, style, composition);
}

void Painter::DrawImage(const Element& element, const Style& style, const LengthContext& lengths,
                        const Composition& composition)
{
    const auto bitmap = m_context.GetImages().Find(element);
    if (!style.visible || !bitmap)
        return;
    const double x = ResolveAttribute(element, "x", lengths, LengthAxis::Horizontal);
    const double y = ResolveAttribute(element, "y", lengths, LengthAxis::Vertical);
    const double width =
        ResolveAttribute(element, "width", lengths, LengthAxis::Horizontal, bitmap->GetWidth());
    const double height =
        ResolveAttribute(element, "height", lengths, LengthAxis::Vertical, bitmap->GetHeight());
    const Kernel::RectT<double> rect{x, y, x + width, y + height};
    if (rect.IsEmpty())
        return;
    const Kernel::RectT<double> pixels{0.0, 0.0, static_cast<double>(bitmap->GetWidth()),
                                       static_cast<double>(bitmap->GetHeight())};
    const AspectRatio ratio = AspectRatio::Parse(element.Get("preserveAspectRatio"));
    const bool cut = ratio.uniform && ratio.slice;
    if (cut)
        m_target.PushClipRectanglePath(rect);
    const ClipScope clip(m_target, cut ? 1 : 0);
    const ResamplerScope resampler(m_target, style.pixelatedImages);
    m_target.DrawBitmap(AffineTransform::MapRect(FitBox(pixels, rect, ratio), pixels), bitmap,
                        static_cast<float>(composition.opacity), composition.mode,
                        BlendOptions::Identity(), true);
}

} // namespace Svg
