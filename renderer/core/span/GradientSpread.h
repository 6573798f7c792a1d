#pragma once

#include <renderer/paint/FillGradient.h>

namespace Renderer {

/// Folds gradient parameters, block by block, into what a ramp evaluates.
///
/// Pad brings t into [−1, 1], where all of [−1, 0) lies before the first stop even if that stop is
/// at 0; Reflect and Repeat bring it into [0, 1]. NaN becomes the lower end.
class GradientSpread
{
public:
    static void Fold(FillGradient::Spread spread, double* t, unsigned count) noexcept
    {
        switch (spread) {
        case FillGradient::Reflect:
            for (unsigned i = 0; i < count; ++i)
                t[i] = Clamp(Reflect(t[i]), 0.0);
            break;
        case FillGradient::Repeat:
            for (unsigned i = 0; i < count; ++i)
                t[i] = Clamp(t[i] - Floor(t[i]), 0.0);
            break;
        default:
            for (unsigned i = 0; i < count; ++i)
                t[i] = Clamp(t[i], -1.0);
            break;
        }
    }

private:
    static double Clamp(double t, double low) noexcept
    {
        t = t > low ? t : low;
        return t < 1.0 ? t : 1.0;
    }

    /// floor(t) for |t| < 2⁵¹, in additions and comparisons that vectorise everywhere: adding and
    /// taking away 1.5·2⁵² rounds to the nearest integer.
    static double Floor(double t) noexcept
    {
        constexpr double Rounder = 0x1.8p52;
        const double nearest = (t + Rounder) - Rounder;
        return nearest > t ? nearest - 1.0 : nearest;
    }

    /// The triangle wave of period 2 that is t on [0, 1].
    static double Reflect(double t) noexcept
    {
        const double phase = t - 2.0 * Floor(0.5 * t);
        return phase < 1.0 ? phase : 2.0 - phase;
    }
};

} // namespace Renderer
