#include "Viewport.h"

#include "Shapes.h"
#include "ViewBox.h"

namespace Svg {

std::optional<Viewport> Viewport::Make(const Element& element, const Kernel::RectT<double>& rect,
                                       const Style& style)
{
    if (rect.IsEmpty())
        return std::nullopt;
    Viewport viewport{rect, Raster::AffineTransform::Translation(rect.left, rect.top), rect.Width(),
                      rect.Height(), !style.overflowVisible};
    const auto box = ParseViewBox(element.Get("viewBox"));
    if (!box)
        return viewport;
    if (box->IsEmpty())
        return std::nullopt;
    viewport.transform = FitBox(*box, rect, AspectRatio::Parse(element.Get("preserveAspectRatio")));
    viewport.width = box->Width();
    viewport.height = box->Height();
    return viewport;
}

Kernel::RectT<double> PlaceNested(const Element& element, const Element* use,
                                  const LengthContext& context)
{
    const auto extent = [&](std::string_view name, LengthAxis axis) {
        const Element& source = use && use->Has(name) ? *use : element;
        const double whole =
            axis == LengthAxis::Horizontal ? context.viewportWidth : context.viewportHeight;
        return ResolveAttribute(source, name, context, axis, whole);
    };
    double x = 0.0;
    double y = 0.0;
    if (element.tag == Tag::Svg) {
        x = ResolveAttribute(element, "x", context, LengthAxis::Horizontal);
        y = ResolveAttribute(element, "y", context, LengthAxis::Vertical);
    }
    return {x, y, x + extent("width", LengthAxis::Horizontal),
            y + extent("height", LengthAxis::Vertical)};
}

} // namespace Svg
