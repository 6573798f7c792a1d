#include <geometry/Spline.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include <kernel/SavedItems.h>

namespace Geometry {
namespace {

bool IsFinite(Point p)
{
    return std::isfinite(p.x) && std::isfinite(p.y);
}

std::vector<Point> Normalise(std::vector<Point> points)
{
    std::erase_if(points, std::not_fn(IsFinite));
    std::stable_sort(points.begin(), points.end(), [](Point a, Point b) { return a.x < b.x; });
    const auto sameX = [](Point a, Point b) { return a.x == b.x; };
    points.erase(std::unique(points.begin(), points.end(), sameX), points.end());
    if (points.empty())
        points.push_back({0.0, 0.0});
    return points;
}

/// Slopes that make the Hermite interpolant monotone between any two points.
std::vector<double> ComputeSlopes(const std::vector<Point>& points)
{
    const std::size_t count = points.size();
    std::vector<double> slopes(count, 0.0);
    if (count < 2)
        return slopes;
    std::vector<double> secants(count - 1);
    for (std::size_t i = 0; i + 1 < count; ++i)
        secants[i] = (points[i + 1].y - points[i].y) / (points[i + 1].x - points[i].x);

    slopes.front() = secants.front();
    slopes.back() = secants.back();
    for (std::size_t i = 1; i + 1 < count; ++i)
        slopes[i] = secants[i - 1] * secants[i] > 0.0 ? 0.5 * (secants[i - 1] + secants[i]) : 0.0;

    // The interpolant stays monotone when its two slopes, in units of the secant, lie within the
    // circle of radius 3 about the origin.
    for (std::size_t i = 0; i + 1 < count; ++i) {
        if (secants[i] == 0.0) {
            slopes[i] = slopes[i + 1] = 0.0;
            continue;
        }
        const double alpha = slopes[i] / secants[i], beta = slopes[i + 1] / secants[i];
        const double radius = std::hypot(alpha, beta);
        if (radius > 3.0) {
            slopes[i] = 3.0 / radius * alpha * secants[i];
            slopes[i + 1] = 3.0 / radius * beta * secants[i];
        }
    }
    return slopes;
}

} // namespace

Spline::Spline(std::vector<Point> points)
    : m_points(Normalise(std::move(points))), m_slopes(ComputeSlopes(m_points))
{}

const Kernel::ClassProperties& Spline::GetTypeClassProperties()
{
    static const auto& record = *new Kernel::ClassProperties(
        "Spln", &CreateObject, 1, __GetDefaultSerialisation(), nullptr, "Spline");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = Spline::GetTypeClassProperties();

} // namespace

void Spline::Save(Kernel::OutSerialiser& out) const
{
    Kernel::SavedItems::Writer(out).Pairs("Pnts", m_points);
}

bool Spline::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    std::vector<Point> points;
    Kernel::SavedItems::Reader(in).Pairs("Pnts", points);
    if (std::ranges::none_of(points, IsFinite))
        return false;
    m_points = Normalise(std::move(points));
    m_slopes = ComputeSlopes(m_points);
    return true;
}

double Spline::Evaluate(double x) const noexcept
{
    if (std::isnan(x))
        return std::numeric_limits<double>::quiet_NaN();
    const auto after = std::upper_bound(m_points.begin(), m_points.end(), x,
                                        [](double value, Point p) { return value < p.x; });
    if (after == m_points.begin())
        return m_points.front().y;
    if (after == m_points.end())
        return m_points.back().y;
    const auto index = static_cast<std::size_t>(after - m_points.begin());
    const Point a = m_points[index - 1], b = m_points[index];
    const double width = b.x - a.x;
    const double t = (x - a.x) / width, u = 1.0 - t;
    return u * u * ((1.0 + 2.0 * t) * a.y + t * width * m_slopes[index - 1]) +
           t * t * ((1.0 + 2.0 * u) * b.y - u * width * m_slopes[index]);
}

bool Spline::IsConstant(double value) const noexcept
{
    return std::all_of(m_points.begin(), m_points.end(), [value](Point p) { return p.y == value; });
}

} // namespace Geometry
