#include "Shapes.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <geometry/EllipticArc.h>

#include "PathData.h"

namespace Svg {

namespace {

using Geometry::Point;
using Geometry::PolyCurveDbl;
using Path = Kernel::Counted<PolyCurveDbl>;

/// Coordinates beyond this (in user units) are no drawing any more; arithmetic on them overflows.
constexpr double MaxCoordinate = 1e15;

constexpr std::string_view DamagedPath = "a path has an error in its data and is drawn up to it";
constexpr std::string_view DamagedPoints = "a list of points has an error and is drawn up to it";

/// A length attribute that is given and not negative.
std::optional<double> FindExtent(const Element& element, std::string_view name,
                                 const LengthContext& context, LengthAxis axis)
{
    const auto length = ParseLength(element.Get(name));
    if (!length || length->value < 0.0)
        return std::nullopt;
    return length->Resolve(context, axis);
}

void CornerTo(PolyCurveDbl& path, Point start, double radiusX, double radiusY, Point end)
{
    Geometry::AppendEllipticArc(path, start, {radiusX, radiusY, 0.0, false, true, end});
}

/// A rectangle with round corners, clockwise from the end of its left top corner (SVG 1.1, 9.2).
Path MakeRoundRect(const Kernel::RectT<double>& r, double rx, double ry)
{
    Path path = Kernel::MakeCounted<PolyCurveDbl>();
    path->MoveTo({r.left + rx, r.top});
    path->LineTo({r.right - rx, r.top});
    CornerTo(*path, {r.right - rx, r.top}, rx, ry, {r.right, r.top + ry});
    path->LineTo({r.right, r.bottom - ry});
    CornerTo(*path, {r.right, r.bottom - ry}, rx, ry, {r.right - rx, r.bottom});
    path->LineTo({r.left + rx, r.bottom});
    CornerTo(*path, {r.left + rx, r.bottom}, rx, ry, {r.left, r.bottom - ry});
    path->LineTo({r.left, r.top + ry});
    CornerTo(*path, {r.left, r.top + ry}, rx, ry, {r.left + rx, r.top});
    path->Close();
    return path;
}

Path MakeRect(const Element& element, const LengthContext& context)
{
    const double x = ResolveAttribute(element, "x", context, LengthAxis::Horizontal);
    const double y = ResolveAttribute(element, "y", context, LengthAxis::Vertical);
    const double width = ResolveAttribute(element, "width", context, LengthAxis::Horizontal);
    const double height = ResolveAttribute(element, "height", context, LengthAxis::Vertical);
    if (!(width > 0.0) || !(height > 0.0))
        return {};
    const Kernel::RectT<double> rect{x, y, x + width, y + height};
    const auto rx = FindExtent(element, "rx", context, LengthAxis::Horizontal);
    const auto ry = FindExtent(element, "ry", context, LengthAxis::Vertical);
    const double radiusX = std::min(rx.value_or(ry.value_or(0.0)), width / 2.0);
    const double radiusY = std::min(ry.value_or(rx.value_or(0.0)), height / 2.0);
    if (radiusX > 0.0 && radiusY > 0.0)
        return MakeRoundRect(rect, radiusX, radiusY);
    return Kernel::MakeCounted<PolyCurveDbl>(rect);
}

Path MakeEllipse(const Element& element, const LengthContext& context)
{
    const double x = ResolveAttribute(element, "cx", context, LengthAxis::Horizontal);
    const double y = ResolveAttribute(element, "cy", context, LengthAxis::Vertical);
    std::optional<double> rx;
    std::optional<double> ry;
    if (element.tag == Tag::Circle) {
        rx = ry = FindExtent(element, "r", context, LengthAxis::Diagonal);
    } else {
        rx = FindExtent(element, "rx", context, LengthAxis::Horizontal);
        ry = FindExtent(element, "ry", context, LengthAxis::Vertical);
    }
    const double radiusX = rx.value_or(ry.value_or(0.0));
    const double radiusY = ry.value_or(rx.value_or(0.0));
    if (!(radiusX > 0.0) || !(radiusY > 0.0))
        return {};
    Path path = Kernel::MakeCounted<PolyCurveDbl>();
    path->AddEllipse({x, y}, radiusX, radiusY);
    return path;
}

Path MakeLine(const Element& element, const LengthContext& context)
{
    Path path = Kernel::MakeCounted<PolyCurveDbl>();
    path->MoveTo({ResolveAttribute(element, "x1", context, LengthAxis::Horizontal),
                  ResolveAttribute(element, "y1", context, LengthAxis::Vertical)});
    path->LineTo({ResolveAttribute(element, "x2", context, LengthAxis::Horizontal),
                  ResolveAttribute(element, "y2", context, LengthAxis::Vertical)});
    return path;
}

Path MakePolygon(const Element& element, Notices& notices)
{
    const PointListResult list = ParsePoints(element.Get("points"));
    if (!list.complete)
        notices.Add(DamagedPoints);
    if (list.points.empty())
        return {};
    Path path = Kernel::MakeCounted<PolyCurveDbl>();
    path->MoveTo(list.points.front());
    for (std::size_t i = 1; i < list.points.size(); ++i)
        path->LineTo(list.points[i]);
    if (element.tag == Tag::Polygon)
        path->Close();
    return path;
}

Path MakePath(const Element& element, Notices& notices)
{
    const PathDataResult result = ParsePathData(element.Get("d"));
    if (!result.complete)
        notices.Add(DamagedPath);
    return result.path;
}

Path MakeAnyShape(const Element& element, const LengthContext& context, Notices& notices)
{
    switch (element.tag) {
    case Tag::Rect:
        return MakeRect(element, context);
    case Tag::Circle:
    case Tag::Ellipse:
        return MakeEllipse(element, context);
    case Tag::Line:
        return MakeLine(element, context);
    case Tag::Polygon:
    case Tag::Polyline:
        return MakePolygon(element, notices);
    case Tag::Path:
        return MakePath(element, notices);
    default:
        return {};
    }
}

} // namespace

bool IsInRange(const PolyCurveDbl& path) noexcept
{
    return std::ranges::all_of(path.GetCurves(), [](const Geometry::CurveDbl& curve) {
        return std::ranges::all_of(curve.GetPoints(), [](Point p) {
            return std::abs(p.x) <= MaxCoordinate && std::abs(p.y) <= MaxCoordinate;
        });
    });
}

double ResolveAttribute(const Element& element, std::string_view name, const LengthContext& context,
                        LengthAxis axis, double fallback)
{
    const auto length = ParseLength(element.Get(name));
    return length ? length->Resolve(context, axis) : fallback;
}

Kernel::Counted<const PolyCurveDbl> MakeShape(const Element& element, const LengthContext& context,
                                              Notices& notices)
{
    Path path = MakeAnyShape(element, context, notices);
    if (!path || path->IsEmpty())
        return {};
    if (!IsInRange(*path)) {
        notices.Add("a shape has coordinates out of all range and is left out");
        return {};
    }
    return path;
}

Kernel::Counted<const PolyCurveDbl> MapPath(const PolyCurveDbl& path, const Transform& transform)
{
    Path mapped = path.Clone();
    mapped->Transform([&](Point point) { return transform.Map(point); });
    return mapped;
}

Transform GetTransform(const Element& element, std::string_view attribute)
{
    return ParseTransformList(element.Get(attribute)).value_or(Transform{});
}

} // namespace Svg
