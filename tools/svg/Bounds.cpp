#include "Bounds.h"

#include "ElementTransform.h"
#include "Shapes.h"
#include "TextPieces.h"
#include "Viewport.h"

namespace Svg {

namespace {

using Raster::AffineTransform;

/// Adds the boxes of elements, each mapped into the coordinates of the element that is measured.
class Measurer
{
public:
    explicit Measurer(Context& context) : m_context(context) {}

    /// \param map from the coordinates of the element's content.
    void AddContent(const Element& element, const Style& style, const Transform& map,
                    const LengthContext& lengths);
    Geometry::BoundingBoxT<double> GetBox() const { return m_box; }

private:
    void AddElement(const Element& element, const Style& parent, const Transform& map,
                    const LengthContext& lengths);
    void AddUsed(const Element& use, const Style& style, const Transform& map,
                 const LengthContext& lengths);
    void AddNested(const Element& element, const Element* use, const Style& style,
                   const Transform& map, const LengthContext& lengths);
    void AddChildren(const Element& element, const Style& style, const Transform& map,
                     const LengthContext& lengths);
    void AddRect(const Kernel::RectT<double>& rect, const Transform& map);

    Context& m_context;
    Geometry::BoundingBoxT<double> m_box;
    std::vector<const Element*> m_active;
};

void Measurer::AddRect(const Kernel::RectT<double>& rect, const Transform& map)
{
    const auto mapped = AffineTransform::MapRect(map, rect);
    m_box.Add({mapped.left, mapped.top});
    m_box.Add({mapped.right, mapped.bottom});
}

void Measurer::AddContent(const Element& element, const Style& style, const Transform& map,
                          const LengthContext& outer)
{
    LengthContext lengths = outer;
    lengths.fontSize = style.fontSize;
    if (IsShape(element.tag)) {
        if (const auto shape = MakeShape(element, lengths, m_context.GetNotices()))
            m_box.Add(MapPath(*shape, map)->GetBoundingBox());
    } else if (element.tag == Tag::Image) {
        AddRect(PlaceNested(element, &element, lengths), map);
    } else if (element.tag == Tag::Text) {
        const auto box = MakeTextPieces(m_context, element, style, lengths).box;
        if (box.IsValid())
            AddRect(box.GetRect(), map);
    } else if (element.tag == Tag::Use) {
        AddUsed(element, style, map, lengths);
    } else if (element.tag == Tag::Svg) {
        AddNested(element, nullptr, style, map, lengths);
    } else if (element.tag == Tag::Switch) {
        if (const Element* child = ChooseChild(element))
            AddElement(*child, style, map, lengths);
    } else {
        AddChildren(element, style, map, lengths);
    }
}

void Measurer::AddElement(const Element& element, const Style& parent, const Transform& map,
                          const LengthContext& lengths)
{
    if (!IsDrawable(element.tag) || !PassesConditions(element))
        return;
    m_context.CountUsedElement();
    const Style style = m_context.GetStyles().Resolve(element, parent);
    if (!style.displayed)
        return;
    const Transform transform = MakeElementTransform(
        style, lengths, [&] { return MeasureBounds(m_context, element, style, lengths); });
    AddContent(element, style, AffineTransform::Concatenate(transform, map), lengths);
}

void Measurer::AddUsed(const Element& use, const Style& style, const Transform& map,
                       const LengthContext& lengths)
{
    const Element* target = m_context.FindShown(use, m_active);
    if (!target)
        return;
    const ActiveReference active(m_active, use);
    const double x = ResolveAttribute(use, "x", lengths, LengthAxis::Horizontal);
    const double y = ResolveAttribute(use, "y", lengths, LengthAxis::Vertical);
    const Transform moved = AffineTransform::Concatenate(AffineTransform::Translation(x, y), map);
    if (target->tag == Tag::Symbol || target->tag == Tag::Svg)
        AddNested(*target, &use, m_context.GetStyles().Resolve(*target, style), moved, lengths);
    else
        AddElement(*target, style, moved, lengths);
}

void Measurer::AddNested(const Element& element, const Element* use, const Style& style,
                         const Transform& map, const LengthContext& lengths)
{
    const auto viewport = Viewport::Make(element, PlaceNested(element, use, lengths), style);
    if (!viewport)
        return;
    AddChildren(element, style, AffineTransform::Concatenate(viewport->transform, map),
                {viewport->width, viewport->height, style.fontSize});
}

void Measurer::AddChildren(const Element& element, const Style& style, const Transform& map,
                           const LengthContext& lengths)
{
    for (const Element* child = element.firstChild; child; child = child->nextSibling)
        AddElement(*child, style, map, lengths);
}

} // namespace

Geometry::BoundingBoxT<double> MeasureBounds(Context& context, const Element& element,
                                             const Style& style, const LengthContext& lengths)
{
    Measurer measurer(context);
    measurer.AddContent(element, style, {}, lengths);
    return measurer.GetBox();
}

} // namespace Svg
