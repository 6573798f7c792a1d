#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include <geometry/Curve.h>
#include <geometry/stroke/StrokeVector.h>

namespace Geometry {

/// One side of an outline of lines and cubics, in the direction of the path. Fans are those of
/// StrokeSide: where the pen's end runs backwards, between the points a and b of the path, the side
/// goes a, the pen's end at b, back to that at a, b.
class OutlineSide
{
public:
    /// \param shortest lines that are no longer are left out
    void Clear(double shortest) noexcept
    {
        m_points.clear();
        m_lines.clear();
        m_shortest = shortest;
        m_inFan = false;
    }

    void LineTo(Point end)
    {
        if (m_points.empty() || Length(end - m_points.back()) > m_shortest)
            ForceLineTo(end);
    }
    void CubicTo(Point control1, Point control2, Point end)
    {
        m_points.insert(m_points.end(), {control1, control2, end});
        m_lines.push_back(false);
    }
    bool IsEmpty() const noexcept { return m_points.empty(); }
    Point GetEnd() const noexcept { return m_points.back(); }

    bool IsInFan() const noexcept { return m_inFan; }
    /// Whether an open fan still has the right orientation where the tangent is \p tangent: it may
    /// turn by a quarter.
    bool FanReaches(Point tangent) const noexcept { return Dot(m_fanTangent, tangent) > 0.0; }
    Point GetFanTangent() const noexcept { return m_fanTangent; }

    /// Opens a fan at the point \p vertex of the path, whose tangent there is \p tangent.
    /// \pre the side has reached \p end, the pen's end at the vertex.
    void OpenFan(Point vertex, Point tangent, Point end)
    {
        ForceLineTo(vertex);
        ForceLineTo(end);
        m_fanStart = m_points.size() - 1;
        m_fanLine = m_lines.size();
        m_inFan = true;
        m_fanTangent = tangent;
    }

    /// Ends the fan, whose last point is the pen's end at \p vertex, and goes back there.
    void CloseFan(Point vertex)
    {
        const Point end = m_points.back();
        // The line that leads to the fan ends with what has become its first point.
        std::reverse(m_points.begin() + static_cast<std::ptrdiff_t>(m_fanStart), m_points.end());
        std::reverse(m_lines.begin() + static_cast<std::ptrdiff_t>(m_fanLine), m_lines.end());
        m_points[m_fanStart - 1] = m_points[m_fanStart];
        m_inFan = false;
        ForceLineTo(vertex);
        ForceLineTo(end);
    }

    /// Goes along another side backwards.
    void AddReversed(const OutlineSide& other)
    {
        if (other.m_points.empty())
            return;
        LineTo(other.m_points.back());
        m_points.insert(m_points.end(), other.m_points.rbegin() + 1, other.m_points.rend());
        m_lines.insert(m_lines.end(), other.m_lines.rbegin(), other.m_lines.rend());
    }
    void Reverse()
    {
        std::reverse(m_points.begin(), m_points.end());
        std::reverse(m_lines.begin(), m_lines.end());
    }

    /// The side as a closed run, valid until the next one; its end leads to its start by a line.
    const CurveDbl& MakeRun()
    {
        CurveDbl& run = m_run;
        if (m_points.empty())
            return run = CurveDbl();
        run.MoveTo(m_points.front());
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            const Point* p = &m_points[3 * i];
            if (m_lines[i])
                run.LineTo(p[3]);
            else
                run.CurveTo(p[1], p[2], p[3]);
        }
        run.SetClosed(true);
        return run;
    }

private:
    void ForceLineTo(Point end)
    {
        if (m_points.empty()) {
            m_points.push_back(end);
            return;
        }
        m_points.insert(m_points.end(), {m_points.back(), end, end});
        m_lines.push_back(true);
    }

    std::vector<Point> m_points; // as those of CurveDbl
    std::vector<char> m_lines;   // whether the segments are lines
    double m_shortest = 0.0;
    bool m_inFan = false;
    std::size_t m_fanStart = 0; // the fan's first point, and its first segment after it
    std::size_t m_fanLine = 0;
    Point m_fanTangent; // where the fan began
    CurveDbl m_run;     // keeps the memory that it grows in, so that copies take what they need
};

} // namespace Geometry
