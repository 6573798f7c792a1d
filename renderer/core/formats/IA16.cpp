// The bitmap target of 16-bit grey: its one instantiation.

#include <renderer/core/blend/BlendTable.h>
#include <renderer/core/RenderTargetFactory.h>
#include <renderer/core/span/PopulatorFactoryImpl.h>
#include <renderer/core/TypedBitmapRenderTarget.h>

namespace Renderer {

template class PopulatorFactory<PixProcessor_IA16>;
template class PopulatorFactory<PixProcessor_IA16_Alpha>;
template class TypedBitmapRenderTarget<Raster::Intensity16, Raster::Alpha16, Raster::X3, Raster::X4,
                                       Raster::X5, PixProcessor_IA16, PixProcessor_IA16_Alpha,
                                       RenderTargetBlenderIA16>;

BitmapRenderTarget*
RenderTargetFactory::CreateIA16RenderTarget(const Raster::ICCManager::ICCProfileSet& profiles)
{
    return new TargetOf<Raster::PixelIA16>(profiles);
}

} // namespace Renderer
