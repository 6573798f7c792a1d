#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>

#include <raster/AffineTransform.h>

namespace Renderer {

/// The parameter of a conical gradient: the angle about the centre as a fraction of a turn in [0,
/// 1), from the x axis towards the y axis.
class ConicalPositions
{
public:
    /// The angle in the unit frame under the whole map.
    /// \return nothing when the map is singular.
    static std::optional<ConicalPositions>
    MakeCorrected(const Raster::AffineTransform::Params& unitToDevice)
    {
        Raster::AffineTransform::Params deviceToUnit;
        if (!Raster::AffineTransform::Invert(unitToDevice, deviceToUnit))
            return std::nullopt;
        return ConicalPositions(deviceToUnit);
    }

    /// The true angle on the device, from the image of the x axis on.
    /// \return nothing when that image has no length.
    static std::optional<ConicalPositions>
    MakeUncorrected(const Raster::AffineTransform::Params& unitToDevice)
    {
        const auto& m = unitToDevice;
        return MakeCorrected({m.m00, -m.m10, m.m02, m.m10, m.m00, m.m12});
    }

    /// Writes the parameters of \p count ≤ 64 pixels from (x, y) on.
    void Compute(int x, int y, unsigned count, double* t) const noexcept
    {
        const double u0 = m_inverse.m01 * (y + 0.5) + m_inverse.m02;
        const double v0 = m_inverse.m11 * (y + 0.5) + m_inverse.m12;
        for (unsigned i = 0; i < count; ++i) {
            const double column = x + static_cast<int>(i) + 0.5;
            t[i] = GetTurn(m_inverse.m00 * column + u0, m_inverse.m10 * column + v0);
        }
    }

    /// The angle of (u, v) as a fraction of a turn in [0, 1), within 3e-10; 0 at the origin.
    /// Written with selections instead of branches so that loops over it vectorise.
    static double GetTurn(double u, double v) noexcept
    {
        const double absU = std::abs(u);
        const double absV = std::abs(v);
        const double low = absU < absV ? absU : absV;
        const double high = absU < absV ? absV : absU;
        const double eighth = GetSmallTurn(low / (high > 0.0 ? high : 1.0));
        const double quarter = absU < absV ? 0.25 - eighth : eighth;
        const double half = u < 0.0 ? 0.5 - quarter : quarter;
        const double turn = v < 0.0 ? 1.0 - half : half;
        return turn < 1.0 ? turn : 0.0;
    }

private:
    explicit ConicalPositions(const Raster::AffineTransform::Params& inverse) noexcept
        : m_inverse(inverse)
    {}

    /// arctan(z)/2π for 0 ≤ z ≤ 1, with an error below 2.5e-10: arctan(√w)/(2π·√w) interpolated in
    /// the ten Chebyshev nodes of [0, 1].
    static double GetSmallTurn(double z) noexcept
    {
        constexpr std::array Coefficients{0.15915494263998187,   -0.05305155691314749,
                                          0.031827925332692034,  -0.022695520476872445,
                                          0.017399361872345233,  -0.01328899995747186,
                                          0.00908608491638745,   -0.004830649203842086,
                                          0.0016691611612714044, -0.00027074961135440393};
        const double w = z * z;
        double sum = Coefficients.back();
        for (std::size_t i = Coefficients.size() - 1; i-- > 0;)
            sum = sum * w + Coefficients[i];
        return sum * z;
    }

    Raster::AffineTransform::Params m_inverse;
};

} // namespace Renderer
