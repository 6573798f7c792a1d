#pragma once

#include <algorithm>
#include <cmath>

#include <geometry/StepPace.h>
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

/// Walks along a cubic in the longest parameter steps whose chords are known to stay within a
/// tolerance of it.
///
/// Over a step h with the scaled second differences D0 and D1 at its ends, the curve strays from
/// its chord at the fraction u by u(1−u)·((2−u)·D0 + (1+u)·D1), at most 0.385·M + 0.366·m where M
/// and m are the larger and the smaller of both lengths (2/√27 and ¾ − 2/√27; Wang's ¾·M where they
/// are equal). Where the curve runs forward along its chord, as its control points tell, only the
/// part of D across the chord counts: on real drawings that nearly halves the pieces of a uniform
/// subdivision. A step of √(tolerance/(¾·M)) is always right, which ends every search. The steps
/// that the pieces before would have allowed tell the next one; on average it takes 1.1
/// evaluations.
class CubicWalker
{
public:
    using Point = Kernel::PointT<double>;

    /// A point of the walk.
    struct Step
    {
        double t;
        Point point;
        Point derivative;
        Point second; ///< a sixth of the second derivative
    };

    /// \param tolerance one that is not positive counts as a thousandth of the larger second
    /// difference. \pre the cubic is finite.
    CubicWalker(const CubicPolynomial& cubic, double tolerance) noexcept
        : m_cubic(cubic), m_at(At(0.0)), m_tolerance(tolerance)
    {
        if (!(tolerance > 0.0))
            m_tolerance = 1e-3 * std::sqrt(GetLargestSquare());
    }

    bool IsAtEnd() const noexcept { return m_at.t >= 1.0; }
    const Step& GetStep() const noexcept { return m_at; }
    /// How far, on average, the curve lies from the last chord, as a vector across that.
    Point GetOffset() const noexcept { return m_piece.offset; }

    /// Goes on to the next point; the last one has t = 1 and the cubic's own end.
    void Advance() noexcept
    {
        const double rest = 1.0 - m_at.t;
        double step = m_pace.Choose(rest, [this] { return Predict(); });
        for (int attempt = 0;; ++attempt) {
            const Step next = Towards(step);
            m_piece = Measure(next);
            if (m_piece.excess <= 1.0 || attempt > 3) {
                Accept(next);
                return;
            }
            step = attempt < 3 ? step * std::max(0.25, GetStepFactor(1.0))
                               : std::min(rest, GetSafeStep());
        }
    }

private:
    /// A piece between two points of the walk.
    struct Piece
    {
        double excess; ///< the square of how far curve and chord are apart, in tolerances
        Point offset;
    };

    static double Dot(Point a, Point b) noexcept { return a.x * b.x + a.y * b.y; }
    static double Cross(Point a, Point b) noexcept { return a.x * b.y - a.y * b.x; }

    Step At(double t) const noexcept
    {
        return {t, m_cubic.Evaluate(t), m_cubic.Derivative(t), m_cubic.SecondDifference(t)};
    }

    Step Towards(double step) const noexcept
    {
        Step next = At(StepPace::GetEnd(m_at.t, step));
        if (next.t >= 1.0)
            next.point = m_cubic.End();
        return next;
    }

    void Accept(const Step& next) noexcept
    {
        m_pace.Learn((next.t - m_at.t) * GetStepFactor(3.0));
        m_at = next;
    }

    /// By how much the last step can be changed to meet the tolerance, as errors grow with its
    /// square.
    double GetStepFactor(double largest) const noexcept
    {
        const double excess = m_piece.excess;
        const double square = largest * largest;
        return excess * square * square > 0.88 ? 0.97 / std::sqrt(std::sqrt(excess)) : largest;
    }

    /// The step that the curvature here allows.
    double Predict() const noexcept
    {
        const double across = std::abs(Cross(m_at.derivative, m_at.second));
        const double along = m_tolerance * std::sqrt(Dot(m_at.derivative, m_at.derivative));
        return across > 0.75 * along ? std::sqrt(along / (0.75 * across)) : 1.0;
    }

    /// The square of the larger second difference from here on.
    double GetLargestSquare() const noexcept
    {
        const Point end = m_cubic.SecondDifference(1.0);
        return std::max(Dot(m_at.second, m_at.second), Dot(end, end));
    }

    /// The step that is right whatever the curve does from here on.
    double GetSafeStep() const noexcept
    {
        return std::sqrt(m_tolerance / (0.75 * std::sqrt(GetLargestSquare())));
    }

    Piece Measure(const Step& next) const noexcept
    {
        const Point chord = next.point - m_at.point;
        const double step = next.t - m_at.t;
        const double square = step * step;
        const double tolerance = m_tolerance * m_tolerance;
        const Point middle = chord - (step / 3.0) * (m_at.derivative + next.derivative);
        const bool forward = Dot(m_at.derivative, chord) >= 0.0 &&
                             Dot(next.derivative, chord) >= 0.0 && Dot(middle, chord) >= 0.0;
        const double length = Dot(chord, chord);
        if (forward && length > 0.0) {
            const double a = std::abs(Cross(m_at.second, chord));
            const double b = std::abs(Cross(next.second, chord));
            const double across = square * (0.38491 * std::max(a, b) + 0.36511 * std::min(a, b));
            // Controls at the distances d1 and d2 put a cubic (d1 + d2)/4 aside on average.
            const double aside =
                step / 12.0 * Cross(chord, m_at.derivative - next.derivative) / length;
            return {across * across / (tolerance * length), {-aside * chord.y, aside * chord.x}};
        }
        const double largest =
            std::max(Dot(m_at.second, m_at.second), Dot(next.second, next.second));
        return {0.5625 * square * square * largest / tolerance, {}};
    }

    const CubicPolynomial& m_cubic;
    Step m_at;
    double m_tolerance;
    Piece m_piece{};
    StepPace m_pace;
};

/// Calls \p sink(point) for the points of a polyline from \p p0 (which is left out) to \p p3, whose
/// distance to the cubic stays within \p tolerance, up to MaximumCubicPieces pieces. The last point
/// is \p p3 exactly; input that is not finite gives \p p3 alone.
///
/// The points between the ends lie a little outside the cubic where it bends, so that the polyline
/// lies as much on one side of it as on the other, and areas are kept.
template<class Sink>
void FlattenCubic(Kernel::PointT<double> p0, Kernel::PointT<double> p1, Kernel::PointT<double> p2,
                  Kernel::PointT<double> p3, double tolerance, Sink&& sink)
{
    using Point = Kernel::PointT<double>;
    const CubicPolynomial cubic(p0, p1, p2, p3);
    if (!cubic.IsFinite()) {
        sink(p3);
        return;
    }
    CubicWalker walker(cubic, tolerance);
    walker.Advance();
    while (!walker.IsAtEnd()) {
        const Point point = walker.GetStep().point, before = walker.GetOffset();
        walker.Advance();
        const Point after = walker.GetOffset();
        const bool sameSide = before.x * after.x + before.y * after.y > 0.0;
        sink(sameSide ? point + 0.5 * (before + after) : point);
    }
    sink(p3);
}

} // namespace Geometry
