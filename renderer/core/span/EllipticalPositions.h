#pragma once

#include <cmath>
#include <optional>

#include <kernel/Point.h>
#include <raster/AffineTransform.h>

namespace Renderer {

/// The parameter of an elliptical gradient: the circles of radius t about focus · (1 − t), mapped
/// to the device, which lead from the focus (t = 0) to the unit circle (t = 1).
///
/// For a point q seen from the focus f the radius solves |q + t·f| = t:
/// t = (q·f + √((q·f)² + (1 − |f|²)·|q|²)) / (1 − |f|²), the larger root, as in SVG and PDF.
class EllipticalPositions
{
public:
    /// A focus beyond this radius is pulled onto it: on the rim itself the circles would leave half
    /// of the plane unpainted.
    static constexpr double LargestFocus = 0.999;

    /// \return nothing when the map is singular.
    static std::optional<EllipticalPositions>
    Make(const Raster::AffineTransform::Params& unitToDevice, Kernel::PointT<double> focus)
    {
        Raster::AffineTransform::Params deviceToUnit;
        if (!Raster::AffineTransform::Invert(unitToDevice, deviceToUnit))
            return std::nullopt;
        return EllipticalPositions(deviceToUnit, focus);
    }

    /// Writes the parameters of \p count ≤ 64 pixels from (x, y) on.
    void Compute(int x, int y, unsigned count, double* t) const noexcept
    {
        const double u0 = m_inverse.m01 * (y + 0.5) + m_inverse.m02;
        const double v0 = m_inverse.m11 * (y + 0.5) + m_inverse.m12;
        if (m_focus == Kernel::PointT<double>{})
            ComputeCentred(x, u0, v0, count, t);
        else
            ComputeFocal(x, u0, v0, count, t);
    }

private:
    EllipticalPositions(const Raster::AffineTransform::Params& inverse,
                        Kernel::PointT<double> focus) noexcept
        : m_inverse(inverse), m_focus(focus)
    {
        const double radius = std::hypot(focus.x, focus.y);
        if (!std::isfinite(radius))
            m_focus = {};
        else if (radius > LargestFocus)
            m_focus = focus * (LargestFocus / radius);
        m_power = 1.0 - m_focus.x * m_focus.x - m_focus.y * m_focus.y;
    }

    void ComputeCentred(int x, double u0, double v0, unsigned count, double* t) const noexcept
    {
        const double du = m_inverse.m00;
        const double dv = m_inverse.m10;
        for (unsigned i = 0; i < count; ++i) {
            const double column = x + static_cast<int>(i) + 0.5;
            const double u = du * column + u0;
            const double v = dv * column + v0;
            t[i] = std::sqrt(u * u + v * v);
        }
    }

    void ComputeFocal(int x, double u0, double v0, unsigned count, double* t) const noexcept
    {
        const double du = m_inverse.m00;
        const double dv = m_inverse.m10;
        const double power = m_power;
        const double scale = 1.0 / m_power;
        const Kernel::PointT<double> f = m_focus;
        for (unsigned i = 0; i < count; ++i) {
            const double column = x + static_cast<int>(i) + 0.5;
            const double u = du * column + u0 - f.x;
            const double v = dv * column + v0 - f.y;
            const double along = u * f.x + v * f.y;
            t[i] = (along + std::sqrt(along * along + power * (u * u + v * v))) * scale;
        }
    }

    Raster::AffineTransform::Params m_inverse;
    Kernel::PointT<double> m_focus;
    double m_power = 1.0; // 1 − |focus|²
};

} // namespace Renderer
