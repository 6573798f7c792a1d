#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <renderer/core/span/GradientRamp.h>

namespace Renderer {

/// A ramp with a look-up table in front of it, for 8-bit channels.
///
/// A cell holds the pixel of its middle if no colour of the cell is more than half a step away from
/// it, so that a look-up is at most one step from the exact pixel; a cell with a hard edge or other
/// stop inside it, or that is too steep, sends its look-ups to the ramp. Cells are filled when they
/// are first looked up: a small shape costs no more than its pixels, and what a cell holds depends
/// on the gradient alone. Serves one thread.
template<class Processor>
class GradientTable
{
public:
    using Pixel = typename Processor::Pixel;

    /// The table's memory lives in \p store.
    GradientTable(const GradientRamp<Processor>& ramp, PopulatorStore& store)
        : m_ramp(ramp),
          m_cellsPerUnit(GetSize(ramp)),
          m_length(1.0 / m_cellsPerUnit),
          m_pixels(store.AllocateArray<Pixel>(static_cast<std::size_t>(m_cellsPerUnit) + 2)),
          m_states(store.AllocateArray<std::uint8_t>(static_cast<std::size_t>(m_cellsPerUnit) + 2))
    {
        std::memset(m_states, Empty, static_cast<std::size_t>(m_cellsPerUnit) + 2);
    }

    /// The premultiplied pixels of \p count ≤ 64 parameters within [−1, 1].
    void Evaluate(const double* t, unsigned count, Pixel* out) noexcept
    {
        std::int32_t cells[Processor::BlockLength];
        for (unsigned i = 0; i < count; ++i) {
            const auto cell = static_cast<std::int32_t>(t[i] * m_cellsPerUnit + 1.0);
            cells[i] = cell > 0 ? cell : 0;
        }
        unsigned others = 0;
        for (unsigned i = 0; i < count; ++i) {
            out[i] = m_pixels[cells[i]];
            others |= m_states[cells[i]] ^ static_cast<unsigned>(Ready);
        }
        if (others != 0)
            Complete(t, cells, count, out);
    }

    /// Cells per unit of t.
    int GetCellsPerUnit() const noexcept { return m_cellsPerUnit; }

private:
    enum State : std::uint8_t
    {
        Empty,
        Ready,
        Exact, // not resolved by a table
    };

    static constexpr int SmallestSize = 64;
    static constexpr int LargestSize = 4096;

    /// Four cells per step of the steepest segment that the largest table resolves.
    static int GetSize(const GradientRamp<Processor>& ramp) noexcept
    {
        double steepest = 0.0;
        for (std::size_t i = 0; i < ramp.GetCount(); ++i) {
            const auto& segment = ramp.GetSegment(i);
            double change = 0.0;
            for (const float channel : segment.change)
                change = std::max(change, std::abs(static_cast<double>(channel)));
            const double steps = change * segment.scale * static_cast<double>(Pixel::Max);
            if (steps <= LargestSize)
                steepest = std::max(steepest, steps);
        }
        const double size = std::clamp(4.0 * steepest, double{SmallestSize}, double{LargestSize});
        return static_cast<int>(std::bit_ceil(static_cast<unsigned>(size)));
    }

    void Complete(const double* t, const std::int32_t* cells, unsigned count, Pixel* out) noexcept
    {
        std::size_t segment = 0;
        for (unsigned i = 0; i < count; ++i) {
            const std::int32_t cell = cells[i];
            if (m_states[cell] == Empty)
                Fill(cell);
            out[i] = m_states[cell] == Ready ? m_pixels[cell] : m_ramp.GetPixel(t[i], segment);
        }
    }

    /// Cell 0 lies before t = 0, the last one begins at t = 1, the others divide [0, 1).
    void Fill(std::int32_t cell) noexcept
    {
        const double start = cell > 0 ? (cell - 1) * m_length : -1.0;
        const double end = cell > 0 ? cell * m_length : 0.0;
        const std::size_t index = m_ramp.Find(start, 0);
        const auto& segment = m_ramp.GetSegment(index);
        const bool isWhole =
            index + 1 == m_ramp.GetCount() || m_ramp.GetSegment(index + 1).start >= end;
        const auto middle = m_ramp.GetColour(segment, 0.5 * (start + end));
        m_pixels[cell] = Processor::Store(middle);
        m_states[cell] = isWhole && IsFlat(middle, m_ramp.GetColour(segment, start)) &&
                                 IsFlat(middle, m_ramp.GetColour(segment, end))
                             ? Ready
                             : Exact;
    }

    /// Whether no colour between the two is more than half a step from the first once
    /// premultiplied. The way is monotone in each channel, and |c·a − c′·a′| ≤ |c − c′|·max(a, a′)
    /// + |a − a′|·max(c, c′).
    static bool IsFlat(const typename Processor::FloatPixel& a,
                       const typename Processor::FloatPixel& b) noexcept
    {
        constexpr float HalfStep = 0.5F / static_cast<float>(Pixel::Max);
        const float alpha = std::max(a.back(), b.back());
        const float alphaChange = std::abs(a.back() - b.back());
        float change = alphaChange;
        for (std::size_t i = Processor::FirstChannel; i < Pixel::ColourCount; ++i)
            change = std::max(change,
                              std::abs(a[i] - b[i]) * alpha + alphaChange * std::max(a[i], b[i]));
        return change <= HalfStep;
    }

    const GradientRamp<Processor>& m_ramp;
    int m_cellsPerUnit;
    double m_length; // of a cell
    Pixel* m_pixels;
    std::uint8_t* m_states;
};

} // namespace Renderer
