// The bitmap target of 16-bit RGBA: its one instantiation.

#include <renderer/core/blend/BlendTable.h>
#include <renderer/core/RenderTargetFactory.h>
#include <renderer/core/span/PopulatorFactoryImpl.h>
#include <renderer/core/TypedBitmapRenderTarget.h>

namespace Renderer {

template class PopulatorFactory<PixProcessor_RGBA16>;
template class PopulatorFactory<PixProcessor_RGBA16_Alpha>;
template class TypedBitmapRenderTarget<Raster::Red16, Raster::Green16, Raster::Blue16,
                                       Raster::Alpha16, Raster::X5, PixProcessor_RGBA16,
                                       PixProcessor_RGBA16_Alpha, RenderTargetBlenderRGBA16>;

BitmapRenderTarget*
RenderTargetFactory::CreateRGBA16RenderTarget(const Raster::ICCManager::ICCProfileSet& profiles)
{
    return new TargetOf<Raster::PixelRGBA16>(profiles);
}

} // namespace Renderer
