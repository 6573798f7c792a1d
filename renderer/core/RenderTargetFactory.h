#pragma once

#include <raster/ICCManager.h>
#include <renderer/Export.h>

namespace Renderer {

class BitmapRenderTarget;

/// Makes bitmap targets of one pixel format each, without a buffer. The raw pointers go straight
/// into a Counted.
struct RENDERER_EXPORT RenderTargetFactory
{
    using Profiles = Raster::ICCManager::ICCProfileSet;

    static BitmapRenderTarget* CreateRGBA8RenderTarget(const Profiles& profiles);
    static BitmapRenderTarget* CreateRGBA16RenderTarget(const Profiles& profiles);
    static BitmapRenderTarget* CreateIA8RenderTarget(const Profiles& profiles);
    static BitmapRenderTarget* CreateIA16RenderTarget(const Profiles& profiles);
    static BitmapRenderTarget* CreateCMYKA8RenderTarget(const Profiles& profiles);
    static BitmapRenderTarget* CreateLABA16RenderTarget(const Profiles& profiles);
    static BitmapRenderTarget* CreateRGBAUFRenderTarget(const Profiles& profiles);
    /// An RGBA8 target that draws every shape as a black outline of weight 1, in logical units, and
    /// ignores paint, opacity, clip paths, masks and groups.
    static BitmapRenderTarget* CreateWireframeRenderTarget(const Profiles& profiles);
};

} // namespace Renderer
