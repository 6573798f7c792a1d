#pragma once

#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

#include <geometry/Curve.h>
#include <raster/AffineTransform.h>
#include <renderer/core/DevicePixels.h>

namespace Renderer {

/// Whether a stroke of that width in device pixels is thin enough to go to pixel middles.
inline bool IsHairline(double width)
{
    return width <= 1.0 + WholePixelTolerance;
}

/// The corners of a run in device space, and where they go when all segments along an axis move
/// across to the nearest pixel middles: a hairline of one pixel then covers one row or column.
/// Corners of other segments stay, unless they are shared.
class MidPixelSnap
{
public:
    using Point = Geometry::Point;

    /// \param corners two corners that are the same point, first and last, are one.
    explicit MidPixelSnap(std::vector<Point> corners)
        : m_corners(std::move(corners)), m_moves(m_corners.size())
    {}

    /// Adds the straight segment between two corners.
    void AddLine(std::size_t from, std::size_t to)
    {
        const Point a = m_corners[from], b = m_corners[to];
        const bool isLevel = std::abs(b.y - a.y) <= Straight;
        const bool isUpright = std::abs(b.x - a.x) <= Straight;
        if (isLevel == isUpright) // neither; or no line at all
            return;
        for (const std::size_t corner : {from, to}) {
            const Point p = m_corners[corner];
            if (isLevel)
                m_moves[corner].y = GetMiddle(p.y) - p.y;
            else
                m_moves[corner].x = GetMiddle(p.x) - p.x;
        }
    }

    /// Ends adding. \return by how much each corner moves.
    const std::vector<Point>& GetMoves()
    {
        if (m_corners.size() > 1 && m_corners.front() == m_corners.back()) {
            Point& first = m_moves.front();
            Point& last = m_moves.back();
            // Where both move they do so alike.
            first = last = {first.x != 0.0 ? first.x : last.x, first.y != 0.0 ? first.y : last.y};
        }
        return m_moves;
    }

private:
    /// How far, in pixels, a segment may be from running along an axis.
    static constexpr double Straight = 1.0 / 1024.0;

    /// Halfway between two middles the one behind, noise or not.
    static double GetMiddle(double value) { return std::floor(value + WholePixelTolerance) + 0.5; }

    std::vector<Point> m_corners;
    std::vector<Point> m_moves;
};

/// The image of a run, with the segments that run along an axis on pixel middles. The handles of
/// curves move with their ends.
inline Geometry::CurveDbl SnapToPixelMiddles(Geometry::CurveDbl run,
                                             const Raster::AffineTransform::Params& toDevice)
{
    using Geometry::Point;
    run.Transform([&](Point p) { return toDevice.Map(p); });
    const std::vector<Point>& points = run.GetPoints();
    if (points.empty())
        return run;
    std::vector<Point> corners;
    for (std::size_t i = 0; i < points.size(); i += 3)
        corners.push_back(points[i]);
    MidPixelSnap snap(corners);
    for (std::size_t i = 0; i < run.GetSegmentCount(); ++i)
        if (run.GetSegment(i) == Geometry::CurveDbl::Segment::Line)
            snap.AddLine(i, i + 1);
    if (run.IsClosed())
        snap.AddLine(corners.size() - 1, 0);
    const std::vector<Point>& moves = snap.GetMoves();
    const auto moved = [&](std::size_t point, std::size_t corner) {
        return Point{points[point].x + moves[corner].x, points[point].y + moves[corner].y};
    };
    Geometry::CurveDbl snapped(moved(0, 0));
    for (std::size_t i = 0; i < run.GetSegmentCount(); ++i) {
        if (run.GetSegment(i) == Geometry::CurveDbl::Segment::Line)
            snapped.LineTo(moved(3 * i + 3, i + 1));
        else
            snapped.CurveTo(moved(3 * i + 1, i), moved(3 * i + 2, i + 1), moved(3 * i + 3, i + 1));
    }
    snapped.SetClosed(run.IsClosed());
    return snapped;
}

/// The same for a polygon or polyline.
inline std::vector<Geometry::Point>
SnapToPixelMiddles(std::span<const Geometry::Point> points, bool closed,
                   const Raster::AffineTransform::Params& toDevice)
{
    std::vector<Geometry::Point> corners;
    for (const Geometry::Point point : points)
        corners.push_back(toDevice.Map(point));
    MidPixelSnap snap(corners);
    for (std::size_t i = 0; i + 1 < corners.size(); ++i)
        snap.AddLine(i, i + 1);
    if (closed && !corners.empty())
        snap.AddLine(corners.size() - 1, 0);
    const std::vector<Geometry::Point>& moves = snap.GetMoves();
    for (std::size_t i = 0; i < corners.size(); ++i)
        corners[i] = {corners[i].x + moves[i].x, corners[i].y + moves[i].y};
    return corners;
}

} // namespace Renderer
