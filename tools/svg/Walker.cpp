#include "Walker.h"

#include <memory>

#include <kernel/FormatException.h>

#include "Bounds.h"
#include "ElementTransform.h"
#include "Shapes.h"

namespace Svg {

using Raster::AffineTransform;

Walker::Walker(Context& context, Renderer::RenderTarget& target, Kernel::Progress* progress)
    : m_context(context),
      m_target(target),
      m_progress(progress),
      m_clipPaths(context, target),
      m_masks(context, target, MakeContentDrawer()),
      m_painter(context, target, MakeContentDrawer())
{}

/// What is shown by reference has a walk of its own, perhaps on a target of its own.
ContentDrawer Walker::MakeContentDrawer()
{
    return
        [this](Renderer::RenderTarget& target, const Element& owner, const LengthContext& lengths) {
            Walker(m_context, target, m_progress).DrawReferenced(owner, lengths);
        };
}

void Walker::DrawReferenced(const Element& owner, const LengthContext& lengths)
{
    m_isReferenced = true;
    m_lengths = lengths;
    // Patterns and masks are no part of the marker that they are used in, and tiles are shared.
    auto*& paints = m_context.GetContextPaints();
    const ValueScope scope(paints, owner.tag == Tag::Marker ? paints : nullptr);
    DrawChildren(owner, m_context.GetStyles().ResolveInPlace(owner));
}

void Walker::DrawDocument(double width, double height)
{
    m_rootRect = {0.0, 0.0, width, height};
    const auto picture = Offscreen::FindPixels(m_target, m_rootRect);
    m_context.StartPicture(double(picture.Width()) * picture.Height());
    DrawRoot();
}

void Walker::DrawWithin(double width, double height)
{
    m_rootRect = {0.0, 0.0, width, height};
    m_isReferenced = true;
    DrawRoot();
}

void Walker::DrawRoot()
{
    m_lengths.viewportWidth = m_rootRect.Width();
    m_lengths.viewportHeight = m_rootRect.Height();
    DrawElement(m_context.GetDocument().GetRoot(), Style());
}

LengthContext Walker::MakeLengths(const Style& style) const
{
    return {m_lengths.viewportWidth, m_lengths.viewportHeight, style.fontSize};
}

bool Walker::IsStopped() const
{
    return m_target.IsAborting() || (m_progress && m_progress->IsCancelled());
}

void Walker::DrawElement(const Element& element, const Style& parent, const Element* use)
{
    const bool shown = IsDrawable(element.tag) || (use && element.tag == Tag::Symbol);
    if (!shown || !PassesConditions(element) || IsStopped()) {
        if (element.tag == Tag::ForeignObject)
            m_context.GetNotices().Add("foreign objects are not drawn");
        return;
    }
    if (m_isReferenced || !m_used.empty())
        m_context.CountUsedElement();
    const CountedDepth depth(m_context.GetDepth(), MaxDepth);
    // On the heap: elements nest deeper than stacks are made for.
    const auto style =
        std::make_unique<const Style>(m_context.GetStyles().Resolve(element, parent));
    if (!style->displayed || !(style->opacity > 0.0))
        return;
    NoteUnsupported(*style);
    DrawPlaced(element, *style, use);
}

void Walker::DrawPlaced(const Element& element, const Style& style, const Element* use)
{
    const LengthContext lengths = MakeLengths(style);
    const Transform transform = MakeElementTransform(
        style, lengths, [&] { return MeasureBounds(m_context, element, style, lengths); });
    if (transform == Transform{})
        return DrawClipped(element, style, use);
    Transform inverse;
    if (!AffineTransform::Invert(transform, inverse))
        return;
    const TransformScope scope(m_target, transform);
    DrawClipped(element, style, use);
}

void Walker::DrawClipped(const Element& element, const Style& style, const Element* use)
{
    if (style.clipPath.empty())
        return DrawContent(element, style, use);
    const LengthContext lengths = MakeLengths(style);
    const ClipPaths::Result clip = m_clipPaths.Push(
        style.clipPath, lengths, [&] { return MeasureBounds(m_context, element, style, lengths); });
    const ClipScope scope(m_target, clip.pushed);
    if (!clip.hidesAll)
        DrawContent(element, style, use);
}

namespace {

/// Counts a mask for as long as it is in force.
class MaskCount
{
public:
    MaskCount(int& count, bool inForce) : m_count(count), m_inForce(inForce ? 1 : 0)
    {
        m_count += m_inForce;
    }
    ~MaskCount() { m_count -= m_inForce; }
    MaskCount(const MaskCount&) = delete;
    MaskCount& operator=(const MaskCount&) = delete;

private:
    int& m_count;
    int m_inForce;
};

} // namespace

/// How an element is laid over what is below. \return false when nothing of it can be seen.
bool Walker::FindGrouping(const Element& element, const Style& style, Grouping& grouping,
                          MaskPixels& mask)
{
    grouping.opacity = style.opacity;
    grouping.mode = style.blendMode;
    // Clips make groups that keep blend modes to themselves, as opacity, modes and masks do
    // (Compositing and Blending Level 1, 3.3).
    grouping.isolates =
        m_context.GetDocument().NamesBlendModes() && (style.isolated || !style.clipPath.empty());
    if (style.mask.empty())
        return true;
    if (m_context.GetMaskDepth() >= Context::MaxMasks) {
        m_context.GetNotices().Add("masks are nested too deep; what is within is left out");
        return false;
    }
    const LengthContext lengths = MakeLengths(style);
    mask = m_masks.Make(style.mask, lengths,
                        [&] { return MeasureBounds(m_context, element, style, lengths); });
    if (mask.pixels)
        grouping.isolates = true; // it acts on the whole
    return !mask.hidesAll;
}

void Walker::DrawContent(const Element& element, const Style& style, const Element* use)
{
    Grouping grouping;
    MaskPixels mask;
    if (!FindGrouping(element, style, grouping, mask))
        return;
    const MaskCount masks(m_context.GetMaskDepth(), mask.pixels != nullptr);
    const MaskScope maskScope(m_target, mask);
    const bool isImage = element.tag == Tag::Image;
    Composition composition;
    if (isImage || (IsShape(element.tag) && !Markers::HasMarkers(element, style))) {
        // A single object needs no group.
        composition = {grouping.opacity, grouping.mode};
        grouping = {};
    }
    const GroupScope group(m_target, grouping);
    if (isImage)
        m_painter.DrawImage(element, style, MakeLengths(style), composition);
    else if (IsShape(element.tag))
        m_painter.DrawShape(element, style, MakeLengths(style), composition);
    else if (element.tag == Tag::Text)
        m_painter.DrawText(element, style, MakeLengths(style));
    else
        DrawContainer(element, style, use);
}

void Walker::DrawContainer(const Element& element, const Style& style, const Element* use)
{
    if (element.tag == Tag::Use)
        return DrawUse(element, style);
    if (element.tag == Tag::Switch)
        return DrawSwitch(element, style);
    if (element.tag != Tag::Svg && element.tag != Tag::Symbol)
        return DrawChildren(element, style);
    if (!element.parent)
        return DrawTopLevel(element, style);
    if (const auto viewport =
            Viewport::Make(element, PlaceNested(element, use, MakeLengths(style)), style))
        DrawViewport(element, style, *viewport);
}

void Walker::DrawChildren(const Element& element, const Style& style)
{
    for (const Element* child = element.firstChild; child; child = child->nextSibling)
        DrawElement(*child, style);
}

/// Draws the children of the root, whose number tells how far the drawing has come.
void Walker::DrawTopLevel(const Element& root, const Style& style)
{
    const auto viewport = Viewport::Make(root, m_rootRect, style);
    if (!viewport)
        return;
    const TransformScope transform(m_target, viewport->transform);
    m_lengths.viewportWidth = viewport->width;
    m_lengths.viewportHeight = viewport->height;
    int count = 0;
    for (const Element* child = root.firstChild; child; child = child->nextSibling)
        ++count;
    for (const Element* child = root.firstChild; child; child = child->nextSibling) {
        DrawElement(*child, style);
        if (m_progress)
            m_progress->AddProgress(1.0 / count);
    }
}

void Walker::DrawSwitch(const Element& element, const Style& style)
{
    if (const Element* child = ChooseChild(element))
        DrawElement(*child, style);
}

void Walker::DrawUse(const Element& element, const Style& style)
{
    const Element* shown = m_context.FindShown(element, m_used);
    if (!shown)
        return;
    const ActiveReference active(m_used, element);
    const LengthContext lengths = MakeLengths(style);
    const double x = ResolveAttribute(element, "x", lengths, LengthAxis::Horizontal);
    const double y = ResolveAttribute(element, "y", lengths, LengthAxis::Vertical);
    const TransformScope scope(m_target, AffineTransform::Translation(x, y));
    DrawElement(*shown, style, &element);
}

void Walker::DrawViewport(const Element& element, const Style& style, const Viewport& viewport)
{
    if (viewport.clips)
        m_target.PushClipRectanglePath(viewport.rect);
    const ClipScope clip(m_target, viewport.clips ? 1 : 0);
    const TransformScope transform(m_target, viewport.transform);
    const LengthContext outer = m_lengths;
    m_lengths = {viewport.width, viewport.height, style.fontSize};
    DrawChildren(element, style);
    m_lengths = outer;
}

void Walker::NoteUnsupported(const Style& style)
{
    if (style.hasFilter)
        m_context.GetNotices().Add("filters are not applied yet");
}

} // namespace Svg
