#pragma once

#include <cstdint>
#include <vector>

#include <geometry/BoundingBox.h>
#include <geometry/Export.h>
#include <geometry/Polygon.h>
#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <kernel/FourCharCode.h>
#include <kernel/Point.h>

namespace Kernel {
class InSerialiser;
class OutSerialiser;
} // namespace Kernel

namespace Geometry {

using Point = Kernel::PointT<double>;

/// One run of connected cubic Béziers and straight lines, open or closed.
///
/// The points are stored uniformly: a start point and three points per segment (two controls and an
/// end); a straight line has its controls at its ends and is marked, so that it costs nothing to
/// flatten. A closed run has an implied straight closing segment when its end is not its start.
class GEOMETRY_EXPORT CurveDbl : public Kernel::Countable
{
public:
    enum class Segment : std::uint8_t
    {
        Line,
        Cubic,
    };

    CurveDbl() = default;
    explicit CurveDbl(Point start) { MoveTo(start); }

    /// Starts the run; anything that it held before is dropped.
    void MoveTo(Point start);
    /// Adds a straight line from the present end. \pre MoveTo was called (so for the next two).
    void LineTo(Point end);
    /// Adds a cubic Bézier.
    void CurveTo(Point control1, Point control2, Point end);
    /// Adds a quadratic Bézier, raised to a cubic (exact).
    void QuadTo(Point control, Point end);
    /// Closes or opens the run.
    void SetClosed(bool closed) noexcept { m_closed = closed; }
    bool IsClosed() const noexcept { return m_closed; }

    /// Replaces every point, controls included, by its image. Exact for affine maps.
    /// \tparam Map takes a Point and returns one.
    template<class Map>
    void Transform(const Map& map)
    {
        for (Point& point : m_points)
            point = map(point);
    }

    bool IsEmpty() const noexcept { return m_points.empty(); }
    std::size_t GetSegmentCount() const noexcept { return m_segments.size(); }
    Segment GetSegment(std::size_t index) const noexcept { return m_segments[index]; }
    /// 3·n + 1 points for n segments; no points at all when nothing was started.
    const std::vector<Point>& GetPoints() const noexcept { return m_points; }

    /// Whether both have the same segments and closing, with all points within \p tolerance per
    /// coordinate.
    bool IsEqual(const CurveDbl& other, double tolerance) const noexcept;

    /// The exact box of the curve: the extrema of its segments, not its control points.
    BoundingBoxT<double> GetBoundingBox() const noexcept;

    /// Appends the run to \p out as one polygon whose distance to the true curve stays within
    /// \p tolerance, in the units of the points. See FlattenCubic for the number of pieces.
    void ExpandAdaptive(double tolerance, PolyPolygonType<double>& out) const;

    /// \name As a nested class item of saved objects
    /// @{
    static constexpr Kernel::ClassUID GetClassUID() noexcept { return "Curv"; }
    static constexpr unsigned short GetSchemaVersion() noexcept { return 1; }
    void Save(Kernel::OutSerialiser& out) const;
    /// \return false, with the curve untouched, for items that make no curve.
    bool Load(const Kernel::InSerialiser& in, Kernel::ClassUID uid, unsigned short version);
    /// @}

private:
    std::vector<Point> m_points;
    std::vector<Segment> m_segments;
    bool m_closed = false;
};

} // namespace Geometry
