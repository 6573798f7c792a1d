#pragma once

#include <algorithm>
#include <cmath>

#include <geometry/PolyCurve.h>
#include <kernel/Rect.h>
#include <raster/AffineTransform.h>

namespace Renderer {

/// Flattens of a path that is to be filled only what may be seen.
///
/// A run that lies wholly beside the visible pixels changes none of them, whatever the rule of the
/// fill: runs are closed, so what they do to the left of a row adds up to nothing. Long text and
/// drawings of which a part is shown are mostly such runs.
class VisibleRuns
{
public:
    using Transform = Raster::AffineTransform::Params;

    /// \param toDevice maps the path. \param visible in device pixels.
    /// \param margin how far flattening may move points, in device pixels.
    VisibleRuns(const Transform& toDevice, const Kernel::RectT<int>& visible,
                double margin) noexcept
        : m_toDevice(toDevice),
          m_visible{visible.left - Rounding - margin, visible.top - Rounding - margin,
                    visible.right + Rounding + margin, visible.bottom + Rounding + margin}
    {}

    /// Appends the runs as PolyCurveDbl::ExpandAdaptive does, without those that cannot be seen.
    void Expand(const Geometry::PolyCurveDbl& path, double tolerance,
                Geometry::PolyPolygonType<double>& out) const
    {
        for (const Geometry::CurveDbl& run : path.GetCurves())
            if (MayShow(run))
                run.ExpandAdaptive(tolerance, out);
    }

private:
    static constexpr double Rounding = 2.0; ///< more than that of any coordinate

    /// Whether the box of a run's controls meets the visible pixels; true where one isn't finite.
    bool MayShow(const Geometry::CurveDbl& run) const noexcept
    {
        if (run.IsEmpty())
            return false;
        const auto& points = run.GetPoints();
        const Geometry::Point start = m_toDevice.Map(points[0]); // of most runs, all that is needed
        if (start.x >= m_visible.left && start.x <= m_visible.right && start.y >= m_visible.top &&
            start.y <= m_visible.bottom)
            return true;
        Kernel::RectT<double> box{points[0].x, points[0].y, points[0].x, points[0].y};
        double sum = 0.0;
        for (const Geometry::Point point : points) {
            box = {std::min(box.left, point.x), std::min(box.top, point.y),
                   std::max(box.right, point.x), std::max(box.bottom, point.y)};
            sum += point.x + point.y;
        }
        const auto device = Raster::AffineTransform::MapRect(m_toDevice, box);
        return !std::isfinite(sum) ||
               !(device.left > m_visible.right || device.right < m_visible.left ||
                 device.top > m_visible.bottom || device.bottom < m_visible.top);
    }

    Transform m_toDevice;
    Kernel::RectT<double> m_visible;
};

} // namespace Renderer
