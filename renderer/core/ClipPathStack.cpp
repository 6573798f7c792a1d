#include <renderer/core/ClipPathStack.h>

#include <algorithm>
#include <cmath>

#include <renderer/core/coverage/AddPolygons.h>
#include <renderer/core/DevicePixels.h>
#include <renderer/core/MakeRoom.h>

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

/// Whether the polygons are few and have sides along the axes alone.
bool IsUpright(const Polygons& polygons)
{
    constexpr std::size_t few = 16;
    if (polygons.GetPoints().size() > few)
        return false;
    for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i) {
        const auto points = polygons.GetPolygon(i).points;
        for (std::size_t k = 0; k < points.size(); ++k) {
            const auto& next = points[k + 1 < points.size() ? k + 1 : 0];
            if (points[k].x != next.x && points[k].y != next.y)
                return false;
        }
    }
    return true;
}

} // namespace

ClipPath::ClipPath(Kernel::Counted<const Polygons> polygons, bool evenOdd)
    : m_polygons(std::move(polygons)),
      m_evenOdd(evenOdd),
      m_wholePixels(FindWholePixelRect(*m_polygons)),
      m_isUpright(IsUpright(*m_polygons))
{}

void ClipPath::MakeRoomForMember()
{
    MakeRoomForOne(m_members);
}

void ClipPath::RemoveMember()
{
    if (!m_members.empty())
        m_members.pop_back();
}

void ClipPath::Narrow(ClipState& state, Coverage::CoverageStore& store) const
{
    if (!m_wholePixels.IsUnset()) {
        state.window = CommonPart(state.window, m_wholePixels);
    } else if (m_isGroup && m_members.size() == 1) {
        m_members.front().Narrow(state, store);
    } else if (m_isUpright) {
        // Within a window most of these let everything through that they don't cut off.
        const auto coverage = GetCoverage(state.window, store);
        state.window = CommonPart(state.window, coverage->GetRect());
        if (!coverage->IsFull())
            state.coverage =
                state.coverage ? ClipCoverage::Multiply(*state.coverage, *coverage) : coverage;
    } else {
        // Coverage knows how far the path reaches, mostly far less than the page.
        state.coverage = GetCoverage(state.window, store, state.coverage.Get());
        state.window = CommonPart(state.window, state.coverage->GetRect());
    }
}

Kernel::Counted<const ClipCoverage> ClipPath::GetCoverage(const RectT<int>& rect,
                                                          Coverage::CoverageStore& store,
                                                          const ClipCoverage* within) const
{
    if (!m_wholePixels.IsUnset())
        return ClipCoverage::FromRect(rect.Intersect(m_wholePixels));
    if (!m_isGroup) {
        store.Reset(rect);
        Coverage::AddPolygons(store, *m_polygons, {});
        return ClipCoverage::FromStore(store, {m_evenOdd, nullptr}, within);
    }
    // An empty group lets nothing through.
    Kernel::Counted<const ClipCoverage> united = ClipCoverage::FromRect({});
    for (const ClipPath& member : m_members)
        united = ClipCoverage::Unite(*united, *member.GetCoverage(rect, store));
    return within ? ClipCoverage::Multiply(*within, *united) : united;
}

void ClipPathStack::Push(ClipPath path)
{
    if (!GetLevel().openGroups.empty())
        GetLevel().openGroups.back().AddMember(std::move(path));
    else
        GetLevel().paths.push_back(std::move(path));
}

void ClipPathStack::Pop()
{
    if (!GetLevel().openGroups.empty()) {
        GetLevel().openGroups.back().RemoveMember();
    } else if (!GetLevel().paths.empty()) {
        GetLevel().paths.pop_back();
        GetLevel().states.resize(std::min(GetLevel().states.size(), GetLevel().paths.size()));
    }
}

void ClipPathStack::BeginGroup()
{
    // Where the group will go, nothing else goes before: ending it needs no memory.
    auto& groups = GetLevel().openGroups;
    if (groups.empty())
        MakeRoomForOne(GetLevel().paths);
    else
        groups.back().MakeRoomForMember();
    groups.emplace_back();
}

void ClipPathStack::EndGroup()
{
    if (GetLevel().openGroups.empty())
        return;
    ClipPath group = std::move(GetLevel().openGroups.back());
    GetLevel().openGroups.pop_back();
    Push(std::move(group));
}

void ClipPathStack::Seal()
{
    if (m_depth + 1 == m_levels.size())
        m_levels.emplace_back();
    ++m_depth;
}

void ClipPathStack::Unseal() noexcept
{
    GetLevel().Clear();
    --m_depth;
}

const ClipState& ClipPathStack::Update(const RectT<int>& rect)
{
    Level& level = GetLevel();
    if (level.paths.empty()) {
        m_everything.window = rect;
        return m_everything;
    }
    if (level.states.empty()) {
        level.rect = rect;
    } else if (!level.rect.Contains(rect)) {
        level.states.clear();
        // Who comes back to the old one finds it.
        const bool areSound = !level.rect.IsEmpty() && !rect.IsEmpty();
        level.rect = areSound ? level.rect.Union(rect) : rect;
    }
    while (level.states.size() < level.paths.size()) {
        ClipState state{level.rect, {}};
        if (!level.states.empty())
            state = level.states.back();
        // No path can widen the window, so later ones need to be known within it alone.
        level.paths[level.states.size()].Narrow(state, m_store);
        level.states.push_back(std::move(state));
    }
    return level.states.back();
}

void ClipPathStack::Clear()
{
    m_levels.assign(1, {});
    m_depth = 0;
}

} // namespace Renderer
