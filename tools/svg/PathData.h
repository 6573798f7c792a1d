#pragma once

#include <string_view>
#include <vector>

#include <geometry/PolyCurve.h>
#include <kernel/Counted.h>

namespace Svg {

/// A path that was read.
struct PathDataResult
{
    Kernel::Counted<Geometry::PolyCurveDbl> path; ///< never null
    /// Whether the text ended as the grammar allows; otherwise the path ends before the error.
    bool complete = true;
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
