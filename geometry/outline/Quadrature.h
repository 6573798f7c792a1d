#pragma once

#include <array>
#include <cstddef>

namespace Geometry {

/// The integral of a function over [low, high] by Gauss and Legendre's eight points.
template<class Function>
double Integrate(const Function& function, double low, double high)
{
    static constexpr std::array<double, 4> nodes{0.1834346424956498, 0.5255324099163290,
                                                 0.7966664774136267, 0.9602898564975363};
    static constexpr std::array<double, 4> weights{0.3626837833783620, 0.3137066458778873,
                                                   0.2223810344533745, 0.1012285362903763};
    const double middle = 0.5 * (low + high), half = 0.5 * (high - low);
    double sum = 0.0;
    for (std::size_t i = 0; i < nodes.size(); ++i)
        sum +=
            weights[i] * (function(middle - half * nodes[i]) + function(middle + half * nodes[i]));
    return half * sum;
}

} // namespace Geometry
