#pragma once

#include <string_view>

#include <raster/adjustments/AdjustmentOf.h>

namespace Raster {

struct PosteriseSettings
{
    unsigned levels = 4; ///< 2…65536 values that a channel can still have

    void AccumulateHash(Kernel::HashAccumulator& hash) const { hash.Add(levels); }
    friend bool operator==(const PosteriseSettings&, const PosteriseSettings&) = default;
};

/// Leaves a few values of each channel: v ↦ min(n − 1, ⌊n·v⌋) ÷ (n − 1), the discrete transfer
/// function of n equally spaced values (W3C Filter Effects Module Level 1). Clamps to 0…1.
class RASTER_EXPORT PosteriseAdjustment final
    : public AdjustmentOf<PosteriseAdjustment, PosteriseSettings>
{
public:
    static constexpr std::string_view Name = "posterise";

    /// Settings beyond their range are clamped.
    explicit PosteriseAdjustment(const PosteriseSettings& settings = {});

    void Apply(PixelRGBAF* pixels, std::size_t count,
               const ICCManager::ICCProfileSet& profiles) const override;
    bool IsIdentity() const override { return false; }
};

} // namespace Raster
