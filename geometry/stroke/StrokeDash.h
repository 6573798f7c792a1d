#pragma once

#include <vector>

#include <geometry/stroke/StrokeDashCutter.h>
#include <geometry/stroke/StrokeOutline.h>
#include <geometry/stroke/StrokePath.h>

namespace Geometry {

/// Cuts flattened paths into dashes.
class StrokeDash
{
public:
    /// See StrokeDashCutter.
    void SetPattern(const StrokeParameters& parameters) { m_cutter.SetPattern(parameters); }
    bool IsDashed() const noexcept { return m_cutter.IsDashed(); }

    /// Draws the dashes of one run of at least two vertices; the pattern starts anew with it.
    void Draw(const StrokePath& path, StrokeOutline& outline, PolyPolygonType<double>& out);

private:
    class Dashes;

    StrokeDashCutter m_cutter;
    std::vector<StrokeVertex> m_piece; // the present dash
    std::vector<StrokeVertex> m_first; // one that began at the start of a closed run
};

} // namespace Geometry
