#pragma once

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <vector>

#include <kernel/Rect.h>
#include <renderer/core/coverage/CoverageRows.h>
#include <renderer/core/coverage/EdgeWalker.h>
#include <renderer/core/coverage/SubPixel.h>
#include <renderer/core/coverage/UprightSweep.h>

namespace Renderer::Coverage {

/// The edges of one path, and the sweep that turns them into coverage.
///
/// Only edges that can be seen in the window are kept. The sweep works on bands of rows that fit
/// the cache: one band for small paths; for large ones the edges are sorted by their top, and each
/// band walks those that reach into it.
class CoverageStore
{
public:
    /// The store's accumulators stay below this many bytes (as long as one row fits).
    static constexpr std::size_t BandBytes = 512 * 1024;

    /// Forgets all edges and sets what can be seen, in pixels of the page.
    void Reset(const Kernel::RectT<int>& window)
    {
        m_window = window;
        m_edges.clear();
        m_isUpright = true;
        m_uprightHeight = 0;
        m_left = m_top = std::numeric_limits<int>::max();
        m_right = m_bottom = std::numeric_limits<int>::min();
    }

    const Kernel::RectT<int>& GetWindow() const noexcept { return m_window; }

    /// Adds an edge in 24.8 fixed point. The name is what AGG's clipper calls.
    void line(int x1, int y1, int x2, int y2)
    {
        const int top = std::min(y1, y2);
        const int bottom = std::max(y1, y2);
        const int left = std::min(x1, x2);
        if (top == bottom || (bottom - 1) >> SubPixelShift < m_window.top ||
            top >> SubPixelShift >= m_window.bottom)
            return;
        m_right = std::max(m_right, std::max(x1, x2));
        // An edge to the right of the window ends what begins in it, out of sight.
        if (left >> SubPixelShift >= m_window.right)
            return;
        m_edges.push_back({x1, y1, x2, y2});
        if (x1 == x2)
            m_uprightHeight += bottom - top;
        else
            m_isUpright = false;
        m_left = std::min(m_left, left);
        m_top = std::min(m_top, top);
        m_bottom = std::max(m_bottom, bottom);
    }

    /// What the store holds at some time.
    struct Mark
    {
        std::size_t edges;
        int left, top, right, bottom;
        bool isUpright;
        std::int64_t uprightHeight;
    };
    Mark GetMark() const noexcept
    {
        return {m_edges.size(), m_left, m_top, m_right, m_bottom, m_isUpright, m_uprightHeight};
    }
    /// Drops what was added since.
    void Return(const Mark& mark) noexcept
    {
        m_edges.resize(mark.edges);
        m_left = mark.left;
        m_top = mark.top;
        m_right = mark.right;
        m_bottom = mark.bottom;
        m_isUpright = mark.isUpright;
        m_uprightHeight = mark.uprightHeight;
    }

    const std::vector<Edge>& GetEdges() const noexcept { return m_edges; }

    /// The pixels that the path can touch within the window; empty without edges.
    Kernel::RectT<int> GetBounds() const noexcept
    {
        if (m_edges.empty())
            return {};
        return Kernel::RectT<int>{m_left >> SubPixelShift, m_top >> SubPixelShift,
                                  (m_right >> SubPixelShift) + 1,
                                  ((m_bottom - 1) >> SubPixelShift) + 1}
            .Intersect(m_window);
    }

    /// Sweeps all rows from top to bottom.
    /// \param beginRow is asked with a row's y before each row; before several that are alike where
    ///        the sink's Run and Mask take a number of rows. With false the sweep ends; the store
    ///        is then ready for a Reset all the same.
    /// \param sink see CoverageRows::SweepRow.
    template<class BeginRow, class Sink>
    void Sweep(const CoverageRule& rule, BeginRow&& beginRow, Sink&& sink)
    {
        try {
            const Kernel::RectT<int> bounds = GetBounds();
            if (bounds.IsEmpty())
                return;
            if (m_isUpright && m_edges.size() <= UprightSweep::MostEdges) {
                m_upright.Sweep(m_edges, bounds, rule, beginRow, sink);
                return;
            }
            m_active.clear();
            m_next = 0;
            m_isSorted = false;
            m_sweepBottom = bounds.bottom;
            if (m_uprightHeight >= std::int64_t{bounds.Height()} * SubPixelScale &&
                m_edges.size() <= MostMixedEdges)
                SweepMixed(bounds, rule, beginRow, sink);
            else
                SweepBands(bounds, rule, beginRow, sink);
        } catch (...) {
            m_rows = CoverageRows(); // what the rows hold half-way must not show in the next path
            throw;
        }
    }

private:
    /// With more edges, looking for upright stretches costs more than it saves.
    static constexpr std::size_t MostMixedEdges = 1024;
    /// Fewer rows are not worth a sweep of their own.
    static constexpr int WorthAStretch = 8;

    /// Round rectangles, lines with round ends and the like: sweeps stretches of rows that upright
    /// edges alone reach into as such, and the others in bands.
    template<class BeginRow, class Sink>
    void SweepMixed(const Kernel::RectT<int>& bounds, const CoverageRule& rule, BeginRow& beginRow,
                    Sink& sink)
    {
        SortByTop();
        Kernel::RectT<int> rest = bounds;
        Kernel::RectT<int> stretch = bounds;
        std::size_t edge = 0;
        while (FindUprightRows(edge, stretch)) {
            if (!CollectUpright(stretch))
                continue;
            if (!SweepBands({rest.left, rest.top, rest.right, stretch.top}, rule, beginRow, sink) ||
                !m_upright.Sweep({m_uprightEdges.data(), m_uprightCount}, stretch, rule, beginRow,
                                 sink))
                return;
            rest.top = stretch.bottom;
        }
        SweepBands(rest, rule, beginRow, sink);
    }

