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
        m_budget = 1 << 22;
    }

    /// Adds an offset between two parameters, over which the pen's end runs one way, in as many
    /// cubics as it takes. \pre the side has reached its start.
    void Add(OutlineSide& side, const Offset& offset, double from, double to, bool forward);

private:
    void AddPart(OutlineSide& side, const Offset& offset, const OffsetPart& part, int depth);

    double m_tolerance = 0.0;
    std::size_t m_budget = 0; // of cubics; beyond, offsets are straight
};

} // namespace Geometry
