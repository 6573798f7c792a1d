#pragma once

#include <cstdint>
#include <optional>

#include <raster/AffineTransform.h>
#include <renderer/core/blend/Processor.h>
#include <renderer/core/span/PopulatorStore.h>
#include <renderer/paint/FillGradient.h>

namespace Renderer {

/// Where device pixels lie on a gradient: its type, placement and spread, whatever the pixel
/// format. A parameter is computed from the pixel's own centre, so that it does not depend on the
/// span that holds the pixel.
class GradientGeometry
{
public:
    using Params = Raster::AffineTransform::Params;

    /// Pixels are worked on in blocks of at most this many, and results are written in groups:
    /// places for GroupLength − 1 more than asked for must exist, up to a block.
    static constexpr unsigned BlockLength = 256;
    static constexpr unsigned GroupLength = 8;

    /// \param store holds what the geometry refers to.
    /// \param useWideCode which build of the functions runs; they give the same bits.
    /// \return nothing when the gradient has collapsed: its vector, radius or map has no extent.
    static std::optional<GradientGeometry> Make(const FillGradient& fill,
                                                const Params& fillToDevice, PopulatorStore& store,
                                                bool useWideCode = Blending::HasWideCode());

    /// Whether all pixels of a row have one parameter.
    bool IsConstantAlongRows() const noexcept { return m_isConstantAlongRows; }

    /// The parameters, folded by the spread, of \p count ≤ BlockLength pixels from (x, y) on.
    void FindParameters(int x, int y, unsigned count, double* t) const noexcept
    {
        m_functions->findParameters(m_positions, x, y, count, t);
    }

    /// Cells that a GradientTable has on either side of [0, 1): the nearest one, and one for all
    /// that lies beyond.
    static constexpr int OuterCells = 2;

    /// The cells of a GradientTable in which those parameters lie. May be off by rounding errors of
    /// float, always less than LargestCellError of a cell.
    void FindCells(int x, int y, unsigned count, int cellsPerUnit,
                   std::int32_t* cells) const noexcept
    {
        m_functions->findCells(m_positions, x, y, count, cellsPerUnit, cells);
    }

    static constexpr double LargestCellError = 0.25;

    /// The loops of one kind of geometry and spread, compiled for one kind of processor.
    struct Functions
    {
        void (*findParameters)(const void* positions, int x, int y, unsigned count, double* t);
        void (*findCells)(const void* positions, int x, int y, unsigned count, int cellsPerUnit,
                          std::int32_t* cells);
    };

private:
    GradientGeometry(const void* positions, const Functions& functions,
                     bool isConstantAlongRows) noexcept
        : m_positions(positions),
          m_functions(&functions),
          m_isConstantAlongRows(isConstantAlongRows)
    {}

    template<class Positions>
    static std::optional<GradientGeometry> Finish(const std::optional<Positions>& positions,
                                                  FillGradient::Spread spread,
                                                  PopulatorStore& store, bool useWideCode);

    const void* m_positions;
    const Functions* m_functions;
    bool m_isConstantAlongRows;
};

} // namespace Renderer
