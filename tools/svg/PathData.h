#pragma once

#include <compare>
#include <cstddef>
#include <string_view>
#include <vector>

#include <geometry/PolyCurve.h>
#include <kernel/Counted.h>

namespace Svg {

/// Where a segment of a path begins.
struct PathJoint
{
    std::size_t run = 0;
    std::size_t segment = 0; ///< of the run

    friend auto operator<=>(const PathJoint&, const PathJoint&) = default;
};

/// A path that was read.
struct PathDataResult
{
    Kernel::Counted<Geometry::PolyCurveDbl> path; ///< never null
    /// Whether the text ended as the grammar allows; otherwise the path ends before the error.
    bool complete = true;
    /// The joints inside of arcs, which are made of several curves; ascending.
    std::vector<PathJoint> innerJoints;
};

/// Reads the text of a `d` attribute: all commands, absolute and relative.
PathDataResult ParsePathData(std::string_view text);

/// A list of points that was read.
struct PointListResult
{
    std::vector<Kernel::PointT<double>> points;
    bool complete = true; ///< as in PathDataResult; an odd last coordinate is dropped
};

/// Reads the text of a `points` attribute.
PointListResult ParsePoints(std::string_view text);

} // namespace Svg
