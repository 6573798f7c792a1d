#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Geometry {

/// The most pieces that one cubic is flattened into. Enough for every cubic within ±2^21 pixels at
/// a tolerance of 0.0021 pixels; a guard for what is larger still.
inline constexpr std::size_t MaximumCubicPieces = 65536;

/// Chooses the parameter steps of a walk along a cubic: each is the one that the piece before would
/// have allowed, grown by as much as that had grown.
class StepPace
{
public:
    /// The shortest step that is taken.
    static constexpr double Shortest = 1.0 / static_cast<double>(MaximumCubicPieces);

    /// The step to try. \param rest of the walk. \param predict gives what the curvature allows; it
    /// is asked at the start only.
    template<class Predict>
    double Choose(double rest, const Predict& predict) const noexcept
    {
        const double step = m_ideal > 0.0 ? m_ideal + m_trend : 0.9 * predict();
        if (step >= 0.9 * rest)
            return rest;
        // Two even steps rather than a long one and a stub.
        return step > 0.5 * rest ? 0.5 * rest : step;
    }

    /// Learns the step that the last piece would have allowed.
    void Learn(double ideal) noexcept
    {
        m_trend = m_ideal > 0.0 ? std::clamp(ideal - m_ideal, -0.5 * ideal, ideal) : 0.0;
        m_ideal = ideal;
    }

    /// The parameter that a step from \p t leads to, at most 1.
    static double GetEnd(double t, double step) noexcept
    {
        const double end = t + std::max(step, Shortest);
        return end < 1.0 - 1e-12 ? end : 1.0; // what rounding leaves of the last step is no step
    }

private:
    double m_ideal = 0.0; // the step that the last piece would have allowed; 0: not known
    double m_trend = 0.0; // by how much that grew
};

} // namespace Geometry
