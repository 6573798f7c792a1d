#include <raster/adjustments/LevelsAdjustment.h>

namespace Raster {

namespace {

LevelsRange Limit(const LevelsRange& range)
{
    return {LimitSetting(range.inputBlack, 0, 1, 0), LimitSetting(range.inputWhite, 0, 1, 1),
            LimitSetting(range.gamma, 0.01f, 100, 1), LimitSetting(range.outputBlack, 0, 1, 0),
            LimitSetting(range.outputWhite, 0, 1, 1)};
}

/// Sends channel \p c of the pixels through \p range.
void ApplyRange(const LevelsRange& range, PixelRGBAF* pixels, std::size_t count, std::size_t c)
{
    if (range.IsIdentity())
        return;
    const float black = range.outputBlack;
    const float rise = range.outputWhite - range.outputBlack;
    if (!(range.inputWhite > range.inputBlack)) {
        for (std::size_t i = 0; i < count; ++i)
            pixels[i][c] = pixels[i][c] >= range.inputBlack ? range.outputWhite : black;
        return;
    }
    const float width = range.inputWhite - range.inputBlack;
    for (std::size_t i = 0; i < count; ++i)
        pixels[i][c] = LimitToUnit((pixels[i][c] - range.inputBlack) / width);
    if (range.gamma != 1) {
        // In double precision, so that processors whose powers differ in the last bit agree.
        const double exponent = 1 / double(range.gamma);
        for (std::size_t i = 0; i < count; ++i)
            pixels[i][c] = float(std::pow(double(pixels[i][c]), exponent));
    }
    for (std::size_t i = 0; i < count; ++i)
        pixels[i][c] = black + rise * pixels[i][c];
}

} // namespace

void LevelsRange::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const float value : {inputBlack, inputWhite, gamma, outputBlack, outputWhite})
        hash.Add(value);
}

void LevelsSettings::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const LevelsRange* range : {&master, &red, &green, &blue})
        range->AccumulateHash(hash);
}

LevelsAdjustment::LevelsAdjustment(const LevelsSettings& settings)
    : AdjustmentOf({Limit(settings.master), Limit(settings.red), Limit(settings.green),
                    Limit(settings.blue)})
{}

void LevelsAdjustment::Apply(PixelRGBAF* pixels, std::size_t count,
                             const ICCManager::ICCProfileSet&) const
{
    const LevelsRange* const own[] = {&GetSettings().red, &GetSettings().green,
                                      &GetSettings().blue};
    for (std::size_t c = 0; c < 3; ++c) {
        ApplyRange(*own[c], pixels, count, c);
        ApplyRange(GetSettings().master, pixels, count, c);
    }
}

bool LevelsAdjustment::IsIdentity() const
{
    return GetSettings() == LevelsSettings{};
}

} // namespace Raster
