#pragma once

#include <cstddef>
#include <vector>

#include <kernel/Counted.h>
#include <kernel/Rect.h>
#include <renderer/core/coverage/CoverageRows.h>
#include <renderer/core/coverage/Region.h>

namespace Renderer::Coverage {

using Regions = std::vector<Kernel::Counted<const Region>>;

/// The coverage of what several regions have in common, from their edges and not from the products
/// of their coverages.
///
/// A row is cut at all ends of edges, and further where edges cross, down to 1/256 of a pixel.
/// Between two cuts the edges have an order from left to right; the pieces that bound the common
/// area become cells as the edges of any path do. So the result is as exact as the coverage of one
/// path: an edge is off by less than 1/256 of a pixel, along its length and at crossings. It
/// depends on the regions and the row alone, not on what else is drawn.
class CommonArea
{
public:
    /// Takes the regions and the pixels that will be asked for.
    /// \param shape one more region; null for none. Regions must outlive the use of GetRow.
    void Begin(const Regions& regions, const Region* shape, const Kernel::RectT<int>& window);

    /// The coverage of the window's pixels in row \p y; valid until the next call. Costs least when
    /// rows come from top to bottom.
    const unsigned char* GetRow(int y);
    /// The column of the first pixel.
    int GetLeft() const noexcept { return m_window.left; }

private:
    /// A path on its way through the rows.
    struct Path
    {
        const std::vector<Edge>* edges;
        std::size_t region;
        bool evenOdd;
        std::size_t next = 0; ///< the first edge that no row has seen
        int winding = 0;      ///< between the edges that were passed and the next one

        bool IsInside() const noexcept { return evenOdd ? (winding & 1) != 0 : winding != 0; }
    };
    struct ActiveEdge
    {
        const Edge* edge;
        std::size_t path;
        // The piece of the row in which it was last found to bound the area:
        int direction; ///< 1 where one enters the area, −1 where one leaves it, 0 for none
        int top, bottom;
    };
    /// An edge within a slab.
    struct Crossing
    {
        int top, bottom; ///< x there
        std::size_t path;
        int winding;
        std::size_t active;
    };

    void AddRegion(const Region& region);
    void FindActiveEdges(int y);
    void AddSlab(int top, int bottom);
    void FindCrossings(int top, int bottom);
    bool HasCrossedEdges() const noexcept;
    void FindBoundary(int top, int bottom);
    void AddPiece(ActiveEdge& active, int direction, int top, int bottom);
    void WalkPiece(ActiveEdge& active);
    /// Passes an edge. \return by how much the number of regions that one is inside of changes.
    int Pass(const Crossing& crossing) noexcept;

    Kernel::RectT<int> m_window{};
    std::vector<Path> m_paths;
    std::vector<int> m_insides; // per region, how many of its paths one is inside of
    std::vector<ActiveEdge> m_active;
    std::vector<int> m_cuts;
    std::vector<Crossing> m_crossings;
    std::vector<unsigned char> m_covers;
    CoverageRows m_rows;
    int m_row = 0;
    bool m_hasRow = false;
};

} // namespace Renderer::Coverage
