#include "TextPaths.h"

#include <cmath>

#include "ElementTransform.h"
#include "PathData.h"
#include "Scanner.h"
#include "Shapes.h"

namespace Svg {

using Kernel::PointT;
using Path = Kernel::Counted<const Geometry::PolyCurveDbl>;

namespace {

using Measure = TextPathCache::Measure;

/// The path of a shape in the coordinates that the shape stands in.
Path MakePath(Context& context, const Element& shape, const LengthContext& lengths)
{
    const Path path = MakeShape(shape, lengths, context.GetNotices());
    if (!path)
        return {};
    const auto measure = [&] { return path->GetBoundingBox(); };
    const Style& style = context.GetStyles().ResolveInPlace(shape);
    return MapPath(*path, MakeElementTransform(style, lengths, measure));
}

/// The path that an element gives, measured once however often there is text on it.
template<class Make>
Measure FindMeasure(Context& context, const Element& owner, const LengthContext& lengths,
                    const Make& make)
{
    return context.GetTextPaths().Get(owner, lengths, [&]() -> Measure {
        if (!context.HasPathSegments())
            return {};
        const Path path = make();
        if (!path)
            return {};
        auto measure = std::make_shared<const Geometry::PathMeasure>(*path);
        context.CountPathSegments(measure->GetSegmentCount());
        return measure;
    });
}

/// The path in the coordinates of the text, whichever way the element gives it; null for none.
Measure FindPath(Context& context, const Element& textPath, const LengthContext& lengths,
                 const Element*& shape)
{
    if (textPath.Has("path")) {
        return FindMeasure(context, textPath, {},
                           [&] { return Path(ParsePathData(textPath.Get("path")).path); });
    }
    shape = context.GetDocument().FindByReference(textPath.GetReference());
    if (!shape || !IsShape(shape->tag)) {
        context.GetNotices().Add("a path for text is missing; its text is left out");
        return {};
    }
    LengthContext own = lengths;
    own.fontSize = context.GetStyles().ResolveInPlace(*shape).fontSize;
    return FindMeasure(context, *shape, own, [&] { return MakePath(context, *shape, own); });
}

} // namespace

TextPath::TextPath(Context& context, const Element& textPath, const LengthContext& lengths)
{
    const Element* shape = nullptr;
    m_measure = FindPath(context, textPath, lengths, shape);
    if (!m_measure)
        return;
    m_isReversed = Trim(textPath.Get("side")) == "right";
    if (Trim(textPath.Get("method")) == "stretch")
        context.GetNotices().Add("glyphs on paths are not bent");
    const Length offset = ParseLength(textPath.Get("startOffset")).value_or(Length());
    if (offset.IsPercentage()) {
        m_offset = offset.value / 100.0 * m_measure->GetLength();
        return;
    }
    m_offset = offset.Resolve(lengths, LengthAxis::Horizontal);
    // Distances are measured in the length that the author says the path has.
    const double claimed = shape ? ParseNumber(shape->Get("pathLength")).value_or(0.0) : 0.0;
    if (claimed > 0.0)
        m_offset *= m_measure->GetLength() / claimed;
}

Geometry::PathMeasure::Place TextPath::Locate(double distance) const
{
    if (!m_isReversed)
        return m_measure->Locate(distance);
    const auto place = m_measure->Locate(m_measure->GetLength() - distance);
    return {place.point, -1.0 * place.direction};
}

PointT<double> TextPath::GetEnd() const
{
    return Locate(m_measure->GetLength()).point;
}

/// On a loop text may run past the seam, for one round.
bool TextPath::IsHidden(double middle, TextAnchor anchor) const
{
    const double length = m_measure->GetLength();
    if (!m_measure->IsLoop())
        return !(middle >= 0.0 && middle <= length);
    const double fromStart = middle - m_offset;
    switch (anchor) {
    case TextAnchor::Middle:
        return !(std::abs(fromStart) <= length / 2.0);
    case TextAnchor::End:
        return !(fromStart >= -length && fromStart <= 0.0);
    case TextAnchor::Start:
        break;
    }
    return !(fromStart >= 0.0 && fromStart <= length);
}

void TextPath::Place(TextCluster& cluster, TextAnchor anchor) const
{
    const double half = cluster.advance / 2.0;
    double middle = m_offset + cluster.origin.x + half;
    cluster.hidden = !IsUsable() || IsHidden(middle, anchor);
    if (cluster.hidden)
        return;
    const double length = m_measure->GetLength();
    if (m_measure->IsLoop())
        middle -= length * std::floor(middle / length);
    const auto [point, direction] = Locate(middle);
    const PointT<double> down{-direction.y, direction.x};
    cluster.origin = point - half * direction + cluster.origin.y * down;
    cluster.angle += std::atan2(direction.y, direction.x);
}

} // namespace Svg
