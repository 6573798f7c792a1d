#include <raster/ColourTransform.h>

namespace Raster {

ColourTransform::~ColourTransform() = default;

} // namespace Raster
