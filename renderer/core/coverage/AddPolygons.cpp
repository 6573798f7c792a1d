#include <renderer/core/coverage/AddPolygons.h>

#include <algorithm>
#include <cmath>

#include <renderer/core/coverage/AggEngine.h>

namespace Renderer::Coverage {

void AddPolygons(CoverageStore& store, const Geometry::PolyPolygonType<double>& polygons,
                 const Raster::AffineTransform::Params& transform)
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

} // namespace Renderer::Coverage
