#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <vector>

#include <geometry/Polygon.h>
#include <geometry/stroke/StrokeVector.h>

namespace Geometry {

/// One side of an outline, in the direction of the path.
///
/// Where the path turns towards this side more tightly than the pen is wide, the pen's normals
/// cross each other and the pen's end runs backwards. There the points of the side form a fan:
/// between the vertices a and b of the path, with the pen's ends qa … qb, the side goes a, qb, …,
/// qa, b. Taken with the path from a to b that is a convex region of the right orientation, which
/// all those normals lie in, as long as the path turns by less than a right angle; further turns
/// begin another fan.
class StrokeSide
{
public:
    void Clear() noexcept
    {
        m_points.clear();
        m_inFan = false;
    }
    void Add(Point point) { m_points.push_back(point); }
    void Add(std::initializer_list<Point> points)
    {
        m_points.insert(m_points.end(), points.begin(), points.end());
    }
    void AddReversed(const StrokeSide& other)
    {
        m_points.insert(m_points.end(), other.m_points.rbegin(), other.m_points.rend());
    }
    void Reverse() { std::reverse(m_points.begin(), m_points.end()); }
    /// Appends the points as a closed polygon.
    void Flush(PolyPolygonType<double>& out) const
    {
        out.BeginPolygon(true);
        out.AddPoints(m_points);
    }
    bool IsInFan() const noexcept { return m_inFan; }

    /// Opens a fan, or goes on with an open one, along an edge from \p vertex, whose tangents at
    /// both ends are \p tangent and \p next; the next point that is added is the pen's end at the
    /// end of the edge. \pre the last point that was added is \p end, the pen's end at the vertex.
    void ContinueFan(Point vertex, Point tangent, Point next, Point end)
    {
        if (m_inFan) {
            if (Dot(m_fanTangent, next) > 0.0)
                return;
            CloseFan(vertex);
        } else {
            Add(vertex);
        }
        m_inFan = true;
        m_fanTangent = tangent;
        m_fanStart = m_points.size();
        Add(end);
    }

    /// Ends the fan, whose last point is the pen's end at \p vertex.
    void CloseFan(Point vertex)
    {
        std::reverse(m_points.begin() + static_cast<std::ptrdiff_t>(m_fanStart), m_points.end());
        Add(vertex);
        m_inFan = false;
    }

private:
    std::vector<Point> m_points;
    bool m_inFan = false;
    std::size_t m_fanStart = 0;
    Point m_fanTangent; // where the fan began
};

} // namespace Geometry
