#include "Markers.h"

#include <array>
#include <cmath>
#include <numbers>
#include <optional>
#include <utility>

#include "Scanner.h"
#include "Scopes.h"
#include "Shapes.h"
#include "ViewBox.h"

namespace Svg {

using Kernel::RectT;
using Raster::AffineTransform;

namespace {

constexpr double Pi = std::numbers::pi;

/// How a marker is turned: by the path's direction, or by an angle of its own, in radians.
struct Orientation
{
    bool isAuto = false;
    bool reversesStart = false;
    double angle = 0.0;

    double GetAngle(double direction, bool isStart) const
    {
        return isAuto ? direction + (reversesStart && isStart ? Pi : 0.0) : angle;
    }
};

Orientation ParseOrientation(std::string_view text)
{
    static constexpr std::array<std::pair<std::string_view, double>, 5> units{{{"", Pi / 180.0},
                                                                               {"deg", Pi / 180.0},
                                                                               {"grad", Pi / 200.0},
                                                                               {"rad", 1.0},
                                                                               {"turn", 2 * Pi}}};
    text = Trim(text);
    if (text == "auto" || text == "auto-start-reverse")
        return {true, text != "auto", 0.0};
    Scanner scanner(text);
    const auto number = scanner.Number();
    for (const auto& [name, radians] : units) {
        if (number && scanner.Rest() == name)
            return {false, false, *number * radians};
    }
    return {};
}

/// A coordinate of the reference point, in those of the marker's content.
/// \param start,extent of the view box along the axis.
double ParseReferencePoint(std::string_view text, double start, double extent,
                           const LengthContext& lengths, LengthAxis axis)
{
    static constexpr std::array<std::pair<std::string_view, double>, 5> keywords{
        {{"left", 0.0}, {"top", 0.0}, {"center", 0.5}, {"right", 1.0}, {"bottom", 1.0}}};
    for (const auto& [name, part] : keywords) {
        if (Trim(text) == name)
            return start + part * extent;
    }
    const auto length = ParseLength(text);
    return length ? length->Resolve(lengths, axis) : 0.0;
}

/// A marker as it is drawn at a vertex.
struct Symbol
{
    RectT<double> viewport; ///< around the vertex, which is (0, 0), before turning
    Transform content;      ///< from the coordinates of its children to those
    LengthContext lengths;
};

/// \return nothing for markers without an extent.
std::optional<Symbol> MakeSymbol(const Element& marker, double strokeWidth,
                                 const LengthContext& outer)
{
    const double width = ResolveAttribute(marker, "markerWidth", outer, LengthAxis::Horizontal, 3);
    const double height = ResolveAttribute(marker, "markerHeight", outer, LengthAxis::Vertical, 3);
    const RectT<double> viewport{0.0, 0.0, width, height};
    const auto viewBox = ParseViewBox(marker.Get("viewBox"));
    if (viewport.IsEmpty() || (viewBox && viewBox->IsEmpty()))
        return std::nullopt;
    const RectT<double> box = viewBox.value_or(viewport);
    Symbol symbol;
    symbol.lengths = {box.Width(), box.Height(), outer.fontSize};
    if (viewBox)
        symbol.content =
            FitBox(box, viewport, AspectRatio::Parse(marker.Get("preserveAspectRatio")));
    const auto origin =
        symbol.content.Map({ParseReferencePoint(marker.Get("refX"), box.left, box.Width(),
                                                symbol.lengths, LengthAxis::Horizontal),
                            ParseReferencePoint(marker.Get("refY"), box.top, box.Height(),
                                                symbol.lengths, LengthAxis::Vertical)});
    const double scale = Trim(marker.Get("markerUnits")) == "userSpaceOnUse" ? 1.0 : strokeWidth;
    const Transform place = AffineTransform::Concatenate(
        AffineTransform::Translation(-origin.x, -origin.y), AffineTransform::Scaling(scale, scale));
    symbol.content = AffineTransform::Concatenate(symbol.content, place);
    symbol.viewport = AffineTransform::MapRect(place, viewport);
    const bool usable = AffineTransform::IsFinite(symbol.content) && !symbol.viewport.IsEmpty();
    return usable ? std::optional(symbol) : std::nullopt;
}

} // namespace

bool Markers::HasMarkers(const Element& element, const Style& style)
{
    return style.HasMarkers() && (element.tag == Tag::Path || element.tag == Tag::Line ||
                                  element.tag == Tag::Polyline || element.tag == Tag::Polygon);
}

const Element* Markers::Find(std::string_view reference) const
{
    const Element* marker = m_context.GetDocument().FindByReference(reference);
    if (!marker || marker->tag != Tag::Marker)
        return nullptr;
    if (!m_context.IsActive(*marker))
        return marker;
    m_context.GetNotices().Add("a marker that marks itself is left out");
    return nullptr;
}

void Markers::Draw(const Element& element, const Style& style, const Geometry::PolyCurveDbl& shape,
                   const LengthContext& lengths)
{
    const Element* start = Find(style.markerStart);
    const Element* mid = Find(style.markerMid);
    const Element* end = Find(style.markerEnd);
    if (!start && !mid && !end)
        return;
    const std::vector<MarkerVertex> vertices = FindMarkerVertices(shape, element);
    if (vertices.empty())
        return;
    const double width = style.strokeWidth.Resolve(lengths, LengthAxis::Diagonal);
    if (start)
        DrawAll(*start, {vertices.front()}, true, width, lengths);
    if (mid && vertices.size() > 2)
        DrawAll(*mid, {vertices.begin() + 1, vertices.end() - 1}, false, width, lengths);
    if (end)
        DrawAll(*end, {vertices.back()}, false, width, lengths);
}

void Markers::DrawAll(const Element& marker, const std::vector<MarkerVertex>& vertices,
                      bool isStart, double strokeWidth, const LengthContext& lengths)
{
    const Style& style = m_context.GetStyles().ResolveInPlace(marker);
    LengthContext outer = lengths;
    outer.fontSize = style.fontSize;
    const auto symbol = MakeSymbol(marker, strokeWidth, outer);
    if (!symbol || !(style.opacity > 0.0))
        return;
    const ActiveReference active(m_context.GetActive(), marker);
    const Orientation orientation = ParseOrientation(marker.Get("orient"));
    const int clips = style.overflowVisible ? 0 : 1;
    for (const MarkerVertex& vertex : vertices) {
        if (m_target.IsAborting() || !m_context.CountMarker())
            return;
        const double angle = orientation.GetAngle(vertex.angle, isStart);
        const TransformScope place(
            m_target, AffineTransform::Concatenate(
                          AffineTransform::Rotation(angle),
                          AffineTransform::Translation(vertex.point.x, vertex.point.y)));
        if (clips > 0)
            m_target.PushClipRectanglePath(symbol->viewport);
        const ClipScope clip(m_target, clips);
        const GroupScope group(m_target, {.opacity = style.opacity});
        const TransformScope content(m_target, symbol->content);
        m_draw(m_target, marker, symbol->lengths);
    }
}

} // namespace Svg
