#include <raster/adjustments/HueSaturationLightnessAdjustment.h>

#include <algorithm>

#include <raster/Convert.h>

namespace Raster {

void HueSaturationLightnessSettings::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.Add(hue);
    hash.Add(saturation);
    hash.Add(lightness);
}

HueSaturationLightnessAdjustment::HueSaturationLightnessAdjustment(
    const HueSaturationLightnessSettings& settings)
    : AdjustmentOf({LimitSetting(settings.hue, -180, 180, 0),
                    LimitSetting(settings.saturation, -1, 1, 0),
                    LimitSetting(settings.lightness, -1, 1, 0)})
{}

void HueSaturationLightnessAdjustment::Apply(PixelRGBAF* pixels, std::size_t count,
                                             const ICCManager::ICCProfileSet&) const
{
    if (IsIdentity())
        return;
    const float turn = GetSettings().hue / 360;
    const float saturation = 1 + GetSettings().saturation;
    // l ↦ lightness·l + offset
    const float lightness = 1 - std::abs(GetSettings().lightness);
    const float offset = std::max(GetSettings().lightness, 0.0f);
    for (PixelRGBAF* pixel = pixels; pixel != pixels + count; ++pixel) {
        for (std::size_t c = 0; c < 3; ++c)
            (*pixel)[c] = LimitToUnit((*pixel)[c]);
        PixelHSLAF hsl;
        ConvertFloatPixel(ColourSpace::RGB, pixel->channels.data(), ColourSpace::HSL,
                          hsl.channels.data());
        hsl[0] += turn;
        hsl[0] -= std::floor(hsl[0]);
        hsl[1] = std::min(1.0f, hsl[1] * saturation);
        hsl[2] = hsl[2] * lightness + offset;
        ConvertFloatPixel(ColourSpace::HSL, hsl.channels.data(), ColourSpace::RGB,
                          pixel->channels.data());
    }
}

bool HueSaturationLightnessAdjustment::IsIdentity() const
{
    return GetSettings() == HueSaturationLightnessSettings{};
}

} // namespace Raster
