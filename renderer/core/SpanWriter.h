#pragma once

#include <algorithm>

#include <renderer/core/coverage/AggEngine.h>
#include <renderer/core/coverage/ClipCoverage.h>
#include <renderer/core/RenderTargetRasterizer.h>

namespace Renderer {

/// Colours one row's covered spans and blends them: the end of the span loop. As a sink of the
/// coverage sweep it gets runs of one coverage and stretches of coverage bytes.
class SpanWriter
{
public:
    /// \param widest no span will be longer.
    SpanWriter(RenderTargetRasterizer& rasterizer, unsigned widest)
        : m_rasterizer(rasterizer), m_ratio(rasterizer.m_referenceGamma / rasterizer.m_callGamma)
    {
        const auto isUniform = [](const SpanPopulator& populator) { return populator.isUniform; };
        m_isUniform = std::ranges::all_of(rasterizer.m_colourPopulators, isUniform) &&
                      std::ranges::all_of(rasterizer.m_transparencyPopulators, isUniform);
        const std::size_t bytes = std::size_t{widest} * rasterizer.m_pixelSize;
        if (rasterizer.m_scratch.size() < bytes)
            rasterizer.m_scratch.resize(bytes);
        // Paint that is the same everywhere serves all spans at once.
        if (m_isUniform)
            Populate(0, widest);
    }

    void BeginRow(int y)
    {
        m_y = y;
        m_row = m_rasterizer.GetRow(y);
        if (m_rasterizer.m_maskData)
            m_maskRow = m_rasterizer.m_engine->mask.row_ptr(y - m_rasterizer.m_maskRect.top);
    }

    void Run(int x, unsigned length, unsigned char cover)
    {
        const void* scratch = GetPaint(x, length);
        m_rasterizer.m_blend.run(Destination(x), MaskAt(x), scratch, cover, m_ratio, length);
    }

    void Mask(int x, unsigned length, const unsigned char* covers)
    {
        const void* scratch = GetPaint(x, length);
        m_rasterizer.m_blend.mask(Destination(x), MaskAt(x), scratch, covers, m_ratio, length);
    }

private:
    const void* GetPaint(int x, unsigned length)
    {
        if (!m_isUniform)
            Populate(x, length);
        return m_rasterizer.m_scratch.data();
    }

    void Populate(int x, unsigned length)
    {
        unsigned char* const scratch = m_rasterizer.m_scratch.data();
        for (const SpanPopulator& populator : m_rasterizer.m_colourPopulators)
            populator.function(populator.context, scratch, x, m_y, length);
        for (const SpanPopulator& populator : m_rasterizer.m_transparencyPopulators)
            populator.function(populator.context, scratch, x, m_y, length);
    }

    void* Destination(int x) const
    {
        return m_row + std::ptrdiff_t(x - m_rasterizer.m_origin.x) * m_rasterizer.m_pixelSize;
    }

    const unsigned char* MaskAt(int x) const
    {
        return m_maskRow ? m_maskRow + (x - m_rasterizer.m_maskRect.left) : nullptr;
    }

    RenderTargetRasterizer& m_rasterizer;
    double m_ratio;
    bool m_isUniform = false;
    int m_y = 0;
    unsigned char* m_row = nullptr;
    const unsigned char* m_maskRow = nullptr;
};

/// Multiplies spans with a clip's coverage and hands what is left to a SpanWriter.
class ClippedSpanWriter
{
public:
    ClippedSpanWriter(SpanWriter& writer, const Coverage::ClipCoverage& clip,
                      std::vector<unsigned char>& covers)
        : m_writer(writer), m_clip(clip), m_covers(covers)
    {}

    void BeginRow(int y)
    {
        m_writer.BeginRow(y);
        const bool inside = y >= m_clip.GetRect().top && y < m_clip.GetRect().bottom;
        m_run = inside ? m_clip.BeginRow(y) : nullptr;
        m_end = inside ? m_clip.EndRow(y) : nullptr;
    }

    void Run(int x, unsigned length, unsigned char cover)
    {
        ForEachPart(x, length,
                    [&](int from, unsigned count, const unsigned char* clip, unsigned char solid) {
                        if (!clip) {
                            if (const unsigned char product = Coverage::MultiplyBytes(cover, solid))
                                m_writer.Run(from, count, product);
                        } else if (cover == 255) {
                            m_writer.Mask(from, count, clip);
                        } else {
                            unsigned char* const out = Room(count);
                            for (unsigned i = 0; i < count; ++i)
                                out[i] = Coverage::MultiplyBytes(cover, clip[i]);
                            m_writer.Mask(from, count, out);
                        }
                    });
    }

    void Mask(int x, unsigned length, const unsigned char* covers)
    {
        ForEachPart(x, length,
                    [&](int from, unsigned count, const unsigned char* clip, unsigned char solid) {
                        const unsigned char* const in = covers + (from - x);
                        unsigned char* const out = Room(count);
                        for (unsigned i = 0; i < count; ++i)
                            out[i] = Coverage::MultiplyBytes(in[i], clip ? clip[i] : solid);
                        m_writer.Mask(from, count, out);
                    });
    }

private:
    /// Calls \p part for every piece of [x, x + length) that one run of the clip covers. Spans of a
    /// row come from left to right, so runs that end before x are never needed again.
    template<class Part>
    void ForEachPart(int x, unsigned length, Part&& part)
    {
        const int end = x + int(length);
        while (m_run != m_end && m_run->x + int(m_run->length) <= x)
            ++m_run;
        for (const auto* run = m_run; run != m_end && run->x < end; ++run) {
            const int from = std::max(x, run->x);
            const int to = std::min(end, run->x + int(run->length));
            const bool solid = run->bytes == Coverage::ClipCoverage::Solid;
            part(from, unsigned(to - from),
                 solid ? nullptr : m_clip.GetBytes(*run) + (from - run->x), run->cover);
        }
    }

    unsigned char* Room(unsigned count)
    {
        if (m_covers.size() < count)
            m_covers.resize(count);
        return m_covers.data();
    }

    SpanWriter& m_writer;
    const Coverage::ClipCoverage& m_clip;
    std::vector<unsigned char>& m_covers;
    const Coverage::ClipCoverage::Run* m_run = nullptr;
    const Coverage::ClipCoverage::Run* m_end = nullptr;
};

} // namespace Renderer
