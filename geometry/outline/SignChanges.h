#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace Geometry {

/// Where a continuous function with values of opposite sign at both ends of [low, high] is zero, to
/// 1e-14 of the interval.
template<class Function>
double Bisect(const Function& function, double low, double high)
{
    const bool rising = function(low) < 0.0;
    const double enough = 1e-14 * (high - low);
    while (high - low > enough) {
        const double middle = 0.5 * (low + high);
        if (middle <= low || middle >= high)
            break;
        ((function(middle) < 0.0) == rising ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

/// The parameters in (0, 1), ascending, at which a polynomial of the degree N changes its sign. It
/// does so at most once between two neighbouring extrema, which are found in the same way.
/// \tparam N the degree, at least 1
template<std::size_t N>
struct SignChanges
{
    std::array<double, N> parameters{};
    std::size_t count = 0;

    /// \param coefficients of the powers 0…N
    explicit SignChanges(const std::array<double, N + 1>& coefficients)
    {
        const auto value = [&](double t) {
            double sum = 0.0;
            for (std::size_t i = N + 1; i-- > 0;)
                sum = sum * t + coefficients[i];
            return sum;
        };
        double low = 0.0;
        const auto search = [&](double high) {
            if (value(low) * value(high) < 0.0)
                parameters[count++] = Bisect(value, low, high);
            low = high;
        };
        if constexpr (N > 1) {
            std::array<double, N> derivative;
            for (std::size_t i = 0; i < N; ++i)
                derivative[i] = static_cast<double>(i + 1) * coefficients[i + 1];
            for (const double extremum : SignChanges<N - 1>(derivative))
                search(extremum);
        }
        search(1.0);
    }

    const double* begin() const noexcept { return parameters.data(); }
    const double* end() const noexcept { return parameters.data() + count; }
};

} // namespace Geometry
