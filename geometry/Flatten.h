#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include <kernel/Point.h>

namespace Geometry {

/// A cubic Bézier as the polynomial p0 + t·(c1 + t·(c2 + t·c3)), whose coefficients are differences
/// of the control points, so that evaluating it far from the origin loses nothing.
class CubicPolynomial
{
public:
    using Point = Kernel::PointT<double>;

    CubicPolynomial(Point p0, Point p1, Point p2, Point p3) noexcept
        : m_p0(p0),
          m_p3(p3),
          m_second0(p0 - 2.0 * p1 + p2),
          m_second1(p1 - 2.0 * p2 + p3),
          m_c1(3.0 * (p1 - p0)),
          m_c2(3.0 * m_second0),
          m_c3(m_second1 - m_second0)
    {}

    Point Start() const noexcept { return m_p0; }
    Point End() const noexcept { return m_p3; }
    /// The point at \p t in [0, 1].
    Point Evaluate(double t) const noexcept { return m_p0 + t * (m_c1 + t * (m_c2 + t * m_c3)); }
    /// The first derivative at \p t.
    Point Derivative(double t) const noexcept { return m_c1 + t * (2.0 * m_c2 + 3.0 * t * m_c3); }
    /// A sixth of the second derivative at \p t; it runs linearly between the second differences of
    /// the control points.
    Point SecondDifference(double t) const noexcept { return m_second0 + t * m_c3; }
    /// Whether every coefficient is finite.
    bool IsFinite() const noexcept
    {
        const Point sum = m_p0 + m_p3 + m_c1 + m_c2 + m_c3;
        return std::isfinite(sum.x) && std::isfinite(sum.y);
    }

private:
    Point m_p0, m_p3, m_second0, m_second1, m_c1, m_c2, m_c3;
};

/// The most pieces that one cubic is flattened into. Enough for every cubic within ±2^21 pixels at
/// a tolerance of 0.002 pixels; a guard for what is larger still.
inline constexpr std::size_t MaximumCubicPieces = 65536;

/// The number of equal parameter steps that keep the chords of a cubic within \p tolerance of it.
///
/// A chord over a step h strays from the curve by at most h²/8 times the largest second derivative,
/// which is six times the larger of both second differences; hence Wang's bound n =
/// √(¾·M/tolerance) (Wang 1984; Filip, Magedson and Markot 1986). A tolerance that is not positive
/// counts as a thousandth of M.
inline std::size_t CountCubicPieces(const CubicPolynomial& cubic, double tolerance) noexcept
{
    const auto squaredLength = [](Kernel::PointT<double> v) { return v.x * v.x + v.y * v.y; };
    const double largest = std::sqrt(std::max(squaredLength(cubic.SecondDifference(0.0)),
                                              squaredLength(cubic.SecondDifference(1.0))));
    if (!(largest > tolerance * 1e-12))
        return 1;
    const double ratio = tolerance > 0.0 ? largest / tolerance : 1000.0;
    const double count = std::ceil(std::sqrt(0.75 * ratio));
    return count < static_cast<double>(MaximumCubicPieces)
               ? std::max<std::size_t>(static_cast<std::size_t>(count), 1)
               : MaximumCubicPieces;
}

/// Calls \p sink(point) for the points of a polyline from \p p0 (which is left out) to \p p3, whose
/// distance to the cubic stays within \p tolerance, up to MaximumCubicPieces pieces. The last point
/// is \p p3 exactly; input that is not finite gives \p p3 alone.
template<class Sink>
void FlattenCubic(Kernel::PointT<double> p0, Kernel::PointT<double> p1, Kernel::PointT<double> p2,
                  Kernel::PointT<double> p3, double tolerance, Sink&& sink)
{
    const CubicPolynomial cubic(p0, p1, p2, p3);
    const std::size_t count = cubic.IsFinite() ? CountCubicPieces(cubic, tolerance) : 1;
    const double step = 1.0 / static_cast<double>(count);
    for (std::size_t i = 1; i < count; ++i)
        sink(cubic.Evaluate(static_cast<double>(i) * step));
    sink(p3);
}

} // namespace Geometry
