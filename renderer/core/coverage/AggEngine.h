#pragma once

#include <agg_rasterizer_cells_aa.h>
#include <agg_rasterizer_scanline_aa.h>
#include <agg_rasterizer_sl_clip.h>
#include <agg_rendering_buffer.h>

namespace AGG = agg;

namespace Renderer {

/// The parts of AGG that the rasteriser runs on.
///
/// The clipper cuts edges in doubles and makes them fixed point; anti-aliased drawing then sweeps
/// them with a coverage store of ours, whose arithmetic is that of AGG's cells. Aliased drawing
/// needs the cells themselves, which only AGG's cell store hands out.
struct AggEngine
{
    /// The cells of an aliased drawing are as many as the visible edges are long; 2¹⁶ blocks of
    /// 4096 are beyond what the device clip can hold.
    static constexpr unsigned CellBlockLimit = 1U << 16;

    AGG::rasterizer_cells_aa<AGG::cell_aa> cells{CellBlockLimit};
    AGG::row_accessor<unsigned char> destination;
    AGG::row_accessor<unsigned char> mask;
};

} // namespace Renderer
