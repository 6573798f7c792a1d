#include <renderer/core/coverage/CommonArea.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <tuple>

#include <renderer/core/coverage/EdgeWalker.h>

namespace Renderer::Coverage {

namespace {

/// Where an edge is at \p y, rounded down as in the walker's arithmetic; whichever way it runs, so
/// that edges that coincide stay together.
int GetX(const Edge& edge, int y) noexcept
{
    const bool down = edge.y1 < edge.y2;
    const int top = down ? edge.y1 : edge.y2, bottom = down ? edge.y2 : edge.y1;
    const int topX = down ? edge.x1 : edge.x2, bottomX = down ? edge.x2 : edge.x1;
    if (y == bottom)
        return bottomX;
    const std::int64_t run = std::int64_t{bottomX} - topX;
    if (y == top || run == 0)
        return topX;
    return topX +
           int(FloorDivision<std::int64_t>((std::int64_t{y} - top) * run, bottom - top).quotient);
}

/// Writes coverage into a row of bytes.
struct RowSink
{
    unsigned char* row;
    int left;

    void Run(int x, unsigned length, unsigned char cover) const
    {
        std::memset(row + (x - left), cover, length);
    }
    void Mask(int x, unsigned length, const unsigned char* covers) const
    {
        std::memcpy(row + (x - left), covers, length);
    }
};

/// A number for an end of an edge within a row, such that sums of different ends differ.
std::uint64_t GetSign(std::size_t path, int y) noexcept
{
    std::uint64_t sign = (std::uint64_t{path} << 32 | std::uint32_t(y)) + 0x9E3779B97F4A7C15U;
    sign = (sign ^ sign >> 30) * 0xBF58476D1CE4E5B9U;
    sign = (sign ^ sign >> 27) * 0x94D049BB133111EBU;
    return sign ^ sign >> 31;
}

void SortUnique(std::vector<int>& numbers)
{
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
}

/// Slabs times edges that a cluster may cost. Beyond, differences of the exact area and the product
/// drown in what so many edges make of so few pixels.
constexpr std::size_t ClusterBudget = 2048;
/// Edges near each other, per edge, that a cluster may be searched for crossings of.
constexpr std::size_t NearBudget = 16;

} // namespace

void CommonArea::Begin(const Regions& regions, const Region* shape,
                       const Kernel::RectT<int>& window)
{
    m_window = window;
    m_paths.clear();
    m_insides.clear();
    m_active.clear();
    m_hasRow = false;
    for (const auto& region : regions)
        AddRegion(*region);
    if (shape)
        AddRegion(*shape);
}

void CommonArea::AddRegion(const Region& region)
{
    for (const Region::Path& path : region.GetPaths())
        m_paths.push_back({&path.edges, m_insides.size(), path.evenOdd});
    m_insides.push_back({});
}

CommonArea::Row CommonArea::GetRow(int y)
{
    if (m_hasRow && m_row == y)
        return {m_covers.data(), m_known.data()};
    FindActiveEdges(y);
    m_row = y;
    m_hasRow = true;
    for (Path& path : m_paths)
        path.winding = path.before = 0;
    std::fill(m_insides.begin(), m_insides.end(), Insides{});
    m_outside = {int(m_insides.size()), int(m_insides.size())};
    m_isSweptInside = false;
    m_covers.assign(std::size_t(m_window.Width()), 0);
    m_known.assign(std::size_t(m_window.Width()), 0);
    m_rows.Open({m_window.left, y, m_window.right, y + 1});
    for (std::size_t begin = 0; begin < m_active.size();) {
        const Cluster cluster = FindCluster(begin);
        if (cluster.left >= m_window.right)
            break;
        const bool isKnown = cluster.isMixed && cluster.right >= m_window.left && FindCuts(cluster);
        if (isKnown)
            AddCluster(cluster);
        GoBehind(cluster);
        if (isKnown)
            m_isSweptInside = m_outside.count == 0;
        begin = cluster.end;
    }
    m_rows.SweepRow(y, {false, nullptr}, RowSink{m_covers.data(), m_window.left});
    return {m_covers.data(), m_known.data()};
}

void CommonArea::FindActiveEdges(int y)
{
    const int top = y * SubPixelScale, bottom = top + SubPixelScale;
    if (m_hasRow && y < m_row) {
        m_active.clear();
        for (Path& path : m_paths)
            path.next = 0;
    }
    std::erase_if(m_active,
                  [&](const ActiveEdge& active) { return Region::GetBottom(*active.edge) <= top; });
    for (std::size_t i = 0; i < m_paths.size(); ++i) {
        Path& path = m_paths[i];
        for (; path.next < path.edges->size(); ++path.next) {
            const Edge& edge = (*path.edges)[path.next];
            if (Region::GetTop(edge) >= bottom)
                break;
            if (Region::GetBottom(edge) > top)
                m_active.push_back({&edge, i});
        }
    }
    for (ActiveEdge& active : m_active)
        ClipToRow(active, y);
    SortActiveEdges();
}

void CommonArea::ClipToRow(ActiveEdge& active, int y) const noexcept
{
    const Edge& edge = *active.edge;
    const int top = std::max(Region::GetTop(edge), y * SubPixelScale);
    const int bottom = std::min(Region::GetBottom(edge), (y + 1) * SubPixelScale);
    const bool follows = active.top < active.bottom && active.bottom == top;
    active.topX = follows ? active.bottomX : Coverage::GetX(edge, top);
    active.bottomX = Coverage::GetX(edge, bottom);
    active.top = top;
    active.bottom = bottom;
}

/// Where the edge is at \p y of its part within the row.
int CommonArea::ActiveEdge::GetX(int y) const noexcept
{
    return y == top ? topX : y == bottom ? bottomX : Coverage::GetX(*edge, y);
}

/// A full order: which rows came before must not show.
bool CommonArea::ActiveEdge::IsBefore(const ActiveEdge& other) const noexcept
{
    if (GetLeft() != other.GetLeft())
        return GetLeft() < other.GetLeft();
    const auto key = [](const ActiveEdge& active) {
        const Edge& edge = *active.edge;
        return std::tuple(active.GetRight(), active.path, edge.x1, edge.y1, edge.x2, edge.y2);
    };
    return key(*this) < key(other);
}

/// Insertion, as most edges are where they were in the row above; unless that takes too long.
void CommonArea::SortActiveEdges()
{
    const auto isBefore = [](const ActiveEdge& a, const ActiveEdge& b) { return a.IsBefore(b); };
    std::size_t moves = 8 * m_active.size();
    for (std::size_t i = 1; i < m_active.size(); ++i) {
        if (!isBefore(m_active[i], m_active[i - 1]))
            continue;
        const ActiveEdge active = m_active[i];
        std::size_t at = i;
        for (; at > 0 && moves > 0 && isBefore(active, m_active[at - 1]); --at, --moves)
            m_active[at] = m_active[at - 1];
        m_active[at] = active;
        if (moves == 0)
            return std::sort(m_active.begin(), m_active.end(), isBefore);
    }
}

/// A cluster ends where the next edge is in pixels further right, and the ends within the row
/// cancel each other: what ends goes on elsewhere, so no horizontal edge leads out of the cluster.
CommonArea::Cluster CommonArea::FindCluster(std::size_t begin) const noexcept
{
    // A walk may round to the other side of a pixel's border.
    const auto left = [](const ActiveEdge& edge) { return (edge.GetLeft() - 1) >> SubPixelShift; };
    const auto right = [](const ActiveEdge& edge) {
        return (edge.GetRight() + 1) >> SubPixelShift;
    };
    const ActiveEdge& first = m_active[begin];
    Cluster cluster{begin, begin, left(first), right(first), false};
    const int top = m_row * SubPixelScale;
    std::uint64_t open = 0;
    for (; cluster.end < m_active.size(); ++cluster.end) {
        const ActiveEdge& active = m_active[cluster.end];
        if (open == 0 && left(active) > cluster.right)
            break;
        const auto winding = std::uint64_t(std::int64_t{active.GetWinding()});
        if (active.top > top)
            open += winding * GetSign(active.path, active.top);
        if (active.bottom < top + SubPixelScale)
            open -= winding * GetSign(active.path, active.bottom);
        cluster.right = std::max(cluster.right, right(active));
        cluster.isMixed |= active.path != first.path;
    }
    return cluster;
}

/// Finds the heights at which a cluster is cut into slabs. \return whether these are few enough.
bool CommonArea::FindCuts(const Cluster& cluster)
{
    const int top = m_row * SubPixelScale, bottom = top + SubPixelScale;
    m_endCuts.assign({top, bottom});
    for (std::size_t i = cluster.begin; i < cluster.end; ++i)
        for (const int end : {m_active[i].top, m_active[i].bottom})
            if (end > top && end < bottom)
                m_endCuts.push_back(end);
    SortUnique(m_endCuts);
    const std::size_t limit = 1 + ClusterBudget / (cluster.end - cluster.begin); // of slabs
    return m_endCuts.size() - 1 <= limit && FindCutsAtCrossings(cluster) && MergeCuts(limit);
}

/// Finds where edges cross by more than their rounding. \return false if there are too many edges
/// to compare.
bool CommonArea::FindCutsAtCrossings(const Cluster& cluster)
{
    m_crossingCuts.clear();
    m_near.clear();
    std::size_t budget = NearBudget * (cluster.end - cluster.begin) + ClusterBudget;
    for (std::size_t i = cluster.begin; i < cluster.end; ++i) {
        const ActiveEdge& b = m_active[i];
        std::erase_if(m_near, [&](std::size_t j) { return m_active[j].GetRight() < b.GetLeft(); });
        if (m_near.size() > budget)
            return false;
        budget -= m_near.size();
        for (const std::size_t j : m_near) {
            const ActiveEdge& a = m_active[j];
            const int top = std::max(a.top, b.top), bottom = std::min(a.bottom, b.bottom);
            if (bottom - top < 2)
                continue;
            const std::int64_t above = std::int64_t{a.GetX(top)} - b.GetX(top);
            const std::int64_t below = std::int64_t{a.GetX(bottom)} - b.GetX(bottom);
            if (std::min(above, below) >= -1 || std::max(above, below) <= 1)
                continue;
            const std::int64_t whole = std::abs(above) + std::abs(below);
            const auto down = int(((bottom - top) * std::abs(above) + whole / 2) / whole);
            m_crossingCuts.push_back(top + std::clamp(down, 1, bottom - top - 1));
        }
        m_near.push_back(i);
    }
    return true;
}

/// Adds the cuts at crossings to those at ends, as finely as \p limit slabs allow.
/// \return false if they don't.
bool CommonArea::MergeCuts(std::size_t limit)
{
    for (const int step : {1, SubPixelScale / 16, SubPixelScale / 4}) {
        m_cuts = m_endCuts;
        for (const int cut : m_crossingCuts)
            m_cuts.push_back((cut + step / 2) & -step); // steps are powers of two
        SortUnique(m_cuts);
        if (m_cuts.size() - 1 <= limit)
            return true;
    }
    return false;
}

/// Makes cells of the boundary of the common area within a cluster.
void CommonArea::AddCluster(const Cluster& cluster)
{
    const int left = std::max(cluster.left, m_window.left);
    const int right = std::min(cluster.right + 1, m_window.right);
    std::fill_n(m_known.begin() + (left - m_window.left), right - left,
                static_cast<unsigned char>(1));
    if (m_isSweptInside != (m_outside.count == 0)) // entered or left where nobody looked
        m_rows.AddCell(left, m_row, m_isSweptInside ? -SubPixelScale : SubPixelScale, 0);
    m_crossings.clear();
    for (std::size_t i = cluster.begin; i < cluster.end; ++i)
        m_crossings.push_back({i, std::int64_t{m_active[i].topX} + m_active[i].bottomX, 0, false});
    for (std::size_t i = 0; i + 1 < m_cuts.size(); ++i) {
        AddSlab(m_cuts[i], m_cuts[i + 1]);
        GoBefore(cluster);
    }
    for (std::size_t i = cluster.begin; i < cluster.end; ++i)
        WalkPiece(m_active[i]);
}

/// Finds the edges that run through a slab, from left to right by their middles; they are nearly in
/// order from the slab above.
void CommonArea::AddSlab(int top, int bottom)
{
    const auto key = [](const Crossing& crossing) {
        return std::tuple(crossing.middle, crossing.top, crossing.active);
    };
    for (std::size_t i = 0; i < m_crossings.size(); ++i) {
        Crossing crossing = m_crossings[i];
        const ActiveEdge& active = m_active[crossing.active];
        crossing.runsThrough = active.top <= top && active.bottom >= bottom;
        if (crossing.runsThrough) {
            crossing.top = active.GetX(top);
            crossing.middle = std::int64_t{crossing.top} + active.GetX(bottom);
        }
        std::size_t at = i;
        for (; at > 0 && key(crossing) < key(m_crossings[at - 1]); --at)
            m_crossings[at] = m_crossings[at - 1];
        m_crossings[at] = crossing;
    }
    FindBoundary(top, bottom);
}

/// Finds the edges at which one enters or leaves all regions.
void CommonArea::FindBoundary(int top, int bottom)
{
    for (const Crossing& crossing : m_crossings) {
        if (!crossing.runsThrough)
            continue;
        const bool wasInside = m_outside.count == 0;
        ActiveEdge& active = m_active[crossing.active];
        Pass(active);
        if (wasInside != (m_outside.count == 0))
            AddPiece(active, wasInside ? -1 : 1, top, bottom);
    }
}

/// Goes back to the left of a cluster.
void CommonArea::GoBefore(const Cluster& cluster) noexcept
{
    for (std::size_t i = cluster.begin; i < cluster.end; ++i) {
        Path& path = m_paths[m_active[i].path];
        path.winding = path.before;
        m_insides[path.region].count = m_insides[path.region].before;
    }
    m_outside.count = m_outside.before;
}

/// Goes to the right of a cluster, where it is the same at every height; along the row's top.
void CommonArea::GoBehind(const Cluster& cluster) noexcept
{
    for (std::size_t i = cluster.begin; i < cluster.end; ++i)
        if (m_active[i].top == m_row * SubPixelScale)
            Pass(m_active[i]);
    for (std::size_t i = cluster.begin; i < cluster.end; ++i) {
        Path& path = m_paths[m_active[i].path];
        path.before = path.winding;
        m_insides[path.region].before = m_insides[path.region].count;
    }
    m_outside.before = m_outside.count;
}

/// Notes that an edge bounds the common area between two heights.
void CommonArea::AddPiece(ActiveEdge& active, int direction, int top, int bottom)
{
    if (active.direction != direction || active.pieceBottom != top) {
        WalkPiece(active);
        active.direction = direction;
        active.pieceTop = top;
    }
    active.pieceBottom = bottom;
}

/// Makes cells of the piece of an edge that was found last. What is the edge's whole part in the
/// row is walked as that of any path is, with the same outcome.
void CommonArea::WalkPiece(ActiveEdge& active)
{
    if (active.direction == 0)
        return;
    Edge piece = *active.edge;
    if (active.pieceTop > active.top || active.pieceBottom < active.bottom)
        piece = {active.GetX(active.pieceTop), active.pieceTop, active.GetX(active.pieceBottom),
                 active.pieceBottom};
    if ((piece.y1 < piece.y2) != (active.direction > 0))
        piece = {piece.x2, piece.y2, piece.x1, piece.y1};
    active.direction = 0;
    EdgeWalker<CoverageRows>({m_window.left, m_row, m_window.right, m_row + 1}, m_rows).Walk(piece);
}

/// Passes an edge.
void CommonArea::Pass(const ActiveEdge& active) noexcept
{
    Path& path = m_paths[active.path];
    const bool wasInside = path.IsInside();
    path.winding += active.GetWinding();
    const bool isInside = path.IsInside();
    if (wasInside == isInside)
        return;
    int& insides = m_insides[path.region].count;
    insides += isInside ? 1 : -1;
    if (insides == (isInside ? 1 : 0))
        m_outside.count -= isInside ? 1 : -1;
}

} // namespace Renderer::Coverage
