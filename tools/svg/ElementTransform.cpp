#include "ElementTransform.h"

#include "Scanner.h"

namespace Svg {

using Raster::AffineTransform;

namespace {

/// One part of a transform-origin. \param vertical is set where it can only be the one or the
/// other.
std::optional<Length> ParseOriginPart(std::string_view word, std::optional<bool>& vertical)
{
    struct Name
    {
        std::string_view text;
        double percent;
    };
    if (EqualsIgnoringCase(word, "center"))
        return Length{50.0, LengthUnit::Percent};
    for (const auto& [text, percent] : {Name{"left", 0.0}, {"right", 100.0}}) {
        if (EqualsIgnoringCase(word, text)) {
            vertical = false;
            return Length{percent, LengthUnit::Percent};
        }
    }
    for (const auto& [text, percent] : {Name{"top", 0.0}, {"bottom", 100.0}}) {
        if (EqualsIgnoringCase(word, text)) {
            vertical = true;
            return Length{percent, LengthUnit::Percent};
        }
    }
    return ParseLength(word);
}

} // namespace

std::optional<TransformOrigin> ParseTransformOrigin(std::string_view value)
{
    const auto words = SplitWords(value);
    if (words.empty() || words.size() > 3) // the third is the depth
        return std::nullopt;
    std::optional<bool> firstVertical, secondVertical;
    auto first = ParseOriginPart(words[0], firstVertical);
    auto second = words.size() > 1 ? ParseOriginPart(words[1], secondVertical)
                                   : Length{50.0, LengthUnit::Percent};
    const bool swapped = firstVertical.value_or(false) || !secondVertical.value_or(true);
    if (!first || !second || (firstVertical && secondVertical && *firstVertical == *secondVertical))
        return std::nullopt;
    return swapped ? TransformOrigin{*second, *first} : TransformOrigin{*first, *second};
}

Transform MakeElementTransform(const Style& style, const LengthContext& lengths,
                               const std::function<Geometry::BoundingBoxT<double>()>& measure)
{
    if (style.transform.empty())
        return {};
    LengthContext units = lengths;
    units.fontSize = style.fontSize;
    Kernel::PointT<double> start;
    if (style.transformsInOwnBox) {
        const auto bounds = measure();
        const Kernel::RectT<double> box =
            bounds.IsValid() ? bounds.GetRect() : Kernel::RectT<double>{};
        units.viewportWidth = box.Width();
        units.viewportHeight = box.Height();
        start = {box.left, box.top};
    }
    const Transform transform = ParseTransformList(style.transform, units).value_or(Transform{});
    const double x = start.x + style.transformOrigin.x.Resolve(units, LengthAxis::Horizontal);
    const double y = start.y + style.transformOrigin.y.Resolve(units, LengthAxis::Vertical);
    if (x == 0.0 && y == 0.0)
        return transform;
    return AffineTransform::Concatenate(
        AffineTransform::Concatenate(AffineTransform::Translation(-x, -y), transform),
        AffineTransform::Translation(x, y));
}

} // namespace Svg
