#pragma once

#include <gtest/gtest.h>

#include <raster/Pixel.h>
#include <renderer/core/span/PopulatorFactory.h>

namespace Renderer {

using TestedPixels =
    testing::Types<Raster::PixelRGBA8, Raster::PixelRGBA16, Raster::PixelIA8, Raster::PixelIA16,
                   Raster::PixelCMYKA8, Raster::PixelLABA16, Raster::PixelRGBAUF>;

} // namespace Renderer
