#pragma once

#include <cstdint>
#include <utility>

#include <geometry/Export.h>
#include <geometry/PolyCurve.h>
#include <kernel/Countable.h>
#include <kernel/Counted.h>

namespace Geometry {

/// One glyph of a font, unhinted, in units of the em (a font size of 1), y downwards from the
/// baseline. Immutable and shared.
class GEOMETRY_EXPORT GlyphMetrics : public Kernel::Countable
{
public:
    /// \param index the glyph's number in its font.
    /// \param advance how far the pen moves on along the baseline.
    /// \param outline may be empty, for blanks; shared, never copied.
    GlyphMetrics(std::uint32_t index, double advance, Kernel::Counted<const PolyCurveDbl> outline)
        : m_index(index),
          m_advance(advance),
          m_outline(std::move(outline)),
          m_bounds(m_outline ? m_outline->GetBoundingBox() : BoundingBoxT<double>())
    {}

    std::uint32_t GetIndex() const noexcept { return m_index; }
    double GetAdvance() const noexcept { return m_advance; }
    const Kernel::Counted<const PolyCurveDbl>& GetOutline() const noexcept { return m_outline; }
    /// The exact box of the outline; invalid for blanks.
    const BoundingBoxT<double>& GetBounds() const noexcept { return m_bounds; }

private:
    std::uint32_t m_index;
    double m_advance;
    Kernel::Counted<const PolyCurveDbl> m_outline;
    BoundingBoxT<double> m_bounds;
};

} // namespace Geometry
