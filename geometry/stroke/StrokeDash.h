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

    /// \param dashes as in StrokeParameters; \p phase is finite.
    StrokeDash(std::span<const double> dashes, double phase);

    /// Whether the pattern has any gaps; otherwise lines are solid.
    bool IsDashed() const noexcept { return m_isDashed; }

    /// Draws the dashes of one run of at least two vertices; the pattern starts anew with it.
    void Draw(const StrokePath& path, StrokeOutline& outline);

private:
    void Restart();
    void Advance();
    void WalkEdge(const StrokeVertex& from, const StrokeVertex& to, StrokeOutline& outline);
    void Finish(const StrokePath& path, StrokeOutline& outline);
    void EndDash(const StrokeVertex& end, StrokeOutline& outline);
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
