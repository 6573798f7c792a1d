#pragma once

#include <cstdint>
#include <vector>

#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <kernel/Rect.h>
#include <renderer/core/coverage/CoverageRows.h>
#include <renderer/core/coverage/CoverageStore.h>

namespace Renderer::Coverage {

class CommonArea;

/// What a clip lets through: coverage per pixel of a rectangle, kept as runs per row; 0 outside.
/// Rows that are alike may share their runs. Immutable once built, shared.
class ClipCoverage : public Kernel::Countable
{
public:
    struct Run
    {
        int x;
        unsigned length;
        /// Where the coverage bytes of the run begin, or Solid.
        std::size_t bytes;
        unsigned char cover; ///< of a solid run; never 0
    };
    static constexpr std::size_t Solid = ~std::size_t{0};

    /// The rectangle that holds all that gets through.
    const Kernel::RectT<int>& GetRect() const noexcept { return m_rect; }

    /// The runs of row \p y from left to right, without overlap. \pre y lies in GetRect()
    const Run* BeginRow(int y) const noexcept
    {
        return m_runs.data() + m_rows[std::size_t(y - m_rect.top)].begin;
    }
    const Run* EndRow(int y) const noexcept
    {
        return m_runs.data() + m_rows[std::size_t(y - m_rect.top)].end;
    }
    const unsigned char* GetBytes(const Run& run) const noexcept
    {
        return m_bytes.data() + run.bytes;
    }

    /// Whether nothing of row \p y, any number, gets through.
    bool IsRowClear(int y) const noexcept
    {
        return y < m_rect.top || y >= m_rect.bottom || BeginRow(y) == EndRow(y);
    }

    /// Whether everything within the rectangle gets through.
    bool IsFull() const noexcept;

    /// Rasterises the edges of \p store within its window; the rectangle is what they can touch.
    /// \param within if not null, the result is the product with it.
    /// \param area if not null, what both have in common: pixels that both cover in part get it
    ///        instead of the product.
    static Kernel::Counted<const ClipCoverage> FromStore(CoverageStore& store,
                                                         const CoverageRule& rule,
                                                         const ClipCoverage* within = nullptr,
                                                         CommonArea* area = nullptr);
    /// Coverage 255 within \p rect, which may be empty.
    static Kernel::Counted<const ClipCoverage> FromRect(const Kernel::RectT<int>& rect);
    /// The product of both: what both let through. \param area as for FromStore.
    static Kernel::Counted<const ClipCoverage>
    Multiply(const ClipCoverage& a, const ClipCoverage& b, CommonArea* area = nullptr);
    /// a + b − a·b: what either lets through.
    /// \param area if not null, of the two united; for pixels that both cover in part.
    static Kernel::Counted<const ClipCoverage> Unite(const ClipCoverage& a, const ClipCoverage& b,
                                                     CommonArea* area = nullptr);

    /// Writes the coverage of pixels [x, x + length) of row \p y; 0 outside the rectangle.
    void ReadRow(int x, int y, unsigned length, unsigned char* out) const;

private:
    class Builder;

    template<class Clipped>
    static void MultiplyRows(const ClipCoverage& a, const ClipCoverage& b,
                             const Kernel::RectT<int>& rect, Builder& builder, Clipped&& clipped);

    /// Which of the runs a row has.
    struct Row
    {
        std::size_t begin = 0;
        std::size_t end = 0;
    };

    bool SharesRow(int y, int other) const noexcept
    {
        return BeginRow(y) == BeginRow(other) && EndRow(y) == EndRow(other);
    }

    Kernel::RectT<int> m_rect{};
    std::vector<Row> m_rows; // one per row of the rectangle
    std::vector<Run> m_runs;
    std::vector<unsigned char> m_bytes;
};

} // namespace Renderer::Coverage
