#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include <kernel/Rect.h>
#include <renderer/core/coverage/CoverageRule.h>
#include <renderer/core/coverage/RecordedRow.h>
#include <renderer/core/coverage/SubPixel.h>

namespace Renderer::Coverage {

/// Sweeps rectangles, their frames and other paths of few upright edges: rows between the ends of
/// edges are alike and made once, from the edges themselves. The coverage is that of CoverageRows.
class UprightSweep
{
public:
    /// With more edges, finding out which rows are alike costs more than it saves.
    static constexpr std::size_t MostEdges = RecordedRow::MostPieces / 2;

    /// \param edges upright ones, at most MostEdges, none to the right of \p bounds; they get
    /// sorted. \param bounds what is swept: rows, and columns that edges reach into. Not empty.
    /// \param beginRow, sink see CoverageStore::Sweep.
    /// \return false when \p beginRow ended the sweep.
    template<class BeginRow, class Sink>
    bool Sweep(std::span<Edge> edges, const Kernel::RectT<int>& bounds, const CoverageRule& rule,
               BeginRow& beginRow, Sink& sink)
    {
        SortByColumn(edges);
        FindBreaks(edges, bounds);
        for (std::size_t i = 0; i + 1 < m_breakCount; ++i) {
            Record(edges, bounds, m_breaks[i], rule);
            if (!ReplayRows(m_breaks[i], m_breaks[i + 1], beginRow, sink))
                return false;
        }
        return true;
    }

private:
    /// Sinks that take several rows at once get so many.
    static constexpr int RowsAtOnce = 16;

    /// \return false when \p beginRow ends the sweep.
    template<class BeginRow, class Sink>
    bool ReplayRows(int top, int bottom, BeginRow& beginRow, Sink& sink) const
    {
        constexpr bool takesRows = requires
        {
            sink.Run(0, 1U, static_cast<unsigned char>(1), 1U);
        };
        for (int y = top; y < bottom; y += takesRows ? RowsAtOnce : 1) {
            if (!beginRow(y))
                return false;
            if constexpr (takesRows)
                m_row.Replay(sink, unsigned(std::min(RowsAtOnce, bottom - y)));
            else
                m_row.Replay(sink);
        }
        return true;
    }

    /// A change of the area from a column on.
    struct Step
    {
        int column;
        std::uint32_t area; // unsigned, as it wraps around in the engine
    };

    /// Nearly sorted steps cost least to sort.
    static void SortByColumn(std::span<Edge> edges)
    {
        for (std::size_t i = 1; i < edges.size(); ++i) {
            const Edge edge = edges[i];
            std::size_t at = i;
            for (; at > 0 && edges[at - 1].x1 > edge.x1; --at)
                edges[at] = edges[at - 1];
            edges[at] = edge;
        }
    }

    /// Finds the rows that differ from the one above.
    void FindBreaks(std::span<const Edge> edges, const Kernel::RectT<int>& bounds)
    {
        m_breaks[0] = bounds.top;
        m_breaks[1] = bounds.bottom;
        m_breakCount = 2;
        for (const Edge& edge : edges) {
            for (const int y : {edge.y1, edge.y2}) {
                AddBreak(y >> SubPixelShift);
                AddBreak((y + SubPixelMask) >> SubPixelShift);
            }
        }
    }

    void AddBreak(int row)
    {
        if (row <= m_breaks[0] || row >= m_breaks[m_breakCount - 1])
            return;
        std::size_t at = m_breakCount;
        while (m_breaks[at - 1] > row)
            --at;
        if (m_breaks[at - 1] == row)
            return;
        std::copy_backward(m_breaks.begin() + at, m_breaks.begin() + m_breakCount,
                           m_breaks.begin() + m_breakCount + 1);
        m_breaks[at] = row;
        ++m_breakCount;
    }

    void Record(std::span<const Edge> edges, const Kernel::RectT<int>& bounds, int row,
                const CoverageRule& rule)
    {
        m_stepCount = 0;
        for (const Edge& edge : edges) {
            const int top = std::max(std::min(edge.y1, edge.y2), row * SubPixelScale);
            const int bottom = std::min(std::max(edge.y1, edge.y2), (row + 1) * SubPixelScale);
            if (top >= bottom)
                continue;
            const auto cover =
                static_cast<std::uint32_t>(edge.y2 > edge.y1 ? bottom - top : top - bottom);
            const int column = edge.x1 >> SubPixelShift;
            const auto area = cover * static_cast<std::uint32_t>(2 * (edge.x1 & SubPixelMask));
            if (column < bounds.left) {
                AddStep(bounds.left, cover << (SubPixelShift + 1));
            } else {
                AddStep(column, (cover << (SubPixelShift + 1)) - area);
                AddStep(column + 1, area);
            }
        }
        m_row.Clear(bounds.left, bounds.right);
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < m_stepCount; ++i) {
            sum += m_steps[i].area;
            const int next =
                i + 1 < m_stepCount ? std::min(m_steps[i + 1].column, bounds.right) : bounds.right;
            const unsigned char cover = rule.Apply(static_cast<std::int32_t>(sum));
            if (cover != 0 && next > m_steps[i].column)
                m_row.Run(m_steps[i].column, unsigned(next - m_steps[i].column), cover);
        }
        m_row.Finish();
    }

    void AddStep(int column, std::uint32_t area)
    {
        std::size_t at = m_stepCount++;
        for (; at > 0 && m_steps[at - 1].column > column; --at)
            m_steps[at] = m_steps[at - 1];
        m_steps[at] = {column, area};
    }

    std::array<int, 4 * MostEdges + 2> m_breaks;
    std::array<Step, RecordedRow::MostPieces> m_steps;
    std::size_t m_breakCount = 0;
    std::size_t m_stepCount = 0;
    RecordedRow m_row;
};

} // namespace Renderer::Coverage
