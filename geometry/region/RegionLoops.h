#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <geometry/CombineRegions.h>
#include <geometry/region/Arrangement.h>

namespace Geometry {

/// The boundary of what an operation makes of two regions.
class RegionLoops
{
public:
    /// An edge of a loop.
    struct Edge
    {
        GridPoint from, to;
        std::uint32_t source; ///< the edge of the input that it is a part of
        bool isForward;       ///< whether it runs as that does
    };

    /// \return false where there are too many crossings.
    bool Build(std::span<const GridEdge> edges, WindingOrderMode ruleA, WindingOrderMode ruleB,
               RegionOperation operation);

    std::size_t GetCount() const noexcept { return m_starts.size(); }
    /// The edges of a loop, one after the other, with what is inside on their right (y up). Loops
    /// that touch themselves in a point are several loops there.
    std::span<const Edge> GetLoop(std::size_t index) const noexcept
    {
        const std::size_t begin = m_starts[index];
        const std::size_t end = index + 1 < m_starts.size() ? m_starts[index + 1] : m_loops.size();
        return {m_loops.data() + begin, end - begin};
    }

private:
    void FindBoundary(WindingOrderMode ruleA, WindingOrderMode ruleB, RegionOperation operation);
    void FindLoops();
    std::size_t FindNext(const Edge& edge) const;

    Arrangement m_arrangement;
    std::vector<Edge> m_boundary; // by their starts
    std::vector<bool> m_isUsed;   // of the boundary
    std::vector<Edge> m_loops;
    std::vector<std::size_t> m_starts;
};

} // namespace Geometry
