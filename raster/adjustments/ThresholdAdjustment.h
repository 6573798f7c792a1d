#pragma once

#include <string_view>

#include <raster/adjustments/AdjustmentOf.h>

namespace Raster {

struct ThresholdSettings
{
    float threshold = 0.5f; ///< 0…1

    void AccumulateHash(Kernel::HashAccumulator& hash) const { hash.Add(threshold); }
    friend bool operator==(const ThresholdSettings&, const ThresholdSettings&) = default;
};

/// Makes white of colours whose luminosity (0.30 R + 0.59 G + 0.11 B) reaches the threshold, and
/// black of all others.
class RASTER_EXPORT ThresholdAdjustment final
    : public AdjustmentOf<ThresholdAdjustment, ThresholdSettings>
{
public:
    static constexpr std::string_view Name = "threshold";

    /// Settings beyond their range are clamped.
    explicit ThresholdAdjustment(const ThresholdSettings& settings = {});

    void Apply(PixelRGBAF* pixels, std::size_t count,
               const ICCManager::ICCProfileSet& profiles) const override;
    bool IsIdentity() const override { return false; }
};

} // namespace Raster
