#pragma once

#include <string_view>

#include <raster/adjustments/AdjustmentOf.h>

namespace Raster {

/// How light the six pure hues become, −2…3. The default is the luminosity of each, and makes of
/// every colour the grey of its luminosity.
struct RASTER_EXPORT BlackAndWhiteSettings
{
    float reds = 0.30f;
    float yellows = 0.89f;
    float greens = 0.59f;
    float cyans = 0.70f;
    float blues = 0.11f;
    float magentas = 0.41f;

    void AccumulateHash(Kernel::HashAccumulator& hash) const;
    friend bool operator==(const BlackAndWhiteSettings&, const BlackAndWhiteSettings&) = default;
};

/// Makes greys with a weight per hue. A colour is the sum of a grey as light as its least channel,
/// of the secondary hue (yellow, cyan or magenta) as strong as its middle channel stands above the
/// least, and of the primary hue as strong as its greatest stands above the middle; its grey is the
/// sum of these with the two hues' weights. The result is not clamped.
class RASTER_EXPORT BlackAndWhiteAdjustment final
    : public AdjustmentOf<BlackAndWhiteAdjustment, BlackAndWhiteSettings>
{
public:
    static constexpr std::string_view Name = "black and white";

    /// Settings beyond their ranges are clamped.
    explicit BlackAndWhiteAdjustment(const BlackAndWhiteSettings& settings = {});

    void Apply(PixelRGBAF* pixels, std::size_t count,
               const ICCManager::ICCProfileSet& profiles) const override;
    bool IsIdentity() const override { return false; }
};

} // namespace Raster
