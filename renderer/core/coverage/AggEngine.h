#pragma once

#include <agg_rasterizer_sl_clip.h>
#include <agg_rendering_buffer.h>

namespace AGG = agg;

namespace Renderer {

/// The parts of AGG that the rasteriser runs on.
///
/// The clipper cuts edges in doubles at a guard box and makes them fixed point. Cells are made and
/// kept by stores of ours, whose arithmetic is that of AGG's to the bit: AGG's own store drops what
/// exceeds its limit, and cutting edges at the clip box, which would keep it below that, moves
/// them, so that a page drawn in tiles would differ from one drawn at once.
struct AggEngine
{
    AGG::row_accessor<unsigned char> destination;
    AGG::row_accessor<unsigned char> mask;
};

} // namespace Renderer
