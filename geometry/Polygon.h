#pragma once

#include <limits>
#include <span>
#include <type_traits>
#include <vector>

#include <geometry/BoundingBox.h>
#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <kernel/Point.h>
#include <kernel/Rect.h>

namespace Geometry {

/// A polygon or polyline: its points in order. The closing edge is implied, never stored.
template<class T>
class PolygonType
{
public:
    PolygonType() = default;
    explicit PolygonType(std::vector<Kernel::PointT<T>> points, bool closed = true)
        : m_points(std::move(points)), m_closed(closed)
    {}

    const std::vector<Kernel::PointT<T>>& GetPoints() const noexcept { return m_points; }
    std::vector<Kernel::PointT<T>>& GetPoints() noexcept { return m_points; }
    void AddPoint(Kernel::PointT<T> point) { m_points.push_back(point); }
    bool IsClosed() const noexcept { return m_closed; }
    void SetClosed(bool closed) noexcept { m_closed = closed; }

private:
    std::vector<Kernel::PointT<T>> m_points;
    bool m_closed = true;
};

/// A set of polygons, all points in one array so that filling it again allocates nothing.
template<class T>
class PolyPolygonType : public Kernel::Countable
{
public:
    /// One polygon of the set, valid until the set changes.
    struct View
    {
        std::span<const Kernel::PointT<T>> points;
        bool closed;
    };

    PolyPolygonType() = default;
    explicit PolyPolygonType(const PolygonType<T>& polygon) { AddPolygon(polygon); }
    explicit PolyPolygonType(const Kernel::RectT<T>& rect) { AddRect(rect); }

    /// Opens a new polygon; the points that follow belong to it.
    void BeginPolygon(bool closed = true)
    {
        m_starts.push_back(m_points.size());
        m_closed.push_back(closed);
    }

    /// Adds a point to the polygon that was begun last. \pre BeginPolygon was called.
    void AddPoint(Kernel::PointT<T> point) { m_points.push_back(point); }

    /// Adds several points to the polygon that was begun last. \pre as above.
    void AddPoints(std::span<const Kernel::PointT<T>> points)
    {
        m_points.insert(m_points.end(), points.begin(), points.end());
    }

    /// Marks the polygon that was begun last as open or closed.
    void SetClosed(bool closed) { m_closed.back() = closed; }

    void AddPolygon(const PolygonType<T>& polygon)
    {
        BeginPolygon(polygon.IsClosed());
        m_points.insert(m_points.end(), polygon.GetPoints().begin(), polygon.GetPoints().end());
    }

    /// Half the side of the square that stands for the whole plane: beyond all that is ever drawn,
    /// and so small that affine maps, squares and integer sums of it do not overflow.
    static constexpr T PlaneExtent =
        std::is_floating_point_v<T> ? static_cast<T>(1e30) : std::numeric_limits<T>::max() / 4;

    /// Adds a rectangle, clockwise from its left top corner (y down). The unset rectangle, which
    /// bounds nothing, is the whole plane: a square of ±PlaneExtent.
    void AddRect(const Kernel::RectT<T>& rect)
    {
        if (rect.IsUnset()) {
            AddRect({-PlaneExtent, -PlaneExtent, PlaneExtent, PlaneExtent});
            return;
        }
        BeginPolygon(true);
        AddPoint({rect.left, rect.top});
        AddPoint({rect.right, rect.top});
        AddPoint({rect.right, rect.bottom});
        AddPoint({rect.left, rect.bottom});
    }

    std::size_t GetPolygonCount() const noexcept { return m_starts.size(); }
    bool IsEmpty() const noexcept { return m_points.empty(); }

    View GetPolygon(std::size_t index) const
    {
        const std::size_t begin = m_starts[index];
        const std::size_t end = index + 1 < m_starts.size() ? m_starts[index + 1] : m_points.size();
        return {{m_points.data() + begin, end - begin}, m_closed[index] != 0};
    }

    /// All points of all polygons.
    const std::vector<Kernel::PointT<T>>& GetPoints() const noexcept { return m_points; }

    /// Removes everything and keeps the memory.
    void Clear() noexcept
    {
        m_points.clear();
        m_starts.clear();
        m_closed.clear();
    }

    BoundingBoxT<T> GetBoundingBox() const noexcept
    {
        BoundingBoxT<T> box;
        for (const auto& point : m_points)
            box.Add(point);
        return box;
    }

private:
    std::vector<Kernel::PointT<T>> m_points;
    std::vector<std::size_t> m_starts;
    std::vector<unsigned char> m_closed; // one flag per polygon
};

} // namespace Geometry
