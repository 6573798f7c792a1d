#pragma once

namespace Renderer::Texture {

/// A corner of a textured polygon.
struct CVertex
{
    double x; ///< where it lies on the page, in device pixels
    double y;
    float u; ///< its place on the texture: 0 … 1 from the left edge to the right one
    float v; ///< from the upper edge to the lower one
    float opacity = 1.0F;
};

} // namespace Renderer::Texture
