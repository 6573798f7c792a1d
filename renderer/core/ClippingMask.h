#pragma once

#include <limits>

#include <kernel/Counted.h>
#include <kernel/Point.h>
#include <kernel/Rect.h>
#include <raster/AffineTransform.h>
#include <raster/DynamicBuffer.h>
#include <raster/Format.h>
#include <renderer/core/ClipPathStack.h>

namespace Renderer {

/// A mask in the resolution of the device: a byte per pixel that scales what is drawn. Default-made
/// it lets everything through.
struct ClippingMask
{
    /// M8; empty when everything or nothing gets through. Perhaps the application's own, and
    /// larger than what is needed of it.
    Kernel::Counted<const Raster::DynamicBuffer> buffer;
    /// The page pixel of the buffer's first.
    Kernel::PointT<int> origin{};
    /// Outside nothing gets through. Lies in the buffer if there is one.
    Kernel::RectT<int> rect{std::numeric_limits<int>::min(), std::numeric_limits<int>::min(),
                            std::numeric_limits<int>::max(), std::numeric_limits<int>::max()};
};

/// How a mask is shown.
struct MaskPlacement
{
    Kernel::RectT<double> rect;              ///< that the mask fills, logical
    Raster::AffineTransform::Params current; ///< from there to the device
    Raster::ResamplerType up;
    Raster::ResamplerType down;
};

/// Makes the mask that lets through what \p mask and \p within both do.
///
/// Masks of one channel are taken as they are; of grey formats the intensity times the alpha
/// counts, of colours the alpha. They are resampled like bitmaps, with clamped edges, and the
/// rectangle's own edges are anti-aliased. An M8 buffer that lies on whole pixels is shared, not
/// copied, as long as \p within lets everything through.
///
/// \param visible the pixels that can be drawn on; no more than these are made.
/// \param store for coverage.
/// \return a mask that lets nothing through where nothing can be seen, \p mask is null, the
///         rectangle empty, the map singular or something not finite, or no buffer can be had.
/// \throws std::bad_alloc when memory for the work is short.
ClippingMask MakeClippingMask(const Kernel::Counted<const Raster::DynamicBuffer>& mask,
                              const MaskPlacement& placement, const ClippingMask& within,
                              const Kernel::RectT<int>& visible, Coverage::CoverageStore& store);

} // namespace Renderer
