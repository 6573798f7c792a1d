#include <raster/adjustments/PosteriseAdjustment.h>

#include <algorithm>

namespace Raster {

PosteriseAdjustment::PosteriseAdjustment(const PosteriseSettings& settings)
    : AdjustmentOf({std::clamp(settings.levels, 2U, 65536U)})
{}

void PosteriseAdjustment::Apply(PixelRGBAF* pixels, std::size_t count,
                                const ICCManager::ICCProfileSet&) const
{
    const auto levels = float(GetSettings().levels);
    for (PixelRGBAF* pixel = pixels; pixel != pixels + count; ++pixel) {
        for (std::size_t c = 0; c < 3; ++c) {
            const float step = std::trunc(LimitToUnit((*pixel)[c]) * levels);
            (*pixel)[c] = std::min(step, levels - 1) / (levels - 1);
        }
    }
}

} // namespace Raster
