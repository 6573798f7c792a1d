#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include <geometry/region/Grid.h>

namespace Geometry {

/// Boxes around pieces of edges in the order of Morton's curve, which fills the plane, and around
/// pairs of boxes, pairs of these and so on.
///
/// Edges that are long for their number are cut in pieces, as their boxes would hold a large part
/// of the plane each.
class EdgeTree
{
public:
    void Build(std::span<const GridEdge> edges);

    /// Calls \p visit(edge) for the index of every edge that passes within a step of \p point, more
    /// than once for some, and for some that pass further away.
    template<class Visit>
    void VisitAt(GridPoint point, const Visit& visit) const
    {
        VisitNode(1, Box(point), visit);
    }

    /// Calls \p visit(edge, edge) for every two edges that meet, more than once for some, and for
    /// some that do not.
    /// \return false when that is given up for more than \p limit steps.
    template<class Visit>
    bool VisitPairs(std::size_t limit, const Visit& visit) const
    {
        VisitPairsWithin(1, limit, visit);
        return limit > 0;
    }

private:
    static constexpr std::size_t LeafSize = 4; // pieces of a node without children

    struct Box
    {
        Box() = default;
        explicit Box(GridPoint point) noexcept
            : left(point.x), top(point.y), right(point.x), bottom(point.y)
        {}
        void Add(const Box& other) noexcept
        {
            left = std::min(left, other.left);
            top = std::min(top, other.top);
            right = std::max(right, other.right);
            bottom = std::max(bottom, other.bottom);
        }
        void Grow(std::int32_t by) noexcept
        {
            left -= by;
            top -= by;
            right += by;
            bottom += by;
        }
        double GetArea() const noexcept { return (1.0 + right - left) * (1.0 + bottom - top); }
        bool Meets(const Box& other) const noexcept
        {
            return left <= other.right && other.left <= right && top <= other.bottom &&
                   other.top <= bottom;
        }

        std::int32_t left = std::numeric_limits<std::int32_t>::max();
        std::int32_t top = std::numeric_limits<std::int32_t>::max();
        std::int32_t right = std::numeric_limits<std::int32_t>::min();
        std::int32_t bottom = std::numeric_limits<std::int32_t>::min();
    };

    struct Piece
    {
        std::uint64_t place; // on a curve that fills the plane (Morton's)
        Box box;
        std::uint32_t edge;
    };

    double FindPieceLength() const;
    void AddPieces(std::uint32_t edge, double length);

    bool IsLeaf(std::size_t node) const noexcept { return node >= m_leaves; }
    std::span<const Piece> GetPieces(std::size_t leaf) const noexcept
    {
        const std::size_t begin = std::min((leaf - m_leaves) * LeafSize, m_pieces.size());
        return {m_pieces.data() + begin, std::min(LeafSize, m_pieces.size() - begin)};
    }

    template<class Visit>
    void VisitNode(std::size_t node, const Box& box, const Visit& visit) const
    {
        if (!m_boxes[node].Meets(box))
            return;
        if (!IsLeaf(node)) {
            VisitNode(2 * node, box, visit);
            VisitNode(2 * node + 1, box, visit);
            return;
        }
        for (const Piece& piece : GetPieces(node))
            if (piece.box.Meets(box))
                visit(piece.edge);
    }

    template<class Visit>
    void VisitPairsWithin(std::size_t node, std::size_t& limit, const Visit& visit) const
    {
        if (!IsLeaf(node)) {
            VisitPairsWithin(2 * node, limit, visit);
            VisitPairsWithin(2 * node + 1, limit, visit);
            VisitPairsBetween(2 * node, 2 * node + 1, limit, visit);
            return;
        }
        const auto pieces = GetPieces(node);
        for (std::size_t i = 0; i < pieces.size(); ++i)
            for (std::size_t k = 0; k < i; ++k)
                if (pieces[i].box.Meets(pieces[k].box))
                    visit(pieces[k].edge, pieces[i].edge);
    }

    template<class Visit>
    void VisitPairsBetween(std::size_t a, std::size_t b, std::size_t& limit,
                           const Visit& visit) const
    {
        if (limit == 0 || !m_boxes[a].Meets(m_boxes[b]))
            return;
        --limit;
        if (!IsLeaf(a)) { // both are of the same level
            for (const std::size_t childA : {2 * a, 2 * a + 1})
                for (const std::size_t childB : {2 * b, 2 * b + 1})
                    VisitPairsBetween(childA, childB, limit, visit);
            return;
        }
        for (const Piece& pieceA : GetPieces(a))
            for (const Piece& pieceB : GetPieces(b))
                if (pieceA.box.Meets(pieceB.box))
                    visit(pieceA.edge, pieceB.edge);
    }

    std::span<const GridEdge> m_edges;
    std::vector<Piece> m_pieces; // in the order of the leaves, as many in each as fit but the last
    std::size_t m_leaves = 1;
    std::vector<Box> m_boxes; // of node 1 and its children 2·n and 2·n + 1
};

} // namespace Geometry
