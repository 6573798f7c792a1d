#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Renderer::Texture {

/// How much of the pixels of a row a polygon covers: an entry block of pixels at its left edge, a
/// run of pixels that are covered wholly, and an exit block of the others. Memory stays for the
/// next row.
struct CCoverage
{
    /// Areas count 2⁻²⁰ pixels, so that those of sixteen layers add up in single precision without
    /// any error.
    static constexpr int Shift = 20;
    static constexpr std::int32_t Whole = std::int32_t{1} << Shift;

    bool IsEmpty() const noexcept { return begin >= end; }
    /// The covered area of page pixel \p x, begin ≤ x < end.
    std::int32_t GetArea(int x) const noexcept { return areas[std::size_t(x - first)]; }
    /// The same as a share of the pixel.
    float GetShare(int x) const noexcept { return ToShare(GetArea(x)); }
    static float ToShare(std::int32_t area) noexcept
    {
        return static_cast<float>(area) * (1.0F / static_cast<float>(Whole));
    }

    int begin = 0;     ///< the first pixel that is covered
    int fullBegin = 0; ///< the first one behind the entry block
    int fullEnd = 0;   ///< the first one of the exit block
    int end = 0;       ///< behind the last one
    int first = 0;     ///< what areas begins with
    std::vector<std::int32_t> areas;
};

} // namespace Renderer::Texture
