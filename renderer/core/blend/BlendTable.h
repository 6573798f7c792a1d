#pragma once

#include <raster/Pixel.h>
#include <renderer/core/blend/SpanBlend.h>

namespace Renderer {

/// The blending policy of a bitmap target: the blend functions of its pixel type, one entry per
/// FillBlendMode::BlendMode, in order. The tables live as long as the process.
///
/// All of them take premultiplied pixels and leave a destination pixel's bytes as they are where
/// the coverage or the mask is 0. Integer colour above its alpha counts as equal to it. In float
/// pixels, input that is not finite counts as 0, alpha is kept in 0…1, and colour may leave 0…1 in
/// the modes whose formula still has a meaning there (Blending::KeepsUnboundedColour). A gamma
/// ratio that is negative or not finite counts as 1.
///
/// The bytes written depend on the pixels alone: not on the form used (run or mask), the place in
/// the span, or the processor. A mask of 255 equals no mask.
/// \tparam PixelT a pixel type with alpha; instantiated in BlendTable<format>.cpp.
template<class PixelT>
class RenderTargetBlender
{
public:
    using Pixel = PixelT;

    /// The functions that suit this processor.
    /// \param alphaOnly of the forms that change alpha alone and leave the bytes of the colour
    ///        channels: by Erase and Mask as those do, by all other modes as Normal does.
    static const SpanBlendSet& GetBlends(bool alphaOnly);
    static const SpanBlendTable& GetTable() { return GetBlends(false).modes; }

    /// \name The builds that GetBlends chooses from
    /// @{
    static const SpanBlendSet& GetBaselineBlends(bool alphaOnly);
    /// Null where the processor cannot run it.
    static const SpanBlendSet* GetWideBlends(bool alphaOnly);
    /// @}
};

using RenderTargetBlenderRGBA = RenderTargetBlender<Raster::PixelRGBA8>;
using RenderTargetBlenderRGBA16 = RenderTargetBlender<Raster::PixelRGBA16>;
using RenderTargetBlenderIA = RenderTargetBlender<Raster::PixelIA8>;
using RenderTargetBlenderIA16 = RenderTargetBlender<Raster::PixelIA16>;
using RenderTargetBlenderCMYKA = RenderTargetBlender<Raster::PixelCMYKA8>;
using RenderTargetBlenderLABA16 = RenderTargetBlender<Raster::PixelLABA16>;
using RenderTargetBlenderRGBAUF = RenderTargetBlender<Raster::PixelRGBAUF>;

extern template class RenderTargetBlender<Raster::PixelRGBA8>;
extern template class RenderTargetBlender<Raster::PixelRGBA16>;
extern template class RenderTargetBlender<Raster::PixelIA8>;
extern template class RenderTargetBlender<Raster::PixelIA16>;
extern template class RenderTargetBlender<Raster::PixelCMYKA8>;
extern template class RenderTargetBlender<Raster::PixelLABA16>;
extern template class RenderTargetBlender<Raster::PixelRGBAUF>;

} // namespace Renderer
