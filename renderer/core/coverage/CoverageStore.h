#pragma once

#include <algorithm>
#include <limits>
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
        m_isUpright = m_isUpright && x1 == x2;
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
    };
    Mark GetMark() const noexcept
    {
        return {m_edges.size(), m_left, m_top, m_right, m_bottom, m_isUpright};
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
    /// \param beginRow is asked before each row with its y (or before several that are alike, if
    /// the
    ///        sink's Run and Mask take a number of rows); false ends the sweep (the store is then
    ///        ready for a Reset all the same).
    /// \param sink see CoverageRows::SweepRow.
    template<class BeginRow, class Sink>
    void Sweep(const CoverageRule& rule, BeginRow&& beginRow, Sink&& sink)
    {
        try {
            const Kernel::RectT<int> bounds = GetBounds();
            if (bounds.IsEmpty())
                return;
            if (m_isUpright && m_edges.size() <= UprightSweep::MostEdges)
                m_upright.Sweep(m_edges, bounds, rule, beginRow, sink);
            else
                SweepBands(bounds, rule, beginRow, sink);
        } catch (...) {
            m_rows = CoverageRows(); // what the rows hold half-way must not show in the next path
            throw;
        }
    }

private:
    template<class BeginRow, class Sink>
    void SweepBands(const Kernel::RectT<int>& bounds, const CoverageRule& rule, BeginRow& beginRow,
                    Sink& sink)
    {
        const auto rows = static_cast<int>(
            std::clamp<std::size_t>(BandBytes / CoverageRows::BytesPerRow(bounds.Width()), 1,
                                    std::size_t(bounds.Height())));
        if (rows < bounds.Height())
            std::sort(m_edges.begin(), m_edges.end(), [](const Edge& a, const Edge& b) {
                return std::min(a.y1, a.y2) < std::min(b.y1, b.y2);
            });
        m_active.clear();
        std::size_t next = 0; // first edge that no band has seen
        bool more = true;
        for (int top = bounds.top; top < bounds.bottom && more; top += rows) {
            const Kernel::RectT<int> band{bounds.left, top, bounds.right,
                                          std::min(top + rows, bounds.bottom)};
            m_rows.Open(band);
            next = WalkBand(band, next);
            for (int y = band.top; y < band.bottom; ++y) {
                more = more && beginRow(y);
                if (more)
                    m_rows.SweepRow(y, rule, sink);
                else
                    m_rows.SweepRow(y, rule, NoSink{});
            }
        }
    }

    /// Clears rows after the sweep was ended.
    struct NoSink
    {
        void Run(int, unsigned, unsigned char) const noexcept {}
        void Mask(int, unsigned, const unsigned char*) const noexcept {}
    };

    /// Walks the edges that reach into \p band and returns the first edge below it.
    std::size_t WalkBand(const Kernel::RectT<int>& band, std::size_t next)
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
        const bool last = band.bottom == GetBounds().bottom;
        for (; next < m_edges.size(); ++next) {
            const Edge& edge = m_edges[next];
            if (!last && std::min(edge.y1, edge.y2) >> SubPixelShift >= band.bottom)
                break;
            walker.Walk(edge);
            if (!last && EndsBelow(edge, band))
                m_active.push_back(next);
        }
        return next;
    }

    static bool EndsBelow(const Edge& edge, const Kernel::RectT<int>& band) noexcept
    {
        return (std::max(edge.y1, edge.y2) - 1) >> SubPixelShift >= band.bottom;
    }

    Kernel::RectT<int> m_window{};
    std::vector<Edge> m_edges;
    std::vector<std::size_t> m_active; // indices of edges that began above the present band
    int m_left = 0, m_top = 0, m_right = 0, m_bottom = 0;
    bool m_isUpright = true;
    UprightSweep m_upright;
    CoverageRows m_rows;
};

} // namespace Renderer::Coverage
