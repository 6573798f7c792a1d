#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include <geometry/outline/SignChanges.h>
#include <geometry/stroke/StrokeVector.h>

namespace Geometry {

/// The derivative of a cubic Bézier as the polynomial a + b·t + c·t², scaled so that its largest
/// coefficient is 1, and what follows from it: where the cubic bends the other way, where it is
/// slowest, where its curvature is extreme.
class Hodograph
{
public:
    Hodograph(Point p0, Point p1, Point p2, Point p3) noexcept
        : m_a(p1 - p0),
          m_b(2.0 * ((p2 - p1) - (p1 - p0))),
          m_c((p3 - p2) - 2.0 * (p2 - p1) + (p1 - p0))
    {
        const double largest = std::max({std::abs(m_a.x), std::abs(m_a.y), std::abs(m_b.x),
                                         std::abs(m_b.y), std::abs(m_c.x), std::abs(m_c.y)});
        if (largest > 0.0) {
            m_scale = 3.0 * largest;
            m_a = m_a * (1.0 / largest);
            m_b = m_b * (1.0 / largest);
            m_c = m_c * (1.0 / largest);
        }
    }

    /// Makes a point where the derivative nearly vanishes one where it does so.
    void MakeStandStill(double t) noexcept { m_a = m_a - First(t); }

    /// What the derivative was divided by.
    double GetScale() const noexcept { return m_scale; }
    Point First(double t) const noexcept { return m_a + t * (m_b + t * m_c); }
    Point Second(double t) const noexcept { return m_b + 2.0 * t * m_c; }
    Point Third() const noexcept { return 2.0 * m_c; }

    /// Where the curvature changes its sign.
    SignChanges<2> FindInflections() const { return SignChanges<2>(GetBend()); }

    /// Where the speed has an extremum.
    SignChanges<3> FindSpeedExtrema() const { return SignChanges<3>(GetAcceleration()); }

    /// Where the curvature (a × b)/|a|³, a the first and b the second derivative, has an extremum:
    /// its derivative has the sign of (a × b)′·|a|² − 3·(a × b)·(a·b).
    SignChanges<5> FindCurvatureExtrema() const
    {
        const std::array<double, 3> bend = GetBend();
        const std::array<double, 4> acceleration = GetAcceleration();
        const std::array<double, 5> square{Dot(m_a, m_a), 2.0 * Dot(m_a, m_b),
                                           2.0 * Dot(m_a, m_c) + Dot(m_b, m_b), 2.0 * Dot(m_b, m_c),
                                           Dot(m_c, m_c)};
        std::array<double, 6> sum{};
        for (std::size_t i = 0; i < 2; ++i)
            for (std::size_t j = 0; j < 5; ++j)
                sum[i + j] += static_cast<double>(i + 1) * bend[i + 1] * square[j];
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t j = 0; j < 4; ++j)
                sum[i + j] -= 3.0 * bend[i] * acceleration[j];
        return SignChanges<5>(sum);
    }

    /// The vertex of the parabola that the derivative goes along. Between it, the extrema of the
    /// speed and the inflections, the derivative turns by less than half a turn: it goes away from
    /// its point nearest to the origin, less than a quarter from there, in directions that differ
    /// by less than a quarter.
    double GetVertex() const noexcept
    {
        const double square = Dot(m_c, m_c);
        return square > 0.0 ? -0.5 * Dot(m_b, m_c) / square : -1.0;
    }

    /// The parameter between \p low and \p high where the derivative has the given direction;
    /// negative if there is none.
    double FindDirection(Point direction, double low, double high) const
    {
        const SignChanges<2> changes(
            {Cross(m_a, direction), Cross(m_b, direction), Cross(m_c, direction)});
        for (const double t : changes)
            if (t > low && t < high && Dot(First(t), direction) > 0.0)
                return t;
        return -1.0;
    }

private:
    /// First × second derivative.
    std::array<double, 3> GetBend() const noexcept
    {
        return {Cross(m_a, m_b), 2.0 * Cross(m_a, m_c), Cross(m_b, m_c)};
    }
    /// First · second derivative.
    std::array<double, 4> GetAcceleration() const noexcept
    {
        return {Dot(m_a, m_b), 2.0 * Dot(m_a, m_c) + Dot(m_b, m_b), 3.0 * Dot(m_b, m_c),
                2.0 * Dot(m_c, m_c)};
    }

    double m_scale = 1.0;
    Point m_a, m_b, m_c;
};

} // namespace Geometry
