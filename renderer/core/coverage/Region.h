#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include <geometry/Polygon.h>
#include <kernel/Countable.h>
#include <raster/AffineTransform.h>
#include <renderer/core/coverage/AddPolygons.h>
#include <renderer/core/coverage/CoverageStore.h>

namespace Renderer::Coverage {

/// What one path, or several together, enclose within some rows: the edges of each path. Unlike a
/// CoverageStore it keeps edges wherever they lie in a row, so that what is computed from a row
/// does not depend on the columns that are looked at.
class Region : public Kernel::Countable
{
public:
    struct Path
    {
        std::vector<Edge> edges; ///< by their top
        bool evenOdd = true;
    };

    /// Adds a path to those that are united.
    /// \param top, bottom the rows that will be looked at.
    /// \param store is used for the work.
    void AddPath(const Geometry::PolyPolygonType<double>& polygons,
                 const Raster::AffineTransform::Params& transform, bool evenOdd, int top,
                 int bottom, CoverageStore& store)
    {
        store.Reset({GuardRect.left, top, GuardRect.right, bottom});
        AddPolygons(store, polygons, transform);
        if (m_count == m_paths.size())
            m_paths.emplace_back();
        Path& path = m_paths[m_count++];
        path.edges = store.GetEdges();
        path.evenOdd = evenOdd;
        std::sort(path.edges.begin(), path.edges.end(),
                  [](const Edge& a, const Edge& b) { return GetTop(a) < GetTop(b); });
    }

    /// Forgets all paths but keeps their memory.
    void Clear() noexcept { m_count = 0; }

    std::span<const Path> GetPaths() const noexcept { return {m_paths.data(), m_count}; }

    static int GetTop(const Edge& edge) noexcept { return std::min(edge.y1, edge.y2); }
    static int GetBottom(const Edge& edge) noexcept { return std::max(edge.y1, edge.y2); }

private:
    std::vector<Path> m_paths;
    std::size_t m_count = 0; // of those in use
};

} // namespace Renderer::Coverage
