#pragma once

#include <functional>

#include <kernel/Rect.h>
#include <raster/Format.h>
#include <raster/ICCManager.h>
#include <renderer/core/BitmapRenderTarget.h>
#include <renderer/paint/FillDescriptorConst.h>

#include "Element.h"
#include "Length.h"
#include "TransformList.h"

namespace Svg {

/// Draws the children of an element, in the style that it has at its place in the document, on a
/// target whose coordinates are theirs.
using ContentDrawer =
    std::function<void(Renderer::RenderTarget&, const Element&, const LengthContext&)>;

/// Pixels that are drawn beside a target, to become a paint or a mask on it.
class Offscreen
{
public:
    /// Pictures that are drawn for one another nest no deeper than this.
    static constexpr int MaxDepth = 12;

    /// The whole pixels of a target's device that a rectangle in its logical coordinates touches,
    /// within the device clip. May be empty.
    static Kernel::RectT<int> FindPixels(const Renderer::RenderTarget& target,
                                         const Kernel::RectT<double>& rect);

    /// A target that draws as \p model does: the same tolerance, smoothing and abort flag.
    /// \param rect the pixels of the device that it has; they start transparent.
    /// \return null when the rectangle is empty or too large, or the format is not drawn in.
    static Kernel::Counted<Renderer::BitmapRenderTarget>
    MakeTarget(const Renderer::RenderTarget& model, const Kernel::RectT<int>& rect,
               Raster::Format format, const Raster::ICCManager::ICCProfileSet& profiles);

    /// As above in the model's own format and profiles; in RGBA8 where there is no such target.
    static Kernel::Counted<Renderer::BitmapRenderTarget>
    MakeTarget(const Renderer::RenderTarget& model, const Kernel::RectT<int>& rect);

    /// Pixels as a paint that shows them where they were drawn, and nothing elsewhere.
    /// \param target whose current transform must be the one in force when the paint is used.
    static Renderer::FillDescriptorConst
    MakeFill(const Renderer::RenderTarget& target, const Kernel::RectT<int>& rect,
             const Kernel::Counted<const Raster::DynamicBitmap>& bitmap);
};

} // namespace Svg
