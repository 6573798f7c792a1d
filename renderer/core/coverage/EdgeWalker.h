#pragma once

#include <algorithm>

#include <kernel/Rect.h>
#include <renderer/core/coverage/SubPixel.h>

namespace Renderer::Coverage {

/// Turns edges into cells: for every pixel that an edge crosses, the signed height that it covers
/// there (cover, in 1/256 pixel) and twice the signed area to its left (area, in 1/65536 pixel).
///
/// The arithmetic is that of AGG's cell rasteriser to the bit: along an edge, x at row boundaries
/// and y at column boundaries are floor divisions of exact products. Being closed forms, they let a
/// walk begin anywhere, so an edge costs only what lies within the window: rows outside it are
/// skipped, cells left of it fold into its first column with area 0 (they cover everything to their
/// right), cells right of it are dropped.
///
/// \tparam Sink has `void AddCell(int x, int y, int cover, int area)` for cells in the window.
template<class Sink>
class EdgeWalker
{
public:
    /// \param window in pixels, of the page.
    EdgeWalker(const Kernel::RectT<int>& window, Sink& sink) noexcept
        : m_window(window), m_sink(sink)
    {}

    void Walk(const Edge& edge)
    {
        const int top = std::min(edge.y1, edge.y2);
        const int bottom = std::max(edge.y1, edge.y2);
        if (top == bottom || (bottom - 1) >> SubPixelShift < m_window.top ||
            top >> SubPixelShift >= m_window.bottom ||
            std::min(edge.x1, edge.x2) >> SubPixelShift >= m_window.right)
            return;
        const std::int64_t dx = std::int64_t{edge.x2} - edge.x1;
        if (dx == 0)
            return WalkUpright(edge.x1, edge.y1, edge.y2);
        if (dx >= WidthLimit || dx <= -WidthLimit) {
            const int x = static_cast<int>((std::int64_t{edge.x1} + edge.x2) >> 1);
            const int y = static_cast<int>((std::int64_t{edge.y1} + edge.y2) >> 1);
            Walk({edge.x1, edge.y1, x, y});
            Walk({x, y, edge.x2, edge.y2});
            return;
        }
        if (edge.y1 >> SubPixelShift == edge.y2 >> SubPixelShift)
            WalkRow(edge.y1 >> SubPixelShift, edge.x1, edge.y1 & SubPixelMask, edge.x2,
                    edge.y2 & SubPixelMask);
        else
            WalkRows(edge, static_cast<int>(dx));
    }

private:
    /// An edge along a column, left of the window's right side.
    void WalkUpright(int x, int y1, int y2)
    {
        int column = x >> SubPixelShift;
        int doubleFraction = 2 * (x & SubPixelMask);
        if (column < m_window.left) {
            column = m_window.left;
            doubleFraction = 0;
        }
        const int sign = y2 > y1 ? 1 : -1;
        const int top = std::max(std::min(y1, y2), m_window.top * SubPixelScale);
        const int bottom = std::min(std::max(y1, y2), m_window.bottom * SubPixelScale);
        for (int y = top, row = top >> SubPixelShift; y < bottom; ++row) {
            const int next = std::min(bottom, (row + 1) * SubPixelScale);
            const int cover = sign * (next - y);
            m_sink.AddCell(column, row, cover, doubleFraction * cover);
            y = next;
        }
    }

