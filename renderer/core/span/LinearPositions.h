#pragma once

#include <cmath>
#include <optional>

#include <kernel/Point.h>

namespace Renderer {

/// The parameter of a linear gradient at device pixel centres: 0 at p0, 1 at p1, constant along the
/// perpendicular of p1 − p0.
class LinearPositions
{
public:
    /// Far from p0 the two terms of the sum cancel each other, more than float could stand.
    static constexpr bool IsFloatEnough = false;

    /// \return nothing when the points coincide, so that there is no direction.
    static std::optional<LinearPositions> Make(Kernel::PointT<double> p0, Kernel::PointT<double> p1)
    {
        const Kernel::PointT<double> d = p1 - p0;
        const double square = d.x * d.x + d.y * d.y;
        const LinearPositions result({d.x / square, d.y / square}, p0);
        if (!(square > 0.0) || !std::isfinite(result.m_gradient.x) ||
            !std::isfinite(result.m_gradient.y))
            return std::nullopt;
        return result;
    }

    /// The parameters of one row of pixels.
    template<class Real>
    struct Row
    {
        double slope;
        double first; // at x = 0

        Real GetParameter(double x) const noexcept { return static_cast<Real>(x * slope + first); }
    };

    /// \param scale what parameters are multiplied by.
    template<class Real>
    Row<Real> GetRow(int y, double scale) const noexcept
    {
        const double first =
            (0.5 - m_origin.x) * m_gradient.x + (y + 0.5 - m_origin.y) * m_gradient.y;
        return {m_gradient.x * scale, first * scale};
    }

    /// Whether all pixels of a row have one parameter.
    bool IsConstantAlongRows() const noexcept { return m_gradient.x == 0.0; }

private:
    LinearPositions(Kernel::PointT<double> gradient, Kernel::PointT<double> origin) noexcept
        : m_gradient(gradient), m_origin(origin)
    {}

    Kernel::PointT<double> m_gradient; // of t, per device pixel
    Kernel::PointT<double> m_origin;   // where t is 0
};

} // namespace Renderer
