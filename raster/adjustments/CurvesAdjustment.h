#pragma once

#include <string_view>

#include <raster/adjustments/AdjustmentOf.h>
#include <raster/adjustments/ToneCurve.h>

namespace Raster {

struct RASTER_EXPORT CurvesSettings
{
    ToneCurve master;
    ToneCurve red;
    ToneCurve green;
    ToneCurve blue;

    void AccumulateHash(Kernel::HashAccumulator& hash) const;
    friend bool operator==(const CurvesSettings&, const CurvesSettings&) = default;
};

/// Sends each channel through its own curve and then through the master curve. A channel whose two
/// curves are the identity keeps values beyond 0…1.
class RASTER_EXPORT CurvesAdjustment final : public AdjustmentOf<CurvesAdjustment, CurvesSettings>
{
public:
    static constexpr std::string_view Name = "curves";

    explicit CurvesAdjustment(CurvesSettings settings);

    void Apply(PixelRGBAF* pixels, std::size_t count,
               const ICCManager::ICCProfileSet& profiles) const override;
    bool IsIdentity() const override;
};

} // namespace Raster
