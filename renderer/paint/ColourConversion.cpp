#include <renderer/paint/ColourConversion.h>

namespace Renderer::ColourConversion {

namespace {

using Raster::ColourSpace;

/// Between two different spaces, neither of them HSL.
void ConvertManaged(ColourSpace from, const FloatPixel& source, ColourSpace to, FloatPixel& target,
                    const ICCProfileSet& profiles)
{
    const auto transform =
        Raster::ICCManager::GetInstance().GetFloatTransform(from, profiles, to, profiles);
    if (transform)
        transform->Apply(source.data(), target.data(), 1);
    else
        Raster::ConvertFloatPixel(from, source.data(), to, target.data());
}

} // namespace

void ConvertChannels(ColourSpace from, const FloatPixel& source, ColourSpace to, FloatPixel& target,
                     const ICCProfileSet& profiles)
{
    FloatPixel plain = source;
    if (from == ColourSpace::HSL) {
        Raster::ConvertFloatPixel(ColourSpace::HSL, source.data(), ColourSpace::RGB, plain.data());
        from = ColourSpace::RGB;
    }
    const ColourSpace managed = to == ColourSpace::HSL ? ColourSpace::RGB : to;
    FloatPixel converted = plain;
    if (from != managed)
        ConvertManaged(from, plain, managed, converted, profiles);
    if (to == ColourSpace::HSL)
        Raster::ConvertFloatPixel(ColourSpace::RGB, converted.data(), ColourSpace::HSL,
                                  target.data());
    else
        target = converted;
}

ICCProfileSet UseAlternativeRGB(const ICCProfileSet& profiles)
{
    ICCProfileSet result = profiles;
    result.SetRGB(profiles.GetAlternativeRGB());
    return result;
}

} // namespace Renderer::ColourConversion
