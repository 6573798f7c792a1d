#pragma once

#include <cstddef>

#include <geometry/Curve.h>
#include <geometry/Polygon.h>
#include <kernel/Counted.h>

namespace Renderer::Texture {

/// The pressure along a path, as a function of the share of its length.
class PressureProfile
{
public:
    /// \param curve y over x = 0 … 1, held before its beginning and beyond its end; where it turns
    ///        back in x, the first y counts. Empty for the constant 1.
    explicit PressureProfile(const Kernel::Counted<const Geometry::CurveDbl>& curve)
    {
        if (curve)
            curve->ExpandAdaptive(Tolerance, m_points);
    }

    bool IsConstant() const noexcept { return m_points.GetPoints().size() < 2; }

    /// Not negative; 0 where the curve is not finite.
    double At(double share) const noexcept
    {
        const auto& points = m_points.GetPoints();
        if (points.empty())
            return 1.0;
        std::size_t next = 0;
        while (next < points.size() && points[next].x < share)
            ++next;
        if (next == 0)
            return Limit(points.front().y);
        if (next == points.size())
            return Limit(points.back().y);
        const auto& a = points[next - 1];
        const auto& b = points[next];
        return Limit(a.y + (share - a.x) / (b.x - a.x) * (b.y - a.y));
    }

private:
    static constexpr double Tolerance = 1e-4;

    static double Limit(double y) noexcept { return y > 0.0 && y < 1e6 ? y : y >= 1e6 ? 1e6 : 0.0; }

    Geometry::PolyPolygonType<double> m_points;
};

} // namespace Renderer::Texture
