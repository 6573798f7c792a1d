// The bitmap target of 8-bit CMYK: its one instantiation.

#include <renderer/core/blend/BlendTable.h>
#include <renderer/core/RenderTargetFactory.h>
#include <renderer/core/span/PopulatorFactoryImpl.h>
#include <renderer/core/TypedBitmapRenderTarget.h>

namespace Renderer {

template class PopulatorFactory<PixProcessor_CMYKA>;
template class PopulatorFactory<PixProcessor_CMYKA_Alpha>;
template class TypedBitmapRenderTarget<Raster::Cyan8, Raster::Magenta8, Raster::Yellow8,
                                       Raster::Black8, Raster::Alpha8, PixProcessor_CMYKA,
                                       PixProcessor_CMYKA_Alpha, RenderTargetBlenderCMYKA>;

BitmapRenderTarget*
RenderTargetFactory::CreateCMYKA8RenderTarget(const Raster::ICCManager::ICCProfileSet& profiles)
{
    return new TargetOf<Raster::PixelCMYKA8>(profiles);
}

} // namespace Renderer
