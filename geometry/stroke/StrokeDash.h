#pragma once

#include <span>
#include <vector>

#include <geometry/stroke/StrokeOutline.h>
#include <geometry/stroke/StrokePath.h>

namespace Geometry {

/// Cuts flattened paths into dashes.
class StrokeDash
{
public:
    /// More dashes than this in one run are beyond telling apart; the run is then drawn solid.
    static constexpr double MaximumDashes = 1e6;

    /// \param parameters its dashes and their phase are finite, also in the units of the path.
    void SetPattern(const StrokeParameters& parameters);

    /// Whether the pattern has any gaps; otherwise lines are solid.
    bool IsDashed() const noexcept { return m_isDashed; }

    /// Draws the dashes of one run of at least two vertices; the pattern starts anew with it.
    void Draw(const StrokePath& path, StrokeOutline& outline, PolyPolygonType<double>& out);

private:
    /// Where the outlines of dashes go.
    struct Drawing
    {
        StrokeOutline& outline;
        PolyPolygonType<double>& out;

        void AddDash(const std::vector<StrokeVertex>& dash) const { outline.AddOpen(dash, out); }
    };

    void Restart();
    void Advance();
    void WalkEdge(const StrokeVertex& from, const StrokeVertex& to, const Drawing& drawing);
    void Finish(const StrokePath& path, const Drawing& drawing);
    void EndDash(const StrokeVertex& end, const Drawing& drawing);
    bool IsOn() const noexcept { return m_index % 2 == 0; }

    std::vector<double> m_dashes; // an even number: dash, gap, dash, …
    double m_period = 0.0;
    double m_phase = 0.0; // in [0, period)
    double m_epsilon = 0.0;
    bool m_isDashed = false;

    std::size_t m_index = 0;
    double m_remaining = 0.0;  // of the dash or gap at m_index
    bool m_holdsFirst = false; // whether the next dash to end began at the start of a closed run
    std::vector<StrokeVertex> m_piece;
    std::vector<StrokeVertex> m_first;
};

} // namespace Geometry
