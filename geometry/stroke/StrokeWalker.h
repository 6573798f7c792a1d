#pragma once

#include <algorithm>
#include <cmath>

#include <geometry/Flatten.h>
#include <geometry/stroke/StrokePrecision.h>
#include <geometry/stroke/StrokeVector.h>

namespace Geometry {

/// Walks along a cubic in steps over which straight edges between the pen's true positions keep
/// within a tolerance of what the pen's edges draw.
///
/// A piece that strays by d from its chord, and whose tangents keep within the angle α of it, has
/// the pen's edges within d + radius·(1 − cos α) of the straight ones. CubicPolynomial's second
/// differences bound d (see CubicWalker); the directions of the piece's three control legs bound α,
/// as the derivative is a combination of them with positive factors.
class StrokeWalker
{
public:
    /// A point of the walk.
    struct Step
    {
        double t;
        Point point;
        Point derivative;
        Point second;  ///< a sixth of the second derivative
        Point tangent; ///< of length 1
    };

    /// A piece between two points of the walk.
    struct Piece
    {
        double excess; ///< a bound of how far straight edges stray, in tolerances
        double length; ///< of the chord
        double along;  ///< length times the cosine of the angle α between chord and tangents
        double middle; ///< by how much the piece lies to the left of its chord, on average
    };

    /// \param start,end the tangents at both ends. \pre the cubic is finite.
    StrokeWalker(const CubicPolynomial& cubic, Point start, Point end,
                 const StrokePrecision& precision) noexcept
        : m_cubic(cubic),
          m_precision(precision),
          m_endTangent(end),
          m_at{0.0, cubic.Start(), cubic.Derivative(0.0), cubic.SecondDifference(0.0), start}
    {}

    bool IsAtEnd() const noexcept { return m_at.t >= 1.0; }
    const Step& GetStep() const noexcept { return m_at; }
    /// The last piece, which ended at GetStep.
    const Piece& GetPiece() const noexcept { return m_piece; }

    /// Goes on to the next point; the last one has t = 1 and the cubic's own end.
    /// \return whether the pen's normals at both ends describe its edges in between; otherwise the
    ///         piece is tiny, or as short a part of the cubic as there is.
    bool Advance() noexcept
    {
        const double rest = 1.0 - m_at.t;
        double step = m_pace.Choose(rest, [this] { return Predict(); });
        for (int attempt = 0;; ++attempt) {
            const Step next = Towards(step);
            m_piece = Measure(next);
            if (m_piece.excess <= 1.0 || GetExtent(next) <= m_precision.tiny ||
                step <= StepPace::Shortest) {
                Accept(next);
                return m_piece.excess <= 1.0;
            }
            step *= attempt < 3 ? std::max(0.25, GetStepFactor(1.0)) : 0.5;
        }
    }

private:
    void Accept(const Step& next) noexcept
    {
        m_pace.Learn((next.t - m_at.t) * GetStepFactor(3.0));
        m_at = next;
    }

    /// By how much a step can be changed to meet the tolerance, as errors grow with its square.
    double GetStepFactor(double largest) const noexcept
    {
        const double excess = m_piece.excess;
        return excess * largest * largest > 0.94 ? 0.97 / std::sqrt(excess) : largest;
    }

    Step Towards(double step) const noexcept
    {
        const double end = StepPace::GetEnd(m_at.t, step);
        const bool inside = end < 1.0;
        Step next{end, inside ? m_cubic.Evaluate(end) : m_cubic.End(), m_cubic.Derivative(end),
                  m_cubic.SecondDifference(end), m_endTangent};
        if (inside)
            next.tangent = GetTangent(next);
        return next;
    }

    /// The tangent at a point inside; at a cusp the direction in which the curve leaves it.
    Point GetTangent(const Step& at) const noexcept
    {
        const double square = Dot(at.derivative, at.derivative);
        const double secondSquare = Dot(at.second, at.second);
        if (square > 1e-18 * secondSquare)
            return at.derivative * (1.0 / std::sqrt(square));
        return secondSquare > 0.0 ? at.second * (1.0 / std::sqrt(secondSquare)) : m_at.tangent;
    }

    /// The step that the curvature κ here allows: chords of length l stray by κ·l²/8 from the path
    /// and by (1 + κ·radius) times that from the outer edge.
    double Predict() const noexcept
    {
        const double speed = Dot(m_at.derivative, m_at.tangent);
        const double across = std::abs(Cross(m_at.tangent, m_at.second));
        const double square = speed * speed;
        const double denominator =
            0.75 * across * (square + 6.0 * m_precision.turningRadius * across);
        const double numerator = m_precision.tolerance * square;
        return denominator > numerator ? std::sqrt(numerator / denominator) : 1.0;
    }

    /// The length of the control legs of the piece to \p next: it reaches no further, even if it
    /// comes back to where it began.
    double GetExtent(const Step& next) const noexcept
    {
        const double third = (next.t - m_at.t) / 3.0;
        const Point first = third * m_at.derivative, last = third * next.derivative;
        return Length(first) + Length(last) + Length(next.point - m_at.point - first - last);
    }

    /// The piece to \p next; its excess is large where nothing is known of its edges.
    Piece Measure(const Step& next) const noexcept
    {
        constexpr double leastCosine = 0.7071; // turns by more than a right angle are not smooth
        const Point chord = next.point - m_at.point;
        const double length = std::sqrt(Dot(chord, chord));
        const double along = std::min(Dot(m_at.tangent, chord), Dot(next.tangent, chord));
        const Piece unknown{4.0, length, along, 0.0};
        if (!(along > leastCosine * length))
            return unknown;
        const double step = next.t - m_at.t;
        const double a = std::abs(Cross(m_at.second, chord));
        const double b = std::abs(Cross(next.second, chord));
        const double strays = step * step * (0.38491 * std::max(a, b) + 0.36511 * std::min(a, b));
        const double turns = m_precision.turningRadius * (length - along);
        const double allowed = m_precision.tolerance * length;
        // The leg in the middle must not point further away from the chord than those at the ends,
        // or than the tolerance admits.
        const Point middle = chord - (step / 3.0) * (m_at.derivative + next.derivative);
        const double middleAlong = Dot(middle, chord);
        const double least =
            std::max(leastCosine * length, length - (allowed - strays) / m_precision.turningRadius);
        const double cosine = std::min(along, least);
        if (middleAlong < 0.0 || middleAlong * middleAlong < cosine * cosine * Dot(middle, middle))
            return unknown;
        // A cubic's controls at d1 and d2 from its chord put it (d1 + d2)/4 aside on average.
        const double aside = (step / 12.0) * Cross(chord, m_at.derivative - next.derivative);
        return {(strays + turns) / allowed, length, along, aside / length};
    }

    const CubicPolynomial& m_cubic;
    const StrokePrecision& m_precision;
    Point m_endTangent;
    Step m_at;
    Piece m_piece{};
    StepPace m_pace;
};

} // namespace Geometry
