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

void ClipPath::Narrow(ClipState& state, ClipWork& work) const
{
    if (!m_wholePixels.IsUnset()) {
        state.window = CommonPart(state.window, m_wholePixels);
        return;
    }
    if (m_isGroup && m_members.size() == 1) {
        m_members.front().Narrow(state, work);
        return;
    }
    if (work.isExact)
        state.regions.push_back(GetRegion(state.window, work));
    if (m_isUpright) {
        // Within a window most of these let everything through that they don't cut off.
        const auto coverage = GetCoverage(state.window, work, {});
        state.window = CommonPart(state.window, coverage->GetRect());
        if (coverage->IsFull())
            return;
        Coverage::CommonArea* const area = work.isExact ? &work.area : nullptr;
        if (area)
            area->Begin(state.regions, nullptr, state.window);
        state.coverage =
            state.coverage ? ClipCoverage::Multiply(*state.coverage, *coverage, area) : coverage;
    } else {
        // Coverage knows how far the path reaches, mostly far less than the page.
        state.coverage = GetCoverage(state.window, work, state.regions, state.coverage.Get());
        state.window = CommonPart(state.window, state.coverage->GetRect());
    }
}

Kernel::Counted<const ClipCoverage> ClipPath::GetCoverage(const RectT<int>& rect, ClipWork& work,
                                                          const Coverage::Regions& regions,
                                                          const ClipCoverage* within) const
{
    if (!m_wholePixels.IsUnset())
        return ClipCoverage::FromRect(rect.Intersect(m_wholePixels));
    Kernel::Counted<const ClipCoverage> united;
    if (m_isGroup) {
        united = Unite(rect, work);
        if (!within)
            return united;
    }
    Coverage::CommonArea* const area = work.isExact && within ? &work.area : nullptr;
    if (area)
        area->Begin(regions, nullptr, rect);
    if (m_isGroup)
        return ClipCoverage::Multiply(*within, *united, area);
    work.store.Reset(rect);
    Coverage::AddPolygons(work.store, *m_polygons, {});
    return ClipCoverage::FromStore(work.store, {m_evenOdd, nullptr}, within, area);
}

Kernel::Counted<const ClipCoverage> ClipPath::Unite(const RectT<int>& rect, ClipWork& work) const
{
    Coverage::Regions regions;
    if (work.isExact)
        regions.push_back(GetRegion(rect, work));
    // An empty group lets nothing through.
    Kernel::Counted<const ClipCoverage> united = ClipCoverage::FromRect({});
    for (const ClipPath& member : m_members) {
        const auto coverage = member.GetCoverage(rect, work, {});
        if (work.isExact)
            work.area.Begin(regions, nullptr, rect);
        united = ClipCoverage::Unite(*united, *coverage, work.isExact ? &work.area : nullptr);
    }
    return united;
}

Kernel::Counted<const Coverage::Region> ClipPath::GetRegion(const RectT<int>& rect,
                                                            ClipWork& work) const
{
    auto region = Kernel::MakeCounted<Coverage::Region>();
    AddTo(*region, rect, work);
    return region;
}

void ClipPath::AddTo(Coverage::Region& region, const RectT<int>& rect, ClipWork& work) const
{
    if (!m_isGroup)
        region.AddPath(*m_polygons, {}, m_evenOdd, rect.top, rect.bottom, work.store);
    for (const ClipPath& member : m_members)
        member.AddTo(region, rect, work);
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

const ClipState& ClipPathStack::Update(const RectT<int>& rect, bool isExact)
{
    Level& level = GetLevel();
    if (level.paths.empty()) {
        m_everything.window = rect;
        return m_everything;
    }
    if (level.isExact != isExact)
        level.states.clear();
    level.isExact = isExact;
    if (level.states.empty()) {
        level.rect = rect;
    } else if (!level.rect.Contains(rect)) {
        level.states.clear();
        // Who comes back to the old one finds it.
        const bool areSound = !level.rect.IsEmpty() && !rect.IsEmpty();
        level.rect = areSound ? level.rect.Union(rect) : rect;
    }
    ClipWork work{isExact, m_store, m_area};
    while (level.states.size() < level.paths.size()) {
        ClipState state{level.rect, {}, {}};
        if (!level.states.empty())
            state = level.states.back();
        // No path can widen the window, so later ones need to be known within it alone.
        level.paths[level.states.size()].Narrow(state, work);
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
