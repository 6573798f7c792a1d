#pragma once

#include <algorithm>
#include <cmath>

#include <geometry/outline/CubicFit.h>
#include <geometry/outline/OutlinePath.h>
#include <geometry/WidthProfile.h>

namespace Geometry {

/// The pen's ends along a piece of a path, on one side of it.
class Offset
{
public:
    /// \param radius with its sign: positive to the left. \param profile of the width; may be null;
    ///        the path is then measured.
    Offset(const OutlinePath& path, const OutlinePiece& piece, double radius,
           const WidthProfile* profile) noexcept
        : m_path(path),
          m_piece(piece),
          m_cubic(piece.IsLine() ? nullptr : &path.cubics[piece.cubic]),
          m_line(piece.end - piece.start),
          m_radius(radius),
          m_profile(profile),
          m_total(profile ? path.GetLength() : 1.0)
    {}

    const OutlinePiece& GetPiece() const noexcept { return m_piece; }
    const OutlineCubic* GetCubic() const noexcept { return m_cubic; }
    bool IsLeft() const noexcept { return m_radius > 0.0; }

    /// How large the numbers are that points hereabouts are computed from: rounding moves them by
    /// some 1e-16 of it.
    double GetMagnitude() const noexcept
    {
        const auto largest = [](Point a) { return std::max(std::abs(a.x), std::abs(a.y)); };
        return std::max({largest(m_piece.start), largest(m_piece.end), std::abs(m_radius),
                         m_cubic ? m_cubic->hodograph.GetScale() : 0.0});
    }

    /// The point of the path itself.
    Point GetPoint(double t) const noexcept
    {
        if (t <= m_piece.from)
            return m_piece.start;
        if (t >= m_piece.to)
            return m_piece.end;
        return m_cubic ? m_cubic->polynomial.Evaluate(t)
                       : m_piece.start + (t - m_piece.from) / (m_piece.to - m_piece.from) * m_line;
    }

    /// The unit tangent of the path.
    Point GetTangent(double t) const noexcept
    {
        if (t <= m_piece.from || !m_cubic)
            return m_piece.in;
        if (t >= m_piece.to)
            return m_piece.out;
        // So close to a standstill, which is at an end, rounding is larger than what the tangent
        // has turned.
        constexpr double standStill = 1e-11;
        const Point derivative = m_cubic->hodograph.First(t);
        const double speed = Length(derivative);
        if (speed > standStill)
            return derivative * (1.0 / speed);
        return t - m_piece.from < m_piece.to - t ? m_piece.in : m_piece.out;
    }

    /// The signed radius and, with a profile, its derivative by the length of the path.
    WidthProfile::Value GetRadius(double t) const noexcept
    {
        if (!m_profile)
            return {m_radius, 0.0};
        const double share =
            m_total > 0.0 ? (m_piece.position + m_path.GetLength(m_piece, t)) / m_total : 0.0;
        const WidthProfile::Value value = m_profile->Evaluate(m_piece.span, share, m_share);
        return {m_radius * value.factor, m_total > 0.0 ? m_radius * value.slope / m_total : 0.0};
    }

    /// Positive where the pen's end runs forward, negative where the path is rounder than the pen
    /// is wide: speed³·(1 − radius·curvature).
    double GetForwardness(double t) const noexcept
    {
        if (!m_cubic)
            return 1.0;
        const Hodograph& hodograph = m_cubic->hodograph;
        const Point first = hodograph.First(t);
        const double square = Dot(first, first);
        return hodograph.GetScale() * square * std::sqrt(square) -
               GetRadius(t).factor * Cross(first, hodograph.Second(t));
    }

    /// Calls \p turn(t) where the pen's end turns back, in order.
    template<class Turn>
    void ForEachTurn(const Turn& turn) const
    {
        if (!m_cubic || IsGentle())
            return;
        const auto forwardness = [this](double t) { return GetForwardness(t); };
        // Right at a cusp it is noise.
        const auto getMargin = [this](double t) {
            const bool isCusp = Length(m_cubic->hodograph.First(t)) < 1e-8;
            return isCusp ? 1e-6 * (m_piece.to - m_piece.from) : 0.0;
        };
        const double begin = m_piece.from + getMargin(m_piece.from);
        const double end = m_piece.to - getMargin(m_piece.to);
        double low = begin, before = forwardness(begin);
        const auto search = [&](double high) {
            if (!(high > low))
                return;
            const double after = forwardness(high);
            if (before * after < 0.0)
                turn(Bisect(forwardness, low, high));
            low = high;
            before = after;
        };
        // Between two extrema of the curvature, a pen of one width turns back once at most; one of
        // varying width is looked at more closely.
        const int steps = m_profile ? 8 : 1;
        const double* extremum = m_cubic->curvatureExtrema.begin();
        for (int i = 1; i <= steps; ++i) {
            const double limit = i < steps ? std::lerp(begin, end, double(i) / steps) : end;
            for (; extremum != m_cubic->curvatureExtrema.end() && *extremum < limit; ++extremum)
                search(*extremum);
            search(limit);
        }
    }

    /// The pen's end and its direction. \param forward whether it runs forward hereabouts.
    CurveSample Sample(double t, bool forward) const noexcept
    {
        const Point tangent = GetTangent(t), normal = Normal(tangent);
        const WidthProfile::Value radius = GetRadius(t);
        const double sign = forward ? 1.0 : -1.0;
        CurveSample sample{GetPoint(t) + radius.factor * normal, sign * tangent};
        if (radius.slope == 0.0)
            return sample;
        // The derivative by the length of the path is tangent·(1 − radius·curvature) +
        // normal·slope.
        double along = 1.0;
        if (m_cubic) {
            const Hodograph& hodograph = m_cubic->hodograph;
            const double speed = Length(hodograph.First(t));
            const double bend =
                Cross(tangent, hodograph.Second(t)) / (speed * speed * hodograph.GetScale());
            along = std::isfinite(bend) ? 1.0 - radius.factor * bend : 0.0;
        }
        const Point direction = along * tangent + radius.slope * normal;
        const double length = Length(direction);
        if (length > 1e-9 && std::isfinite(length))
            sample.direction = direction * (1.0 / length);
        return sample;
    }

private:
    /// Whether the path is nowhere nearly as round as the pen is wide, which a few curvatures tell.
    bool IsGentle() const noexcept
    {
        const double radius = std::abs(m_radius) * (m_profile ? m_profile->GetFactorBound() : 1.0);
        const auto isGentle = [&](double t) {
            const Hodograph& hodograph = m_cubic->hodograph;
            const Point first = hodograph.First(t);
            const double square = Dot(first, first);
            return radius * std::abs(Cross(first, hodograph.Second(t))) <
                   0.99 * hodograph.GetScale() * square * std::sqrt(square);
        };
        if (!isGentle(m_piece.from) || !isGentle(m_piece.to))
            return false;
        return std::all_of(
            m_cubic->curvatureExtrema.begin(), m_cubic->curvatureExtrema.end(),
            [&](double t) { return t <= m_piece.from || t >= m_piece.to || isGentle(t); });
    }

    const OutlinePath& m_path;
    const OutlinePiece& m_piece;
    const OutlineCubic* m_cubic;
    Point m_line;
    double m_radius;
    const WidthProfile* m_profile;
    double m_total;
    mutable double m_share = -1.0; // where the profile was evaluated last
};

/// A part of an offset over which the pen's end runs one way.
struct OffsetPart
{
    double from, to; ///< parameters
    CurveSample start, end;
    bool forward;
};

} // namespace Geometry
