#include "Painter.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <kernel/FormatException.h>

#include "Drawing.h"
#include "Scopes.h"
#include "Shapes.h"
#include "TextPieces.h"
#include "ViewBox.h"

namespace Svg {

using Geometry::PolyCurveDbl;
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
    if (paint.context != Paint::Context::None)
        return MakeContextPaint(paint.context, opacity);
    const PaintServers& servers = m_context.GetPaintServers();
    const Element* server = m_context.GetDocument().FindByReference(paint.server);
    if (!server || server->tag != Tag::Pattern)
        return servers.MakeFill(paint, opacity, style.colour, shape, lengths);
    if (const auto fill = m_patterns.MakeFill(*server, opacity, shape, reach, lengths))
        return *fill;
    return servers.MakeFallback(paint, opacity, style.colour);
}

/// \param extent whose box paints refer to: the shape itself, or that of all of a text.
/// \param overhang how far the shape reaches beyond that.
/// \param pathLength how long the author says that the shape is; negative: nothing is said.
Painter::Outline Painter::MakeOutline(const Kernel::Counted<const Geometry::PolyCurveDbl>& shape,
                                      const Geometry::PolyCurveDbl& extent, double overhang,
                                      double pathLength, const Style& style,
                                      const LengthContext& lengths)
{
    Outline outline;
    outline.shape = shape;
    outline.fill = MakePaint(style.fill, style.fillOpacity, style, extent, overhang, lengths);
    outline.lineFill = MakePaint(style.stroke, style.strokeOpacity, style, extent,
                                 overhang + FindReach(style, lengths), lengths);
    if (!outline.lineFill.IsFillNone())
        outline.line = MakeLineStyle(style, lengths, *shape, pathLength, m_context.GetNotices());
    return outline;
}

/// The paint of the shape that is marked, brought from its coordinates to those in force.
FillDescriptorConst Painter::MakeContextPaint(Paint::Context context, double opacity) const
{
    const ContextPaints* paints = m_context.GetContextPaints();
    if (!paints)
        return {};
    FillDescriptorConst fill = context == Paint::Context::Fill ? paints->fill : paints->stroke;
    Transform inverse;
    if (fill.IsFillNone() || !AffineTransform::Invert(m_target.GetCurrentTransform(), inverse))
        return {};
    if (opacity < 1.0) {
        const auto copy = fill.GetFill()->Clone();
        copy->SetAlpha(copy->GetAlpha() * opacity);
        fill = {Renderer::Fill::Consolidate(copy), fill.GetTransform()};
    }
    const Transform shift = AffineTransform::Concatenate(paints->toDevice, inverse);
    return {fill, AffineTransform::Concatenate(fill.GetTransform(), shift)};
}

void Painter::DrawOutline(const Outline& outline, const Style& style,
                          const Composition& composition)
{
    if (outline.fill.IsFillNone() && !outline.line.IsLineStyleVisible())
        return;
    if (style.nonScalingStroke && outline.line.IsLineStyleVisible())
        DrawNonScaling(outline, style, composition);
    else
        DrawPath(outline, style, composition);
}

/// Draws the fill as it is, but the stroke with a pen of the outermost coordinates, where the path
/// and its paint are brought to.
void Painter::DrawNonScaling(const Outline& outline, const Style& style,
                             const Composition& composition)
{
    const Transform toOutermost = m_target.GetWorldTransform();
    Transform inverse;
    if (!AffineTransform::Invert(toOutermost, inverse))
        return;
    const auto reframe = [&](const FillDescriptorConst& fill) -> FillDescriptorConst {
        return {fill, AffineTransform::Concatenate(fill.GetTransform(), toOutermost)};
    };
    const GroupScope group(m_target, {.opacity = composition.opacity, .mode = composition.mode});
    Outline fill = outline, stroke = outline;
    fill.line = LineStyleDescriptorConst::CreateNone();
    stroke.fill = {};
    stroke.shape = MapPath(*outline.shape, toOutermost);
    stroke.lineFill = reframe(outline.lineFill);
    const auto drawStroke = [&] {
        const TransformScope scope(m_target, inverse);
        DrawPath(stroke, style, {});
    };
    if (outline.line.GetBehind())
        drawStroke();
    DrawPath(fill, style, {});
    if (!outline.line.GetBehind())
        drawStroke();
}

