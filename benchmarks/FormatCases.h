#pragma once

#include <memory>
#include <string>
#include <vector>

#include <raster/Format.h>
#include <renderer/core/BitmapRenderTarget.h>

namespace Benchmarks {

/// One pixel format, blend mode and paint, over whole pixels: what a pixel costs beside coverage.
struct FormatCase
{
    std::string name; ///< Format/FORMAT/MODE/PAINT
    Raster::Format format;
    Renderer::FillBlendMode::BlendMode mode;
    bool isGradient; ///< else one translucent colour
};

std::vector<FormatCase> MakeFormatCases();

/// A page of one format, which the case's paint is blended over from edge to edge.
class FormatPage
{
public:
    static constexpr unsigned Width = 512;
    static constexpr unsigned Height = 128;
    static constexpr double Pixels = double(Width) * Height;

    explicit FormatPage(const FormatCase& item);
    void Draw();

private:
    Kernel::Counted<Renderer::BitmapRenderTarget> m_target;
    Renderer::FillBlendMode::BlendMode m_mode;
    Renderer::FillDescriptorConst m_fill;
    Kernel::Counted<const Renderer::PolyPolygon> m_page;
};

} // namespace Benchmarks
