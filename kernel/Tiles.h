#pragma once

#include <algorithm>
#include <cstdint>

#include <kernel/Dispatch.h>
#include <kernel/Rect.h>

namespace Kernel {

/// The tiles that a rectangle of pixels reaches into: squares whose corners lie on multiples of
/// their side, whatever the rectangle, so that the same pixels share a tile in every operation.
class TileGrid
{
public:
    /// Pixels.
    static constexpr int Side = 256;

    /// \param rect not empty.
    explicit TileGrid(const RectT<int>& rect) noexcept
        : m_rect(rect),
          m_left(rect.left >> Shift),
          m_top(rect.top >> Shift),
          m_columns(unsigned(((rect.right - 1) >> Shift) - m_left) + 1),
          m_rows(unsigned(((rect.bottom - 1) >> Shift) - m_top) + 1)
    {}

    unsigned GetCount() const noexcept { return m_columns * m_rows; }

    /// What of the rectangle lies in a tile; tiles are numbered row by row.
    RectT<int> GetPart(unsigned index) const noexcept
    {
        const int left = (m_left + int(index % m_columns)) << Shift;
        const int top = (m_top + int(index / m_columns)) << Shift;
        // By the last pixels: behind them coordinates may end.
        return {std::max(m_rect.left, left), std::max(m_rect.top, top),
                std::min(m_rect.right - 1, left + Side - 1) + 1,
                std::min(m_rect.bottom - 1, top + Side - 1) + 1};
    }

private:
    static constexpr int Shift = 8;
    static_assert(1 << Shift == Side);

    RectT<int> m_rect;
    int m_left; // of the first tile, in tiles
    int m_top;
    unsigned m_columns;
    unsigned m_rows;
};

/// Who works on tiles.
enum class TileThreads
{
    Many,
    Caller, ///< the calling thread alone, as work that several threads must not do at once needs
};

/// Calls \p work with what of \p rect lies in each tile that it reaches into, from several threads
/// at once. Where one thread does it all, it gets the rectangle uncut, since whole rows are faster:
/// also a rectangle of no more pixels than a tile, which is done before others come to help.
/// Throws what a call throws; tiles not begun are then left out.
/// \param work takes a const RectT<int>&, not empty.
template<class Work>
void ForEachTile(const RectT<int>& rect, const Work& work, TileThreads threads = TileThreads::Many)
{
    if (rect.IsEmpty())
        return;
    const auto pixels =
        (std::int64_t{rect.right} - rect.left) * (std::int64_t{rect.bottom} - rect.top);
    if (threads == TileThreads::Caller || Dispatch::GetThreadLimit() == 1 ||
        pixels <= std::int64_t{TileGrid::Side} * TileGrid::Side) {
        work(rect);
        return;
    }
    const TileGrid grid(rect);
    Dispatch::DispatchParallelFor([&](unsigned index) { work(grid.GetPart(index)); },
                                  grid.GetCount(), Dispatch::Normal);
}

} // namespace Kernel
