// The bitmap target of 8-bit RGBA: its one instantiation.

#include <renderer/core/blend/BlendTable.h>
#include <renderer/core/RenderTargetFactory.h>
#include <renderer/core/span/PopulatorFactoryImpl.h>
#include <renderer/core/TypedBitmapRenderTarget.h>

namespace Renderer {

template class PopulatorFactory<PixProcessor_RGBA>;
template class PopulatorFactory<PixProcessor_RGBA_Alpha>;
template class TypedBitmapRenderTarget<Raster::Red8, Raster::Green8, Raster::Blue8, Raster::Alpha8,
                                       Raster::X5, PixProcessor_RGBA, PixProcessor_RGBA_Alpha,
                                       RenderTargetBlenderRGBA>;

BitmapRenderTarget*
RenderTargetFactory::CreateRGBA8RenderTarget(const Raster::ICCManager::ICCProfileSet& profiles)
{
    return new TargetOf<Raster::PixelRGBA8>(profiles);
}

} // namespace Renderer
