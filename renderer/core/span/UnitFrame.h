#pragma once

#include <optional>

#include <kernel/Point.h>
#include <raster/AffineTransform.h>

namespace Renderer {

/// The frame in which a gradient is the unit circle's, as rows of device pixels pass through it.
class UnitFrame
{
public:
    /// A row's way through the frame.
    struct Row
    {
        double start; ///< the pixel at which u0 and v0 are the place
        double du;    ///< the change of the place per pixel
        double dv;
        double u0;
        double v0;

        template<class Real>
        Real GetU(double x) const noexcept
        {
            return static_cast<Real>(du * (x - start) + u0);
        }
        template<class Real>
        Real GetV(double x) const noexcept
        {
            return static_cast<Real>(dv * (x - start) + v0);
        }
    };

    /// \param anchor the device point that is the frame's origin. \return nothing when the map is
    /// singular.
    static std::optional<UnitFrame> Make(const Raster::AffineTransform::Params& unitToDevice,
                                         Kernel::PointT<double> anchor)
    {
        Raster::AffineTransform::Params inverse;
        if (!Raster::AffineTransform::Invert(unitToDevice, inverse))
            return std::nullopt;
        return UnitFrame(inverse, anchor);
    }

    /// \param scale what places are multiplied by.
    Row GetRow(int y, double scale) const noexcept
    {
        const double dy = (y + 0.5 - m_anchor.y) * scale;
        return {m_anchor.x - 0.5, m_inverse.m00 * scale, m_inverse.m10 * scale, m_inverse.m01 * dy,
                m_inverse.m11 * dy};
    }

private:
    UnitFrame(const Raster::AffineTransform::Params& inverse,
              Kernel::PointT<double> anchor) noexcept
        : m_inverse(inverse), m_anchor(anchor)
    {}

    Raster::AffineTransform::Params m_inverse; // of the map
    Kernel::PointT<double> m_anchor;
};

} // namespace Renderer
