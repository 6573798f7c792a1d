#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include <renderer/core/blend/PixelWord.h>
#include <renderer/core/span/GradientGeometry.h>
#include <renderer/core/span/GradientRamp.h>

namespace Renderer {

/// A ramp as a look-up table, for 8-bit channels. Immutable.
///
/// Next to the cells that divide [0, 1) lie two more on either side: the outer ones hold all that
/// is further out, so that hard edges at the ends do not concern what is painted far from them.
///
/// A cell holds the pixel of its middle if no colour of the cell, nor of the margin around it by
/// which GradientGeometry may miss it, is more than half a step away, so that a look-up is at most
/// one step from the exact pixel. Where that cannot be (next to hard edges, on slopes too steep)
/// the cell holds a mark instead: its parameters must be computed exactly and evaluated by the
/// ramp.
template<class Processor>
class GradientTable
{
public:
    using Pixel = typename Processor::Pixel;
    using Ramp = GradientRamp<Processor>;

    explicit GradientTable(const Ramp& ramp)
        : m_cellsPerUnit(GetSize(ramp)),
          m_pixels(static_cast<std::size_t>(m_cellsPerUnit) + 2 * OuterCells)
    {
        FillPixels(ramp);
        MarkStops(ramp);
        MarkSegments(ramp);
    }

    /// Cells per unit of t.
    int GetCellsPerUnit() const noexcept { return m_cellsPerUnit; }

    /// The pixels of \p count cells. \return whether all are valid; if not, IsMark tells which.
    bool LookUp(const std::int32_t* cells, unsigned count, Pixel* out) const noexcept
    {
        CopyPixels(cells, count, out);
        return !m_hasMarks || !HasMarks(out, count);
    }

    /// Whether what LookUp gave is no pixel: no premultiplied colour is above its alpha.
    static bool IsMark(const Pixel& pixel) noexcept { return pixel[0] > pixel.Alpha(); }

    std::size_t GetByteSize() const noexcept { return m_pixels.capacity() * sizeof(Pixel); }

private:
    using Segment = typename Ramp::Segment;
    using FloatPixel = typename Processor::FloatPixel;

    static constexpr int OuterCells = GradientGeometry::OuterCells;
    static constexpr int SmallestSize = 64;
    static constexpr int LargestSize = 8192;
    /// From a cell's middle to the end of its margin, in cells.
    static constexpr double Reach = 0.5 + GradientGeometry::LargestCellError;
    static constexpr double HalfStep = 0.5 / static_cast<double>(Pixel::Max);

    /// In words where there are some, since many processors are slow to gather bytes, and in whole
    /// vectors: whoever reads vectors of what was just written as words has to wait for it.
    void CopyPixels(const std::int32_t* cells, unsigned count, Pixel* out) const noexcept
    {
        const auto at = [&](unsigned i) -> const Pixel& {
            return m_pixels[static_cast<std::uint32_t>(cells[i])];
        };
        using Word = typename Blending::WordOfSize<sizeof(Pixel)>::Type;
        unsigned i = 0;
        if constexpr (!std::is_void_v<Word>) {
            using Words [[gnu::vector_size(16)]] = Word;
            constexpr unsigned length = sizeof(Words) / sizeof(Word);
            for (; i + length <= count; i += length) {
                Words words{}; // compilers that do not unroll would warn otherwise
#pragma GCC unroll 8
                for (unsigned k = 0; k < length; ++k)
                    words[k] = std::bit_cast<Word>(at(i + k));
                std::memcpy(static_cast<void*>(out + i), &words, sizeof(words));
            }
        }
        for (; i < count; ++i)
            out[i] = at(i);
    }

    static bool HasMarks(const Pixel* pixels, unsigned count) noexcept
    {
        using Word = typename Blending::WordOfSize<sizeof(Pixel)>::Type;
        if constexpr (std::is_void_v<Word>) {
            return std::any_of(pixels, pixels + count, IsMark);
        } else { // as words it becomes vector code
            const auto mark = std::bit_cast<Word>(MakeMark());
            unsigned found = 0;
            for (unsigned i = 0; i < count; ++i) {
                Word word;
                std::memcpy(&word, pixels[i].channels.data(), sizeof(word));
                found |= word == mark ? 1U : 0U;
            }
            return found != 0;
        }
    }

    static constexpr Pixel MakeMark() noexcept
    {
        Pixel pixel{};
        pixel[0] = Pixel::Max;
        return pixel;
    }

    /// As many cells as the steepest segment needs that the largest table resolves.
    static int GetSize(const Ramp& ramp) noexcept
    {
        double steepest = 0.0;
        for (std::size_t i = 0; i < ramp.GetCount(); ++i) {
            const double slope = GetLargestSlope(ramp, ramp.GetSegment(i));
            if (Reach * slope <= HalfStep * LargestSize)
                steepest = std::max(steepest, slope);
        }
        const double size =
            std::clamp(Reach / HalfStep * steepest, double{SmallestSize}, double{LargestSize});
        return static_cast<int>(std::bit_ceil(static_cast<unsigned>(std::ceil(size))));
    }

