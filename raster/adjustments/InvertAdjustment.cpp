#include <raster/adjustments/InvertAdjustment.h>

namespace Raster {

InvertAdjustment::InvertAdjustment() : AdjustmentOf({}) {}

void InvertAdjustment::Apply(PixelRGBAF* pixels, std::size_t count,
                             const ICCManager::ICCProfileSet&) const
{
    for (PixelRGBAF* pixel = pixels; pixel != pixels + count; ++pixel) {
        for (std::size_t c = 0; c < 3; ++c)
            (*pixel)[c] = 1 - (*pixel)[c];
    }
}

} // namespace Raster
