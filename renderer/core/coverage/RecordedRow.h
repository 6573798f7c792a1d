#pragma once

#include <cstddef>
#include <vector>

namespace Renderer::Coverage {

/// The coverage of one row, to be handed on for several rows that are alike. It hands on the same
/// coverage in spans that cost least: long runs, and stretches of bytes that vector code can take
/// at once.
class RecordedRow
{
public:
    /// Begins anew; keeps the memory.
    void Clear() noexcept { m_pieces.clear(); }

    /// Adds pixels of one coverage, which is not 0, from left to right.
    void Run(int x, unsigned length, unsigned char cover)
    {
        if (!m_pieces.empty() && End(m_pieces.back()) == x && m_pieces.back().cover == cover)
            m_pieces.back().length += length;
        else
            m_pieces.push_back({x, length, cover});
    }

    /// Makes the spans of what was recorded.
    void Finish()
    {
        m_spans.clear();
        m_covers.clear();
        if (m_pieces.empty())
            return;
        unsigned worthARun = WorthARun;
        if (m_pieces.size() == 1)
            worthARun = 1;
        else if (End(m_pieces.back()) - m_pieces.front().x <= Narrow)
            worthARun = Narrow + 1;
        for (const Piece& piece : m_pieces) {
            if (piece.length >= worthARun)
                AddRun(piece);
            else
                AddBytes(piece);
        }
        Lengthen();
    }

    /// Hands the spans to \p sink.
    /// \param rows what else the sink takes: a number of rows, or nothing.
    template<class Sink, class... Rows>
    void Replay(Sink& sink, Rows... rows) const
    {
        for (const Span& span : m_spans) {
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

    /// Vector code takes this many pixels at once; shorter stretches of bytes borrow from runs.
    static constexpr unsigned Handy = 8;
    /// Shorter pieces cost more as runs than as bytes.
    static constexpr unsigned WorthARun = 4 * Handy;
    /// Rows up to this width cost least as one stretch of bytes.
    static constexpr int Narrow = 48;
    /// Gaps up to this width cost less as bytes than a further span.
    static constexpr int SmallGap = 16;

    static int End(const Piece& piece) noexcept { return piece.x + int(piece.length); }

    void AddRun(Piece piece)
    {
        if (!m_spans.empty() && !m_spans.back().isRun && End(m_spans.back()) == piece.x &&
            m_spans.back().length < Handy) {
            const unsigned lent = Handy - m_spans.back().length;
            m_covers.insert(m_covers.end(), lent, piece.cover);
            m_spans.back().length = Handy;
            piece.x += int(lent);
            piece.length -= lent;
        } else {
            Lengthen();
        }
        m_spans.push_back({piece, true, 0});
    }

    void AddBytes(const Piece& piece)
    {
        if (m_spans.empty() || m_spans.back().isRun || piece.x - End(m_spans.back()) > SmallGap) {
            Lengthen();
            m_spans.push_back({{piece.x, 0, 0}, false, m_covers.size()});
        }
        Span& span = m_spans.back();
        m_covers.insert(m_covers.end(), std::size_t(piece.x - End(span)), 0);
        m_covers.insert(m_covers.end(), piece.length, piece.cover);
        span.length = unsigned(End(piece) - span.x);
    }

    /// Lets the last stretch of bytes borrow from the run before it.
    void Lengthen()
    {
        if (m_spans.size() < 2 || m_spans.back().isRun || m_spans.back().length >= Handy)
            return;
        Span& span = m_spans.back();
        Span& run = m_spans[m_spans.size() - 2];
        if (!run.isRun || End(run) != span.x)
            return;
        const unsigned lent = Handy - span.length;
        m_covers.insert(m_covers.begin() + std::ptrdiff_t(span.covers), lent, run.cover);
        run.length -= lent;
        span.x -= int(lent);
        span.length = Handy;
    }

    std::vector<Piece> m_pieces;
    std::vector<Span> m_spans;
    std::vector<unsigned char> m_covers;
};

} // namespace Renderer::Coverage
