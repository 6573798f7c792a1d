#pragma once

#include <kernel/Tiles.h>
#include <renderer/core/blend/SpanBlend.h>

namespace Renderer {

/// Memory in which spans are made on their way to the destination.
struct SpanRoom
{
    unsigned char* pixels; ///< holds the longest span
    unsigned char* covers; ///< a byte per pixel of it
};

/// The room for spans of a tile: small enough for the stack, so that each thread has its own.
struct TileRoom
{
    alignas(64) unsigned char pixels[Kernel::TileGrid::Side * SpanBlend::LargestPixel];
    alignas(64) unsigned char covers[Kernel::TileGrid::Side];

    SpanRoom Get() noexcept { return {pixels, covers}; }
};

} // namespace Renderer
