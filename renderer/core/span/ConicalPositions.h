#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <type_traits>

#include <raster/AffineTransform.h>
#include <renderer/core/span/UnitFrame.h>

namespace Renderer {

/// The parameter of a conical gradient: the angle about the centre as a fraction of a turn in
/// [0, 1], from the x axis towards the y axis.
class ConicalPositions
{
public:
    static constexpr bool IsFloatEnough = true;

    /// The angle in the unit frame under the whole map.
    /// \return nothing when the map is singular.
    static std::optional<ConicalPositions>
    MakeCorrected(const Raster::AffineTransform::Params& unitToDevice)
    {
        const auto frame = UnitFrame::Make(unitToDevice, {unitToDevice.m02, unitToDevice.m12});
        return frame ? std::optional(ConicalPositions(*frame)) : std::nullopt;
    }

    /// The true angle on the device, from the image of the x axis on.
    /// \return nothing when that image has no length.
    static std::optional<ConicalPositions>
    MakeUncorrected(const Raster::AffineTransform::Params& unitToDevice)
    {
        const auto& m = unitToDevice;
        return MakeCorrected({m.m00, -m.m10, m.m02, m.m10, m.m00, m.m12});
    }

    /// The parameters of one row of pixels.
    template<class Real>
    struct Row
    {
        UnitFrame::Row place;
        Real scale;

        Real GetParameter(double x) const noexcept
        {
            return GetTurn(place.GetU<Real>(x), place.GetV<Real>(x)) * scale;
        }
    };

    /// \param scale what parameters are multiplied by.
    template<class Real>
    Row<Real> GetRow(int y, double scale) const noexcept
    {
        return {m_frame.GetRow(y, 1.0), static_cast<Real>(scale)};
    }

    static constexpr bool IsConstantAlongRows() noexcept { return false; }

    /// The angle of (u, v) as a fraction of a turn, within 3e-10 (5e-7 in float); 0 at the origin.
    /// A double stays below 1; a float may round to 1 just before the turn is full. Written with
    /// selections instead of branches so that loops over it vectorise.
    template<class Real>
    static Real GetTurn(Real u, Real v) noexcept
    {
        const Real absU = std::abs(u);
        const Real absV = std::abs(v);
        const Real low = absU < absV ? absU : absV;
        const Real high = absU < absV ? absV : absU;
        // Not 0 / 0, and without one more selection.
        constexpr Real Tiny = std::is_same_v<Real, double> ? Real(1e-300) : Real(1e-30);
        const Real eighth = GetSmallTurn(low / (high + Tiny));
        // Not the condition from above: the compiler would make two copies of what lies between.
        const Real quarter = absV - absU > Real(0) ? Real(0.25) - eighth : eighth;
        const Real half = u < Real(0) ? Real(0.5) - quarter : quarter;
        const Real turn = v < Real(0) ? Real(1) - half : half;
        if constexpr (std::is_same_v<Real, double>)
            return turn < 1.0 ? turn : 0.0;
        else
            return turn;
    }

private:
    explicit ConicalPositions(const UnitFrame& frame) noexcept : m_frame(frame) {}

    /// arctan(z)/2π for 0 ≤ z ≤ 1: arctan(√w)/(2π·√w) interpolated in the Chebyshev nodes of
    /// [0, 1], ten for an error below 2.5e-10, six for one below 4.6e-7.
    template<class Real>
    static Real GetSmallTurn(Real z) noexcept
    {
        if constexpr (std::is_same_v<Real, double>)
            return Sum(std::array{0.15915494263998187, -0.05305155691314749, 0.031827925332692034,
                                  -0.022695520476872445, 0.017399361872345233, -0.01328899995747186,
                                  0.00908608491638745, -0.004830649203842086, 0.0016691611612714044,
                                  -0.00027074961135440393},
                       z);
        else
            return Sum(std::array{0.159154121F, -0.0529917699F, 0.0310903754F, -0.0191699877F,
                                  0.00900657587F, -0.00208976521F},
                       z);
    }

    /// z·(c₀ + c₁·z² + c₂·z⁴ + …)
    template<class Real, std::size_t count>
    static Real Sum(const std::array<Real, count>& coefficients, Real z) noexcept
    {
        const Real w = z * z;
        Real sum = coefficients.back();
        for (std::size_t i = count - 1; i-- > 0;)
            sum = sum * w + coefficients[i];
        return sum * z;
    }

    UnitFrame m_frame; // about the centre
};

} // namespace Renderer
