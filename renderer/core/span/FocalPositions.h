#pragma once

#include <cmath>
#include <optional>

#include <kernel/Point.h>
#include <raster/AffineTransform.h>

namespace Renderer {

/// The parameter of an elliptical gradient with a focus: the circles of radius t about
/// focus · (1 − t), mapped to the device, which lead from the focus (t = 0) to the unit circle
/// (t = 1).
///
/// For a point q seen from the focus f the radius solves |q + t·f| = t:
/// t = (q·f + √((q·f)² + (1 − |f|²)·|q|²)) / (1 − |f|²), the larger root, as in SVG and PDF. Where
/// q·f is negative this is |q|² / (√… − q·f), in which nothing cancels.
class FocalPositions
{
public:
    static constexpr bool IsFloatEnough = true;

    /// A focus beyond this radius is pulled onto it: on the rim itself the circles would leave half
    /// of the plane unpainted.
    static constexpr double LargestFocus = 0.999;

    /// \return nothing when the map is singular.
    static std::optional<FocalPositions> Make(const Raster::AffineTransform::Params& unitToDevice,
                                              Kernel::PointT<double> focus)
    {
        Raster::AffineTransform::Params deviceToUnit;
        if (!Raster::AffineTransform::Invert(unitToDevice, deviceToUnit))
            return std::nullopt;
        return FocalPositions(deviceToUnit, unitToDevice.Map(Limit(focus)), Limit(focus));
    }

    /// The parameters of one row of pixels.
    template<class Real>
    class Row
    {
    public:
        Row(const FocalPositions& positions, int y) noexcept
            : m_start(positions.m_start.x - 0.5),
              m_du(positions.m_inverse.m00),
              m_dv(positions.m_inverse.m10),
              m_focusX(static_cast<Real>(positions.m_focus.x)),
              m_focusY(static_cast<Real>(positions.m_focus.y)),
              m_power(static_cast<Real>(positions.m_power)),
              m_scale(static_cast<Real>(1.0 / positions.m_power))
        {
            const double dy = y + 0.5 - positions.m_start.y;
            m_u0 = positions.m_inverse.m01 * dy;
            m_v0 = positions.m_inverse.m11 * dy;
        }

        Real GetParameter(int x) const noexcept
        {
            const double dx = x - m_start;
            const Real u = static_cast<Real>(m_du * dx + m_u0);
            const Real v = static_cast<Real>(m_dv * dx + m_v0);
            const Real square = u * u + v * v;
            const Real along = u * m_focusX + v * m_focusY;
            const Real root = std::sqrt(along * along + m_power * square);
            const Real ahead = (along + root) * m_scale;
            const Real divisor = root - along;
            const Real behind = square / (divisor > Real(0) ? divisor : Real(1));
            return along > Real(0) ? ahead : behind;
        }

    private:
        double m_start;
        double m_du;
        double m_dv;
        double m_u0;
        double m_v0;
        Real m_focusX;
        Real m_focusY;
        Real m_power;
        Real m_scale;
    };

    static constexpr bool IsConstantAlongRows() noexcept { return false; }

private:
    FocalPositions(const Raster::AffineTransform::Params& inverse, Kernel::PointT<double> start,
                   Kernel::PointT<double> focus) noexcept
        : m_inverse(inverse),
          m_start(start),
          m_focus(focus),
          m_power(1.0 - focus.x * focus.x - focus.y * focus.y)
    {}

    static Kernel::PointT<double> Limit(Kernel::PointT<double> focus) noexcept
    {
        const double radius = std::hypot(focus.x, focus.y);
        return radius > LargestFocus ? focus * (LargestFocus / radius) : focus;
    }

    Raster::AffineTransform::Params m_inverse; // of the map
    Kernel::PointT<double> m_start;            // the focus on the device
    Kernel::PointT<double> m_focus;
    double m_power; // 1 − |focus|²
};

} // namespace Renderer
