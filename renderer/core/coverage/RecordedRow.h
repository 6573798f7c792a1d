#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace Renderer::Coverage {

/// The coverage of one row, to be handed on for several rows that are alike. It hands on the same
/// coverage in spans that cost least: long runs, and stretches of bytes that vector code can take
/// at once.
class RecordedRow
{
public:
    static constexpr std::size_t MostPieces = 32;

    /// Begins anew.
    /// \param left, right what is recorded lies within, and spans keep to it.
    void Clear(int left, int right) noexcept
    {
        m_left = left;
        m_right = right;
        m_pieceCount = 0;
    }

    /// Adds pixels of one coverage, which is not 0, from left to right; at most MostPieces times.
    void Run(int x, unsigned length, unsigned char cover) noexcept
    {
        if (m_pieceCount > 0) {
            Piece& last = m_pieces[m_pieceCount - 1];
            if (End(last) == x && last.cover == cover) {
                last.length += length;
                return;
            }
        }
        m_pieces[m_pieceCount++] = {x, length, cover};
    }

    /// Makes the spans of what was recorded.
    void Finish() noexcept
    {
        m_spanCount = 0;
        m_coverCount = 0;
        if (m_pieceCount == 0)
            return;
        unsigned worthARun = WorthARun;
        if (m_pieceCount == 1)
            worthARun = 1;
        else if (End(m_pieces[m_pieceCount - 1]) - m_pieces[0].x <= Narrow)
            worthARun = Narrow + 1;
        for (std::size_t i = 0; i < m_pieceCount; ++i) {
            if (m_pieces[i].length >= worthARun)
                AddRun(m_pieces[i]);
            else
                AddBytes(m_pieces[i]);
        }
        Lengthen(m_right);
    }

    /// Hands the spans to \p sink.
    /// \param rows what else the sink takes: a number of rows, or nothing.
    template<class Sink, class... Rows>
    void Replay(Sink& sink, Rows... rows) const
    {
        for (std::size_t i = 0; i < m_spanCount; ++i) {
            const Span& span = m_spans[i];
            if (span.isRun)
                sink.Run(span.x, span.length, span.cover, rows...);
            else
                sink.Mask(span.x, span.length, m_covers.data() + span.covers, rows...);
        }
    }

private:
    /// Pixels of one coverage, side by side.
    struct Piece
    {
        int x;
        unsigned length;
        unsigned char cover;
    };
    struct Span : Piece
    {
        bool isRun;
        std::size_t covers; ///< where the bytes begin of a span that is no run
    };

    /// Vector code takes this many pixels at once; shorter stretches of bytes borrow from what is
    /// beside them.
    static constexpr unsigned Handy = 8;
    /// Shorter pieces cost more as runs than as bytes.
    static constexpr unsigned WorthARun = 4 * Handy;
    /// Rows up to this width cost least as one stretch of bytes.
    static constexpr int Narrow = 48;
    /// Gaps up to this width cost less as bytes than a further span.
    static constexpr int SmallGap = 16;

    static int End(const Piece& piece) noexcept { return piece.x + int(piece.length); }

    bool EndsInBytes() const noexcept { return m_spanCount > 0 && !m_spans[m_spanCount - 1].isRun; }

    void AddRun(Piece piece) noexcept
    {
        if (EndsInBytes() && End(m_spans[m_spanCount - 1]) == piece.x) {
            Span& last = m_spans[m_spanCount - 1];
            if (last.length < Handy) {
                const unsigned lent = Handy - last.length;
                Append(lent, piece.cover);
                last.length = Handy;
                piece.x += int(lent);
                piece.length -= lent;
            }
        }
        Lengthen(piece.x);
        m_spans[m_spanCount++] = {piece, true, 0};
    }

    void AddBytes(const Piece& piece) noexcept
    {
        if (!EndsInBytes() || piece.x - End(m_spans[m_spanCount - 1]) > SmallGap) {
            Lengthen(piece.x);
            m_spans[m_spanCount++] = {{piece.x, 0, 0}, false, m_coverCount};
        }
        Span& span = m_spans[m_spanCount - 1];
        Append(unsigned(piece.x - End(span)), 0);
        Append(piece.length, piece.cover);
        span.length = unsigned(End(piece) - span.x);
    }

    void Append(unsigned count, unsigned char cover) noexcept
    {
        for (; count > 0; --count)
            m_covers[m_coverCount++] = cover;
    }

    /// Lets the last span, if it is a short stretch of bytes, borrow from the run before it or else
    /// from the free pixels around it. \param end where the next span begins.
    void Lengthen(int end) noexcept
    {
        if (!EndsInBytes() || m_spans[m_spanCount - 1].length >= Handy)
            return;
        Span& span = m_spans[m_spanCount - 1];
        unsigned missing = Handy - span.length;
        Span* const before = m_spanCount > 1 ? &m_spans[m_spanCount - 2] : nullptr;
        if (before && before->isRun && End(*before) == span.x) {
            before->length -= missing;
            Prepend(span, missing, before->cover);
            return;
        }
        const unsigned behind = std::min(missing, unsigned(end - End(span)));
        Append(behind, 0);
        span.length += behind;
        missing -= behind;
        Prepend(span, std::min(missing, unsigned(span.x - (before ? End(*before) : m_left))), 0);
    }

    /// \param span the last one.
    void Prepend(Span& span, unsigned count, unsigned char cover) noexcept
    {
        const auto begin = m_covers.begin() + std::ptrdiff_t(span.covers);
        std::copy_backward(begin, begin + span.length, begin + span.length + count);
        std::fill_n(begin, count, cover);
        m_coverCount += count;
        span.x -= int(count);
        span.length += count;
    }

    int m_left = 0, m_right = 0;
    std::size_t m_pieceCount = 0;
    std::size_t m_spanCount = 0;
    std::size_t m_coverCount = 0;
    std::array<Piece, MostPieces> m_pieces;
    std::array<Span, MostPieces> m_spans;
    std::array<unsigned char, MostPieces*(Narrow + SmallGap + 2 * Handy)> m_covers;
};

} // namespace Renderer::Coverage
