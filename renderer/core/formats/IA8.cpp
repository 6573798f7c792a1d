// The bitmap target of 8-bit grey: its one instantiation.

#include <renderer/core/blend/BlendTable.h>
#include <renderer/core/RenderTargetFactory.h>
#include <renderer/core/span/PopulatorFactoryImpl.h>
#include <renderer/core/TypedBitmapRenderTarget.h>

namespace Renderer {

template class PopulatorFactory<PixProcessor_IA>;
template class PopulatorFactory<PixProcessor_IA_Alpha>;
template class TypedBitmapRenderTarget<Raster::Intensity8, Raster::Alpha8, Raster::X3, Raster::X4,
                                       Raster::X5, PixProcessor_IA, PixProcessor_IA_Alpha,
                                       RenderTargetBlenderIA>;

BitmapRenderTarget*
RenderTargetFactory::CreateIA8RenderTarget(const Raster::ICCManager::ICCProfileSet& profiles)
{
    return new TargetOf<Raster::PixelIA8>(profiles);
}

} // namespace Renderer
