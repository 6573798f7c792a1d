#pragma once

#include <algorithm>

#include <renderer/core/SpanWriter.h>

namespace Renderer {

/// The end of the span loop for interpolation: populators of colour make the paint, blend ranges
/// and populators of transparency make weights beside it, and both go to the format's function.
/// As a sink of the coverage sweep it gets runs of one coverage and stretches of coverage bytes.
class InterpolatingSpanWriter
{
public:
    explicit InterpolatingSpanWriter(const RenderTargetRasterizer& rasterizer)
        : m_rasterizer(rasterizer), m_functions(*rasterizer.m_interpolation)
    {}

    void BeginRow(int y) { m_place.Begin(m_rasterizer, y); }

    void Run(int x, unsigned length, unsigned char cover)
    {
        ForBlocks(x, length, [&](int from, unsigned count, unsigned) {
            m_functions.run(m_place.Destination(from), m_place.MaskAt(from), m_paint, m_weights,
                            cover, m_rasterizer.GetGammaRatio(), count);
        });
    }

    void Mask(int x, unsigned length, const unsigned char* covers)
    {
        ForBlocks(x, length, [&](int from, unsigned count, unsigned offset) {
            m_functions.mask(m_place.Destination(from), m_place.MaskAt(from), m_paint, m_weights,
                             covers + offset, m_rasterizer.GetGammaRatio(), count);
        });
    }

private:
    /// Populates block by block and hands each to \p blend.
    template<class Blend>
    void ForBlocks(int x, unsigned length, const Blend& blend)
    {
        for (unsigned offset = 0; offset < length; offset += BlockLength) {
            const unsigned count = std::min(length - offset, BlockLength);
            const int from = x + int(offset);
            m_functions.beginWeights(m_weights, count);
            m_rasterizer.Populate(m_paint, m_weights, from, m_place.y, count);
            blend(from, count, offset);
        }
    }

    static constexpr unsigned BlockLength = 64;

    const RenderTargetRasterizer& m_rasterizer;
    const SpanInterpolation& m_functions;
    SpanPlace m_place;
    alignas(64) unsigned char m_paint[BlockLength * SpanBlend::LargestPixel];
    alignas(64) unsigned char m_weights[BlockLength * SpanBlend::LargestPixel];
};

} // namespace Renderer
