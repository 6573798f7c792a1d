#pragma once

#include <string_view>

#include <raster/adjustments/AdjustmentOf.h>

namespace Raster {

struct BrightnessContrastSettings
{
    float brightness = 0; ///< −1 (black) … 1 (white)
    float contrast = 0;   ///< −1 (grey) … 1

    void AccumulateHash(Kernel::HashAccumulator& hash) const
    {
        hash.Add(brightness);
        hash.Add(contrast);
    }
    friend bool operator==(const BrightnessContrastSettings&,
                           const BrightnessContrastSettings&) = default;
};

/// Brightness moves each channel towards white, v + b·(1 − v), or black, v·(1 + b); then contrast
/// turns the line of tones about its middle: (v − ½)·tan((1 + c)·45°) + ½, its slope at most 256.
/// The result is not clamped. These are the formulas of GIMP's brightness-contrast operation.
class RASTER_EXPORT BrightnessContrastAdjustment final
    : public AdjustmentOf<BrightnessContrastAdjustment, BrightnessContrastSettings>
{
public:
    static constexpr std::string_view Name = "brightness and contrast";

    /// Settings beyond their ranges are clamped.
    explicit BrightnessContrastAdjustment(const BrightnessContrastSettings& settings);

    void Apply(PixelRGBAF* pixels, std::size_t count,
               const ICCManager::ICCProfileSet& profiles) const override;
    bool IsIdentity() const override;

private:
    /// v ↦ slope·v + offset
    float m_slope;
    float m_offset;
};

} // namespace Raster