void Painter::DrawPath(const Outline& outline, const Style& style, const Composition& composition)
{
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
    const ContextPaints paints{outline.fill, outline.lineFill, m_target.GetCurrentTransform()};
    const auto drawMarkers = [&] {
        const ValueScope<const ContextPaints*> scope(m_context.GetContextPaints(), &paints);
        m_markers.Draw(element, style, *outline.shape, lengths);
    };
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
    const double pathLength = ParseNumber(element.Get("pathLength")).value_or(-1.0);
    const Outline outline = MakeOutline(shape, *shape, 0.0, pathLength, style, lengths);
    if (Markers::HasMarkers(element, style))
        DrawLayers(element, outline, style, lengths);
    else
        DrawOutline(outline, style, composition);
}

namespace {

/// How far one box reaches beyond another.
double FindOverhang(const Kernel::RectT<double>& box, const Kernel::RectT<double>& of)
{
    return std::max(
        {0.0, of.left - box.left, of.top - box.top, box.right - of.right, box.bottom - of.bottom});
}

} // namespace

void Painter::DrawText(const Element& element, const Style& style, const LengthContext& lengths)
{
    const TextPieces text = MakeTextPieces(m_context, element, style, lengths);
    const auto extent = text.box.IsValid() ? PolyCurveDbl(text.box.GetRect()) : PolyCurveDbl();
    for (const TextPiece& piece : text.pieces) {
        LengthContext own = lengths;
        own.fontSize = piece.style->fontSize;
        const auto box = piece.shape->GetBoundingBox();
        const double overhang =
            text.box.IsValid() ? FindOverhang(box.GetRect(), text.box.GetRect()) : 0.0;
        const Outline outline = MakeOutline(piece.shape, extent, overhang, -1.0, *piece.style, own);
        DrawOutline(outline, *piece.style, {.opacity = piece.opacity});
    }
}

void Painter::DrawImage(const Element& element, const Style& style, const LengthContext& lengths,
                        const Composition& composition)
{
    const Images::Image& image = m_context.GetImages().Find(element);
    if (!style.visible || image.IsEmpty())
        return;
    const Kernel::RectT<double> own = image.GetRect();
    const double x = ResolveAttribute(element, "x", lengths, LengthAxis::Horizontal);
    const double y = ResolveAttribute(element, "y", lengths, LengthAxis::Vertical);
    const double width =
        ResolveAttribute(element, "width", lengths, LengthAxis::Horizontal, own.Width());
    const double height =
        ResolveAttribute(element, "height", lengths, LengthAxis::Vertical, own.Height());
    const Kernel::RectT<double> rect{x, y, x + width, y + height};
    if (rect.IsEmpty())
        return;
    const AspectRatio ratio = AspectRatio::Parse(element.Get("preserveAspectRatio"));
    const Transform place = FitBox(own, rect, ratio);
    const bool cut = ratio.uniform && ratio.slice;
    if (cut)
        m_target.PushClipRectanglePath(rect);
    const ClipScope clip(m_target, cut ? 1 : 0);
    if (image.drawing)
        return DrawNested(*image.drawing, place, composition);
    const ResamplerScope resampler(m_target, style.pixelatedImages);
    m_target.DrawBitmap(AffineTransform::MapRect(place, own), image.bitmap,
                        static_cast<float>(composition.opacity), composition.mode,
                        BlendOptions::Identity(), true);
}

/// Draws an image that is a drawing, cut to its own extent.
void Painter::DrawNested(Drawing& drawing, const Transform& place, const Composition& composition)
{
    const TransformScope transform(m_target, place);
    m_target.PushClipRectanglePath({0.0, 0.0, drawing.GetWidth(), drawing.GetHeight()});
    const ClipScope clip(m_target, 1);
    const GroupScope group(m_target, {.opacity = composition.opacity,
                                      .mode = composition.mode,
                                      .isolates = drawing.NamesBlendModes()});
    try {
        drawing.DrawWithin(m_target, m_context);
    } catch (const Kernel::FormatException& error) {
        m_context.GetNotices().Add("an image cannot be drawn: " + std::string(error.what()));
    }
}

} // namespace Svg
