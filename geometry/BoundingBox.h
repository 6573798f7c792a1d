#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include <kernel/Point.h>
#include <kernel/Rect.h>

namespace Geometry {

/// A box that grows around points; empty (invalid) until the first finite one.
template<class T>
class BoundingBoxT
{
public:
    BoundingBoxT() noexcept = default;

    /// Grows to hold \p point; one that is not finite adds nothing.
    void Add(Kernel::PointT<T> point) noexcept
    {
        if constexpr (std::is_floating_point_v<T>) {
            if (!std::isfinite(point.x) || !std::isfinite(point.y))
                return;
        }
        m_rect.left = std::min(m_rect.left, point.x);
        m_rect.top = std::min(m_rect.top, point.y);
        m_rect.right = std::max(m_rect.right, point.x);
        m_rect.bottom = std::max(m_rect.bottom, point.y);
    }

    /// Grows to hold another box; an invalid one adds nothing.
    void Add(const BoundingBoxT& other) noexcept { m_rect = m_rect.Union(other.m_rect); }

    /// Whether the box holds at least one point.
    bool IsValid() const noexcept
    {
        return m_rect.left <= m_rect.right && m_rect.top <= m_rect.bottom;
    }

    /// The box as a rectangle; inside out while the box is invalid.
    const Kernel::RectT<T>& GetRect() const noexcept { return m_rect; }

private:
    Kernel::RectT<T> m_rect{std::numeric_limits<T>::max(), std::numeric_limits<T>::max(),
                            std::numeric_limits<T>::lowest(), std::numeric_limits<T>::lowest()};
};

} // namespace Geometry
