#pragma once

#include <algorithm>
#include <cmath>
#include <compare>
#include <cstdint>

#include <geometry/BoundingBox.h>
#include <kernel/Point.h>

namespace Geometry {

/// A point of a Grid: from 0 to 2^Grid::Bits in x and y. Ordered by x, then y.
struct GridPoint
{
    std::int32_t x = 0;
    std::int32_t y = 0;

    friend auto operator<=>(const GridPoint&, const GridPoint&) = default;
};

/// A difference of grid points, or twice one.
struct GridVector
{
    std::int64_t x, y;
};

inline GridVector operator-(GridPoint a, GridPoint b) noexcept
{
    return {std::int64_t{a.x} - b.x, std::int64_t{a.y} - b.y};
}

/// At most 2^62, also where one of them is twice a difference.
inline std::int64_t Cross(GridVector a, GridVector b) noexcept
{
    return a.x * b.y - a.y * b.x;
}

inline std::int64_t Dot(GridVector a, GridVector b) noexcept
{
    return a.x * b.x + a.y * b.y;
}

/// Positive where \p c lies to the left of the way from \p a to \p b, or above it if that runs to
/// the right (y up).
inline std::int64_t Turn(GridPoint a, GridPoint b, GridPoint c) noexcept
{
    return Cross(b - a, c - a);
}

/// An edge on the way around a region.
struct GridEdge
{
    GridPoint from, to;
    int region; ///< 0 or 1
};

/// The points that a box of the plane is rounded to: the multiples of a power of two.
class Grid
{
public:
    static constexpr int Bits = 30;

    /// \pre the box is valid, with sides that are finite.
    explicit Grid(const BoundingBoxT<double>& box) noexcept
    {
        const auto& rect = box.GetRect();
        const double size = std::max({rect.Width(), rect.Height(), 1e-200});
        m_step = std::ldexp(1.0, std::ilogb(size) + 2 - Bits); // 2^28 to 2^29 steps for the size
        m_origin = {std::floor(rect.left / m_step) * m_step,
                    std::floor(rect.top / m_step) * m_step};
    }

    double GetStep() const noexcept { return m_step; }
    GridPoint Round(Kernel::PointT<double> point) const noexcept
    {
        const auto round = [this](double difference) {
            return static_cast<std::int32_t>(std::floor(difference / m_step + 0.5));
        };
        return {round(point.x - m_origin.x), round(point.y - m_origin.y)};
    }
    Kernel::PointT<double> GetPoint(GridPoint point) const noexcept
    {
        return {m_origin.x + m_step * point.x, m_origin.y + m_step * point.y};
    }

private:
    double m_step;
    Kernel::PointT<double> m_origin{};
};

} // namespace Geometry
