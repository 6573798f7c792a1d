#pragma once

#include <cairo.h>

#include "Scene.h"

namespace Benchmarks {

/// An owning reference to a pattern; may be empty.
class CairoPattern
{
public:
    CairoPattern() = default;
    explicit CairoPattern(cairo_pattern_t* pattern) : m_pattern(pattern) {}
    CairoPattern(CairoPattern&& other) noexcept : m_pattern(other.Detach()) {}
    CairoPattern& operator=(CairoPattern&& other) noexcept
    {
        std::swap(m_pattern, other.m_pattern);
        return *this;
    }
    ~CairoPattern()
    {
        if (m_pattern)
            cairo_pattern_destroy(m_pattern);
    }
    cairo_pattern_t* Get() const noexcept { return m_pattern; }

private:
    cairo_pattern_t* Detach() noexcept { return std::exchange(m_pattern, nullptr); }

    cairo_pattern_t* m_pattern = nullptr;
};

/// The pattern of a fill, in the logical coordinates that the fill is used in. Empty for no paint
/// and for conical gradients.
/// \param opacity goes into the colours.
CairoPattern MakeCairoPattern(const Renderer::FillDescriptorConst& fill, double opacity);

/// A bitmap on the unit square; a frame maps that to user coordinates.
CairoPattern MakeCairoBitmap(const Raster::DynamicBitmap& bitmap, const Transform& frame,
                             cairo_filter_t filter);

cairo_matrix_t MakeCairoMatrix(const Transform& transform);

} // namespace Benchmarks
