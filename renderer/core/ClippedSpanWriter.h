#pragma once

#include <algorithm>

#include <renderer/core/coverage/ClipCoverage.h>
#include <renderer/core/coverage/CommonArea.h>
#include <renderer/core/coverage/MultiplyCovers.h>

namespace Renderer {

/// What becomes of pixels that shape and clip both cover in part: their product stays.
class ProductOfCovers
{
public:
    static constexpr bool Corrects = false;
};

/// The same, by their common area instead.
class AreaOfCovers
{
public:
    static constexpr bool Corrects = true;

    /// \param area of the clip's and the shape's regions; must outlive the object.
    explicit AreaOfCovers(Coverage::CommonArea& area) noexcept : m_area(area) {}

    /// What is known of the common area of pixels from (x, y) on.
    Coverage::CommonArea::Row Get(int x, int y) const
    {
        const Coverage::CommonArea::Row row = m_area.GetRow(y);
        const int column = x - m_area.GetLeft();
        return {row.covers + column, row.known + column};
    }

private:
    Coverage::CommonArea& m_area;
};

/// Combines spans with a clip's coverage and hands what is left to another writer.
///
/// \tparam Partial ProductOfCovers or AreaOfCovers. Where one of both coverages is nothing or full
///         there is no difference.
template<class Writer, class Partial = ProductOfCovers>
class ClippedSpanWriter
{
public:
    static constexpr bool Corrects = Partial::Corrects;

    /// \param covers room for a byte per pixel of the longest span.
    ClippedSpanWriter(Writer& writer, const Coverage::ClipCoverage& clip, unsigned char* covers,
                      Partial partial = {})
        : m_writer(writer), m_clip(clip), m_covers(covers), m_partial(partial)
    {}

    void BeginRow(int y)
    {
        m_writer.BeginRow(y);
        m_y = y;
        const bool inside = y >= m_clip.GetRect().top && y < m_clip.GetRect().bottom;
        m_run = inside ? m_clip.BeginRow(y) : nullptr;
        m_end = inside ? m_clip.EndRow(y) : nullptr;
    }

    void Run(int x, unsigned length, unsigned char cover)
    {
        ForEachPart(x, length,
                    [&](int from, unsigned count, const unsigned char* clip, unsigned char solid) {
                        if (!clip)
                            WriteRun(from, count, cover, solid);
                        else if (cover == 255)
                            m_writer.Mask(from, count, clip);
                        else
                            WriteMask(from, count, clip, cover);
                    });
    }

    void Mask(int x, unsigned length, const unsigned char* covers)
    {
        ForEachPart(x, length,
                    [&](int from, unsigned count, const unsigned char* clip, unsigned char solid) {
                        const unsigned char* const in = covers + (from - x);
                        if (clip)
                            WriteMask(from, count, in, clip);
                        else if (solid == 255)
                            m_writer.Mask(from, count, in);
                        else
                            WriteMask(from, count, in, solid);
                    });
    }

private:
    static bool IsPartial(unsigned char cover) noexcept { return cover != 0 && cover != 255; }
    static unsigned char At(const unsigned char* covers, unsigned i) noexcept { return covers[i]; }
    static unsigned char At(unsigned char cover, unsigned) noexcept { return cover; }

    /// A run of which the clip, too, covers every pixel alike.
    void WriteRun(int x, unsigned length, unsigned char cover, unsigned char solid)
    {
        if constexpr (Partial::Corrects) {
            if (IsPartial(cover) && IsPartial(solid)) {
                std::fill_n(m_covers, length, Coverage::MultiplyBytes(cover, solid));
                const auto area = m_partial.Get(x, m_y);
                for (unsigned i = 0; i < length; ++i)
                    if (area.known[i])
                        m_covers[i] = area.covers[i];
                m_writer.Mask(x, length, m_covers);
                return;
            }
        }
        if (const unsigned char product = Coverage::MultiplyBytes(cover, solid))
            m_writer.Run(x, length, product);
    }

    /// \param b bytes like \p a, or one for all pixels.
    template<class Covers>
    void WriteMask(int x, unsigned length, const unsigned char* a, Covers b)
    {
        Coverage::MultiplyCovers(m_covers, a, b, length);
        if constexpr (Partial::Corrects) {
            Coverage::CommonArea::Row area{}; // most rows do without
            for (unsigned i = 0; i < length; ++i) {
                if (!IsPartial(a[i]) || !IsPartial(At(b, i)))
                    continue;
                if (!area.covers)
                    area = m_partial.Get(x, m_y);
                if (area.known[i])
                    m_covers[i] = area.covers[i];
            }
        }
        m_writer.Mask(x, length, m_covers);
    }

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
    int m_y = 0;
    [[no_unique_address]] Partial m_partial;
};

} // namespace Renderer
