#pragma once

#include <cmath>
#include <initializer_list>

#include <geometry/Curve.h>

namespace Geometry {

inline double Dot(Point a, Point b) noexcept
{
    return a.x * b.x + a.y * b.y;
}

/// Positive where \p b lies to the left of \p a (x right, y up).
inline double Cross(Point a, Point b) noexcept
{
    return a.x * b.y - a.y * b.x;
}

/// \pre the coordinates are at most about 1e150, so that their squares are finite.
inline double Length(Point a) noexcept
{
    return std::sqrt(Dot(a, a));
}

/// \p a turned a quarter to the left: the normal of a direction.
inline Point Normal(Point a) noexcept
{
    return {-a.y, a.x};
}

/// \p a turned to the left by an angle.
inline Point Rotate(Point a, double angle) noexcept
{
    const double cosine = std::cos(angle), sine = std::sin(angle);
    return {cosine * a.x - sine * a.y, sine * a.x + cosine * a.y};
}

/// Whether two unit vectors are the same direction for every purpose of strokes.
inline bool IsSameDirection(Point in, Point out) noexcept
{
    return in == out || (Dot(in, out) > 0.0 && std::abs(Cross(in, out)) < 1e-8);
}

/// The direction of the first candidate that is longer than \p shortest; (0, 0) if none is.
inline Point FirstDirection(std::initializer_list<Point> candidates, double shortest) noexcept
{
    for (const Point candidate : candidates) {
        const double length = Length(candidate);
        if (length > shortest)
            return candidate * (1.0 / length);
    }
    return {};
}

} // namespace Geometry
