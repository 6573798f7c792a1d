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

    /// Writes the parameters of \p count ≤ 64 pixels from (x, y) on.
    void Compute(int x, int y, unsigned count, double* t) const noexcept
    {
        const double row = (y + 0.5 - m_origin.y) * m_gradient.y - m_origin.x * m_gradient.x;
        const double slope = m_gradient.x;
        for (unsigned i = 0; i < count; ++i)
            t[i] = (x + static_cast<int>(i) + 0.5) * slope + row;
    }

private:
    LinearPositions(Kernel::PointT<double> gradient, Kernel::PointT<double> origin) noexcept
        : m_gradient(gradient), m_origin(origin)
    {}

    Kernel::PointT<double> m_gradient; // of t, per device pixel
    Kernel::PointT<double> m_origin;   // where t is 0
};

} // namespace Renderer