    /// Finds the next rows that no slanted edge reaches into.
    /// \param edge the first edge to look at, from 0 on; edges are sorted by their top.
    /// \param stretch the whole bounds at first, then the last stretch; becomes the next one.
    bool FindUprightRows(std::size_t& edge, Kernel::RectT<int>& stretch) const
    {
        int covered = edge == 0 ? stretch.top : stretch.bottom;
        for (; edge < m_edges.size(); ++edge) {
            const Edge& slanted = m_edges[edge];
            if (slanted.x1 == slanted.x2)
                continue;
            const int top = std::min(slanted.y1, slanted.y2) >> SubPixelShift;
            if (top - covered >= WorthAStretch) {
                stretch.top = covered;
                stretch.bottom = std::min(top, m_sweepBottom);
                return true;
            }
            covered =
                std::max(covered, ((std::max(slanted.y1, slanted.y2) - 1) >> SubPixelShift) + 1);
        }
        if (m_sweepBottom - covered < WorthAStretch)
            return false;
        stretch.top = covered;
        stretch.bottom = m_sweepBottom;
        return true;
    }

    /// Gathers the edges of a stretch. \return false when there are too many.
    bool CollectUpright(const Kernel::RectT<int>& stretch)
    {
        m_uprightCount = 0;
        for (const Edge& edge : m_edges) {
            if (std::min(edge.y1, edge.y2) >= stretch.bottom * SubPixelScale)
                break;
            if (edge.x1 != edge.x2 || std::max(edge.y1, edge.y2) <= stretch.top * SubPixelScale)
                continue;
            if (m_uprightCount == m_uprightEdges.size())
                return false;
            m_uprightEdges[m_uprightCount++] = edge;
        }
        return true;
    }

    /// Once per sweep: sorting again could exchange edges of the same top.
    void SortByTop()
    {
        if (std::exchange(m_isSorted, true))
            return;
        std::sort(m_edges.begin(), m_edges.end(), [](const Edge& a, const Edge& b) {
            return std::min(a.y1, a.y2) < std::min(b.y1, b.y2);
        });
    }

    /// \return false when \p beginRow ended the sweep.
    template<class BeginRow, class Sink>
    bool SweepBands(const Kernel::RectT<int>& part, const CoverageRule& rule, BeginRow& beginRow,
                    Sink& sink)
    {
        if (part.top >= part.bottom)
            return true;
        const auto rows = static_cast<int>(std::clamp<std::size_t>(
            BandBytes / CoverageRows::BytesPerRow(part.Width()), 1, std::size_t(part.Height())));
        if (rows < part.Height())
            SortByTop();
        bool more = true;
        for (int top = part.top; top < part.bottom && more; top += rows) {
            const Kernel::RectT<int> band{part.left, top, part.right,
                                          std::min(top + rows, part.bottom)};
            m_rows.Open(band);
            WalkBand(band);
            for (int y = band.top; y < band.bottom; ++y) {
                more = more && beginRow(y);
                if (more)
                    m_rows.SweepRow(y, rule, sink);
                else
                    m_rows.SweepRow(y, rule, NoSink{});
            }
        }
        return more;
    }

    /// Clears rows after the sweep was ended.
    struct NoSink
    {
        void Run(int, unsigned, unsigned char) const noexcept {}
        void Mask(int, unsigned, const unsigned char*) const noexcept {}
    };

    /// Walks the edges that reach into \p band.
    void WalkBand(const Kernel::RectT<int>& band)
    {
        EdgeWalker<CoverageRows> walker(band, m_rows);
        std::size_t kept = 0;
        for (const std::size_t index : m_active) {
            const Edge& edge = m_edges[index];
            walker.Walk(edge);
            if (EndsBelow(edge, band))
                m_active[kept++] = index;
        }
        m_active.resize(kept);
        const bool last = band.bottom == m_sweepBottom;
        for (; m_next < m_edges.size(); ++m_next) {
            const Edge& edge = m_edges[m_next];
            if (!last && std::min(edge.y1, edge.y2) >> SubPixelShift >= band.bottom)
                break;
            walker.Walk(edge);
            if (!last && EndsBelow(edge, band))
                m_active.push_back(m_next);
        }
    }

    static bool EndsBelow(const Edge& edge, const Kernel::RectT<int>& band) noexcept
    {
        return (std::max(edge.y1, edge.y2) - 1) >> SubPixelShift >= band.bottom;
    }

    Kernel::RectT<int> m_window{};
    std::vector<Edge> m_edges;
    // Of a sweep:
    std::vector<std::size_t> m_active; // indices of edges that began above the present band
    std::size_t m_next = 0;            // first edge that no band has seen
    int m_sweepBottom = 0;
    bool m_isSorted = false;
    std::array<Edge, UprightSweep::MostEdges> m_uprightEdges; // of a stretch
    std::size_t m_uprightCount = 0;
    int m_left = 0, m_top = 0, m_right = 0, m_bottom = 0;
    bool m_isUpright = true;          // all edges are
    std::int64_t m_uprightHeight = 0; // of all upright edges together, in steps of a pixel
    UprightSweep m_upright;
    CoverageRows m_rows;
};

} // namespace Renderer::Coverage
