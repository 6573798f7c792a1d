#pragma once

#include <renderer/core/RenderTargetRasterizer.h>

namespace Renderer {

/// The end of the span loop for paint that is the same everywhere, where the blend function has
/// fused forms for it: no scratch span, no mask, no gamma. As a sink of the coverage sweep it gets
/// runs of one coverage and stretches of coverage bytes.
class SolidSpanWriter
{
public:
    /// \param pixel the paint; must outlive the writer.
    SolidSpanWriter(const RenderTargetRasterizer& rasterizer, const SpanBlend& blend,
                    const void* pixel, unsigned pixelSize)
        : m_rasterizer(rasterizer),
          m_run(blend.solidRun),
          m_mask(blend.solidMask),
          m_pixel(pixel),
          m_pixelSize(pixelSize),
          m_stride(rasterizer.GetStride()),
          m_left(rasterizer.GetOrigin().x)
    {}

    void BeginRow(int y) { m_row = m_rasterizer.GetRow(y); }

    /// \param rows so many rows from the present one on are alike.
    void Run(int x, unsigned length, unsigned char cover, unsigned rows = 1)
    {
        m_run(Destination(x), m_stride, rows, m_pixel, cover, length);
    }

    void Mask(int x, unsigned length, const unsigned char* covers, unsigned rows = 1)
    {
        m_mask(Destination(x), m_stride, rows, m_pixel, covers, length);
    }

private:
    void* Destination(int x) const { return m_row + std::ptrdiff_t(x - m_left) * m_pixelSize; }

    const RenderTargetRasterizer& m_rasterizer;
    SpanBlend::SolidRunFunction m_run;
    SpanBlend::SolidMaskFunction m_mask;
    const void* m_pixel;
    std::ptrdiff_t m_pixelSize;
    std::ptrdiff_t m_stride;
    int m_left;
    unsigned char* m_row = nullptr;
};

} // namespace Renderer
