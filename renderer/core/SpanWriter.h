#pragma once

#include <renderer/core/coverage/AggEngine.h>
#include <renderer/core/RenderTargetRasterizer.h>
#include <renderer/core/SpanRoom.h>

namespace Renderer {

/// Where spans of a row go.
struct SpanPlace
{
    void Begin(const RenderTargetRasterizer& rasterizer, int row)
    {
        y = row;
        m_row = rasterizer.GetRow(y);
        m_left = rasterizer.m_origin.x;
        m_pixelSize = rasterizer.m_pixelSize;
        if (rasterizer.m_maskData) {
            m_maskRow = rasterizer.m_engine->mask.row_ptr(y - rasterizer.m_maskRect.top);
            m_maskLeft = rasterizer.m_maskRect.left;
        }
    }

    void* Destination(int x) const
    {
        return m_row + std::ptrdiff_t(x - m_left) * std::ptrdiff_t(m_pixelSize);
    }
    /// Null where there is no mask.
    const unsigned char* MaskAt(int x) const
    {
        return m_maskRow ? m_maskRow + (x - m_maskLeft) : nullptr;
    }

    int y = 0;

private:
    unsigned char* m_row = nullptr;
    const unsigned char* m_maskRow = nullptr;
    int m_left = 0;
    int m_maskLeft = 0;
    unsigned m_pixelSize = 0;
};

/// Colours one row's covered spans and blends them: the end of the span loop. As a sink of the
/// coverage sweep it gets runs of one coverage and stretches of coverage bytes.
class SpanWriter
{
public:
    /// \param room the scratch span's; must outlive the writer.
    /// \param widest no span will be longer.
    SpanWriter(const RenderTargetRasterizer& rasterizer, const SpanRoom& room, unsigned widest)
        : m_rasterizer(rasterizer),
          m_scratch(room.pixels),
          m_ratio(rasterizer.GetGammaRatio()),
          m_isUniform(rasterizer.HasUniformPaint()),
          m_replaces(rasterizer.HasReplacingPaint())
    {
        // Paint that is the same everywhere serves all spans at once.
        if (m_isUniform)
            Populate(0, widest);
    }

    void BeginRow(int y) { m_place.Begin(m_rasterizer, y); }

    void Run(int x, unsigned length, unsigned char cover)
    {
        if (m_replaces && cover == 255) {
            const SpanPopulator& populator = m_rasterizer.m_colourPopulators.front();
            populator.function(populator.context, m_place.Destination(x), x, m_place.y, length);
            return;
        }
        const void* scratch = GetPaint(x, length);
        m_rasterizer.m_blend.run(m_place.Destination(x), m_place.MaskAt(x), scratch, cover, m_ratio,
                                 length);
    }

    void Mask(int x, unsigned length, const unsigned char* covers)
    {
        const void* scratch = GetPaint(x, length);
        m_rasterizer.m_blend.mask(m_place.Destination(x), m_place.MaskAt(x), scratch, covers,
                                  m_ratio, length);
    }

private:
    const void* GetPaint(int x, unsigned length)
    {
        if (!m_isUniform)
            Populate(x, length);
        return m_scratch;
    }

    void Populate(int x, unsigned length)
    {
        m_rasterizer.Populate(m_scratch, x, m_place.y, length);
    }

    const RenderTargetRasterizer& m_rasterizer;
    unsigned char* m_scratch;
    double m_ratio;
    bool m_isUniform;
    bool m_replaces; // full coverage can be painted into the destination itself
    SpanPlace m_place;
};

} // namespace Renderer
