#pragma once

#include <algorithm>

#include <renderer/core/coverage/ClipCoverage.h>
#include <renderer/core/coverage/MultiplyCovers.h>

namespace Renderer {

/// Multiplies spans with a clip's coverage and hands what is left to another writer.
template<class Writer>
class ClippedSpanWriter
{
public:
    /// \param covers room for a byte per pixel of the longest span.
    ClippedSpanWriter(Writer& writer, const Coverage::ClipCoverage& clip, unsigned char* covers)
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
                            Coverage::MultiplyCovers(m_covers, clip, cover, count);
                            m_writer.Mask(from, count, m_covers);
                        }
                    });
    }

    void Mask(int x, unsigned length, const unsigned char* covers)
    {
        ForEachPart(x, length,
                    [&](int from, unsigned count, const unsigned char* clip, unsigned char solid) {
                        const unsigned char* const in = covers + (from - x);
                        if (!clip && solid == 255) {
                            m_writer.Mask(from, count, in);
                            return;
                        }
                        if (clip)
                            Coverage::MultiplyCovers(m_covers, in, clip, count);
                        else
                            Coverage::MultiplyCovers(m_covers, in, solid, count);
                        m_writer.Mask(from, count, m_covers);
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

    Writer& m_writer;
    const Coverage::ClipCoverage& m_clip;
    unsigned char* m_covers;
    const Coverage::ClipCoverage::Run* m_run = nullptr;
    const Coverage::ClipCoverage::Run* m_end = nullptr;
};

} // namespace Renderer
