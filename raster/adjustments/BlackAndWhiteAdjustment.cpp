#include <raster/adjustments/BlackAndWhiteAdjustment.h>

#include <algorithm>

namespace Raster {

void BlackAndWhiteSettings::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const float value : {reds, yellows, greens, cyans, blues, magentas})
        hash.Add(value);
}

BlackAndWhiteAdjustment::BlackAndWhiteAdjustment(const BlackAndWhiteSettings& settings)
    : AdjustmentOf([&settings] {
          constexpr BlackAndWhiteSettings neutral;
          const auto limit = [](float value, float otherwise) {
              return LimitSetting(value, -2, 3, otherwise);
          };
          return BlackAndWhiteSettings{
              limit(settings.reds, neutral.reds),     limit(settings.yellows, neutral.yellows),
              limit(settings.greens, neutral.greens), limit(settings.cyans, neutral.cyans),
              limit(settings.blues, neutral.blues),   limit(settings.magentas, neutral.magentas)};
      }())
{}

void BlackAndWhiteAdjustment::Apply(PixelRGBAF* pixels, std::size_t count,
                                    const ICCManager::ICCProfileSet&) const
{
    const BlackAndWhiteSettings s = GetSettings();
    for (PixelRGBAF* pixel = pixels; pixel != pixels + count; ++pixel) {
        const float r = (*pixel)[0], g = (*pixel)[1], b = (*pixel)[2];
        const float least = std::min({r, g, b});
        const float greatest = std::max({r, g, b});
        const float middle = std::max(std::min(r, g), std::min(std::max(r, g), b));
        const float primary = r == greatest ? s.reds : g == greatest ? s.greens : s.blues;
        const float secondary = b == least ? s.yellows : r == least ? s.cyans : s.magentas;
        const float grey = least + (middle - least) * secondary + (greatest - middle) * primary;
        (*pixel)[0] = (*pixel)[1] = (*pixel)[2] = grey;
    }
}

} // namespace Raster
