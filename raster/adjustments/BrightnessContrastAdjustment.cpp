#include <raster/adjustments/BrightnessContrastAdjustment.h>

#include <algorithm>
#include <numbers>

namespace Raster {

BrightnessContrastAdjustment::BrightnessContrastAdjustment(
    const BrightnessContrastSettings& settings)
    : AdjustmentOf(
          {LimitSetting(settings.brightness, -1, 1, 0), LimitSetting(settings.contrast, -1, 1, 0)})
{
    constexpr double maxSlope = 256;
    const double brightness = GetSettings().brightness;
    const double contrast = GetSettings().contrast;
    const double turn = contrast < 1 ? std::tan((1 + contrast) * std::numbers::pi / 4) : maxSlope;
    const double slope = std::min(turn, maxSlope);
    m_slope = float(slope * (1 - std::abs(brightness)));
    m_offset = float(slope * (std::max(brightness, 0.0) - 0.5) + 0.5);
}

void BrightnessContrastAdjustment::Apply(PixelRGBAF* pixels, std::size_t count,
                                         const ICCManager::ICCProfileSet&) const
{
    if (IsIdentity())
        return;
    for (PixelRGBAF* pixel = pixels; pixel != pixels + count; ++pixel) {
        for (std::size_t c = 0; c < 3; ++c)
            (*pixel)[c] = (*pixel)[c] * m_slope + m_offset;
    }
}

bool BrightnessContrastAdjustment::IsIdentity() const
{
    return GetSettings() == BrightnessContrastSettings{};
}

} // namespace Raster
