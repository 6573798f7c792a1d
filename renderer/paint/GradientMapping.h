#pragma once

#include <algorithm>
#include <cmath>

namespace Renderer {

/// How two neighbouring gradient stops mix between them.
struct GradientMapping
{
    /// Where between the stops the colours are half mixed, 0…1.
    double midpoint = 0.5;
    /// How far the mapping leans from piecewise linear (0) to smoothstep (1).
    double smoothness = 0.0;

    /// Whether the mix factor is the position itself.
    bool IsLinear() const noexcept
    {
        return std::abs(midpoint - 0.5) <= 1e-6 && std::abs(smoothness) <= 1e-6;
    }

    /// The share of the second stop's colour at position \p t between the stops, both 0…1.
    ///
    /// The midpoint m maps t to u = ½·t/m below it and u = ½ + ½·(t − m)/(1 − m) above; the
    /// smoothness k then gives (1 − k)·u + k·(3u² − 2u³). With m = 0 the factor is at least ½ from
    /// the first stop on, with m = 1 at most ½ up to the second one.
    double Mix(double t) const noexcept
    {
        t = std::clamp(t, 0.0, 1.0);
        double u = t;
        if (t < midpoint)
            u = 0.5 * t / midpoint;
        else if (midpoint < 1.0)
            u = 0.5 + 0.5 * (t - midpoint) / (1.0 - midpoint);
        return u + smoothness * (u * u * (3.0 - 2.0 * u) - u);
    }

    /// The largest change of Mix over a change of \p t; infinite where it jumps.
    double GetLargestSlope() const noexcept
    {
        // Halves of unit height ½, then at most 3/2 of smoothstep in the middle.
        const double shorter = std::min(midpoint, 1.0 - midpoint);
        return 0.5 / shorter * (1.0 + 0.5 * smoothness);
    }

    /// The mean of Mix over the whole way.
    double MeanMix() const noexcept
    {
        // Piecewise linear: ¼ over the first part, ¾ over the second. Smoothstep: 3/16 and 13/16.
        const double linear = 0.75 - 0.5 * midpoint;
        const double smooth = 13.0 / 16.0 - 10.0 / 16.0 * midpoint;
        return linear + smoothness * (smooth - linear);
    }
};

} // namespace Renderer
