#pragma once

#include <cmath>
#include <optional>

#include <kernel/Point.h>
#include <raster/AffineTransform.h>
#include <renderer/core/span/UnitFrame.h>

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
        const auto frame = UnitFrame::Make(unitToDevice, unitToDevice.Map(Limit(focus)));
        return frame ? std::optional(FocalPositions(*frame, Limit(focus))) : std::nullopt;
    }

    /// The parameters of one row of pixels.
    template<class Real>
    struct Row
    {
        UnitFrame::Row place;
        Real focusX;
        Real focusY;
        Real power; // 1 − |f|²
        Real inversePower;

        Real GetParameter(double x) const noexcept
        {
            const Real u = place.GetU<Real>(x);
            const Real v = place.GetV<Real>(x);
            const Real square = u * u + v * v;
            const Real along = u * focusX + v * focusY;
            const Real root = std::sqrt(along * along + power * square);
            const Real ahead = (along + root) * inversePower;
            const Real divisor = root - along;
            const Real behind = square / (divisor > Real(0) ? divisor : Real(1));
            return along > Real(0) ? ahead : behind;
        }
    };

    /// \param scale what parameters are multiplied by: they grow with the frame.
    template<class Real>
    Row<Real> GetRow(int y, double scale) const noexcept
    {
        const double power = 1.0 - m_focus.x * m_focus.x - m_focus.y * m_focus.y;
        return {m_frame.GetRow(y, scale), static_cast<Real>(m_focus.x),
                static_cast<Real>(m_focus.y), static_cast<Real>(power),
                static_cast<Real>(1.0 / power)};
    }

    static constexpr bool IsConstantAlongRows() noexcept { return false; }

private:
    FocalPositions(const UnitFrame& frame, Kernel::PointT<double> focus) noexcept
        : m_frame(frame), m_focus(focus)
    {}

    static Kernel::PointT<double> Limit(Kernel::PointT<double> focus) noexcept
    {
        const double radius = std::hypot(focus.x, focus.y);
        return radius > LargestFocus ? focus * (LargestFocus / radius) : focus;
    }

    UnitFrame m_frame; // about the focus
    Kernel::PointT<double> m_focus;
};

} // namespace Renderer
