#pragma once

#include <kernel/Point.h>
#include <kernel/Rect.h>
#include <raster/Export.h>

namespace Raster {

/// Affine maps of the plane.
class RASTER_EXPORT AffineTransform
{
public:
    /// Maps (x, y) to (m00·x + m01·y + m02, m10·x + m11·y + m12). The identity by default.
    struct Params
    {
        double m00 = 1.0;
        double m01 = 0.0;
        double m02 = 0.0;
        double m10 = 0.0;
        double m11 = 1.0;
        double m12 = 0.0;

        friend constexpr bool operator==(const Params&, const Params&) noexcept = default;

        /// The image of a point.
        constexpr Kernel::PointT<double> Map(Kernel::PointT<double> p) const noexcept
        {
            return {m00 * p.x + m01 * p.y + m02, m10 * p.x + m11 * p.y + m12};
        }
        /// The image of a vector: the translation is left out.
        constexpr Kernel::PointT<double> MapVector(Kernel::PointT<double> v) const noexcept
        {
            return {m00 * v.x + m01 * v.y, m10 * v.x + m11 * v.y};
        }
        constexpr double Determinant() const noexcept { return m00 * m11 - m01 * m10; }
    };

    /// The matrix product second·first: a point is mapped by \p first, then by \p second.
    static Params Concatenate(const Params& first, const Params& second) noexcept;

    /// Finds the inverse. \return false, with \p inverse untouched, for maps that are singular or not
    /// finite.
    static bool Invert(const Params& transform, Params& inverse) noexcept;

    static Params Translation(double x, double y) noexcept { return {1, 0, x, 0, 1, y}; }
    static Params Scaling(double x, double y) noexcept { return {x, 0, 0, 0, y, 0}; }
    /// Turns by \p radians from the x axis towards the y axis (clockwise where y grows downwards).
    static Params Rotation(double radians) noexcept;

    /// The unit square mapped onto \p rect: (width, 0, left, 0, height, top).
    static Params FromRect(const Kernel::RectT<double>& rect) noexcept;

    /// The box of the image of \p rect. Unset rectangles stay unset.
    static Kernel::RectT<double> MapRect(const Params& transform, const Kernel::RectT<double>& rect) noexcept;

    /// The library's scale of a map, sqrt(((m00+m01)² + (m10+m11)²)/2): the length of the image of
    /// (1, 1) over √2. May be 0 for maps that are not singular.
    static double GetScale(const Params& transform) noexcept;

    /// The largest and smallest factor by which the map stretches a vector (its singular values).
    static double GetLargestSingularValue(const Params& transform) noexcept;
    static double GetSmallestSingularValue(const Params& transform) noexcept;

    /// Whether no element differs from the identity by more than \p tolerance.
    static bool IsIdentity(const Params& transform, double tolerance = 1e-6) noexcept;
    /// Whether no element of the two differs by more than \p tolerance.
    static bool IsEqual(const Params& a, const Params& b, double tolerance = 1e-6) noexcept;
    /// Whether all six elements are finite.
    static bool IsFinite(const Params& transform) noexcept;
};

} // namespace Raster
