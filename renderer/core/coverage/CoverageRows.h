#pragma once

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include <kernel/Rect.h>
#include <renderer/core/coverage/CoverageRule.h>
#include <renderer/core/coverage/SubPixel.h>

namespace Renderer::Coverage {

/// The accumulator of a band of rows: per pixel one signed number, such that the sum of all numbers
/// up to a pixel is the signed area that the path covers there.
///
/// A cell (x, cover, area) adds `(cover << 9) − area` at x and `area` at x + 1. A bit for every
/// group of pixels says what was touched, so that clear and solid stretches are skipped. Rows are
/// cleared again as they are swept.
class CoverageRows
{
public:
    /// Makes room for the rows of \p window; they are all clear.
    void Open(const Kernel::RectT<int>& window)
    {
        m_window = window;
        // One more pixel for the second addition of the last cell, in whole groups.
        m_stride = (static_cast<std::size_t>(window.Width()) + Group) / Group * Group;
        m_markStride = (m_stride / Group + 63) / 64;
        const auto rows = static_cast<std::size_t>(window.Height());
        if (m_areas.size() < m_stride * rows)
            m_areas.resize(m_stride * rows);
        if (m_marks.size() < m_markStride * rows)
            m_marks.resize(m_markStride * rows);
        if (m_covers.size() < m_stride)
            m_covers.resize(m_stride);
    }

    /// Bytes that Open needs for a row of \p width pixels.
    static std::size_t BytesPerRow(int width)
    {
        return (static_cast<std::size_t>(width) + Group) * sizeof(std::uint32_t);
    }

    [[gnu::always_inline]] void AddCell(int x, int y, int cover, int area) noexcept
    {
        const auto column = static_cast<std::size_t>(x - m_window.left);
        const auto row = static_cast<std::size_t>(y - m_window.top);
        // Unsigned, since sums of very many overlapping edges wrap around as in the engine.
        std::uint32_t* const at = m_areas.data() + row * m_stride + column;
        at[0] += (static_cast<std::uint32_t>(cover) << (SubPixelShift + 1)) -
                 static_cast<std::uint32_t>(area);
        at[1] += static_cast<std::uint32_t>(area);
        std::uint64_t* const marks = m_marks.data() + row * m_markStride + column / (64 * Group);
        const auto group = column / Group % 64;
        marks[0] |= (column % Group == Group - 1 ? std::uint64_t{3} : std::uint64_t{1}) << group;
        if (column % (64 * Group) == 64 * Group - 1)
            marks[1] |= 1;
    }

    /// Turns row \p y into coverage, left to right, and clears it.
    /// \param sink gets `Run(x, length, cover)` for stretches of one coverage that is not 0, and
    ///        `Mask(x, length, covers)` for the others; both lie in the window.
    template<class Sink>
    void SweepRow(int y, const CoverageRule& rule, Sink&& sink)
    {
        const auto row = static_cast<std::size_t>(y - m_window.top);
        std::uint32_t* const areas = m_areas.data() + row * m_stride;
        std::uint64_t* const marks = m_marks.data() + row * m_markStride;
        const auto width = static_cast<std::size_t>(m_window.Width());
        std::uint32_t sum = 0;
        std::size_t done = 0; // columns that were handed on
        for (std::size_t word = 0; word < m_markStride; ++word) {
            for (std::uint64_t bits = marks[word]; bits != 0;) {
                // A stretch of touched groups that lie near each other.
                const int first = std::countr_zero(bits);
                int end = first;
                while (bits != 0) {
                    const int next = std::countr_zero(bits);
                    if (next > end + NearGroups)
                        break;
                    end = next + std::countr_one(bits >> next);
                    bits &= end < 64 ? ~std::uint64_t{0} << end : 0;
                }
                const int count = end - first;
                const std::size_t begin = (word * 64 + std::size_t(first)) * Group;
                const std::size_t endColumn = begin + std::size_t(count) * Group;
                EmitRun(sink, rule, sum, done, begin < width ? begin : width);
                sum = rule.Accumulate(areas + begin, std::size_t(count), sum, m_covers.data());
                if (begin < width)
                    sink.Mask(m_window.left + int(begin),
                              unsigned((endColumn < width ? endColumn : width) - begin),
                              m_covers.data());
                done = endColumn;
            }
            marks[word] = 0;
        }
        EmitRun(sink, rule, sum, done, width);
    }

private:
    /// Untouched groups between touched ones that cost less as bytes than as a run.
    static constexpr int NearGroups = 2;
    static constexpr std::size_t Group = CoverageRule::Group;

    template<class Sink>
    void EmitRun(Sink& sink, const CoverageRule& rule, std::uint32_t sum, std::size_t begin,
                 std::size_t end) const
    {
        if (begin >= end)
            return;
        if (const unsigned char cover = rule.Apply(static_cast<std::int32_t>(sum)))
            sink.Run(m_window.left + int(begin), unsigned(end - begin), cover);
    }

    Kernel::RectT<int> m_window{};
    std::size_t m_stride = 0;     // numbers per row
    std::size_t m_markStride = 0; // words per row
    std::vector<std::uint32_t> m_areas;
    std::vector<std::uint64_t> m_marks;
    std::vector<unsigned char> m_covers; // one row
};

} // namespace Renderer::Coverage
