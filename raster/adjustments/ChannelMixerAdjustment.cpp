#include <raster/adjustments/ChannelMixerAdjustment.h>

namespace Raster {

namespace {

using Row = ChannelMixerSettings::Row;

Row Limit(Row row)
{
    for (float& value : row)
        value = LimitSetting(value, -4, 4, 0);
    return row;
}

float Mix(const Row& row, float red, float green, float blue)
{
    return row[0] * red + row[1] * green + row[2] * blue + row[3];
}

} // namespace

void ChannelMixerSettings::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const Row* row : {&red, &green, &blue}) {
        for (const float value : *row)
            hash.Add(value);
    }
}

ChannelMixerAdjustment::ChannelMixerAdjustment(const ChannelMixerSettings& settings)
    : AdjustmentOf({Limit(settings.red), Limit(settings.green), Limit(settings.blue)})
{}

void ChannelMixerAdjustment::Apply(PixelRGBAF* pixels, std::size_t count,
                                   const ICCManager::ICCProfileSet&) const
{
    if (IsIdentity())
        return;
    const ChannelMixerSettings rows = GetSettings();
    for (PixelRGBAF* pixel = pixels; pixel != pixels + count; ++pixel) {
        const float red = (*pixel)[0], green = (*pixel)[1], blue = (*pixel)[2];
        (*pixel)[0] = Mix(rows.red, red, green, blue);
        (*pixel)[1] = Mix(rows.green, red, green, blue);
        (*pixel)[2] = Mix(rows.blue, red, green, blue);
    }
}

bool ChannelMixerAdjustment::IsIdentity() const
{
    return GetSettings() == ChannelMixerSettings{};
}

} // namespace Raster
