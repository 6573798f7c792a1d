#pragma once

#include <algorithm>
#include <vector>

namespace Renderer::Coverage {

/// The coverage of one row, to be handed on for several rows that are alike. As a sink of the sweep
/// it gets spans from left to right; it hands on fewer and shorter ones with the same coverage.
class RecordedRow
{
public:
    /// Begins anew; keeps the memory.
    void Clear() noexcept
    {
        m_spans.clear();
        m_covers.clear();
    }

    void Run(int x, unsigned length, unsigned char cover)
    {
        if (!m_spans.empty() && End(m_spans.back()) == x) {
            Span& last = m_spans.back();
            if (last.isRun && last.cover == cover) {
                last.length += length;
                return;
            }
            if (!last.isRun && last.length < Handy && length >= WorthARun) {
                const unsigned lent = Handy - last.length;
                m_covers.insert(m_covers.end(), lent, cover);
                last.length = Handy;
                x += int(lent);
                length -= lent;
            }
        }
        m_spans.push_back({x, length, 0, cover, true});
    }

    void Mask(int x, unsigned length, const unsigned char* covers)
    {
        for (; length > 0 && *covers == 0; --length)
            ++covers, ++x;
        while (length > 0 && covers[length - 1] == 0)
            --length;
        if (length == 0)
            return;
        if (std::all_of(covers, covers + length, [=](auto cover) { return cover == *covers; }))
            return Run(x, length, *covers);
        Span span{x, length, m_covers.size(), 0, false};
        if (!m_spans.empty() && End(m_spans.back()) == x && m_spans.back().isRun &&
            m_spans.back().length >= WorthARun && length < Handy) {
            const unsigned lent = Handy - length;
            m_covers.insert(m_covers.end(), lent, m_spans.back().cover);
            m_spans.back().length -= lent;
            span.x -= int(lent);
            span.length = Handy;
        }
        m_covers.insert(m_covers.end(), covers, covers + length);
        m_spans.push_back(span);
    }

    /// Makes one span of all of them where they are narrow: a stretch of bytes costs less than
    /// several spans.
    void Finish()
    {
        constexpr int narrow = 48;
        if (m_spans.size() < 2 || End(m_spans.back()) - m_spans.front().x > narrow)
            return;
        unsigned char row[narrow]{};
        const int left = m_spans.front().x;
        const auto width = unsigned(End(m_spans.back()) - left);
        for (const Span& span : m_spans) {
            if (span.isRun)
                std::fill_n(row + (span.x - left), span.length, span.cover);
            else
                std::copy_n(m_covers.data() + span.covers, span.length, row + (span.x - left));
        }
        Clear();
        m_spans.push_back({left, width, 0, 0, false});
        m_covers.assign(row, row + width);
    }

    /// Hands the spans to \p sink.
    template<class Sink>
    void Replay(Sink& sink) const
    {
        for (const Span& span : m_spans) {
            if (span.isRun)
                sink.Run(span.x, span.length, span.cover);
            else
                sink.Mask(span.x, span.length, m_covers.data() + span.covers);
        }
    }

private:
    struct Span
    {
        int x;
        unsigned length;
        std::size_t covers; ///< where the bytes begin
        unsigned char cover;
        bool isRun;
    };

    /// Stretches of bytes that are shorter cost more: vector code takes this many at once. They
    /// borrow from long runs beside them.
    static constexpr unsigned Handy = 8;
    static constexpr unsigned WorthARun = 4 * Handy;

    static int End(const Span& span) noexcept { return span.x + int(span.length); }

    std::vector<Span> m_spans;
    std::vector<unsigned char> m_covers;
};

} // namespace Renderer::Coverage
