#pragma once

#include <gtest/gtest.h>

#include <raster/Pixel.h>
#include <renderer/core/span/PopulatorFactory.h>

namespace Renderer {

// Formats that the library may not instantiate itself; Formats.cpp does.
extern template class PopulatorFactory<PixProcessor<Raster::PixelRGBA16, false>>;
extern template class PopulatorFactory<PixProcessor<Raster::PixelRGBA16, true>>;
extern template class PopulatorFactory<PixProcessor<Raster::PixelRGBAUF, false>>;
extern template class PopulatorFactory<PixProcessor<Raster::PixelRGBAUF, true>>;
extern template class PopulatorFactory<PixProcessor<Raster::PixelCMYKA8, false>>;
extern template class PopulatorFactory<PixProcessor<Raster::PixelCMYKA8, true>>;
extern template class PopulatorFactory<PixProcessor<Raster::PixelIA8, false>>;
extern template class PopulatorFactory<PixProcessor<Raster::PixelIA8, true>>;

using TestedPixels = testing::Types<Raster::PixelRGBA8, Raster::PixelRGBA16, Raster::PixelRGBAUF,
                                    Raster::PixelCMYKA8, Raster::PixelIA8>;

} // namespace Renderer
