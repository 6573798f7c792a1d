#pragma once

#include <raster/DynamicBuffer.h>

namespace Renderer {

/// The mean of all alpha values of a buffer, 0…1.
double GetMeanAlphaOfPixels(const Raster::DynamicBuffer& buffer);

} // namespace Renderer
