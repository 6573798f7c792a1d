#include "PatternSource.h"

#include <cmath>

#include "Scanner.h"
#include "Shapes.h"
#include "ViewBox.h"

namespace Svg {

using Kernel::RectT;
using Raster::AffineTransform;

PatternSource::PatternSource(const Element& pattern, const Document& document, Notices& notices)
    : m_chain(
          pattern, document, [](const Element& element) { return element.tag == Tag::Pattern; },
          notices)
{}

bool PatternSource::HasBoxUnits(std::string_view attribute, bool byDefault) const
{
    const std::string_view units = Trim(m_chain.Get(attribute));
    return units == "objectBoundingBox" || (byDefault && units != "userSpaceOnUse");
}

bool PatternSource::UsesBoundingBox() const
{
    return HasBoxUnits("patternUnits", true) ||
           (HasBoxUnits("patternContentUnits", false) && !m_chain.Find("viewBox"));
}

RectT<double> PatternSource::FindRect(const RectT<double>& box, const LengthContext& context) const
{
    const bool fractions = HasBoxUnits("patternUnits", true);
    LengthContext lengths = context;
    if (fractions)
        lengths.viewportWidth = lengths.viewportHeight = 1.0;
    const auto length = [&](std::string_view name, LengthAxis axis) {
        const auto value = ParseLength(m_chain.Get(name));
        return value ? value->Resolve(lengths, axis) : 0.0;
    };
    const double x = length("x", LengthAxis::Horizontal);
    const double y = length("y", LengthAxis::Vertical);
    const RectT<double> rect{x, y, x + length("width", LengthAxis::Horizontal),
                             y + length("height", LengthAxis::Vertical)};
    // Mapping would turn an extent that is negative, and thus means nothing, the right way round.
    return fractions && !rect.IsEmpty()
               ? AffineTransform::MapRect(AffineTransform::FromRect(box), rect)
               : rect;
}

std::optional<PatternTile> PatternSource::Place(const RectT<double>& box,
                                                const LengthContext& context) const
{
    PatternTile tile;
    tile.owner = m_chain.FindOwner([](const Element&) { return true; });
    tile.rect = FindRect(box, context);
    if (!tile.owner || tile.rect.IsEmpty() || !std::isfinite(tile.rect.Width()) ||
        !std::isfinite(tile.rect.Height()))
        return std::nullopt;
    if (const Element* source = m_chain.Find("patternTransform"))
        tile.toUser = GetTransform(*source, "patternTransform");
    tile.content = AffineTransform::Translation(tile.rect.left, tile.rect.top);
    tile.lengths = context;
    if (const auto viewBox = ParseViewBox(m_chain.Get("viewBox"))) {
        if (viewBox->IsEmpty())
            return std::nullopt;
        tile.content =
            FitBox(*viewBox, tile.rect, AspectRatio::Parse(m_chain.Get("preserveAspectRatio")));
        tile.lengths.viewportWidth = viewBox->Width();
        tile.lengths.viewportHeight = viewBox->Height();
    } else if (HasBoxUnits("patternContentUnits", false)) {
        tile.content = AffineTransform::Concatenate(
            AffineTransform::Scaling(box.Width(), box.Height()), tile.content);
        tile.lengths.viewportWidth = tile.lengths.viewportHeight = 1.0;
    }
    return tile;
}

} // namespace Svg
