#include <raster/AffineTransform.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Raster {

namespace {

struct Interval
{
    double low;
    double high;
};

/// The values of factor·t for t between \p a and \p b.
Interval Scale(double factor, double a, double b) noexcept
{
    return {std::min(factor * a, factor * b), std::max(factor * a, factor * b)};
}

bool IsNear(double a, double b, double tolerance) noexcept
{
    return std::abs(a - b) <= tolerance;
}

} // namespace

AffineTransform::Params AffineTransform::Concatenate(const Params& first,
                                                     const Params& second) noexcept
{
    const auto x = second.MapVector({first.m00, first.m10});
    const auto y = second.MapVector({first.m01, first.m11});
    const auto origin = second.Map({first.m02, first.m12});
    return {x.x, y.x, origin.x, x.y, y.y, origin.y};
}

bool AffineTransform::Invert(const Params& transform, Params& inverse) noexcept
{
    if (!IsFinite(transform))
        return false;

    // Elements are brought near 1 first: the determinant of a map that only scales by 1e-200 would
    // underflow.
    const auto& t = transform;
    const double size =
        std::max({std::abs(t.m00), std::abs(t.m01), std::abs(t.m10), std::abs(t.m11)});
    if (size == 0)
        return false;
    const double a = t.m00 / size;
    const double b = t.m01 / size;
    const double c = t.m10 / size;
    const double d = t.m11 / size;

    // What cancels down to the rounding of the two products is 0 as far as can be told.
    const double determinant = a * d - b * c;
    const double rounding =
        4 * std::numeric_limits<double>::epsilon() * (std::abs(a * d) + std::abs(b * c));
    if (!(std::abs(determinant) > rounding))
        return false;

    Params result{d / determinant / size,  -b / determinant / size, 0,
                  -c / determinant / size, a / determinant / size,  0};
    const auto origin = result.MapVector({-t.m02, -t.m12});
    result.m02 = origin.x;
    result.m12 = origin.y;
    if (!IsFinite(result))
        return false;
    inverse = result;
    return true;
}

AffineTransform::Params AffineTransform::Rotation(double radians) noexcept
{
    const double sine = std::sin(radians);
    const double cosine = std::cos(radians);
    return {cosine, -sine, 0, sine, cosine, 0};
}

AffineTransform::Params AffineTransform::FromRect(const Kernel::RectT<double>& rect) noexcept
{
    return {rect.Width(), 0, rect.left, 0, rect.Height(), rect.top};
}

Kernel::RectT<double> AffineTransform::MapRect(const Params& transform,
                                               const Kernel::RectT<double>& rect) noexcept
{
    // An inside-out rectangle holds nothing, and neither does its image.
    if (rect.IsUnset() || rect.left > rect.right || rect.top > rect.bottom)
        return rect;
    const auto xx = Scale(transform.m00, rect.left, rect.right);
    const auto xy = Scale(transform.m01, rect.top, rect.bottom);
    const auto yx = Scale(transform.m10, rect.left, rect.right);
    const auto yy = Scale(transform.m11, rect.top, rect.bottom);
    return {xx.low + xy.low + transform.m02, yx.low + yy.low + transform.m12,
            xx.high + xy.high + transform.m02, yx.high + yy.high + transform.m12};
}

double AffineTransform::GetScale(const Params& transform) noexcept
{
    const double x = transform.m00 + transform.m01;
    const double y = transform.m10 + transform.m11;
    return std::sqrt((x * x + y * y) / 2);
}

// A 2 × 2 map is the sum of a similarity and a similarity with a reflection; the largest singular
// value is the sum of their two scales.
double AffineTransform::GetLargestSingularValue(const Params& transform) noexcept
{
    const auto& t = transform;
    return (std::hypot(t.m00 + t.m11, t.m10 - t.m01) + std::hypot(t.m00 - t.m11, t.m10 + t.m01)) /
           2;
}

// From the product of both, the determinant: the difference of the two scales would cancel.
double AffineTransform::GetSmallestSingularValue(const Params& transform) noexcept
{
    const double largest = GetLargestSingularValue(transform);
    if (largest == 0)
        return 0;
    return std::abs(transform.m00 / largest * transform.m11 -
                    transform.m01 / largest * transform.m10);
}

bool AffineTransform::IsIdentity(const Params& transform, double tolerance) noexcept
{
    return IsEqual(transform, {}, tolerance);
}

bool AffineTransform::IsEqual(const Params& a, const Params& b, double tolerance) noexcept
{
    return IsNear(a.m00, b.m00, tolerance) && IsNear(a.m01, b.m01, tolerance) &&
           IsNear(a.m02, b.m02, tolerance) && IsNear(a.m10, b.m10, tolerance) &&
           IsNear(a.m11, b.m11, tolerance) && IsNear(a.m12, b.m12, tolerance);
}

bool AffineTransform::IsFinite(const Params& transform) noexcept
{
    return std::isfinite(transform.m00) && std::isfinite(transform.m01) &&
           std::isfinite(transform.m02) && std::isfinite(transform.m10) &&
           std::isfinite(transform.m11) && std::isfinite(transform.m12);
}

} // namespace Raster
