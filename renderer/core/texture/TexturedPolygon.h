#pragma once

#include <array>
#include <cstdint>

#include <kernel/Rect.h>
#include <renderer/core/texture/CVertex.h>

namespace Renderer::Texture {

/// A piece of a brush stroke.
struct TexturedPolygon
{
    std::array<CVertex, 4> corners;
    /// Its size across the stroke, in device pixels.
    float width;
    /// Which size of the texture it is drawn with.
    std::uint32_t level;
    /// Stamps: how often it is laid over itself before it is painted. It then stands for
    /// 2^doublings stamps in its place.
    std::uint8_t doublings;
    /// How far along the stroke it begins and ends, in weights.
    float begin;
    float end;
    /// Where its run begins, and the run's length if it is closed, else 0; likewise.
    float runStart;
    float loop;
    Kernel::RectT<int> bounds; ///< the pixels that it reaches into
};

} // namespace Renderer::Texture