    /// An edge that crosses at least one row boundary. Products of dx, which is below WidthLimit,
    /// and heights up to the guard box's fit an int.
    void WalkRows(const Edge& edge, int dx)
    {
        const bool down = edge.y2 > edge.y1;
        const int step = down ? 1 : -1;
        const int rowEnd = down ? SubPixelScale : 0; // where an edge leaves a row,
        const int rowStart = SubPixelScale - rowEnd; // and enters it
        const int dy = down ? edge.y2 - edge.y1 : edge.y1 - edge.y2;
        const int firstRow = edge.y1 >> SubPixelShift;
        const int lastRow = edge.y2 >> SubPixelShift;
        const int firstFraction = edge.y1 & SubPixelMask;
        const int start = (down ? SubPixelScale - firstFraction : firstFraction) * dx;

        // x where the edge leaves row firstRow + i·step is
        // edge.x1 + floor((start + 256·dx·i) / dy).
        const int skipped =
            std::max(0, down ? m_window.top - firstRow : firstRow - (m_window.bottom - 1));
        const FloorDivision<int> leaving =
            skipped < 2 ? FloorDivision<int>(start, dy)
                        : FloorDivision<int>(FloorDivision<std::int64_t>(
                              start + std::int64_t{SubPixelScale} * dx * (skipped - 1), dy));
        int row = firstRow + skipped * step;
        int x = edge.x1 + leaving.quotient;
        if (skipped == 0) {
            WalkRow(row, edge.x1, firstFraction, x, rowEnd);
            row += step;
        }
        const auto inWindow = [&] { return down ? row < m_window.bottom : row >= m_window.top; };
        if (row != lastRow) {
            FloorLine<int> leave(leaving, SubPixelScale * dx, dy);
            for (; row != lastRow && inWindow(); row += step) {
                leave.Advance();
                const int next = edge.x1 + leave.GetValue();
                WalkRow(row, x, rowStart, next, rowEnd);
                x = next;
            }
        }
        if (row == lastRow && inWindow())
            WalkRow(row, x, rowStart, edge.x2, edge.y2 & SubPixelMask);
    }

    /// The part of an edge within one row of the window; y1 and y2 run from 0 to 256 in the row.
    void WalkRow(int row, int x1, int y1, int x2, int y2)
    {
        if (y1 == y2)
            return;
        const int first = x1 >> SubPixelShift;
        const int last = x2 >> SubPixelShift;
        if (first == last) {
            if (first >= m_window.right)
                return;
            if (first >= m_window.left)
                m_sink.AddCell(first, row, y2 - y1,
                               ((x1 & SubPixelMask) + (x2 & SubPixelMask)) * (y2 - y1));
            else
                m_sink.AddCell(m_window.left, row, y2 - y1, 0);
        } else if (std::max(first, last) < m_window.left) {
            m_sink.AddCell(m_window.left, row, y2 - y1, 0);
        } else if (std::min(first, last) < m_window.right) {
            WalkCells(row, x1, y1, x2, y2);
        }
    }

    /// A part that crosses at least one column boundary, somewhere in the window.
    void WalkCells(int row, int x1, int y1, int x2, int y2)
    {
        const bool right = x2 > x1;
        const int step = right ? 1 : -1;
        const int cellEnd = right ? SubPixelScale : 0;
        const int first = x1 >> SubPixelShift;
        const int last = x2 >> SubPixelShift;
        const int firstFraction = x1 & SubPixelMask;
        const int height = y2 - y1;
        const int width = right ? x2 - x1 : x1 - x2;
        const int start = (right ? SubPixelScale - firstFraction : firstFraction) * height;

        // y where the edge leaves cell first + i·step is y1 + floor((start + 256·height·i) /
        // width).
        const int rise = SubPixelScale * height;
        const int skipped =
            std::max(0, right ? m_window.left - first : first - (m_window.right - 1));
        const FloorDivision<int> leaving(start + rise * std::max(0, skipped - 1), width);
        int cell = first + skipped * step;
        int y = y1 + leaving.quotient;
        if (skipped == 0) {
            m_sink.AddCell(cell, row, y - y1, (firstFraction + cellEnd) * (y - y1));
            cell += step;
        } else if (right && y != y1) {
            m_sink.AddCell(m_window.left, row, y - y1, 0);
        }
        if (cell != last) {
            FloorLine<int> leave(leaving, rise, width);
            for (; cell != last; cell += step) {
                if (right ? cell >= m_window.right : cell < m_window.left)
                    break;
                leave.Advance();
                const int next = y1 + leave.GetValue();
                m_sink.AddCell(cell, row, next - y, SubPixelScale * (next - y));
                y = next;
            }
        }
        if (!right && cell < m_window.left)
            m_sink.AddCell(m_window.left, row, y2 - y, 0);
        else if (cell == last && cell >= m_window.left && cell < m_window.right)
            m_sink.AddCell(cell, row, y2 - y,
                           ((x2 & SubPixelMask) + SubPixelScale - cellEnd) * (y2 - y));
    }

    Kernel::RectT<int> m_window;
    Sink& m_sink;
};

} // namespace Renderer::Coverage
