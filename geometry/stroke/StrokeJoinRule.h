#pragma once

#include <algorithm>

#include <geometry/stroke/StrokePrecision.h>
#include <geometry/Stroker.h>

namespace Geometry {

/// Decides where the outer side of a turn is a single tip. Turns are given by the squared cosine of
/// half their angle.
class StrokeJoinRule
{
public:
    StrokeJoinRule() = default;
    StrokeJoinRule(const StrokeParameters& parameters, const StrokePrecision& precision) noexcept
    {
        // Length ÷ width of a mitre is 1 ÷ cos(turn/2). The limit is a user's parameter and holds
        // to 1e-6, so that the limit √2 takes right angles however they are rotated.
        // Straight back there is no tip, whatever the limit.
        constexpr double least = 1e-30;
        const double limit = parameters.mitreLimit;
        m_leastHalfSquare = limit > 0.0 ? std::max((1.0 - 1e-6) / (limit * limit), least) : 2.0;
        m_slack = 0.125 * precision.tolerance;
    }

    /// Whether the tip of a turn is so low that it is seen no more than a cut corner.
    bool IsLow(double radius, double halfSquare) const noexcept
    {
        return radius * (1.0 - halfSquare) <= m_slack;
    }

    /// Whether a turn has a tip: that of a mitre within the limit, or one so low that no join would
    /// be told from another.
    bool HasTip(StrokeJoin join, double radius, double halfSquare) const noexcept
    {
        if (join == StrokeJoin::Mitre && halfSquare >= m_leastHalfSquare)
            return true;
        return join != StrokeJoin::None && halfSquare > 0.5 && IsLow(radius, halfSquare);
    }

private:
    double m_leastHalfSquare = 0.0; // squared cosine of half the sharpest turn that gets a mitre
    double m_slack = 0.0;           // a corner cut by this much is not seen
};

} // namespace Geometry
