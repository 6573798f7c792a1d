#include <renderer/core/ClipPathStack.h>

#include <algorithm>
#include <cmath>

#include <renderer/core/coverage/AddPolygons.h>
#include <renderer/core/DevicePixels.h>

namespace Renderer {

using Coverage::ClipCoverage;
using Kernel::RectT;
using Polygons = Geometry::PolyPolygonType<double>;

namespace {

/// The rectangle that the polygons are, if they are one on whole pixels; else unset.
RectT<int> FindWholePixelRect(const Polygons& polygons)
{
    const RectT<int> none = RectT<int>::MakeUnset();
    if (polygons.GetPolygonCount() != 1)
        return none;
    const auto& points = polygons.GetPoints();
    const bool repeatsStart = points.size() == 5 && points.front() == points.back();
    if (points.size() != 4 && !repeatsStart)
        return none;
    const auto box = polygons.GetBoundingBox().GetRect();
    if (!IsOnWholePixels(box))
        return none;
    // Neighbours must share exactly one coordinate, and opposite corners none.
    const auto onLeft = [&](std::size_t i) {
        return std::abs(points[i].x - box.left) <= WholePixelTolerance;
    };
    const auto onTop = [&](std::size_t i) {
        return std::abs(points[i].y - box.top) <= WholePixelTolerance;
    };
    const auto onRight = [&](std::size_t i) {
        return std::abs(points[i].x - box.right) <= WholePixelTolerance;
    };
    const auto onBottom = [&](std::size_t i) {
        return std::abs(points[i].y - box.bottom) <= WholePixelTolerance;
    };
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t next = (i + 1) % 4, opposite = (i + 2) % 4;
        if (!(onLeft(i) || onRight(i)) || !(onTop(i) || onBottom(i)) ||
            onLeft(i) == onLeft(opposite) || onTop(i) == onTop(opposite) ||
            (onLeft(i) == onLeft(next)) == (onTop(i) == onTop(next)))
            return none;
    }
    return RoundToPixels(box);
}

/// Narrows \p state by another one.
void Intersect(ClipState& state, const ClipState& other)
{
    state.window = state.window.Intersect(other.window);
    if (state.coverage && other.coverage)
        state.coverage = ClipCoverage::Multiply(*state.coverage, *other.coverage);
    else if (other.coverage)
        state.coverage = other.coverage;
}

} // namespace

ClipPath::ClipPath(Kernel::Counted<const Polygons> polygons, bool evenOdd)
    : m_polygons(std::move(polygons)),
      m_evenOdd(evenOdd),
      m_wholePixels(FindWholePixelRect(*m_polygons))
{}

void ClipPath::RemoveMember()
{
    if (!m_members.empty())
        m_members.pop_back();
}

ClipState ClipPath::GetState(const RectT<int>& rect, Coverage::CoverageStore& store) const
{
    if (!m_wholePixels.IsUnset())
        return {rect.Intersect(m_wholePixels), {}};
    if (m_isGroup && m_members.size() == 1)
        return m_members.front().GetState(rect, store);
    return {rect, GetCoverage(rect, store)};
}

Kernel::Counted<const ClipCoverage> ClipPath::GetCoverage(const RectT<int>& rect,
                                                          Coverage::CoverageStore& store) const
{
    if (!m_wholePixels.IsUnset())
        return ClipCoverage::FromRect(rect, m_wholePixels);
    if (!m_isGroup) {
        store.Reset(rect);
        Coverage::AddPolygons(store, *m_polygons, {});
        return ClipCoverage::FromStore(store, {m_evenOdd, nullptr});
    }
    // An empty group lets nothing through.
    Kernel::Counted<const ClipCoverage> united = ClipCoverage::FromRect(rect, {});
    for (const ClipPath& member : m_members)
        united = ClipCoverage::Unite(*united, *member.GetCoverage(rect, store));
    return united;
}

void ClipPathStack::Push(ClipPath path)
{
    if (!m_openGroups.empty())
        m_openGroups.back().AddMember(std::move(path));
    else
        m_paths.push_back(std::move(path));
}

void ClipPathStack::Pop()
{
    if (!m_openGroups.empty()) {
        m_openGroups.back().RemoveMember();
    } else if (m_paths.size() > m_base) {
        m_paths.pop_back();
        m_states.resize(std::min(m_states.size(), m_paths.size() - m_base));
    }
}

void ClipPathStack::BeginGroup()
{
    m_openGroups.emplace_back();
}

void ClipPathStack::EndGroup()
{
    if (m_openGroups.empty())
        return;
    ClipPath group = std::move(m_openGroups.back());
    m_openGroups.pop_back();
    Push(std::move(group));
}

std::size_t ClipPathStack::Seal() noexcept
{
    const std::size_t base = m_base;
    m_base = m_paths.size();
    m_states.clear();
    return base;
}

void ClipPathStack::Unseal(std::size_t base) noexcept
{
    m_base = base;
    m_states.clear();
}

const ClipState& ClipPathStack::Update(const RectT<int>& rect)
{
    if (m_states.empty() || !m_rect.Contains(rect)) {
        m_states.clear();
        m_rect = rect;
    }
    while (m_base + m_states.size() < m_paths.size()) {
        ClipState state{m_rect, {}};
        if (!m_states.empty())
            state = m_states.back();
        Intersect(state, m_paths[m_base + m_states.size()].GetState(m_rect, m_store));
        m_states.push_back(std::move(state));
    }
    if (!m_states.empty())
        return m_states.back();
    m_everything.window = rect;
    return m_everything;
}

void ClipPathStack::Clear()
{
    *this = ClipPathStack();
}

} // namespace Renderer
