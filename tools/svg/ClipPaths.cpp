#include "ClipPaths.h"

#include <algorithm>

#include "Bounds.h"
#include "ElementTransform.h"
#include "Scanner.h"
#include "Shapes.h"
#include "TextPieces.h"

namespace Svg {

using Raster::AffineTransform;

void ClipPaths::Add(Result& result, const Result& more)
{
    result.pushed += more.pushed;
    result.hidesAll = result.hidesAll || more.hidesAll;
}

ClipPaths::Result ClipPaths::Push(std::string_view reference, const LengthContext& lengths,
                                  const Measure& measure)
{
    const Element* clipPath = m_context.GetDocument().FindByReference(reference);
    if (!clipPath || clipPath->tag != Tag::ClipPath)
        return {};
    if (std::ranges::find(m_active, clipPath) != m_active.end()) {
        m_context.GetNotices().Add("a clip path that clips itself is left out");
        return {};
    }
    const ActiveReference active(m_active, *clipPath);
    const Style& style = m_context.GetStyles().ResolveInPlace(*clipPath);
    Transform map = MakeElementTransform(style, lengths, measure);
    LengthContext units = lengths;
    if (Trim(clipPath->Get("clipPathUnits")) == "objectBoundingBox") {
        const auto box = measure();
        if (!box.IsValid() || box.GetRect().IsEmpty())
            return {0, true};
        map = AffineTransform::Concatenate(map, AffineTransform::FromRect(box.GetRect()));
        units.viewportWidth = units.viewportHeight = 1.0;
    }
    Result result;
    if (!style.clipPath.empty())
        Add(result, Push(style.clipPath, lengths, measure));
    if (!result.hidesAll)
        Add(result, PushMembers(CollectMembers(*clipPath, map, units), units));
    return result;
}

std::vector<ClipPaths::Member> ClipPaths::CollectMembers(const Element& clipPath,
                                                         const Transform& map,
                                                         const LengthContext& lengths)
{
    std::vector<Member> members;
    const Style& style = m_context.GetStyles().ResolveInPlace(clipPath);
    for (const Element* child = clipPath.firstChild; child; child = child->nextSibling)
        CollectMember(*child, style, map, lengths, {}, members);
    return members;
}

void ClipPaths::CollectMember(const Element& element, const Style& parent, const Transform& map,
                              const LengthContext& outer, Member member, std::vector<Member>& out)
{
    const Style style = m_context.GetStyles().Resolve(element, parent);
    if (!style.displayed || !PassesConditions(element))
        return;
    LengthContext lengths = outer;
    lengths.fontSize = style.fontSize;
    const auto measure = [&] { return MeasureBounds(m_context, element, style, lengths); };
    Transform transform =
        AffineTransform::Concatenate(MakeElementTransform(style, lengths, measure), map);
    if (!style.clipPath.empty())
        member.clips.push_back(style.clipPath);
    if (element.tag == Tag::Use) {
        const Element* target = m_context.GetDocument().FindByReference(element.GetReference());
        if (!target || (!IsShape(target->tag) && target->tag != Tag::Text))
            return; // SVG 1.1, 14.3.5: only shapes and text, directly
        const double x = ResolveAttribute(element, "x", lengths, LengthAxis::Horizontal);
        const double y = ResolveAttribute(element, "y", lengths, LengthAxis::Vertical);
        transform = AffineTransform::Concatenate(AffineTransform::Translation(x, y), transform);
        return CollectMember(*target, style, transform, outer, std::move(member), out);
    }
    member.transform = transform;
    if (element.tag == Tag::Text)
        return CollectText(element, style, lengths, std::move(member), out);
    if (!IsShape(element.tag) || !style.visible)
        return;
    member.shape = MakeShape(element, lengths, m_context.GetNotices());
    if (!member.shape)
        return;
    member.evenOdd = style.clipEvenOdd;
    out.push_back(std::move(member));
}

/// Text clips by its glyphs and lines, each piece by the rule of its element.
void ClipPaths::CollectText(const Element& text, const Style& style, const LengthContext& lengths,
                            Member member, std::vector<Member>& out)
{
    for (TextPiece& piece : MakeTextPieces(m_context, text, style, lengths).pieces) {
        member.shape = std::move(piece.shape);
        member.evenOdd = piece.style->clipEvenOdd;
        out.push_back(member);
    }
}

ClipPaths::Result ClipPaths::PushMembers(const std::vector<Member>& members,
                                         const LengthContext& lengths)
{
    if (members.empty())
        return {0, true};
    if (members.size() > 1) {
        m_target.PushClipPathGroup();
        for (const Member& member : members) {
            if (!member.clips.empty())
                m_context.GetNotices().Add(
                    "clips of single shapes among those of a clip path are left out");
            PushShape(member);
        }
        m_target.PopClipPathGroup();
        return {1, false};
    }
    // A clip of the only shape narrows the whole.
    const Member& member = members.front();
    Result result;
    m_target.PushTransform(member.transform,
                           Renderer::RenderTarget::TransformScalarMode::Concatenate);
    for (const std::string& clip : member.clips) {
        if (!result.hidesAll)
            Add(result, Push(clip, lengths, [&] { return member.shape->GetBoundingBox(); }));
    }
    m_target.PopTransform();
    if (result.hidesAll)
        return result;
    PushShape(member);
    ++result.pushed;
    return result;
}

void ClipPaths::PushShape(const Member& member)
{
    m_target.PushClipCurvesPath(MapPath(*member.shape, member.transform),
                                member.evenOdd ? Geometry::WindingOrderMode::EvenOdd
                                               : Geometry::WindingOrderMode::NonZero);
}

} // namespace Svg
