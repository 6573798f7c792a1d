#include <geometry/region/CollinearEdges.h>

#include <algorithm>
#include <tuple>

namespace Geometry {

/// Orders lines by their direction, from downwards to upwards, and parallel ones from below to
/// above; the edges of a line by their ends.
bool CollinearEdges::IsBefore(const Line& a, const Line& b) noexcept
{
    if (const std::int64_t turn = Cross(a.high - a.low, b.high - b.low); turn != 0)
        return turn > 0;
    if (const std::int64_t side = Turn(a.low, a.high, b.low); side != 0)
        return side > 0;
    return std::tie(a.low, a.high, a.source) < std::tie(b.low, b.high, b.source);
}

bool CollinearEdges::IsOnSameLine(const Line& a, const Line& b) noexcept
{
    return Cross(a.high - a.low, b.high - b.low) == 0 && Turn(a.low, a.high, b.low) == 0;
}

void CollinearEdges::Build(std::span<const GridEdge> edges)
{
    m_lines.clear();
    m_parts.clear();
    m_origins.clear();
    for (std::uint32_t i = 0; i < edges.size(); ++i) {
        const GridEdge& edge = edges[i];
        const bool isForward = edge.from < edge.to;
        m_lines.push_back({isForward ? edge.from : edge.to, isForward ? edge.to : edge.from, i,
                           static_cast<std::int8_t>(edge.region),
                           static_cast<std::int8_t>(isForward ? 1 : -1)});
    }
    std::sort(m_lines.begin(), m_lines.end(), IsBefore);
    const std::span<const Line> lines = m_lines;
    for (std::size_t begin = 0, end = 0; begin < lines.size(); begin = end) {
        for (end = begin + 1; end < lines.size() && IsOnSameLine(lines[begin], lines[end]);)
            ++end;
        AddLine(lines.subspan(begin, end - begin));
    }
}

/// Adds the edges of a line, which are sorted.
void CollinearEdges::AddLine(std::span<const Line> line)
{
    for (std::size_t begin = 0, end = 0; begin < line.size(); begin = end) {
        GridPoint reach = line[begin].high;
        for (end = begin + 1; end < line.size() && line[end].low < reach; ++end)
            reach = std::max(reach, line[end].high);
        AddOverlap(line.subspan(begin, end - begin));
    }
}

/// Adds edges of a line that overlap without a gap: walks over their ends, and knows which edges
/// lie there.
void CollinearEdges::AddOverlap(std::span<const Line> line)
{
    const auto add = [](RegionWindings& step, const Line& edge, int sign) {
        step[static_cast<std::size_t>(edge.region)] += sign * edge.step;
    };
    RegionWindings step{};
    if (line.size() == 1) {
        add(step, line[0], 1);
        AddPart(line[0].low, line[0].high, step, line[0]);
        return;
    }
    std::vector<const Line*> ends;
    for (const Line& edge : line)
        ends.push_back(&edge);
    std::sort(ends.begin(), ends.end(),
              [](const Line* a, const Line* b) { return a->high < b->high; });
    // A part goes on along the same edge while it lasts, then along the one that reaches furthest:
    // that is how the fewest parts are made.
    const Line* furthest = &line.front();
    const Line* first = nullptr;
    auto start = line.begin();
    GridPoint low = start->low;
    for (auto end = ends.begin(); end != ends.end();) {
        for (; start != line.end() && start->low == low; ++start) {
            add(step, *start, 1);
            if (start->high > furthest->high)
                furthest = &*start;
        }
        for (; end != ends.end() && (*end)->high == low; ++end)
            add(step, **end, -1);
        if (end == ends.end())
            return;
        if (!first || first->high <= low)
            first = furthest;
        GridPoint high = (*end)->high;
        if (start != line.end())
            high = std::min(high, start->low);
        AddPart(low, high, step, *first);
        low = high;
    }
}

/// Adds a part with the direction in which it turns left around region 0, or around region 1 where
/// 0 has no part in it: each of these makes closed ways still, and so every point is gone to.
void CollinearEdges::AddPart(GridPoint low, GridPoint high, const RegionWindings& step,
                             const Line& first)
{
    if (step == RegionWindings{})
        return;
    const bool isForward = step[0] != 0 ? step[0] > 0 : step[1] > 0;
    const bool isAlong = isForward == (first.step > 0);
    if (!m_parts.empty() && m_origins.back().source == first.source) {
        // The part before it on the same edge goes on where nothing else has changed.
        GridEdge& last = m_parts.back();
        const Origin& origin = m_origins.back();
        const int sign = isForward ? 1 : -1;
        GridPoint& end = isForward ? last.to : last.from;
        if (end == low && origin.isAlong == isAlong &&
            origin.step == RegionWindings{sign * step[0], sign * step[1]}) {
            end = high;
            return;
        }
    }
    const int sign = isForward ? 1 : -1;
    m_parts.push_back({isForward ? low : high, isForward ? high : low, 0});
    m_origins.push_back({{sign * step[0], sign * step[1]}, first.source, isAlong});
}

} // namespace Geometry