    /// The change of a premultiplied channel over a change of t, at most: that of a channel by
    /// itself, or twice that where alpha may change as well, whichever the channel is, so that
    /// alpha alone has the table of full colours.
    static double GetLargestSlope(const Ramp& ramp, const Segment& segment) noexcept
    {
        float change = 0.0F;
        for (const float channel : segment.change)
            change = std::max(change, std::abs(channel));
        if (!(change > 0.0F))
            return 0.0;
        return (ramp.IsOpaque() ? 1.0 : 2.0) * static_cast<double>(change) * segment.scale *
               segment.mapping.GetLargestSlope();
    }

    /// How far the premultiplied channels between two colours may be apart. The way is monotone in
    /// each channel, and |c·a − c′·a′| ≤ |c − c′|·max(a, a′) + |a − a′|·max(c, c′).
    static float GetLargestChange(const FloatPixel& a, const FloatPixel& b) noexcept
    {
        const float alpha = std::max(a.back(), b.back());
        const float alphaChange = std::abs(a.back() - b.back());
        float change = alphaChange;
        for (std::size_t i = Processor::FirstChannel; i < Pixel::ColourCount; ++i)
            change = std::max(change,
                              std::abs(a[i] - b[i]) * alpha + alphaChange * std::max(a[i], b[i]));
        return change;
    }

    int GetLastCell() const noexcept
    {
        return m_cellsPerUnit + 2 * OuterCells - 1;
    }

    /// The cell that \p t lies in.
    int GetCell(double t) const noexcept
    {
        return std::clamp(static_cast<int>(t * m_cellsPerUnit + OuterCells), 0, GetLastCell());
    }

    void FillPixels(const Ramp& ramp)
    {
        constexpr unsigned BlockLength = Processor::BlockLength;
        const auto size = static_cast<unsigned>(m_pixels.size());
        for (unsigned begin = 0; begin < size; begin += BlockLength) {
            double middles[BlockLength];
            const unsigned count = std::min(BlockLength, size - begin);
            for (unsigned i = 0; i < count; ++i)
                middles[i] = GetMiddle(static_cast<int>(begin + i));
            ramp.Evaluate(middles, count, m_pixels.data() + begin);
        }
    }

    /// The parameter at a place in between cells, counted in cells.
    double GetPosition(double cell) const noexcept
    {
        return (cell - OuterCells) / m_cellsPerUnit;
    }

    double GetMiddle(int cell) const noexcept
    {
        return std::min(GetPosition(cell + 0.5), 1.0);
    }

    /// Marks cells near stops where the colours there differ too much.
    void MarkStops(const Ramp& ramp) noexcept
    {
        for (std::size_t i = 1; i < ramp.GetCount(); ++i) {
            const int cell = GetCell(ramp.GetSegment(i).start);
            MarkCells(ramp, cell - 1, cell + 1);
        }
    }

    /// Marks the cells of segments that are too steep.
    void MarkSegments(const Ramp& ramp) noexcept
    {
        for (std::size_t i = 1; i + 1 < ramp.GetCount(); ++i) {
            const Segment& segment = ramp.GetSegment(i);
            if (Reach * GetLargestSlope(ramp, segment) > HalfStep * m_cellsPerUnit)
                MarkCells(ramp, GetCell(segment.start), GetCell(ramp.GetSegment(i + 1).start));
        }
    }

    void MarkCells(const Ramp& ramp, int first, int last) noexcept
    {
        last = std::min(last, GetLastCell());
        for (int cell = std::max(first, 0); cell <= last; ++cell) {
            if (IsFlat(ramp, cell))
                continue;
            m_pixels[static_cast<std::size_t>(cell)] = MakeMark();
            m_hasMarks = true;
        }
    }

    /// Whether a cell and its margin are of one colour, as far as steps can tell. Colours are
    /// monotone in between stops, so that those at the ends and on both sides of stops tell.
    bool IsFlat(const Ramp& ramp, int cell) const noexcept
    {
        const double begin = GetPosition(cell + 0.5 - Reach);
        const double end = GetPosition(cell + 0.5 + Reach);
        const double middle = GetMiddle(cell);
        std::size_t index = ramp.Find(middle, 0);
        const FloatPixel colour = Ramp::GetColour(ramp.GetSegment(index), middle);
        const auto isNear = [&](const Segment& segment, double t) {
            return GetLargestChange(colour, Ramp::GetColour(segment, t)) <=
                   static_cast<float>(HalfStep);
        };
        index = ramp.Find(begin, 0);
        if (!isNear(ramp.GetSegment(index), begin))
            return false;
        for (; index + 1 < ramp.GetCount(); ++index) {
            const double stop = ramp.GetSegment(index + 1).start;
            if (stop > end)
                break;
            if (!isNear(ramp.GetSegment(index), stop) || !isNear(ramp.GetSegment(index + 1), stop))
                return false;
        }
        return isNear(ramp.GetSegment(index), end);
    }

    int m_cellsPerUnit;
    std::vector<Pixel> m_pixels;
    bool m_hasMarks = false;
};

} // namespace Renderer
