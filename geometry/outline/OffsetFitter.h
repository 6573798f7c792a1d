#pragma once

#include <cstddef>

#include <geometry/outline/Offset.h>
#include <geometry/outline/OutlineSide.h>

namespace Geometry {

/// The share of coordinates and radii that is as good as rounding.
inline constexpr double FinestShare = 1e-13;

/// Draws offsets as cubics fitted to them.
class OffsetFitter
{
public:
    /// \param tolerance largest distance from the exact offset
    void SetTolerance(double tolerance) noexcept
    {
        m_tolerance = tolerance;
        m_budget = MostParts;
    }

    /// Adds an offset between two parameters, over which the pen's end runs one way, in as many
    /// cubics as it takes. \pre the side has reached its start.
    void Add(OutlineSide& side, const Offset& offset, double from, double to, bool forward);

private:
    /// How many parts are looked at for one offset, and for all that one pen draws; beyond, offsets
    /// are straight. Errors fall with the sixth power of the length, and parts beside a cusp halve
    /// it: an offset takes some tens, or hundreds where its tolerance is as fine as rounding.
    static constexpr std::size_t MostPartsOfOne = 1 << 9;
    static constexpr std::size_t MostParts = 1 << 22;

    void AddPart(OutlineSide& side, const Offset& offset, const OffsetPart& part, int depth);

    double m_tolerance = 0.0;
    double m_finest = 0.0;  // the tolerance of the present offset
    std::size_t m_left = 0; // parts of it that may still be looked at
    std::size_t m_budget = 0;
};

} // namespace Geometry
