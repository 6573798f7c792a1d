#pragma once

#include <cstddef>
#include <cstdint>
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
/// The edges of a row fall into clusters: stretches of pixels that edges reach into, with all that
/// lies between the ends of horizontal edges. To the left and right of a cluster every path has one
/// winding number over the row's whole height, so clusters are computed one by one, and only those
/// where edges of several paths meet: elsewhere no two coverages are partial.
///
/// A cluster's row is cut at all ends of edges and where edges cross. Between two cuts the edges
/// have an order from left to right; the pieces that bound the common area become cells as the
/// edges of any path do. So an edge is off by less than 1/256 of a pixel along its length, and a
/// crossing is found to 1/256 of a pixel in height. Where many edges cross within one cluster, cuts
/// at crossings move to multiples of 1/16 or 1/4 of a pixel, and above a budget the cluster's
/// pixels stay unknown. All of this depends on the edges of the row alone, not on the window or on
/// what else is drawn.
class CommonArea
{
public:
    /// What is known of the window's pixels in a row.
    struct Row
    {
        const unsigned char* covers; ///< the common area; 0 where it is not known
        const unsigned char* known;  ///< 1 or 0 per pixel
    };

    /// Takes the regions and the pixels that will be asked for.
    /// \param shape one more region; null for none. Regions must outlive the use of GetRow.
    void Begin(const Regions& regions, const Region* shape, const Kernel::RectT<int>& window);

    /// The pixels of row \p y that edges of several paths reach into; valid until the next call.
    /// Costs least when rows come from top to bottom.
    Row GetRow(int y);
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
        int before = 0;       ///< the same, left of the cluster

        bool IsInside() const noexcept { return evenOdd ? (winding & 1) != 0 : winding != 0; }
    };
    /// How many paths of a region one is inside of, now and left of the cluster.
    struct Insides
    {
        int count = 0, before = 0;
    };
    /// An edge and its part within the row.
    struct ActiveEdge
    {
        const Edge* edge;
        std::size_t path;
        int top = 0, bottom = 0, topX = 0, bottomX = 0;
        // The piece of the row in which it was last found to bound the area:
        int direction = 0; ///< 1 where one enters the area, −1 where one leaves it, 0 for none
        int pieceTop = 0, pieceBottom = 0;

        int GetWinding() const noexcept { return edge->y1 < edge->y2 ? 1 : -1; }
        int GetLeft() const noexcept { return topX < bottomX ? topX : bottomX; }
        int GetRight() const noexcept { return topX < bottomX ? bottomX : topX; }
        int GetX(int y) const noexcept;
        bool IsBefore(const ActiveEdge& other) const noexcept;
    };
    /// Edges that are next to each other, and the pixels that they reach into.
    struct Cluster
    {
        std::size_t begin, end;
        int left, right; ///< columns; right is the last one
        bool isMixed;    ///< whether there are edges of several paths
    };
    /// An edge of a cluster within a slab.
    struct Crossing
    {
        std::size_t active;
        std::int64_t middle; ///< x at the top and at the bottom, added
        int top;             ///< x there
        bool runsThrough;
    };

    void AddRegion(const Region& region);
    void FindActiveEdges(int y);
    void ClipToRow(ActiveEdge& active, int y) const noexcept;
    void SortActiveEdges();
    Cluster FindCluster(std::size_t begin) const noexcept;
    bool FindCuts(const Cluster& cluster);
    bool FindCutsAtCrossings(const Cluster& cluster);
    bool MergeCuts(std::size_t limit);
    void AddCluster(const Cluster& cluster);
    void AddSlab(int top, int bottom);
    void FindBoundary(int top, int bottom);
    void GoBefore(const Cluster& cluster) noexcept;
    void GoBehind(const Cluster& cluster) noexcept;
    void AddPiece(ActiveEdge& active, int direction, int top, int bottom);
    void WalkPiece(ActiveEdge& active);
    void Pass(const ActiveEdge& active) noexcept;

    Kernel::RectT<int> m_window{};
    std::vector<Path> m_paths;
    std::vector<Insides> m_insides;   // per region
    Insides m_outside;                // regions that one is not inside of
    std::vector<ActiveEdge> m_active; // from left to right
    std::vector<int> m_endCuts;       // of the cluster: at ends of edges,
    std::vector<int> m_crossingCuts;  // where edges cross,
    std::vector<int> m_cuts;          // and all of them
    std::vector<std::size_t> m_near;  // edges that the next one may cross
    std::vector<Crossing> m_crossings;
    std::vector<unsigned char> m_covers;
    std::vector<unsigned char> m_known;
    CoverageRows m_rows;
    bool m_isSweptInside = false; // what the cells so far make of the pixels to their right
    int m_row = 0;
    bool m_hasRow = false;
};

} // namespace Renderer::Coverage
