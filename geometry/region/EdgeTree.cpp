#include <geometry/region/EdgeTree.h>

#include <bit>
#include <cmath>

namespace Geometry {
namespace {

double GetLength(const GridEdge& edge) noexcept
{
    const GridVector way = edge.to - edge.from;
    return static_cast<double>(std::max(std::abs(way.x), std::abs(way.y)));
}

/// Moves the bits of a number to the even places of a larger one.
std::uint64_t Spread(std::int32_t value) noexcept
{
    std::uint64_t bits = static_cast<std::uint32_t>(value);
    bits = (bits | bits << 16) & 0x0000ffff0000ffff;
    bits = (bits | bits << 8) & 0x00ff00ff00ff00ff;
    bits = (bits | bits << 4) & 0x0f0f0f0f0f0f0f0f;
    bits = (bits | bits << 2) & 0x3333333333333333;
    return (bits | bits << 1) & 0x5555555555555555;
}

} // namespace

void EdgeTree::Build(std::span<const GridEdge> edges)
{
    m_edges = edges;
    m_pieces.clear();
    const double length = FindPieceLength();
    for (std::size_t i = 0; i < edges.size(); ++i)
        AddPieces(static_cast<std::uint32_t>(i), length);

    m_leaves = std::bit_ceil(std::max<std::size_t>((m_pieces.size() + LeafSize - 1) / LeafSize, 1));
    m_boxes.assign(2 * m_leaves, {});
    std::sort(m_pieces.begin(), m_pieces.end(),
              [](const Piece& a, const Piece& b) { return a.place < b.place; });
    for (std::size_t i = 0; i < m_pieces.size(); ++i)
        m_boxes[m_leaves + i / LeafSize].Add(m_pieces[i].box);
    for (std::size_t node = m_leaves - 1; node > 0; --node) {
        m_boxes[node] = m_boxes[2 * node];
        m_boxes[node].Add(m_boxes[2 * node + 1]);
    }
}

/// How long pieces may be so that a point lies in the boxes of some eight of them on average, and
/// there are no more than nine pieces for an edge.
double EdgeTree::FindPieceLength() const
{
    double total = 0.0, longest = 1.0, area = 0.0;
    Box all;
    for (const GridEdge& edge : m_edges) {
        Box box(edge.from);
        box.Add(Box(edge.to));
        all.Add(box);
        area += box.GetArea();
        total += GetLength(edge);
        longest = std::max(longest, GetLength(edge));
    }
    const double parts = std::min(area / (8.0 * all.GetArea()), 8.0);
    return parts > 1.0 ? std::max(total / (parts * static_cast<double>(m_edges.size())), 1.0)
                       : longest;
}

/// Cuts an edge in pieces of at most \p length in x and y.
void EdgeTree::AddPieces(std::uint32_t index, double length)
{
    const GridEdge& edge = m_edges[index];
    const GridVector way = edge.to - edge.from;
    const int count = static_cast<int>(std::ceil(GetLength(edge) / length));
    const auto at = [&](int i) {
        const double share = static_cast<double>(i) / count;
        return GridPoint{
            edge.from.x + static_cast<std::int32_t>(share * static_cast<double>(way.x)),
            edge.from.y + static_cast<std::int32_t>(share * static_cast<double>(way.y))};
    };
    for (int i = 0; i < count; ++i) {
        const GridPoint start = at(i);
        Box box(start);
        box.Add(Box(at(i + 1)));
        box.Grow(2); // one for rounding, one for squares that are passed beside their centres
        m_pieces.push_back({Spread(start.x) | Spread(start.y) << 1, box, index});
    }
}

} // namespace Geometry
