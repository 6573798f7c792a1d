#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>

#include <geometry/stroke/StrokeVector.h>
#include <geometry/Stroker.h>

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
    /// turning at their ends; handles no longer are left out, as their directions would turn the
    /// pen on the spot.
    double tiny;
    double shortest; ///< lengths below are as good as none

    static StrokePrecision Make(const StrokeParameters& parameters) noexcept
    {
        const double radius = 0.5 * parameters.width;
        const double tolerance =
            parameters.tolerance > 0.0 ? parameters.tolerance : 1e-3 * parameters.width;
        return {radius, tolerance, std::min(radius, 1e7 * tolerance), 0.1 * tolerance,
                1e-4 * std::min(tolerance, radius)};
    }

    /// The same for a run with coordinates as large as this: directions between points that are
    /// fewer than a thousand steps of their numbers apart are noise.
    StrokePrecision At(double magnitude) const noexcept
    {
        StrokePrecision precision = *this;
        precision.shortest = std::max(shortest, 0x1p-42 * magnitude);
        return precision;
    }

    /// A cubic's four points, handles that are too short to see being drawn in.
    std::array<Point, 4> WithoutTinyHandles(const Point* points) const noexcept
    {
        std::array<Point, 4> p{points[0], points[1], points[2], points[3]};
        const auto isTiny = [this](Point a, Point b) { return Length(b - a) <= tiny; };
        if (isTiny(p[0], p[1]))
            p[1] = p[0];
        if (isTiny(p[2], p[3]))
            p[2] = p[3];
        // Where there is no handle, the other one is the next to give the direction.
        if (p[1] == p[0] && isTiny(p[0], p[2]))
            p[2] = p[0];
        if (p[2] == p[3] && isTiny(p[1], p[3]))
            p[1] = p[3];
        return p;
    }
};

/// The largest coordinate of a run; infinite where the run cannot be stroked, as one is not finite
/// or so large (beyond 1e100) that its square would not be.
inline double GetMagnitude(std::span<const Point> points) noexcept
{
    double magnitude = 0.0;
    for (const Point point : points) {
        const double x = std::abs(point.x), y = std::abs(point.y);
        if (!(x <= 1e100 && y <= 1e100))
            return std::numeric_limits<double>::infinity();
        magnitude = std::max({magnitude, x, y});
    }
    return magnitude;
}

/// Whether a cubic is a straight line because its controls are its ends.
inline bool IsLine(const std::array<Point, 4>& p) noexcept
{
    return (p[1] == p[0] && (p[2] == p[0] || p[2] == p[3])) || (p[1] == p[3] && p[2] == p[3]);
}

/// Whether a pen draws anything: its width is positive, and all lengths are finite and not so large
/// that their squares would not be.
inline bool CanDraw(const StrokeParameters& parameters) noexcept
{
    constexpr double largest = 1e100;
    const double unit = parameters.dashUnit;
    const auto isUsable = [](double value) { return std::abs(value) <= largest; };
    const auto isUsableLength = [&](double value) { return isUsable(value * unit); };
    return parameters.width > 0.0 && isUsable(parameters.width) && isUsable(parameters.capLength) &&
           isUsableLength(parameters.dashPhase) &&
           std::all_of(parameters.dashes.begin(), parameters.dashes.end(), isUsableLength);
}

} // namespace Geometry
