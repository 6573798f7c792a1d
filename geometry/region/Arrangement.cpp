#include <geometry/region/Arrangement.h>

#include <algorithm>
#include <iterator>
#include <memory_resource>
#include <set>
#include <tuple>

namespace Geometry {
namespace {

constexpr std::size_t MaximumCrossings = std::size_t{1} << 20;
constexpr std::size_t MaximumPairs = std::size_t{1} << 23;
// Hot squares on the way of parts, and parts looked at for them, besides those in proportion.
constexpr std::size_t MaximumNodes = std::size_t{1} << 23;
constexpr std::size_t MaximumTries = std::size_t{1} << 27;

__extension__ using Wide = __int128;

int GetSign(std::int64_t value) noexcept
{
    return (value > 0) - (value < 0);
}

/// The nearest whole number to a/b, halves rounded up as Grid::Round does. \pre b is positive
std::int32_t RoundQuotient(Wide a, std::int64_t b) noexcept
{
    const Wide numerator = 2 * a + b, denominator = 2 * static_cast<Wide>(b);
    Wide quotient = numerator / denominator;
    if (quotient * denominator > numerator)
        --quotient;
    return static_cast<std::int32_t>(quotient);
}

/// The square that two edges cross in. \return false when they do not, or at an end of one.
bool FindCrossing(const GridEdge& a, const GridEdge& b, GridPoint& crossing) noexcept
{
    const std::int64_t fromSide = Turn(b.from, b.to, a.from), toSide = Turn(b.from, b.to, a.to);
    if (GetSign(fromSide) * GetSign(toSide) >= 0 ||
        GetSign(Turn(a.from, a.to, b.from)) * GetSign(Turn(a.from, a.to, b.to)) >= 0)
        return false;
    const GridVector way = a.to - a.from;
    const std::int64_t sign = fromSide > 0 ? 1 : -1;
    const std::int64_t whole = sign * (fromSide - toSide);
    const Wide part = sign * fromSide;
    crossing = {a.from.x + RoundQuotient(part * way.x, whole),
                a.from.y + RoundQuotient(part * way.y, whole)};
    return true;
}

/// Whether an edge passes the square around a point. Left and lower sides belong to the square,
/// right and upper ones to the next: the square is moved by an infinitely small amount to the left,
/// and by a smaller one down, and no corner lies on the edge.
bool PassesSquare(const GridEdge& edge, GridPoint centre) noexcept
{
    const auto [left, right] = std::minmax(edge.from.x, edge.to.x);
    const auto [top, bottom] = std::minmax(edge.from.y, edge.to.y);
    if (centre.x < left || centre.x > right || centre.y < top || centre.y > bottom)
        return false;
    const GridVector way = edge.to - edge.from, toCentre = centre - edge.from;
    const int tie = way.y != 0 ? GetSign(way.y) : -GetSign(way.x);
    int onLeft = 0;
    for (const int x : {-1, 1})
        for (const int y : {-1, 1}) {
            const std::int64_t cross = Cross(way, {2 * toCentre.x + x, 2 * toCentre.y + y});
            onLeft += (cross != 0 ? GetSign(cross) : tie) > 0;
        }
    return edge.from == centre || edge.to == centre || (onLeft > 0 && onLeft < 4);
}

/// Whether \p a comes before \p b where both begin at the same point: below it.
bool IsBelow(const Arrangement::Edge& a, const Arrangement::Edge& b) noexcept
{
    return Turn(a.low, a.high, b.high) > 0;
}

/// The order of edges along the line of the sweep. Where one begins, all others pass it on a side.
struct SweepOrder
{
    const std::vector<Arrangement::Edge>* edges;

