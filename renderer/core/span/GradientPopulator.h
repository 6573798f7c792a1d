#pragma once

#include <algorithm>
#include <utility>

#include <kernel/Counted.h>
#include <renderer/core/span/GradientColours.h>
#include <renderer/core/span/GradientGeometry.h>
#include <renderer/core/span/NoiseField.h>
#include <renderer/core/span/OrderedDither.h>

namespace Renderer {

/// Paints a gradient: where a block of pixels lies on it, then the colours there. A pixel's colour
/// does not depend on the span that holds it.
///
/// \tparam HasNoise adds the grain of the stops' noise amounts.
/// \tparam IsDithered dithers the colours, which are known exactly, into the format.
template<class ProcessorT, bool HasNoise, bool IsDithered = false>
class GradientPopulator
{
public:
    using Processor = ProcessorT;
    using Pixel = typename Processor::Pixel;
    using Colours = GradientColours<Processor>;

    /// \param geometry what it refers to must outlive the populator.
    GradientPopulator(const GradientGeometry& geometry,
                      Kernel::Counted<const Colours> colours) noexcept
        : m_geometry(geometry), m_colours(std::move(colours))
    {}

    bool IsOpaque() const noexcept { return m_colours->IsOpaque(); }

    void Populate(int x, int y, unsigned length, Pixel* out) const noexcept
    {
        if (!IsDithered && m_geometry.IsConstantAlongRows()) {
            PaintBlock(x, y, 1, out);
            std::fill_n(out + 1, length - 1, Pixel(*out));
        } else {
            ForBlocks(x, length, out, [&](int blockX, unsigned count, Pixel* block) {
                PaintBlock(blockX, y, count, block);
            });
        }
        if constexpr (HasNoise) {
            ForBlocks(x, length, out, [&](int blockX, unsigned count, Pixel* block) {
                AddNoise(blockX, y, count, block);
            });
        }
    }

private:
    static constexpr unsigned BlockLength = GradientGeometry::BlockLength;

    template<class Function>
    static void ForBlocks(int x, unsigned length, Pixel* out, Function function)
    {
        while (length > BlockLength) {
            function(x, BlockLength, out);
            x += static_cast<int>(BlockLength);
            out += BlockLength;
            length -= BlockLength;
        }
        function(x, length, out);
    }

    void PaintBlock(int x, int y, unsigned count, Pixel* out) const noexcept
    {
        if constexpr (IsDithered) {
            alignas(32) double t[BlockLength];
            alignas(32) float thresholds[BlockLength];
            m_geometry.FindParameters(x, y, count, t);
            OrderedDither::GetThresholds(x, y, count, thresholds);
            m_colours->GetRamp().EvaluateDithered(t, count, out, thresholds);
        } else if constexpr (Processor::UsesTables) {
            alignas(32) std::int32_t cells[BlockLength];
            const auto& table = m_colours->GetTable();
            m_geometry.FindCells(x, y, count, table.GetCellsPerUnit(), cells);
            if (!table.LookUp(cells, count, out))
                ReplaceMarks(x, y, count, out);
        } else {
            alignas(32) double t[BlockLength];
            m_geometry.FindParameters(x, y, count, t);
            m_colours->GetRamp().Evaluate(t, count, out);
        }
    }

    /// Evaluates what the table could not tell.
    [[gnu::noinline]] void ReplaceMarks(int x, int y, unsigned count, Pixel* out) const noexcept
    {
        std::size_t segment = 0;
        for (unsigned i = 0; i < count; ++i) {
            if (!Colours::Table::IsMark(out[i]))
                continue;
            double t[GradientGeometry::GroupLength];
            m_geometry.FindParameters(x + static_cast<int>(i), y, 1, t);
            out[i] = m_colours->GetRamp().GetPixel(t[0], segment);
        }
    }

    void AddNoise(int x, int y, unsigned count, Pixel* out) const noexcept
    {
        double t[BlockLength];
        float amounts[BlockLength];
        m_geometry.FindParameters(x, y, count, t);
        m_colours->GetRamp().EvaluateNoise(t, count, amounts);
        for (unsigned i = 0; i < count; ++i)
            NoiseShader<Processor>(amounts[i]).Apply(x + static_cast<int>(i), y, 1, out + i);
    }

    GradientGeometry m_geometry;
    Kernel::Counted<const Colours> m_colours;
};

} // namespace Renderer
