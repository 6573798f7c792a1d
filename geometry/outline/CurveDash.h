#pragma once

#include <vector>

#include <geometry/outline/CurveOutline.h>
#include <geometry/stroke/StrokeDashCutter.h>

namespace Geometry {

/// Cuts runs of curves into dashes, by the lengths of the curves themselves.
class CurveDash
{
public:
    /// See StrokeDashCutter.
    void SetPattern(const StrokeParameters& parameters) { m_cutter.SetPattern(parameters); }
    bool IsDashed() const noexcept { return m_cutter.IsDashed(); }

    /// Draws the dashes of one measured run that has pieces; the pattern starts anew with it.
    void Draw(const OutlinePath& path, CurveOutline& outline, PolyCurveDbl& out);

private:
    class Dashes;

    StrokeDashCutter m_cutter;
    std::vector<OutlinePiece> m_dash;  // the present dash
    std::vector<OutlinePiece> m_first; // one that began at the start of a closed run
};

} // namespace Geometry
