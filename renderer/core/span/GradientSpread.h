#pragma once

#include <renderer/paint/FillGradient.h>

namespace Renderer {

/// Folds gradient parameters into what a ramp evaluates. Written in additions, comparisons and
/// selections that vectorise everywhere.
///
/// Pad brings t into [−1, 1], where all of [−1, 0) lies before the first stop even if that stop is
/// at 0; Reflect and Repeat bring it into [0, 1]. NaN becomes the lower end.
class GradientSpread
{
public:
    /// \tparam spread of the gradient. \tparam Real float or double.
    template<FillGradient::Spread spread, class Real>
    static Real Fold(Real t) noexcept
    {
        if constexpr (spread == FillGradient::Reflect)
            return Clamp(Reflect(t), Real(0));
        else if constexpr (spread == FillGradient::Repeat)
            return Clamp(t - Floor(t), Real(0));
        else
            return Clamp(t, Real(-1));
    }

private:
    template<class Real>
    static Real Clamp(Real t, Real low) noexcept
    {
        t = t > low ? t : low;
        return t < Real(1) ? t : Real(1);
    }

    /// floor(t) for |t| < 2⁵¹: adding and taking away 1.5·2⁵² rounds to the nearest integer.
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
