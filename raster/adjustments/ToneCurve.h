#pragma once

#include <vector>

#include <kernel/HashAccumulator.h>
#include <raster/Export.h>

namespace Raster {

/// A point of a tone curve: input and output, both in 0…1.
struct ToneCurvePoint
{
    float input;
    float output;

    friend bool operator==(const ToneCurvePoint&, const ToneCurvePoint&) = default;
};

/// A smooth curve through points that never overshoots them: the piecewise cubic of Fritsch and
/// Butland (A Method for Constructing Local Monotone Piecewise Cubic Interpolants, 1984), with the
/// three-point end slopes of Fritsch and Carlson's PCHIP. Left of the first point and right of the
/// last it is level. Without points, and when every point of a whole range lies on the diagonal, it
/// is the identity.
class RASTER_EXPORT ToneCurve
{
public:
    /// The identity.
    ToneCurve() = default;
    /// \param points in any order; coordinates are clamped to 0…1 (0 where they are not numbers),
    /// and
    ///               of points with one input the last counts.
    ToneCurve(std::vector<ToneCurvePoint> points);

    /// The points in the order of their inputs.
    const std::vector<ToneCurvePoint>& GetPoints() const noexcept { return m_points; }
    bool IsIdentity() const noexcept { return m_isIdentity; }
    /// The curve at \p input; the identity gives back any number as it is.
    float Evaluate(float input) const noexcept;

    void AccumulateHash(Kernel::HashAccumulator& hash) const;
    friend bool operator==(const ToneCurve& a, const ToneCurve& b) noexcept
    {
        return a.m_points == b.m_points;
    }

private:
    /// From \c start on: value + t·(slope + t·(bend + t·twist)), t from \c start.
    struct Segment
    {
        float start;
        float value;
        float slope;
        float bend;
        float twist;
    };

    void MakeSegments();

    std::vector<ToneCurvePoint> m_points;
    std::vector<Segment> m_segments;
    bool m_isIdentity = true;
};

} // namespace Raster
