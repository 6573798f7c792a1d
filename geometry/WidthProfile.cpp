#include <geometry/WidthProfile.h>

#include <algorithm>
#include <cmath>

namespace Geometry {
namespace {

using Controls = std::array<double, 4>;

/// A Bézier polynomial of one coordinate.
double Evaluate(const Controls& c, double t)
{
    const double r = 1.0 - t;
    return r * r * r * c[0] + 3.0 * r * r * t * c[1] + 3.0 * r * t * t * c[2] + t * t * t * c[3];
}

double Derivative(const Controls& c, double t)
{
    const double r = 1.0 - t;
    return 3.0 * (r * r * (c[1] - c[0]) + 2.0 * r * t * (c[2] - c[1]) + t * t * (c[3] - c[2]));
}

/// The parameter where controls that lie between the first and the last give \p value: Newton's
/// steps from \p t, kept within what is known.
double Solve(const Controls& c, double value, double t)
{
    if (!(value > c[0]))
        return 0.0;
    if (!(value < c[3]))
        return 1.0;
    const double c1 = 3.0 * (c[1] - c[0]), c2 = 3.0 * (c[2] - c[1]) - c1;
    const double c3 = c[3] - c[0] - c1 - c2;
    if (!(t >= 0.0))
        t = (value - c[0]) / (c[3] - c[0]);
    double low = 0.0, high = 1.0;
    for (int i = 0; i < 60; ++i) {
        const double error = c[0] + t * (c1 + t * (c2 + t * c3)) - value;
        if (std::abs(error) <= 1e-15)
            break;
        (error > 0.0 ? high : low) = t;
        const double next = t - error / (c1 + t * (2.0 * c2 + 3.0 * t * c3));
        t = next > low && next < high ? next : 0.5 * (low + high);
    }
    return t;
}

} // namespace

WidthProfile::WidthProfile(const CurveDbl& curve)
{
    m_spans.clear();
    const std::vector<Point>& points = curve.GetPoints();
    const auto factor = [](Point p) {
        return std::isfinite(p.y) ? std::clamp(p.y, -MostFactor, MostFactor) : 0.0;
    };
    double last = 1.0; // the factor behind what there is
    bool started = false;
    for (std::size_t i = 0; i < points.size(); i += 3) {
        if (!std::isfinite(points[i].x))
            continue;
        if (!started)
            AddConstant(points[i].x, factor(points[i]));
        started = true;
        last = factor(points[i]);
        if (i + 3 >= points.size() || !std::isfinite(points[i + 3].x))
            continue;
        Controls x, y;
        const double low = points[i].x, high = std::max(low, points[i + 3].x);
        for (std::size_t k = 0; k < 4; ++k) {
            // Between the ends, controls make x grow throughout.
            x[k] = points[i + k].x > low ? std::min(points[i + k].x, high) : low;
            y[k] = factor(points[i + k]);
        }
        if (curve.GetSegment(i / 3) == CurveDbl::Segment::Line) {
            x = {low, std::lerp(low, high, 1.0 / 3.0), std::lerp(low, high, 2.0 / 3.0), high};
            y = {y[0], std::lerp(y[0], y[3], 1.0 / 3.0), std::lerp(y[0], y[3], 2.0 / 3.0), y[3]};
        }
        Add(x, y);
    }
    AddConstant(1.0, last);
    m_spans.back().end = 1.0;
    for (const Span& span : m_spans)
        m_bound = std::max(m_bound, *std::max_element(span.y.begin(), span.y.end()));
}

void WidthProfile::Add(const Controls& x, const Controls& y)
{
    const double before = m_spans.empty() ? 0.0 : m_spans.back().end;
    if (x[3] > before && before < 1.0)
        m_spans.push_back({std::min(x[3], 1.0), x, y});
}

void WidthProfile::AddConstant(double end, double y)
{
    Add({0.0, end / 3.0, 2.0 * end / 3.0, end}, {y, y, y, y});
}

bool WidthProfile::IsRedundant() const noexcept
{
    // A Bézier curve is constant exactly when its controls are.
    return std::all_of(m_spans.begin(), m_spans.end(), [](const Span& span) {
        return std::all_of(span.y.begin(), span.y.end(),
                           [](double y) { return std::abs(y - 1.0) <= 1e-6; });
    });
}

WidthProfile::Value WidthProfile::Evaluate(std::size_t span, double share,
                                           double& at) const noexcept
{
    const Span& s = m_spans[span];
    const double t = at = Solve(s.x, share, at);
    const double y = Geometry::Evaluate(s.y, t);
    if (!(y >= 0.0))
        return {0.0, 0.0};
    // Where the profile is upright, the slope is that of something very steep.
    const double dx = std::max(Derivative(s.x, t), 1e-6);
    return {y, Derivative(s.y, t) / dx};
}

} // namespace Geometry
