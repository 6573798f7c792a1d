#include <geometry/region/RegionLoops.h>

#include <algorithm>

namespace Geometry {
namespace {

bool IsInside(std::int32_t winding, WindingOrderMode rule) noexcept
{
    return rule == WindingOrderMode::EvenOdd ? winding % 2 != 0 : winding != 0;
}

bool IsKept(bool a, bool b, RegionOperation operation) noexcept
{
    switch (operation) {
    case RegionOperation::Unite:
        return a || b;
    case RegionOperation::Intersect:
        return a && b;
    case RegionOperation::Subtract:
        return a && !b;
    case RegionOperation::Exclude:
        return a != b;
    }
    return false;
}

/// Whether \p a comes before \p b on the way around from the direction \p start to the left. One in
/// that direction itself is the last.
bool ComesBefore(GridVector start, GridVector a, GridVector b) noexcept
{
    const auto isInFirstHalf = [start](GridVector v) {
        const std::int64_t cross = Cross(start, v);
        return cross > 0 || (cross == 0 && Dot(start, v) < 0);
    };
    const bool firstA = isInFirstHalf(a), firstB = isInFirstHalf(b);
    return firstA != firstB ? firstA : Cross(a, b) > 0;
}

} // namespace

bool RegionLoops::Build(std::span<const GridEdge> edges, WindingOrderMode ruleA,
                        WindingOrderMode ruleB, RegionOperation operation)
{
    m_loops.clear();
    m_starts.clear();
    if (!m_arrangement.Build(edges))
        return false;
    FindBoundary(ruleA, ruleB, operation);
    FindLoops();
    return true;
}

void RegionLoops::FindBoundary(WindingOrderMode ruleA, WindingOrderMode ruleB,
                               RegionOperation operation)
{
    m_boundary.clear();
    for (const Arrangement::Edge& edge : m_arrangement.GetEdges()) {
        const auto [belowA, belowB] = edge.below;
        const bool below = IsKept(IsInside(belowA, ruleA), IsInside(belowB, ruleB), operation);
        const bool above = IsKept(IsInside(belowA + edge.step[0], ruleA),
                                  IsInside(belowB + edge.step[1], ruleB), operation);
        if (below != above)
            m_boundary.push_back({below ? edge.low : edge.high, below ? edge.high : edge.low,
                                  edge.source, edge.isForward == below});
    }
    std::sort(m_boundary.begin(), m_boundary.end(), [](const Edge& a, const Edge& b) {
        return a.from != b.from ? a.from < b.from : a.to < b.to;
    });
}

void RegionLoops::FindLoops()
{
    m_isUsed.assign(m_boundary.size(), false);
    for (std::size_t first = 0; first < m_boundary.size(); ++first) {
        if (m_isUsed[first])
            continue;
        m_starts.push_back(m_loops.size());
        std::size_t at = first;
        do {
            m_isUsed[at] = true;
            m_loops.push_back(m_boundary[at]);
            at = FindNext(m_boundary[at]);
        } while (!m_isUsed[at]);
    }
}

/// The edge that goes on from the end of another one, turning as far to the right as there is one:
/// what lies between the two is inside.
std::size_t RegionLoops::FindNext(const Edge& edge) const
{
    const auto isBefore = [](const Edge& a, GridPoint from) { return a.from < from; };
    const auto first = std::lower_bound(m_boundary.begin(), m_boundary.end(), edge.to, isBefore);
    const GridVector back = edge.from - edge.to;
    auto next = first;
    for (auto other = first; other != m_boundary.end() && other->from == edge.to; ++other)
        if (ComesBefore(back, other->to - other->from, next->to - next->from))
            next = other;
    return static_cast<std::size_t>(next - m_boundary.begin());
}

} // namespace Geometry
