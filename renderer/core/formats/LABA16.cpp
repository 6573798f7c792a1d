// The bitmap target of 16-bit Lab: its one instantiation.

#include <renderer/core/blend/BlendTable.h>
#include <renderer/core/RenderTargetFactory.h>
#include <renderer/core/span/PopulatorFactoryImpl.h>
#include <renderer/core/TypedBitmapRenderTarget.h>

namespace Renderer {

template class PopulatorFactory<PixProcessor_LABA16>;
template class PopulatorFactory<PixProcessor_LABA16_Alpha>;
template class TypedBitmapRenderTarget<
    Raster::Lightness16, Raster::AOpponent16, Raster::BOpponent16, Raster::Alpha16, Raster::X5,
    PixProcessor_LABA16, PixProcessor_LABA16_Alpha, RenderTargetBlenderLABA16>;

BitmapRenderTarget*
RenderTargetFactory::CreateLABA16RenderTarget(const Raster::ICCManager::ICCProfileSet& profiles)
{
    return new TargetOf<Raster::PixelLABA16>(profiles);
}

} // namespace Renderer
