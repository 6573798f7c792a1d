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
};

} // namespace Renderer
