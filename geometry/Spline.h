#pragma once

#include <vector>

#include <geometry/Curve.h>
#include <geometry/Export.h>
#include <kernel/SavedClass.h>

namespace Geometry {

/// A function y(x) through control points, smooth and without overshoot: a piecewise cubic Hermite
/// interpolant whose slopes keep it monotone wherever the points are (Fritsch and Carlson, Monotone
/// Piecewise Cubic Interpolation, SIAM J. Numer. Anal. 17, 1980). Immutable
/// once it is made or loaded.
class GEOMETRY_EXPORT Spline : public Kernel::PlainSavedClass<Spline>
{
public:
    /// The constant \p value.
    explicit Spline(double value = 0.0) : Spline(std::vector<Point>{{0.0, value}}) {}

    /// Takes the control points, in any order. Points that are not finite, or whose x another point
    /// before them has already, are left out; without any point the function is 0.
    explicit Spline(std::vector<Point> points);

    void Save(Kernel::OutSerialiser& out) const override;
    /// Fails without usable points.
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    static const Kernel::ClassProperties& GetTypeClassProperties();

    /// The control points, x ascending; at least one.
    const std::vector<Point>& GetPoints() const noexcept { return m_points; }

    /// The value at \p x; outside of the control points that of the nearest one. NaN for NaN.
    double Evaluate(double x) const noexcept;

    /// Whether the function is \p value everywhere.
    bool IsConstant(double value) const noexcept;

    friend bool operator==(const Spline& a, const Spline& b) noexcept
    {
        return a.m_points == b.m_points;
    }

private:
    std::vector<Point> m_points;
    std::vector<double> m_slopes; // dy/dx at each point
};

} // namespace Geometry
