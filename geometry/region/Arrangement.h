#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <geometry/region/CollinearEdges.h>
#include <geometry/region/EdgeTree.h>
#include <geometry/region/Grid.h>

namespace Geometry {

/// The edges of regions broken up so that they meet at their ends alone, with the winding numbers
/// beside them.
///
/// Edges on the same line are made one before (CollinearEdges). They are broken up by snap rounding
/// (Hobby; Guibas and Marimont): the squares of the grid that hold an end of an edge or a crossing,
/// rounded, are hot, and every edge goes through the centres of all hot squares that it passes.
/// Edges that do so cannot cross any more, and coincide as a whole or not at all. Which squares an
/// edge passes is found exactly, and so is everything after.
class Arrangement
{
public:
    struct Edge
    {
        GridPoint low, high; ///< low < high; "below" and "above" are as for an edge to the right
        RegionWindings step; ///< the windings above less those below; not all 0
        RegionWindings below;
        std::uint32_t source; ///< the edge that it is a part of (the first one of several)
        bool isForward;       ///< whether that runs from low to high
    };

    /// \pre see CollinearEdges. \return false where there are too many crossings, or too much else
    /// to look at: then in a second or two, with a few hundred megabytes at most.
    bool Build(std::span<const GridEdge> edges);

    /// By their lower ends, from below to above where these are the same.
    std::span<const Edge> GetEdges() const noexcept { return m_edges; }

private:
    /// A hot square on the way of an edge.
    struct Node
    {
        std::uint32_t part;
        GridPoint point;
        std::int64_t along;
    };

    bool FindNodes();
    bool IsTooMuch() const noexcept;
    void AddNode(std::uint32_t part, GridPoint point);
    void BreakEdges();
    void MergeEdges();
    void FindWindings();

    CollinearEdges m_collinear;
    std::span<const GridEdge> m_parts; // of the edges, and what is broken up
    std::size_t m_tries = 0;           // to add a node
    EdgeTree m_tree;
    std::vector<GridPoint> m_crossings;
    std::vector<Node> m_nodes;
    std::vector<Edge> m_edges;
};

} // namespace Geometry
