#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <geometry/Curve.h>
#include <geometry/Export.h>

namespace Geometry {

/// The factor of a stroke's width along a run, over the share of the run's length, 0…1: a curve
/// taken as a function y(x). Factors below 0, and those that are not finite, count as 0; none are
/// larger than MostFactor.
///
/// Parts of the curve that go back in x are left out (the width then jumps); before its first point
/// and behind its last one the function is constant. The profile is cut into spans within which it
/// is smooth; at the border of two it may bend or jump.
class GEOMETRY_EXPORT WidthProfile
{
public:
    /// Larger factors, of controls, too, count as this: whatever the width, a stroke a million
    /// times as wide shows no more.
    static constexpr double MostFactor = 1e6;

    /// The constant 1.
    WidthProfile() = default;
    explicit WidthProfile(const CurveDbl& curve);

    /// Whether the factor is 1 everywhere, to 1e-6.
    bool IsRedundant() const noexcept;
    /// A factor that none exceeds, at least 1.
    double GetFactorBound() const noexcept { return m_bound; }

    std::size_t GetSpanCount() const noexcept { return m_spans.size(); }
    /// Where a span ends; the last one ends at 1.
    double GetSpanEnd(std::size_t span) const noexcept { return m_spans[span].end; }

    /// A factor and its derivative by the share of the length.
    struct Value
    {
        double factor;
        double slope;
    };
    /// The value at \p share within (or at the ends of) a span.
    Value Evaluate(std::size_t span, double share) const noexcept
    {
        double at = -1.0;
        return Evaluate(span, share, at);
    }
    /// The same for one share after another.
    /// \param at where the last one was found in the span, to look from there; replaced. Negative
    ///        for none.
    Value Evaluate(std::size_t span, double share, double& at) const noexcept;

private:
    /// A Bézier curve of x and y, both x ordered as its controls are, until the end of the span.
    struct Span
    {
        double end = 1.0;
        std::array<double, 4> x{0.0, 1.0 / 3.0, 2.0 / 3.0, 1.0};
        std::array<double, 4> y{1.0, 1.0, 1.0, 1.0};
    };

    void Add(const std::array<double, 4>& x, const std::array<double, 4>& y);
    void AddConstant(double end, double y);

    std::vector<Span> m_spans{Span{}};
    double m_bound = 1.0;
};

} // namespace Geometry
