#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include <geometry/Stroker.h>

namespace Geometry {

/// Cuts runs into dashes, whatever their edges are.
///
/// A run tells its edges: `GetEdgeCount()`, `GetLength(edge)`, `IsClosed()`. What is on goes to
/// dashes, one at a time, as `Start(edge, position, length)` and `End(…)`, the position being at
/// most the edge's length, and `Pass(edge)` for the end of an edge that the dash goes on beyond;
/// `HasStart()` and `HasLength()` tell whether there is a dash, and whether it has passed an edge.
/// A dash is then finished by `Draw()`, or put aside by `Hold()` if it began at the start of a
/// closed run; that one is at last drawn by `DrawHeld()`, if there is one, or appended by
/// `JoinHeld()` to the dash that reaches the end. `DrawWhole()` draws the run undashed.
class StrokeDashCutter
{
public:
    /// More dashes than this in one run are beyond telling apart; the run is then drawn solid.
    static constexpr double MaximumDashes = 1e6;

    /// \param parameters its dashes and their phase are finite, also in the units of the path.
    void SetPattern(const StrokeParameters& parameters);

    /// Whether the pattern has any gaps; otherwise lines are solid.
    bool IsDashed() const noexcept { return m_isDashed; }

    /// Cuts one run that has edges; the pattern starts anew with it.
    template<class Run, class Dashes>
    void Cut(const Run& run, Dashes& dashes)
    {
        const std::size_t edges = run.GetEdgeCount();
        double length = 0.0;
        for (std::size_t edge = 0; edge < edges; ++edge)
            length += run.GetLength(edge);
        if (!(length / m_period * static_cast<double>(m_dashes.size() / 2) <= MaximumDashes)) {
            dashes.DrawWhole();
            return;
        }
        Restart();
        m_holdsFirst = run.IsClosed() && IsOn();
        for (std::size_t edge = 0; edge < edges; ++edge)
            WalkEdge(edge, run.GetLength(edge), dashes);
        Finish(run.IsClosed(), dashes);
    }

private:
    void Restart();
    void Advance();
    bool IsOn() const noexcept { return m_index % 2 == 0; }

    template<class Dashes>
    void WalkEdge(std::size_t edge, double length, Dashes& dashes)
    {
        if (IsOn() && !dashes.HasStart())
            dashes.Start(edge, 0.0, length);
        if (!(length > 0.0)) { // between two turns in one place, no dash ends
            if (IsOn())
                dashes.Pass(edge);
            return;
        }
        double position = 0.0;
        while (m_remaining <= length - position + m_epsilon) {
            position = std::min(position + m_remaining, length);
            const bool atEnd = position >= length - m_epsilon;
            if (IsOn()) {
                if (m_dashes[m_index + 1] == 0.0) { // no gap: the next dash continues this one
                    Advance();
                    Advance();
                    continue;
                }
                dashes.End(edge, atEnd ? length : position, length);
                m_holdsFirst ? dashes.Hold() : dashes.Draw();
                m_holdsFirst = false;
            } else if (!atEnd) {
                dashes.Start(edge, position, length);
            } // a dash that starts at a vertex starts with the next edge and its direction
            Advance();
        }
        m_remaining -= length - position;
        if (IsOn() && dashes.HasStart())
            dashes.Pass(edge);
    }

    /// Draws what is on at the end of the run, as one with a dash that began at the start.
    template<class Dashes>
    void Finish(bool closed, Dashes& dashes)
    {
        if (!dashes.HasLength()) { // gap, or a dash that would begin just at the end
            dashes.DrawHeld();
        } else if (closed && m_holdsFirst) { // never ended
            dashes.DrawWhole();
        } else {
            if (closed)
                dashes.JoinHeld();
            dashes.Draw();
        }
    }

    std::vector<double> m_dashes; // an even number: dash, gap, dash, …
    double m_period = 0.0;
    double m_phase = 0.0; // in [0, period)
    double m_epsilon = 0.0;
    bool m_isDashed = false;

    std::size_t m_index = 0;
    double m_remaining = 0.0;  // of the dash or gap at m_index
    bool m_holdsFirst = false; // whether the next dash to end began at the start of a closed run
};

} // namespace Geometry
