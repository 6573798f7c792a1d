#pragma once

#include <raster/Pixel.h>
#include <renderer/core/blend/SpanBlend.h>

namespace Renderer {

/// The blend functions of a pixel type, one entry per FillBlendMode::BlendMode, in order.
///
/// All of them take premultiplied pixels and leave a destination pixel's bytes as they are where
/// the coverage or the mask is 0. Integer colour above its alpha counts as equal to it. In float
/// pixels, input that is not finite counts as 0, alpha is kept in 0…1, and colour may leave 0…1 in
/// the modes whose formula still has a meaning there (Blending::KeepsUnboundedColour). A gamma
/// ratio that is negative or not finite counts as 1.
///
/// The bytes written depend on the pixels alone: not on the form used (run or mask), the place in
/// the span, or the processor. A mask of 255 equals no mask. \tparam PixelT a pixel type with
/// alpha; instantiated in BlendTable<format>.cpp.
template<class PixelT>
const SpanBlendTable& GetSpanBlendTable();

/// The blending policy of a bitmap target: its pixel type and the blend functions for it.
template<class PixelT>
struct RenderTargetBlender
{
    using Pixel = PixelT;

    /// The blend functions of the pixel type; lives as long as the process.
    static const SpanBlendTable& GetTable() { return GetSpanBlendTable<PixelT>(); }
};

using RenderTargetBlenderRGBA = RenderTargetBlender<Raster::PixelRGBA8>;

extern template const SpanBlendTable& GetSpanBlendTable<Raster::PixelRGBA8>();

} // namespace Renderer
