#pragma once

namespace Geometry {

/// Where a glyph stands: the place of its origin on the baseline and its turn about it.
struct GlyphPosition
{
    double x = 0.0;
    double y = 0.0;
    double rotation =
        0.0; ///< radians, from the x axis to the y axis (clockwise where y points down)

    friend constexpr bool operator==(const GlyphPosition&, const GlyphPosition&) noexcept = default;
};

} // namespace Geometry
