#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <geometry/ArcLengths.h>
#include <geometry/Export.h>
#include <geometry/PolyCurve.h>

namespace Geometry {

/// Finds places on a path by their distance from its start along it, for text, markers, dashes or
/// motion along a path.
///
/// The runs of the path follow on each other; between them nothing is counted. The straight segment
/// that closes a run is a part of it. Segments without length, and those whose length is not
/// finite, are left out. Lengths are exact to 1e-8 of a segment, those of cubics with cusps
/// included.
///
/// A measure keeps what it needs of the path, and may be used by several threads at once.
class GEOMETRY_EXPORT PathMeasure
{
public:
    /// A point of the path and the direction of the path there.
    struct Place
    {
        Point point;
        /// The unit tangent. Where the curve stands still, the direction in which it goes on (at
        /// the end of a segment, in which it arrived).
        Point direction;
    };

    /// Measures a path, in time by the number of its segments.
    explicit PathMeasure(const PolyCurveDbl& path);

    /// The length of all runs together, in the units of the path's points.
    double GetLength() const noexcept { return m_lengths.empty() ? 0.0 : m_lengths.back(); }
    /// The number of segments that have a length.
    std::size_t GetSegmentCount() const noexcept { return m_segments.size(); }
    /// Whether the path is a single closed run, on which the end is the start.
    bool IsLoop() const noexcept { return m_isLoop; }

    /// The place at a distance from the start, in logarithmic time; where two segments meet, the
    /// end of the first one.
    /// \param distance from 0 to the length; values outside are clamped. \pre the length is not 0.
    Place Locate(double distance) const;

private:
    struct Segment
    {
        std::array<Point, 4> points; // of a line: its ends first and last
        ArcLengths::Arc arc;         // of a line: nothing but its length
        bool isLine;
    };

    void AddLine(Point from, Point to);
    void AddCubic(const Point* points);
    void Add(const Segment& segment);

    std::vector<Segment> m_segments;
    std::vector<double> m_lengths; // from the start of the path to the end of each segment
    ArcLengths m_arcs;
    bool m_isLoop = false;
};

} // namespace Geometry
