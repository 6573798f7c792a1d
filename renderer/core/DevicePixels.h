#pragma once

#include <algorithm>
#include <cmath>

#include <geometry/Polygon.h>
#include <kernel/Counted.h>
#include <kernel/Rect.h>
#include <raster/AffineTransform.h>

namespace Renderer {

/// The tolerance, in pixels, within which a coordinate lies on a whole pixel.
inline constexpr double WholePixelTolerance = 1e-6;

/// A double as an int by truncation towards zero; values that no int can hold saturate, NaN gives
/// 0.
inline int TruncateToInt(double value)
{
    return std::isnan(value) ? 0 : static_cast<int>(std::clamp(value, -2147483647.0, 2147483647.0));
}

inline bool IsOnWholePixel(double value)
{
    return std::abs(value - std::round(value)) <= WholePixelTolerance;
}

inline bool IsOnWholePixels(const Kernel::RectT<double>& rect)
{
    return IsOnWholePixel(rect.left) && IsOnWholePixel(rect.top) && IsOnWholePixel(rect.right) &&
           IsOnWholePixel(rect.bottom);
}

inline Kernel::RectT<int> RoundToPixels(const Kernel::RectT<double>& rect)
{
    return {TruncateToInt(std::round(rect.left)), TruncateToInt(std::round(rect.top)),
            TruncateToInt(std::round(rect.right)), TruncateToInt(std::round(rect.bottom))};
}

inline Kernel::RectT<int> TruncateToPixels(const Kernel::RectT<double>& rect)
{
    return {TruncateToInt(rect.left), TruncateToInt(rect.top), TruncateToInt(rect.right),
            TruncateToInt(rect.bottom)};
}

/// The smallest rectangle of whole pixels around \p rect.
inline Kernel::RectT<int> GrowToPixels(const Kernel::RectT<double>& rect)
{
    return {TruncateToInt(std::floor(rect.left)), TruncateToInt(std::floor(rect.top)),
            TruncateToInt(std::ceil(rect.right)), TruncateToInt(std::ceil(rect.bottom))};
}

/// The common part of two rectangles; without one, an empty rectangle that is not inside out, so
/// that sides of rectangles far apart do not overflow.
inline Kernel::RectT<int> CommonPart(const Kernel::RectT<int>& a, const Kernel::RectT<int>& b)
{
    Kernel::RectT<int> part = a.Intersect(b);
    part.right = std::max(part.left, part.right);
    part.bottom = std::max(part.top, part.bottom);
    return part;
}

/// Appends the images of polygons to \p out.
inline void AppendMapped(const Geometry::PolyPolygonType<double>& polygons,
                         const Raster::AffineTransform::Params& transform,
                         Geometry::PolyPolygonType<double>& out)
{
    for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i) {
        const auto polygon = polygons.GetPolygon(i);
        out.BeginPolygon(polygon.closed);
        for (const auto& point : polygon.points)
            out.AddPoint(transform.Map(point));
    }
}

inline Kernel::Counted<const Geometry::PolyPolygonType<double>>
MapPolygons(const Geometry::PolyPolygonType<double>& polygons,
            const Raster::AffineTransform::Params& transform)
{
    auto mapped = Kernel::MakeCounted<Geometry::PolyPolygonType<double>>();
    AppendMapped(polygons, transform, *mapped);
    return mapped;
}

} // namespace Renderer
