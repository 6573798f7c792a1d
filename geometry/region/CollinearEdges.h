#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include <geometry/region/Grid.h>

namespace Geometry {

/// The number of turns around a point that each of two regions makes, or their change.
using RegionWindings = std::array<std::int32_t, 2>;

/// What edges on the same lines make together: parts that do not overlap those on the same line.
///
/// Where edges run to and fro, or one upon another a thousand times, a part stands for all of them;
/// what cancels out is gone. Takes O(n·log n).
class CollinearEdges
{
public:
    /// What a part stands for.
    struct Origin
    {
        RegionWindings step;  ///< the windings on its left less those on its right (y up)
        std::uint32_t source; ///< one of the edges that it is a part of
        bool isAlong;         ///< whether that runs in its direction
    };

    /// \pre the edges of each region make closed ways, and each has a length.
    void Build(std::span<const GridEdge> edges);

    /// The parts (their region says nothing). Each of their ends is where one of them goes to.
    std::span<const GridEdge> GetParts() const noexcept { return m_parts; }
    const Origin& GetOrigin(std::uint32_t part) const { return m_origins[part]; }

private:
    /// An edge on its line.
    struct Line
    {
        GridPoint low, high; // low < high
        std::uint32_t source;
        std::int8_t region, step;
    };

    static bool IsBefore(const Line& a, const Line& b) noexcept;
    static bool IsOnSameLine(const Line& a, const Line& b) noexcept;

    void AddLine(std::span<const Line> line);
    void AddOverlap(std::span<const Line> line);
    void AddPart(GridPoint low, GridPoint high, const RegionWindings& step, const Line& first);

    std::vector<Line> m_lines;
    std::vector<GridEdge> m_parts;
    std::vector<Origin> m_origins;
};

} // namespace Geometry
