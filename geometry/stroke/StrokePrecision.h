#pragma once

#include <algorithm>

namespace Geometry {

/// How finely a pen has to be followed.
struct StrokePrecision
{
    double radius;    ///< half the width of the pen
    double tolerance; ///< largest distance of the outline from the exact one
    /// The radius that counts where the pen turns along a curve or in an arc: no more than some
    /// 7,000 points for a full turn, which keeps the tolerance up to radii ten million times as
    /// large.
    double turningRadius;
    /// Pieces of curves shorter than this (beside a cusp, that is) are drawn straight, the pen
    /// turning at their ends.
    double tiny;
    double shortest; ///< lengths below are as good as none

    static StrokePrecision Make(double radius, double tolerance) noexcept
    {
        return {radius, tolerance, std::min(radius, 1e7 * tolerance), 0.1 * tolerance,
                1e-4 * std::min(tolerance, radius)};
    }
};

} // namespace Geometry
