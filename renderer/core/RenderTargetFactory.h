#pragma once

#include <raster/ICCManager.h>
#include <renderer/Export.h>

namespace Renderer {

class BitmapRenderTarget;

/// Makes bitmap targets of one pixel format each, without a buffer. The raw pointers go straight
/// into a Counted.
struct RENDERER_EXPORT RenderTargetFactory
{
    static BitmapRenderTarget*
    CreateRGBA8RenderTarget(const Raster::ICCManager::ICCProfileSet& profiles);
};

} // namespace Renderer
