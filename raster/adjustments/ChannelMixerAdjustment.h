#pragma once

#include <array>
#include <string_view>

#include <raster/adjustments/AdjustmentOf.h>

namespace Raster {

struct RASTER_EXPORT ChannelMixerSettings
{
    /// What a channel is made of: the weights of red, green and blue, and a constant; −4…4 each.
    using Row = std::array<float, 4>;

    Row red{1, 0, 0, 0};
    Row green{0, 1, 0, 0};
    Row blue{0, 0, 1, 0};

    void AccumulateHash(Kernel::HashAccumulator& hash) const;
    friend bool operator==(const ChannelMixerSettings&, const ChannelMixerSettings&) = default;
};

/// Makes each channel a weighted sum of the three and a constant. The result is not clamped. Three
/// equal rows make a monochrome picture.
class RASTER_EXPORT ChannelMixerAdjustment final
    : public AdjustmentOf<ChannelMixerAdjustment, ChannelMixerSettings>
{
public:
    static constexpr std::string_view Name = "channel mixer";

    /// Settings beyond their range are clamped; what is not a number counts as 0.
    explicit ChannelMixerAdjustment(const ChannelMixerSettings& settings);

    void Apply(PixelRGBAF* pixels, std::size_t count,
               const ICCManager::ICCProfileSet& profiles) const override;
    bool IsIdentity() const override;
};

} // namespace Raster
