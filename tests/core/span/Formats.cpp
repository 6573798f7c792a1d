#include "Formats.h"

#include <renderer/core/span/PopulatorFactoryImpl.h>

namespace Renderer {

template class PopulatorFactory<PixProcessor<Raster::PixelRGBA16, false>>;
template class PopulatorFactory<PixProcessor<Raster::PixelRGBA16, true>>;
template class PopulatorFactory<PixProcessor<Raster::PixelRGBAUF, false>>;
template class PopulatorFactory<PixProcessor<Raster::PixelRGBAUF, true>>;
template class PopulatorFactory<PixProcessor<Raster::PixelCMYKA8, false>>;
template class PopulatorFactory<PixProcessor<Raster::PixelCMYKA8, true>>;
template class PopulatorFactory<PixProcessor<Raster::PixelIA8, false>>;
template class PopulatorFactory<PixProcessor<Raster::PixelIA8, true>>;

} // namespace Renderer
