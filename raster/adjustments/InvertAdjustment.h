#pragma once

#include <string_view>

#include <raster/adjustments/AdjustmentOf.h>
#include <raster/adjustments/NoSettings.h>

namespace Raster {

/// Makes the negative: v ↦ 1 − v for each colour channel, not clamped.
class RASTER_EXPORT InvertAdjustment final : public AdjustmentOf<InvertAdjustment, NoSettings>
{
public:
    static constexpr std::string_view Name = "invert";

    InvertAdjustment();

    void Apply(PixelRGBAF* pixels, std::size_t count,
               const ICCManager::ICCProfileSet& profiles) const override;
    bool IsIdentity() const override { return false; }
};

} // namespace Raster