    bool operator()(std::size_t indexA, std::size_t indexB) const noexcept
    {
        const Arrangement::Edge& a = (*edges)[indexA];
        const Arrangement::Edge& b = (*edges)[indexB];
        if (a.low == b.low)
            return IsBelow(a, b);
        return a.low < b.low ? Turn(a.low, a.high, b.low) > 0 : Turn(b.low, b.high, a.low) < 0;
    }
};

} // namespace

bool Arrangement::Build(std::span<const GridEdge> edges)
{
    m_edges.clear();
    m_collinear.Build(edges);
    m_parts = m_collinear.GetParts();
    m_tree.Build(m_parts);
    if (!FindNodes())
        return false;
    BreakEdges();
    MergeEdges();
    FindWindings();
    return true;
}

/// Finds the hot squares that every part passes. Those at ends of edges are found with the pairs of
/// edges that meet or nearly do; only those of crossings need a search.
bool Arrangement::FindNodes()
{
    m_nodes.clear();
    m_crossings.clear();
    m_tries = 0;
    for (std::uint32_t i = 0; i < m_parts.size(); ++i) {
        AddNode(i, m_parts[i].from);
        AddNode(i, m_parts[i].to);
    }
    const bool isDone = m_tree.VisitPairs(MaximumPairs, [this](std::uint32_t a, std::uint32_t b) {
        if (IsTooMuch())
            return;
        AddNode(a, m_parts[b].to); // each point is where a part goes to
        AddNode(b, m_parts[a].to);
        GridPoint crossing;
        if (FindCrossing(m_parts[a], m_parts[b], crossing))
            m_crossings.push_back(crossing);
    });
    if (!isDone)
        return false;
    std::sort(m_crossings.begin(), m_crossings.end());
    m_crossings.erase(std::unique(m_crossings.begin(), m_crossings.end()), m_crossings.end());
    for (const GridPoint point : m_crossings) {
        if (IsTooMuch())
            return false;
        m_tree.VisitAt(point, [&](std::uint32_t part) { AddNode(part, point); });
    }
    if (IsTooMuch())
        return false;
    std::sort(m_nodes.begin(), m_nodes.end(), [](const Node& a, const Node& b) {
        return std::tie(a.part, a.along) < std::tie(b.part, b.along);
    });
    return true;
}

bool Arrangement::IsTooMuch() const noexcept
{
    return m_crossings.size() >= MaximumCrossings ||
           m_nodes.size() >= MaximumNodes + 8 * m_parts.size() ||
           m_tries >= MaximumTries + 64 * m_parts.size();
}

void Arrangement::AddNode(std::uint32_t index, GridPoint point)
{
    ++m_tries;
    const GridEdge& part = m_parts[index];
    if (PassesSquare(part, point))
        m_nodes.push_back({index, point, Dot(point - part.from, part.to - part.from)});
}

void Arrangement::BreakEdges()
{
    for (std::size_t i = 1; i < m_nodes.size(); ++i) {
        const Node &from = m_nodes[i - 1], &to = m_nodes[i];
        if (from.part != to.part || from.point == to.point)
            continue;
        const bool isForward = from.point < to.point;
        const CollinearEdges::Origin& origin = m_collinear.GetOrigin(from.part);
        const int sign = isForward ? 1 : -1;
        m_edges.push_back({std::min(from.point, to.point),
                           std::max(from.point, to.point),
                           {sign * origin.step[0], sign * origin.step[1]},
                           {},
                           origin.source,
                           isForward == origin.isAlong});
    }
}

/// Sorts the edges and makes one of those that coincide.
void Arrangement::MergeEdges()
{
    std::sort(m_edges.begin(), m_edges.end(), [](const Edge& a, const Edge& b) {
        if (a.low != b.low)
            return a.low < b.low;
        return a.high == b.high ? a.source < b.source : IsBelow(a, b);
    });
    std::size_t count = 0;
    for (std::size_t i = 0; i < m_edges.size();) {
        Edge edge = m_edges[i];
        for (++i; i < m_edges.size() && m_edges[i].low == edge.low && m_edges[i].high == edge.high;
             ++i) {
            edge.step[0] += m_edges[i].step[0];
            edge.step[1] += m_edges[i].step[1];
        }
        if (edge.step != RegionWindings{})
            m_edges[count++] = edge;
    }
    m_edges.resize(count);
}

/// Sweeps a nearly upright line over the plane, which knows the edges that it cuts from below to
/// above.
void Arrangement::FindWindings()
{
    std::vector<std::size_t> ends(m_edges.size()); // in the order in which the line leaves them
    for (std::size_t i = 0; i < ends.size(); ++i)
        ends[i] = i;
    std::sort(ends.begin(), ends.end(),
              [this](std::size_t a, std::size_t b) { return m_edges[a].high < m_edges[b].high; });
    std::pmr::unsynchronized_pool_resource memory;
    using Line = std::pmr::multiset<std::size_t, SweepOrder>;
    Line line(SweepOrder{&m_edges}, &memory);
    std::vector<Line::iterator> places(m_edges.size());
    auto end = ends.begin();
    for (std::size_t i = 0; i < m_edges.size(); ++i) {
        Edge& edge = m_edges[i];
        for (; m_edges[*end].high <= edge.low; ++end)
            line.erase(places[*end]);
        const bool isFirst = i == 0 || m_edges[i - 1].low != edge.low;
        const auto place = isFirst ? line.insert(i) : line.insert(std::next(places[i - 1]), i);
        places[i] = place;
        edge.below = {};
        if (place != line.begin()) {
            const Edge& under = m_edges[*std::prev(place)];
            edge.below = {under.below[0] + under.step[0], under.below[1] + under.step[1]};
        }
    }
}

} // namespace Geometry
