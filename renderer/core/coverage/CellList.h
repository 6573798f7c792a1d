#pragma once

#include <algorithm>
#include <vector>

#include <renderer/core/coverage/CoverageStore.h>
#include <renderer/core/coverage/EdgeWalker.h>

namespace Renderer::Coverage {

/// What one edge covers of one pixel, in the units of EdgeWalker.
struct Cell
{
    int y, x;
    int cover, area;
};

/// The cells of a path, for drawing without anti-aliasing, which needs cover and area apart. Cells
/// left of the window are folded into its first column, those to its right are dropped.
class CellList
{
public:
    /// Takes the cells of all edges of \p store within its window, by rows, from left to right;
    /// those of one pixel follow each other.
    void Collect(const CoverageStore& store)
    {
        m_cells.clear();
        EdgeWalker<CellList> walker(store.GetWindow(), *this);
        for (const Edge& edge : store.GetEdges())
            walker.Walk(edge);
        std::sort(m_cells.begin(), m_cells.end(),
                  [](const Cell& a, const Cell& b) { return a.y != b.y ? a.y < b.y : a.x < b.x; });
    }

    const Cell* Begin() const noexcept { return m_cells.data(); }
    const Cell* End() const noexcept { return m_cells.data() + m_cells.size(); }

    /// For the walker.
    void AddCell(int x, int y, int cover, int area) { m_cells.push_back({y, x, cover, area}); }

private:
    std::vector<Cell> m_cells;
};

} // namespace Renderer::Coverage
