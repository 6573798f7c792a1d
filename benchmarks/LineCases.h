#pragma once

#include <string>
#include <vector>

#include <geometry/PolyCurve.h>
#include <kernel/Counted.h>
#include <renderer/core/BitmapRenderTarget.h>
#include <renderer/paint/LineStyleDescriptorConst.h>

namespace Benchmarks {

/// A line that no other rasteriser knows: of a brush, or aligned to one side of its path.
struct LineCase
{
    std::string name; ///< without the peer
    Kernel::Counted<const Geometry::PolyCurveDbl> path;
    Renderer::LineStyleDescriptorConst style;
};

/// Brush/HOW/TIP-DENSITY: a curve across the page by brushes of small, large and narrow tips.
/// Align/SIDE/SHAPE: outlines inside or outside of a shape, and for comparison in the middle.
std::vector<LineCase> MakeLineCases();

/// A page of 600 × 600 RGBA8 pixels on which one line is drawn again and again.
class LinePage
{
public:
    static constexpr unsigned Side = 600;

    explicit LinePage(const LineCase& item);
    void Draw();

private:
    const LineCase& m_case;
    Kernel::Counted<Renderer::BitmapRenderTarget> m_target;
    Renderer::FillDescriptorConst m_fill;
};

} // namespace Benchmarks
