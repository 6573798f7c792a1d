// The bitmap target of unbounded float RGBA: its one instantiation.

#include <renderer/core/blend/BlendTable.h>
#include <renderer/core/RenderTargetFactory.h>
#include <renderer/core/span/PopulatorFactoryImpl.h>
#include <renderer/core/TypedBitmapRenderTarget.h>

namespace Renderer {

template class PopulatorFactory<PixProcessor_RGBAUF>;
template class PopulatorFactory<PixProcessor_RGBAUF_Alpha>;
template class TypedBitmapRenderTarget<Raster::RedUF, Raster::GreenUF, Raster::BlueUF,
                                       Raster::AlphaF, Raster::X5, PixProcessor_RGBAUF,
                                       PixProcessor_RGBAUF_Alpha, RenderTargetBlenderRGBAUF>;

BitmapRenderTarget*
RenderTargetFactory::CreateRGBAUFRenderTarget(const Raster::ICCManager::ICCProfileSet& profiles)
{
    return new TargetOf<Raster::PixelRGBAUF>(profiles);
}

} // namespace Renderer
