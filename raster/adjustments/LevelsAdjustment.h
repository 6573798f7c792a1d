#pragma once

#include <string_view>

#include <raster/adjustments/AdjustmentOf.h>

namespace Raster {

/// How the tones of one channel, or of all, are spread.
struct RASTER_EXPORT LevelsRange
{
    float inputBlack = 0;  ///< 0…1: this input and what is below becomes outputBlack
    float inputWhite = 1;  ///< 0…1: this input and what is above becomes outputWhite
    float gamma = 1;       ///< 0.01…100: above 1 the middle tones become lighter
    float outputBlack = 0; ///< 0…1
    float outputWhite = 1; ///< 0…1; below outputBlack the tones are inverted

    bool IsIdentity() const noexcept { return *this == LevelsRange{}; }
    void AccumulateHash(Kernel::HashAccumulator& hash) const;
    friend bool operator==(const LevelsRange&, const LevelsRange&) = default;
};

struct RASTER_EXPORT LevelsSettings
{
    LevelsRange master;
    LevelsRange red;
    LevelsRange green;
    LevelsRange blue;

    void AccumulateHash(Kernel::HashAccumulator& hash) const;
    friend bool operator==(const LevelsSettings&, const LevelsSettings&) = default;
};

/// Sends each channel through its own range and then through the master range:
/// v ↦ outputBlack + (outputWhite − outputBlack) · clamp((v − inputBlack) ÷ (inputWhite −
/// inputBlack))^(1 ÷ gamma). Where inputWhite is not above inputBlack there is a step: inputs below
/// inputBlack become outputBlack, all others outputWhite. Ranges of the default settings change
/// nothing, not even values beyond 0…1.
class RASTER_EXPORT LevelsAdjustment final : public AdjustmentOf<LevelsAdjustment, LevelsSettings>
{
public:
    static constexpr std::string_view Name = "levels";

    /// Settings beyond their ranges are clamped.
    explicit LevelsAdjustment(const LevelsSettings& settings);

    void Apply(PixelRGBAF* pixels, std::size_t count,
               const ICCManager::ICCProfileSet& profiles) const override;
    bool IsIdentity() const override;
};

} // namespace Raster
