#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include <geometry/stroke/StrokeVector.h>

namespace Geometry {

/// A point of a curve and the direction of the curve there, of length 1.
struct CurveSample
{
    Point point;
    Point direction;
};

/// Fits one cubic Bézier to a piece of a curve that bends by no more than about a quarter turn.
///
/// The cubic has the curve's ends and directions there; what is free are the lengths of both
/// handles. They are those with the least squares of the distances between curve and cubic, taken
/// along the normals of the curve at samples (by Gauss and Newton's method, the parameters of the
/// cubic at those normals by Newton's). The error falls with the sixth power of the length of the
/// piece, as for a match of the curvatures at its ends, but it is spread evenly over both sides.
class CubicFit
{
public:
    /// Where between the ends the curve is sampled, in parameters of its own.
    static constexpr std::size_t Count = 7;
    using Samples = std::array<CurveSample, Count>;
    static constexpr double GetFraction(std::size_t sample)
    {
        return static_cast<double>(sample + 1) / static_cast<double>(Count + 1);
    }

    /// \param start,end the ends of the curve \param samples at GetFraction of the way between them
    /// \param enough errors below this one need no better fit
    CubicFit(const CurveSample& start, const CurveSample& end, const Samples& samples,
             double enough)
        : m_start(start), m_end(end), m_samples(samples), m_chord(Length(end.point - start.point))
    {
        for (std::size_t i = 0; i < Count; ++i)
            m_parameters[i] = GetFraction(i);
        // Those of an arc that turns as far.
        const double cosine = std::max(Dot(start.direction, end.direction), -0.5);
        m_first = m_last = m_chord * 2.0 / (3.0 * (1.0 + std::sqrt(0.5 * (1.0 + cosine))));
        Measure();
        for (int i = 0; i < 6 && m_error > enough; ++i) {
            const double first = m_first, last = m_last, error = m_error;
            Improve();
            Measure();
            if (m_error < 0.9 * error)
                continue;
            if (m_error > error) {
                m_first = first;
                m_last = last;
                m_error = error;
            }
            break;
        }
    }

    /// The largest distance at a sample; infinite where the cubic misses the normal of one.
    double GetError() const noexcept { return m_error; }
    Point GetControl1() const noexcept { return m_start.point + m_first * m_start.direction; }
    Point GetControl2() const noexcept { return m_end.point - m_last * m_end.direction; }

private:
    Point Evaluate(double s) const noexcept
    {
        const double r = 1.0 - s;
        return m_start.point + s * s * (3.0 - 2.0 * s) * (m_end.point - m_start.point) +
               3.0 * s * r * r * m_first * m_start.direction -
               3.0 * s * s * r * m_last * m_end.direction;
    }

    Point Derivative(double s) const noexcept
    {
        const double r = 1.0 - s;
        return 6.0 * s * r * (m_end.point - m_start.point) +
               3.0 * r * (1.0 - 3.0 * s) * m_first * m_start.direction -
               3.0 * s * (2.0 - 3.0 * s) * m_last * m_end.direction;
    }

    void Measure() noexcept
    {
        m_error = 0.0;
        for (std::size_t i = 0; i < Count; ++i) {
            const CurveSample& sample = m_samples[i];
            double& s = m_parameters[i];
            double ahead = 0.0;
            for (int step = 0; step < 3; ++step) {
                ahead = Dot(Evaluate(s) - sample.point, sample.direction);
                const double speed = Dot(Derivative(s), sample.direction);
                if (!(speed > 0.0) || std::abs(ahead) <= 1e-9 * m_chord)
                    break;
                s = std::clamp(s - ahead / speed, 0.0, 1.0);
            }
            const Point away = Evaluate(s) - sample.point;
            m_distances[i] = Cross(sample.direction, away);
            ahead = Dot(away, sample.direction);
            m_error = std::max(m_error, std::hypot(m_distances[i], ahead));
        }
    }

    /// One step towards the least squares. How the parameters of the normals change with the
    /// handles is of the second order.
    void Improve() noexcept
    {
        double aa = 0.0, ab = 0.0, bb = 0.0, ra = 0.0, rb = 0.0;
        for (std::size_t i = 0; i < Count; ++i) {
            const double s = m_parameters[i], r = 1.0 - s;
            const Point direction = m_samples[i].direction;
            const double a = 3.0 * s * r * r * Cross(direction, m_start.direction);
            const double b = -3.0 * s * s * r * Cross(direction, m_end.direction);
            aa += a * a;
            ab += a * b;
            bb += b * b;
            ra -= a * m_distances[i];
            rb -= b * m_distances[i];
        }
        const double damping = 1e-9 * (aa + bb); // nearly straight pieces say little of handles
        aa += damping;
        bb += damping;
        const double determinant = aa * bb - ab * ab;
        if (!(determinant > 0.0))
            return;
        m_first = Limit(m_first + (ra * bb - rb * ab) / determinant);
        m_last = Limit(m_last + (rb * aa - ra * ab) / determinant);
    }

    /// Handles that cannot make a loop.
    double Limit(double handle) const noexcept { return std::clamp(handle, 0.0, m_chord); }

    CurveSample m_start, m_end;
    const Samples& m_samples;
    double m_chord;
    double m_first = 0.0, m_last = 0.0; // the lengths of the handles
    double m_error = 0.0;
    std::array<double, Count> m_parameters{}; // of the cubic, at the normals of the samples
    std::array<double, Count> m_distances{};  // of the cubic to the left of the curve
};

} // namespace Geometry
