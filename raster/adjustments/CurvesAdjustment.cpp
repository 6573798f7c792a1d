#include <raster/adjustments/CurvesAdjustment.h>

namespace Raster {

void CurvesSettings::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const ToneCurve* curve : {&master, &red, &green, &blue})
        curve->AccumulateHash(hash);
}

CurvesAdjustment::CurvesAdjustment(CurvesSettings settings) : AdjustmentOf(std::move(settings)) {}

void CurvesAdjustment::Apply(PixelRGBAF* pixels, std::size_t count,
                             const ICCManager::ICCProfileSet&) const
{
    const ToneCurve* const own[] = {&GetSettings().red, &GetSettings().green, &GetSettings().blue};
    for (std::size_t c = 0; c < 3; ++c) {
        for (const ToneCurve* curve : {own[c], &GetSettings().master}) {
            if (curve->IsIdentity())
                continue;
            for (std::size_t i = 0; i < count; ++i)
                pixels[i][c] = curve->Evaluate(pixels[i][c]);
        }
    }
}

bool CurvesAdjustment::IsIdentity() const
{
    const CurvesSettings& s = GetSettings();
    return s.master.IsIdentity() && s.red.IsIdentity() && s.green.IsIdentity() &&
           s.blue.IsIdentity();
}

} // namespace Raster
