#pragma once

#include <array>
#include <string_view>

#include <raster/adjustments/AdjustmentOf.h>

namespace Raster {

/// The light that a picture was taken in.
struct RASTER_EXPORT WhiteBalanceSettings
{
    static constexpr float NeutralTemperature = 6500;

    float temperature = NeutralTemperature; ///< correlated colour temperature, 2,000…15,000 kelvin
    /// How green (1) or magenta (−1) the light is besides: seen at the neutral temperature, how
    /// many times 0.05 above or below the Planckian locus in CIE 1960 u v. (At its own temperature,
    /// low ones would lead out of the colours that have an adaptation.)
    float tint = 0;

    void AccumulateHash(Kernel::HashAccumulator& hash) const;
    friend bool operator==(const WhiteBalanceSettings&, const WhiteBalanceSettings&) = default;
};

/// Makes a picture look as if it had been taken in the light of a black body of 6,500 kelvin: what
/// was white in its own light becomes that white. A low temperature makes the picture cooler, a
/// positive tint makes it more magenta.
///
/// Colours are adapted in linear light by the Bradford transform (Lam, 1985; ICC.1:2010, annex E),
/// reached through the RGB profile; the black body's chromaticity is Krystek's approximation (An
/// Algorithm to Calculate Correlated Colour Temperature, 1985). The result is not clamped.
class RASTER_EXPORT WhiteBalanceAdjustment final
    : public AdjustmentOf<WhiteBalanceAdjustment, WhiteBalanceSettings>
{
public:
    static constexpr std::string_view Name = "white balance";

    /// Settings beyond their ranges are clamped.
    explicit WhiteBalanceAdjustment(const WhiteBalanceSettings& settings);

    void Apply(PixelRGBAF* pixels, std::size_t count,
               const ICCManager::ICCProfileSet& profiles) const override;
    bool IsIdentity() const override;

private:
    std::array<std::array<float, 3>, 3> m_matrix; ///< on linear RGB of sRGB's primaries
};

} // namespace Raster
