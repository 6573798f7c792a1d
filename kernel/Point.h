#pragma once

namespace Kernel {

/// A point or vector in the plane.
template<class T>
struct PointT
{
    T x{};
    T y{};

    friend constexpr bool operator==(const PointT&, const PointT&) noexcept = default;

    friend constexpr PointT operator+(PointT a, PointT b) noexcept
    {
        return {a.x + b.x, a.y + b.y};
    }
    friend constexpr PointT operator-(PointT a, PointT b) noexcept
    {
        return {a.x - b.x, a.y - b.y};
    }
    friend constexpr PointT operator*(PointT a, T factor) noexcept
    {
        return {a.x * factor, a.y * factor};
    }
    friend constexpr PointT operator*(T factor, PointT a) noexcept { return a * factor; }
};

} // namespace Kernel
