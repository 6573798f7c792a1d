#pragma once

#include <optional>

#include <renderer/core/span/EllipticalPositions.h>

namespace Renderer {

/// The parameter of a radial gradient that stays a circle whatever the map: centre T(0, 0), radius
/// |T(1, 0) − T(0, 0)|.
///
/// It is the elliptical gradient under the similarity that shares T's centre, x axis and
/// handedness; the focus follows that similarity.
class RadialPositions : public EllipticalPositions
{
public:
    /// \return nothing when the radius is 0.
    static std::optional<RadialPositions> Make(const Raster::AffineTransform::Params& map,
                                               Kernel::PointT<double> focus)
    {
        const double hand = map.Determinant() < 0.0 ? -1.0 : 1.0;
        const auto circle = EllipticalPositions::Make(
            {map.m00, -hand * map.m10, map.m02, map.m10, hand * map.m00, map.m12}, focus);
        if (!circle)
            return std::nullopt;
        return RadialPositions(*circle);
    }

private:
    explicit RadialPositions(const EllipticalPositions& circle) noexcept
        : EllipticalPositions(circle)
    {}
};

} // namespace Renderer
