#include <raster/adjustments/ThresholdAdjustment.h>

#include <raster/Luminosity.h>

namespace Raster {

ThresholdAdjustment::ThresholdAdjustment(const ThresholdSettings& settings)
    : AdjustmentOf({LimitSetting(settings.threshold, 0, 1, 0.5f)})
{}

void ThresholdAdjustment::Apply(PixelRGBAF* pixels, std::size_t count,
                                const ICCManager::ICCProfileSet&) const
{
    const float threshold = GetSettings().threshold;
    for (PixelRGBAF* pixel = pixels; pixel != pixels + count; ++pixel) {
        const float luminosity = GetLuminosity((*pixel)[0], (*pixel)[1], (*pixel)[2]);
        (*pixel)[0] = (*pixel)[1] = (*pixel)[2] = luminosity >= threshold ? 1.0f : 0.0f;
    }
}

} // namespace Raster
