#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <geometry/Export.h>

namespace Geometry {

/// The direction in which lines of text begin.
enum class TextDirection
{
    Auto, ///< that of the first letter which has one, else left to right
    LeftToRight,
    RightToLeft,
};

/// A piece of text that runs in one direction.
struct BidiRun
{
    std::size_t begin = 0; ///< in bytes
    std::size_t end = 0;
    std::uint8_t level = 0; ///< how deep it is embedded; odd ones run from right to left

    bool IsRightToLeft() const noexcept { return level % 2 != 0; }
    friend bool operator==(const BidiRun&, const BidiRun&) = default;
};

/// The runs of a line of text (UTF-8) in the order of the text, by the Unicode bidirectional
/// algorithm (UAX #9). Embeddings and isolates beyond some thousand count as nothing.
GEOMETRY_EXPORT std::vector<BidiRun> FindBidiRuns(std::string_view text, TextDirection direction);

/// The order from left to right of pieces with these levels, as their indices (UAX #9, L2).
GEOMETRY_EXPORT std::vector<std::size_t> FindVisualOrder(const std::vector<std::uint8_t>& levels);

} // namespace Geometry
