#include <renderer/core/coverage/AddPolygons.h>

#include <algorithm>
#include <cmath>

#include <renderer/core/coverage/AggEngine.h>

namespace Renderer::Coverage {

namespace {

using Polygons = Geometry::PolyPolygonType<double>;
using Params = Raster::AffineTransform::Params;

/// Adds polygons that lie within the guard box, where nothing is to be cut: what the clipper would
/// hand on, point by point.
/// \return false when one does not; the store then holds a part of them.
bool AddInside(CoverageStore& store, const Polygons& polygons, const Params& transform)
{
    using Conversion = AGG::ras_conv_dbl;
    bool isInside = true;
    const auto map = [&](const Kernel::PointT<double>& point) {
        const auto p = transform.Map(point);
        isInside = isInside && std::abs(p.x) <= GuardBox && std::abs(p.y) <= GuardBox;
        return isInside ? Kernel::PointT<int>{Conversion::xi(p.x), Conversion::yi(p.y)}
                        : Kernel::PointT<int>{};
    };
    for (std::size_t i = 0; i < polygons.GetPolygonCount() && isInside; ++i) {
        const auto points = polygons.GetPolygon(i).points;
        if (points.empty())
            continue;
        const auto start = map(points.front());
        auto from = start;
        for (const auto& point : points.subspan(1)) {
            const auto to = map(point);
            if (!isInside)
                return false;
            store.line(from.x, from.y, to.x, to.y);
            from = to;
        }
        store.line(from.x, from.y, start.x, start.y);
    }
    return isInside;
}

/// Adds polygons cut at the guard box.
void AddCut(CoverageStore& store, const Polygons& polygons, const Params& transform)
{
    // Beyond this the clipper's products would leave the range of doubles; the guard box is far
    // nearer.
    constexpr double limit = 1e15;
    for (const auto& point : polygons.GetPoints()) {
        const auto p = transform.Map(point);
        if (!std::isfinite(p.x) || !std::isfinite(p.y))
            return;
    }
    AGG::rasterizer_sl_clip<AGG::ras_conv_dbl> clipper;
    clipper.clip_box(-GuardBox, -GuardBox, GuardBox, GuardBox);
    for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i) {
        const auto polygon = polygons.GetPolygon(i);
        if (polygon.points.size() < 2)
            continue;
        const auto at = [&](std::size_t index) {
            const auto p = transform.Map(polygon.points[index]);
            return Kernel::PointT<double>{std::clamp(p.x, -limit, limit),
                                          std::clamp(p.y, -limit, limit)};
        };
        const auto start = at(0);
        clipper.move_to(start.x, start.y);
        for (std::size_t k = 1; k < polygon.points.size(); ++k) {
            const auto point = at(k);
            clipper.line_to(store, point.x, point.y);
        }
        clipper.line_to(store, start.x, start.y);
    }
}

} // namespace

void AddPolygons(CoverageStore& store, const Polygons& polygons, const Params& transform)
{
    const auto mark = store.GetMark();
    if (!AddInside(store, polygons, transform)) {
        store.Return(mark);
        AddCut(store, polygons, transform);
    }
}

} // namespace Renderer::Coverage
