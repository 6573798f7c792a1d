#pragma once

#include <string_view>

#include <raster/adjustments/AdjustmentOf.h>

namespace Raster {

struct RASTER_EXPORT HueSaturationLightnessSettings
{
    float hue = 0;        ///< degrees, −180…180, by which every hue is turned
    float saturation = 0; ///< −1 (grey) … 1 (twice as much)
    float lightness = 0;  ///< −1 (black) … 1 (white)

    void AccumulateHash(Kernel::HashAccumulator& hash) const;
    friend bool operator==(const HueSaturationLightnessSettings&,
                           const HueSaturationLightnessSettings&) = default;
};

/// Changes colours as hue, saturation and lightness (Joblove and Greenberg, Color Spaces for
/// Computer Graphics, 1978; CSS Color Module Level 4, 7): h + hue, min(1, s·(1 + saturation)), and
/// l·(1 + lightness) below 0 or l + lightness·(1 − l) above. Colours are clamped to 0…1 first.
class RASTER_EXPORT HueSaturationLightnessAdjustment final
    : public AdjustmentOf<HueSaturationLightnessAdjustment, HueSaturationLightnessSettings>
{
public:
    static constexpr std::string_view Name = "hue, saturation and lightness";

    /// Settings beyond their ranges are clamped.
    explicit HueSaturationLightnessAdjustment(const HueSaturationLightnessSettings& settings);

    void Apply(PixelRGBAF* pixels, std::size_t count,
               const ICCManager::ICCProfileSet& profiles) const override;
    bool IsIdentity() const override;
};

} // namespace Raster
