#include <geometry/ArcLengths.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include <geometry/outline/Quadrature.h>
#include <geometry/stroke/StrokeVector.h>

namespace Geometry {
namespace {

double MeasureBetween(const CubicPolynomial& cubic, double low, double high)
{
    return Integrate([&](double t) { return Length(cubic.Derivative(t)); }, low, high);
}

/// Half the derivative of the square of the speed, a polynomial.
class Acceleration
{
public:
    explicit Acceleration(const CubicPolynomial& cubic) noexcept
    {
        // The derivative is a + b·t + c·t².
        const Point a = cubic.Derivative(0.0), b = 6.0 * cubic.SecondDifference(0.0);
        const Point c = 3.0 * (cubic.SecondDifference(1.0) - cubic.SecondDifference(0.0));
        m_coefficients = {Dot(a, b), 2.0 * Dot(a, c) + Dot(b, b), 3.0 * Dot(b, c), 2.0 * Dot(c, c)};
    }
    double operator()(double t) const noexcept
    {
        const auto& c = m_coefficients;
        return c[0] + t * (c[1] + t * (c[2] + t * c[3]));
    }
    /// Where it may turn, in order, kept between two parameters.
    std::pair<double, double> FindTurns(double from, double to) const noexcept
    {
        const double a = 3.0 * m_coefficients[3], b = m_coefficients[2], c = m_coefficients[1];
        const double root = std::sqrt(std::max(b * b - a * c, 0.0));
        const double q = -(b + std::copysign(root, b)); // cancels nothing
        const auto limit = [&](double t) { return t > from ? std::min(t, to) : from; };
        return std::minmax({limit(q / a), limit(c / q)});
    }

private:
    std::array<double, 4> m_coefficients;
};

/// Calls \p visit(t) for the minima of the speed between two parameters, in order, to 1e-7 of the
/// way.
template<class Visit>
void ForEachSpeedMinimum(const CubicPolynomial& cubic, double from, double to, const Visit& visit)
{
    const Acceleration acceleration(cubic);
    const auto [first, second] = acceleration.FindTurns(from, to);
    double low = from;
    for (const double high : {first, second, to}) {
        double a = low, b = high;
        low = high;
        if (!(acceleration(a) < 0.0 && acceleration(b) > 0.0))
            continue;
        for (int i = 0; i < 23; ++i) {
            const double middle = 0.5 * (a + b);
            (acceleration(middle) < 0.0 ? a : b) = middle;
        }
        visit(0.5 * (a + b));
    }
}

/// Where a length is about the share \p u of that of an interval, as a share of the interval: the
/// cubic through both ends with the right slopes there, which are the inverse of the speeds.
double GuessShare(double u, double slope0, double slope1)
{
    const double r = 1.0 - u;
    const double share = u * (u * (3.0 - 2.0 * u) + r * (slope0 * r - slope1 * u));
    return share > 0.0 && share < 1.0 ? share : u;
}

} // namespace

ArcLengths::Arc ArcLengths::Measure(const CubicPolynomial& cubic, double from, double to)
{
    constexpr double precision = 1e-11; // of the whole
    constexpr int depth = 20;
    Arc arc{from, to, 0.0, static_cast<std::uint32_t>(m_places.size()), 0};
    const double whole = MeasureBetween(cubic, from, to), enough = precision * whole;
    // Where the speed nearly vanishes, it has a bend that integrals may miss within an interval,
    // however often that is halved; at its end it is found.
    Place at{from, 0.0};
    ForEachSpeedMinimum(cubic, from, to, [&](double t) {
        AddInterval(cubic, at, t, MeasureBetween(cubic, at.t, t), enough, depth);
    });
    const double rest = at.t > from ? MeasureBetween(cubic, at.t, to) : whole;
    AddInterval(cubic, at, to, rest, enough, depth);
    arc.length = at.length;
    arc.count = static_cast<std::uint32_t>(m_places.size()) - arc.first;
    return arc;
}

/// Adds the places of an interval. \param at where it begins; moved to its end. \param whole its
/// length by one integral.
void ArcLengths::AddInterval(const CubicPolynomial& cubic, Place& at, double to, double whole,
                             double enough, int depth)
{
    const double middle = 0.5 * (at.t + to);
    const double before = MeasureBetween(cubic, at.t, middle);
    const double after = MeasureBetween(cubic, middle, to);
    if (depth > 0 && std::abs(before + after - whole) > enough) {
        AddInterval(cubic, at, middle, before, enough, depth - 1);
        AddInterval(cubic, at, to, after, enough, depth - 1);
        return;
    }
    m_places.push_back({middle, at.length + before});
    at = {to, at.length + before + after};
    m_places.push_back(at);
}

/// Where the interval begins that ends at \p place.
ArcLengths::Place ArcLengths::GetBefore(const Arc& arc, const Place* place) const noexcept
{
    return place > m_places.data() + arc.first ? place[-1] : Place{arc.from, 0.0};
}

double ArcLengths::GetLength(const CubicPolynomial& cubic, const Arc& arc, double t) const noexcept
{
    if (!(t > arc.from))
        return 0.0;
    if (!(t < arc.to))
        return arc.length;
    const Place* const places = m_places.data() + arc.first;
    const Place* const next = std::lower_bound(places, places + arc.count - 1, t,
                                               [](const Place& p, double at) { return p.t < at; });
    const Place low = GetBefore(arc, next);
    return std::min(low.length + MeasureBetween(cubic, low.t, t), next->length);
}

double ArcLengths::FindParameter(const CubicPolynomial& cubic, const Arc& arc,
                                 double length) const noexcept
{
    if (!(length > 0.0))
        return arc.from;
    if (!(length < arc.length))
        return arc.to;
    const Place* const places = m_places.data() + arc.first;
    const Place* const next =
        std::lower_bound(places, places + arc.count - 1, length,
                         [](const Place& p, double at) { return p.length < at; });
    const Place begin = GetBefore(arc, next);
    const double wanted = length - begin.length, whole = next->length - begin.length;
    const double enough = 1e-10 * arc.length;
    double low = begin.t, high = next->t;
    const double pace = whole / (high - low);
    double t = low + (high - low) * GuessShare(std::min(wanted / whole, 1.0),
                                               pace / Length(cubic.Derivative(low)),
                                               pace / Length(cubic.Derivative(high)));
    for (int i = 0; i < 60; ++i) {
        const double error = MeasureBetween(cubic, begin.t, t) - wanted;
        (error > 0.0 ? high : low) = t;
        const Point first = cubic.Derivative(t), second = 6.0 * cubic.SecondDifference(t);
        const double speed = Length(first), step = error / speed;
        // Halley's step, for which the speed grows by first·second/speed.
        const double moved = t - step * (1.0 + 0.5 * step * Dot(first, second) / (speed * speed));
        if (!(moved >= low && moved <= high)) {
            t = 0.5 * (low + high);
            if (!(t > low && t < high))
                break;
            continue;
        }
        t = moved;
        if (0.5 * Length(second) * step * step <= enough) // more than one of Newton's would leave
            break;
    }
    return t;
}

} // namespace Geometry
