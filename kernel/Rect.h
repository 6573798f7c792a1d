#pragma once

#include <algorithm>
#include <limits>

namespace Kernel {

/// An axis-aligned rectangle; right and bottom are exclusive for pixels. y grows downwards.
template<class T>
struct RectT
{
    T left{};
    T top{};
    T right{};
    T bottom{};

    /// The value that each member of an unset rectangle has: -2147483647 for int,
    /// -1.7976931348623157e308 for double.
    static constexpr T Unset = -std::numeric_limits<T>::max();

    /// The rectangle that means "not set".
    static constexpr RectT MakeUnset() noexcept { return {Unset, Unset, Unset, Unset}; }

    constexpr bool IsUnset() const noexcept { return *this == MakeUnset(); }

    /// Whether nothing lies inside (true for rectangles that are inside out).
    constexpr bool IsEmpty() const noexcept { return !(left < right && top < bottom); }

    constexpr T Width() const noexcept { return right - left; }
    constexpr T Height() const noexcept { return bottom - top; }

    /// The common part, which may be empty or inside out.
    constexpr RectT Intersect(const RectT& other) const noexcept
    {
        return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                std::min(bottom, other.bottom)};
    }

    /// The smallest rectangle that holds both.
    constexpr RectT Union(const RectT& other) const noexcept
    {
        return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
                std::max(bottom, other.bottom)};
    }

    /// Whether \p other lies wholly inside (touching edges count as inside).
    constexpr bool Contains(const RectT& other) const noexcept
    {
        return other.left >= left && other.top >= top && other.right <= right &&
               other.bottom <= bottom;
    }

    friend constexpr bool operator==(const RectT&, const RectT&) noexcept = default;
};

} // namespace Kernel
