#pragma once

#include <cstdint>
#include <vector>

#include <geometry/Export.h>
#include <geometry/Flatten.h>

namespace Geometry {

/// The lengths of parts of cubic Béziers, and the parameters at lengths along them.
///
/// The length of a part is the integral of the speed, by Gauss and Legendre's eight points over
/// intervals between its minima that are halved until that changes nothing any more: to 1e-8 of
/// the part, cusps included. The ends of the intervals are kept, so that a length or a parameter in
/// between takes one or two integrals more.
class GEOMETRY_EXPORT ArcLengths
{
public:
    /// A part of a cubic that was measured.
    struct Arc
    {
        double from = 0.0, to = 0.0; ///< the parameters at its ends
        double length = 0.0;         ///< in the units of the cubic's points
        std::uint32_t first = 0;     ///< of its places in the table
        std::uint32_t count = 0;
    };

    /// Forgets all arcs and keeps the memory.
    void Clear() noexcept { m_places.clear(); }

    /// Measures a part of a cubic. \pre from < to. The arc is for the functions below, together
    /// with the same cubic, until Clear. Its length is 0, infinite or NaN where there is none.
    Arc Measure(const CubicPolynomial& cubic, double from, double to);

    /// The length of an arc from its start to the parameter \p t.
    double GetLength(const CubicPolynomial& cubic, const Arc& arc, double t) const noexcept;

    /// The parameter at a length from the start of an arc, within the arc; the inverse of
    /// GetLength.
    double FindParameter(const CubicPolynomial& cubic, const Arc& arc,
                         double length) const noexcept;

private:
    /// The end of an interval.
    struct Place
    {
        double t;
        double length; ///< from the start of the arc
    };

    void AddInterval(const CubicPolynomial& cubic, Place& at, double to, double whole,
                     double enough, int depth);
    Place GetBefore(const Arc& arc, const Place* place) const noexcept;

    std::vector<Place> m_places; // of an arc: the ends of its intervals in order
};

} // namespace Geometry
