#pragma once

#include <cstdint>

#include <kernel/Rect.h>

namespace Renderer::Coverage {

/// The 24.8 fixed point of the coverage engine: 256 steps per pixel.
inline constexpr int SubPixelShift = 8;
inline constexpr int SubPixelScale = 1 << SubPixelShift;
inline constexpr int SubPixelMask = SubPixelScale - 1;

/// Edges at least this wide are halved before they are walked, as the engine does, so that its
/// products stay within 32 bits.
inline constexpr std::int64_t WidthLimit = std::int64_t{16384} << SubPixelShift;

/// Edges are cut at ± this many pixels before they become fixed point: far outside any page, and
/// small enough that differences of coordinates fit 32 bits with room to spare.
inline constexpr double GuardBox = 2097152.0;

/// The pixels of a page that can be drawn on.
inline constexpr Kernel::RectT<int> GuardRect{-int(GuardBox), -int(GuardBox), int(GuardBox),
                                              int(GuardBox)};

/// One edge in fixed point, in coordinates of the page.
struct Edge
{
    int x1, y1, x2, y2;
};

/// Floor division with its remainder, 0 ≤ remainder < divisor. \pre divisor > 0
/// \tparam Int int where all numbers fit: processors divide it several times as fast.
template<class Int>
struct FloorDivision
{
    Int quotient;
    Int remainder;

    /// \pre both numbers fit.
    template<class Other>
    explicit FloorDivision(const FloorDivision<Other>& other) noexcept
        : quotient(static_cast<Int>(other.quotient)), remainder(static_cast<Int>(other.remainder))
    {}

    FloorDivision(Int dividend, Int divisor) noexcept
        : quotient(dividend / divisor), remainder(dividend % divisor)
    {
        if (remainder < 0) {
            --quotient;
            remainder += divisor;
        }
    }
};

/// Walks floor((start + i·step) / divisor) for i = 0, 1, 2… by additions alone.
template<class Int>
class FloorLine
{
public:
    /// \param first the quotient of the first i.
    FloorLine(const FloorDivision<Int>& first, Int step, Int divisor) noexcept
        : m_value(first), m_step(step, divisor), m_divisor(divisor)
    {}

    Int GetValue() const noexcept { return m_value.quotient; }

    void Advance() noexcept
    {
        m_value.quotient += m_step.quotient;
        m_value.remainder += m_step.remainder;
        if (m_value.remainder >= m_divisor) {
            m_value.remainder -= m_divisor;
            ++m_value.quotient;
        }
    }

private:
    FloorDivision<Int> m_value;
    FloorDivision<Int> m_step;
    Int m_divisor;
};

} // namespace Renderer::Coverage
