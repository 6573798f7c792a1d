#pragma once

#include <cstddef>
#include <vector>

#include <geometry/PolyCurve.h>

namespace Svg {

/// Finds places on a path by their distance from its start along it. Between the runs of the path
/// nothing is counted.
class PathMeasure
{
public:
    struct Place
    {
        Geometry::Point point;
        Geometry::Point direction; ///< of the path there, of length 1
    };

    explicit PathMeasure(const Geometry::PolyCurveDbl& path);

    double GetLength() const noexcept { return m_lengths.empty() ? 0.0 : m_lengths.back(); }
    std::size_t GetSegmentCount() const noexcept { return m_segments.size(); }
    /// Whether it is a single run that ends where it begins.
    bool IsLoop() const noexcept { return m_isLoop; }

    /// \param distance from 0 to the length; values outside are clamped. \pre the length is not 0.
    Place Locate(double distance) const;

private:
    /// A cubic, or a line with its controls at thirds.
    struct Segment
    {
        Geometry::Point points[4];

        Geometry::Point Evaluate(double t) const noexcept;
        Geometry::Point Derive(double t) const noexcept;
        double MeasureTo(double t) const noexcept;
        double FindParameter(double length) const noexcept;
        Geometry::Point FindDirection(double t) const noexcept;
    };

    void Add(Geometry::Point a, Geometry::Point b, Geometry::Point c, Geometry::Point d);
    void AddLine(Geometry::Point a, Geometry::Point b);

    std::vector<Segment> m_segments;
    std::vector<double> m_lengths; ///< from the start of the path to the end of each segment
    bool m_isLoop = false;
};

} // namespace Svg
