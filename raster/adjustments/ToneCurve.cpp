#include <raster/adjustments/ToneCurve.h>

#include <algorithm>
#include <cmath>

#include <raster/adjustments/AdjustmentOf.h>

namespace Raster {

namespace {

/// Sorted by input, one point per input, all in 0…1.
std::vector<ToneCurvePoint> Tidy(std::vector<ToneCurvePoint> points)
{
    for (ToneCurvePoint& point : points)
        point = {LimitToUnit(point.input), LimitToUnit(point.output)};
    // Reversed, so that the last given comes first of its equals.
    std::ranges::reverse(points);
    std::ranges::stable_sort(points, {}, &ToneCurvePoint::input);
    const auto rest = std::ranges::unique(points, {}, &ToneCurvePoint::input);
    points.erase(rest.begin(), rest.end());
    return points;
}

bool IsDiagonal(const std::vector<ToneCurvePoint>& points)
{
    return points.empty() ||
           (points.front().input == 0 && points.back().input == 1 &&
            std::ranges::all_of(points, [](const auto& p) { return p.input == p.output; }));
}

bool HaveSameSign(double a, double b)
{
    return (a > 0 && b > 0) || (a < 0 && b < 0);
}

/// The slope at an inner point between intervals of widths \p h0, \p h1 and secants \p s0, \p s1.
double GetInnerSlope(double h0, double h1, double s0, double s1)
{
    if (!HaveSameSign(s0, s1))
        return 0;
    const double w0 = 2 * h1 + h0;
    const double w1 = h1 + 2 * h0;
    return (w0 + w1) / (w0 / s0 + w1 / s1);
}

/// The slope at an end; interval 0 is the outer one.
double GetEndSlope(double h0, double h1, double s0, double s1)
{
    const double slope = ((2 * h0 + h1) * s0 - h0 * s1) / (h0 + h1);
    if (!HaveSameSign(slope, s0))
        return 0;
    return !HaveSameSign(s0, s1) && std::abs(slope) > 3 * std::abs(s0) ? 3 * s0 : slope;
}

} // namespace

ToneCurve::ToneCurve(std::vector<ToneCurvePoint> points)
    : m_points(Tidy(std::move(points))), m_isIdentity(IsDiagonal(m_points))
{
    if (m_points.size() > 1)
        MakeSegments();
}

void ToneCurve::MakeSegments()
{
    const std::size_t last = m_points.size() - 1;
    std::vector<double> widths, secants;
    for (std::size_t i = 0; i < last; ++i) {
        widths.push_back(double(m_points[i + 1].input) - m_points[i].input);
        secants.push_back((double(m_points[i + 1].output) - m_points[i].output) / widths[i]);
    }
    const auto slopeAt = [&](std::size_t i) {
        if (last == 1)
            return secants[0];
        if (i == 0)
            return GetEndSlope(widths[0], widths[1], secants[0], secants[1]);
        if (i == last)
            return GetEndSlope(widths[last - 1], widths[last - 2], secants[last - 1],
                               secants[last - 2]);
        return GetInnerSlope(widths[i - 1], widths[i], secants[i - 1], secants[i]);
    };
    for (std::size_t i = 0; i < last; ++i) {
        const double h = widths[i], s = secants[i];
        const double from = slopeAt(i), to = slopeAt(i + 1);
        m_segments.push_back({m_points[i].input, m_points[i].output, float(from),
                              float((3 * s - 2 * from - to) / h),
                              float((from + to - 2 * s) / (h * h))});
    }
}

float ToneCurve::Evaluate(float input) const noexcept
{
    if (m_isIdentity)
        return input;
    if (!(input > m_points.front().input))
        return m_points.front().output;
    if (input >= m_points.back().input)
        return m_points.back().output;
    const auto above =
        std::upper_bound(m_segments.begin() + 1, m_segments.end(), input,
                         [](float value, const Segment& segment) { return value < segment.start; });
    const Segment& s = above[-1];
    const float t = input - s.start;
    return LimitToUnit(s.value + t * (s.slope + t * (s.bend + t * s.twist)));
}

void ToneCurve::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.Add(m_points.size());
    for (const ToneCurvePoint& point : m_points) {
        hash.Add(point.input);
        hash.Add(point.output);
    }
}

} // namespace Raster
