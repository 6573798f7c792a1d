#include <renderer/core/coverage/CommonArea.h>

#include <algorithm>
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
    m_insides.push_back(0);
}

const unsigned char* CommonArea::GetRow(int y)
{
    if (m_hasRow && m_row == y)
        return m_covers.data();
    FindActiveEdges(y);
    m_row = y;
    m_hasRow = true;
    const int top = y * SubPixelScale, bottom = top + SubPixelScale;
    m_cuts.assign({top, bottom});
    for (const ActiveEdge& active : m_active)
        for (const int end : {active.edge->y1, active.edge->y2})
            if (end > top && end < bottom)
                m_cuts.push_back(end);
    std::sort(m_cuts.begin(), m_cuts.end());
    m_rows.Open({m_window.left, y, m_window.right, y + 1});
    for (std::size_t i = 0; i + 1 < m_cuts.size(); ++i)
        if (m_cuts[i] < m_cuts[i + 1])
            AddSlab(m_cuts[i], m_cuts[i + 1]);
    for (ActiveEdge& active : m_active)
        WalkPiece(active);
    m_covers.assign(std::size_t(m_window.Width()), 0);
    m_rows.SweepRow(y, {false, nullptr}, RowSink{m_covers.data(), m_window.left});
    return m_covers.data();
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
                m_active.push_back({&edge, i, 0, 0, 0});
        }
    }
}

void CommonArea::AddSlab(int top, int bottom)
{
    FindCrossings(top, bottom);
    if (bottom - top > 1 && HasCrossedEdges()) {
        const int middle = top + (bottom - top) / 2;
        AddSlab(top, middle);
        AddSlab(middle, bottom);
        return;
    }
    FindBoundary(top, bottom);
}

/// Finds the edges that run through a slab, from left to right by their middles.
void CommonArea::FindCrossings(int top, int bottom)
{
    m_crossings.clear();
    for (std::size_t i = 0; i < m_active.size(); ++i) {
        const Edge& edge = *m_active[i].edge;
        if (Region::GetTop(edge) <= top && Region::GetBottom(edge) >= bottom)
            m_crossings.push_back({GetX(edge, top), GetX(edge, bottom), m_active[i].path,
                                   edge.y1 < edge.y2 ? 1 : -1, i});
    }
    // A full order: which rows came before must not show.
    const auto key = [](const Crossing& crossing) {
        return std::tuple(std::int64_t{crossing.top} + crossing.bottom, crossing.path, crossing.top,
                          crossing.winding);
    };
    std::sort(m_crossings.begin(), m_crossings.end(),
              [&](const Crossing& a, const Crossing& b) { return key(a) < key(b); });
}

/// Whether edges are out of order at an end of the slab, by more than their rounding.
bool CommonArea::HasCrossedEdges() const noexcept
{
    if (m_crossings.empty())
        return false;
    int top = m_crossings.front().top, bottom = m_crossings.front().bottom;
    for (const Crossing& crossing : m_crossings) {
        if (crossing.top < top - 1 || crossing.bottom < bottom - 1)
            return true;
        top = std::max(top, crossing.top);
        bottom = std::max(bottom, crossing.bottom);
    }
    return false;
}

/// Finds the edges at which one enters or leaves all regions.
void CommonArea::FindBoundary(int top, int bottom)
{
    for (Path& path : m_paths)
        path.winding = 0;
    std::fill(m_insides.begin(), m_insides.end(), 0);
    int outside = int(m_insides.size()); // regions that one is not inside of
    for (const Crossing& crossing : m_crossings) {
        const bool wasInside = outside == 0;
        outside -= Pass(crossing);
        if (wasInside != (outside == 0))
            AddPiece(m_active[crossing.active], wasInside ? -1 : 1, top, bottom);
    }
}

/// Notes that an edge bounds the common area between two heights.
void CommonArea::AddPiece(ActiveEdge& active, int direction, int top, int bottom)
{
    if (active.direction != direction || active.bottom != top) {
        WalkPiece(active);
        active.direction = direction;
        active.top = top;
    }
    active.bottom = bottom;
}

/// Makes cells of the piece of an edge that was found last. What is the edge's whole part in the
/// row is walked as that of any path is, with the same outcome.
void CommonArea::WalkPiece(ActiveEdge& active)
{
    if (active.direction == 0)
        return;
    Edge piece = *active.edge;
    const int rowTop = m_row * SubPixelScale;
    if (active.top > std::max(Region::GetTop(piece), rowTop) ||
        active.bottom < std::min(Region::GetBottom(piece), rowTop + SubPixelScale))
        piece = {GetX(*active.edge, active.top), active.top, GetX(*active.edge, active.bottom),
                 active.bottom};
    if ((piece.y1 < piece.y2) != (active.direction > 0))
        piece = {piece.x2, piece.y2, piece.x1, piece.y1};
    active.direction = 0;
    EdgeWalker<CoverageRows>({m_window.left, m_row, m_window.right, m_row + 1}, m_rows).Walk(piece);
}

int CommonArea::Pass(const Crossing& crossing) noexcept
{
    Path& path = m_paths[crossing.path];
    const bool wasInside = path.IsInside();
    path.winding += crossing.winding;
    const bool isInside = path.IsInside();
    if (wasInside == isInside)
        return 0;
    int& insides = m_insides[path.region];
    insides += isInside ? 1 : -1;
    if (isInside)
        return insides == 1 ? 1 : 0;
    return insides == 0 ? -1 : 0;
}

} // namespace Renderer::Coverage
