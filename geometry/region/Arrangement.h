#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <geometry/region/EdgeTree.h>
#include <geometry/region/Grid.h>

namespace Geometry {

/// The edges of regions broken up so that they meet at their ends alone, with the winding numbers
/// beside them.
///
/// They are broken up by snap rounding (Hobby; Guibas and Marimont): the squares of the grid that
/// hold an end of an edge or a crossing, rounded, are hot, and every edge goes through the centres
/// of all hot squares that it passes. Edges that do so cannot cross any more, and coincide as a
/// whole or not at all. Which squares an edge passes is found exactly, and so is everything after.
class Arrangement
{
public:
    /// The number of turns around a point that each region makes.
    using Windings = std::array<std::int32_t, 2>;

    struct Edge
    {
        GridPoint low, high; ///< low < high; "below" and "above" are as for an edge to the right
        Windings step;       ///< the windings above less those below; not all 0
        Windings below;
        std::uint32_t source; ///< the edge that it is a part of (the first one of several)
        bool isForward;       ///< whether that runs from low to high
    };

    /// \return false where there are too many crossings.
    bool Build(std::span<const GridEdge> edges);

    /// By their lower ends, from below to above where these are the same.
    std::span<const Edge> GetEdges() const noexcept { return m_edges; }

private:
    /// A hot square on the way of an edge.
    struct Node
    {
        std::uint32_t edge;
        GridPoint point;
        std::int64_t along;
    };

    bool FindNodes();
    void AddNode(std::uint32_t edge, GridPoint point);
    void BreakEdges();
    void MergeEdges();
    void FindWindings();

    std::span<const GridEdge> m_source;
    EdgeTree m_tree;
    std::vector<GridPoint> m_crossings;
    std::vector<Node> m_nodes;
    std::vector<Edge> m_edges;
};

} // namespace Geometry
