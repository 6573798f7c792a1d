#pragma once

#include <cmath>
#include <optional>

#include <raster/AffineTransform.h>

namespace Renderer {

/// The parameter of an elliptical gradient without focus: the distance from the centre in the unit
/// frame.
///
/// Along a row the square of that distance is a parabola, A·(x − x₀)² + q. Both terms are positive,
/// so that nothing cancels and float is good to its last bits at any distance, once x − x₀ is.
class CirclePositions
{
public:
    static constexpr bool IsFloatEnough = true;

    /// \return nothing when the map is singular or too small.
    static std::optional<CirclePositions> Make(const Raster::AffineTransform::Params& unitToDevice)
    {
        Raster::AffineTransform::Params m;
        if (!Raster::AffineTransform::Invert(unitToDevice, m))
            return std::nullopt;
        CirclePositions result;
        const double determinant = m.m00 * m.m11 - m.m01 * m.m10;
        const double square = m.m00 * m.m00 + m.m10 * m.m10;
        if (!std::isfinite(square))
            return std::nullopt;
        result.m_centre = {unitToDevice.m02, unitToDevice.m12};
        if (square > 0.0) { // otherwise larger than any page: its centre is everywhere
            result.m_square = square;
            result.m_shift = -(m.m00 * m.m01 + m.m10 * m.m11) / square;
            result.m_rowSquare = determinant / square * determinant;
        }
        return result;
    }

    /// The parameters of one row of pixels.
    template<class Real>
    struct Row
    {
        double nearest; // to the centre
        Real square;
        Real rest;

        Real GetParameter(double x) const noexcept
        {
            const Real d = static_cast<Real>(x - nearest);
            return std::sqrt(square * d * d + rest);
        }
    };

    /// \param scale what parameters are multiplied by.
    template<class Real>
    Row<Real> GetRow(int y, double scale) const noexcept
    {
        const double dy = y + 0.5 - m_centre.y;
        return {m_centre.x - 0.5 + m_shift * dy, static_cast<Real>(m_square * scale * scale),
                static_cast<Real>(m_rowSquare * dy * dy * scale * scale)};
    }

    static constexpr bool IsConstantAlongRows() noexcept { return false; }

private:
    CirclePositions() = default;

    Kernel::PointT<double> m_centre; // on the device
    double m_square = 0.0;           // A
    double m_shift = 0.0;            // of x₀, per row
    double m_rowSquare = 0.0;        // q of the rows next to the centre's
};

} // namespace Renderer
