#include <renderer/paint/ColourHSL.h>

#include <renderer/paint/ColourOfBody.h>
#include <renderer/paint/ColourText.h>

namespace Renderer {

namespace {

Raster::PixelHSLAF FromDoubles(double hue, double saturation, double luminosity, double alpha)
{
    return {static_cast<float>(hue), static_cast<float>(saturation), static_cast<float>(luminosity),
            static_cast<float>(alpha)};
}

Raster::PixelHSLAF FromWords(std::uint16_t hue, std::uint16_t saturation, std::uint16_t luminosity,
                             std::uint16_t alpha)
{
    using ColourConversion::ToFloat;
    return {ToFloat(hue), ToFloat(saturation), ToFloat(luminosity), ToFloat(alpha)};
}

/// A number cut to an integer, for CSS.
Kernel::String ToCutString(float value)
{
    return Kernel::ToString(std::isfinite(value) ? std::trunc(value) : 0.0f);
}

} // namespace

ColourHSL::ColourHSL() : m_channels{0, 0, 0, 1} {}

ColourHSL::ColourHSL(const Raster::PixelHSLAF& channels) : m_channels(channels) {}

Kernel::Consolidated<ColourHSL> ColourHSL::Create(double hue, double saturation, double luminosity,
                                                  double alpha, double tint, double intensity,
                                                  const Kernel::String& globalName)
{
    return Share(
        Make(tint, intensity, globalName, FromDoubles(hue, saturation, luminosity, alpha)));
}

Kernel::Consolidated<ColourHSL> ColourHSL::Create(std::uint16_t hue, std::uint16_t saturation,
                                                  std::uint16_t luminosity, std::uint16_t alpha,
                                                  double tint, double intensity,
                                                  const Kernel::String& globalName)
{
    return Share(Make(tint, intensity, globalName, FromWords(hue, saturation, luminosity, alpha)));
}

Kernel::Consolidated<ColourHSL> ColourHSL::Create(const Raster::PixelHSLAF& channels, double tint,
                                                  double intensity,
                                                  const Kernel::String& globalName)
{
    return Share(Make(tint, intensity, globalName, channels));
}

Kernel::Counted<ColourHSL> ColourHSL::CreateFakeTemporary(double hue, double saturation,
                                                          double luminosity, double alpha,
                                                          double tint, double intensity,
                                                          const Kernel::String& globalName)
{
    return Make(tint, intensity, globalName, FromDoubles(hue, saturation, luminosity, alpha));
}

Kernel::Counted<ColourHSL>
ColourHSL::CreateFakeTemporary(std::uint16_t hue, std::uint16_t saturation,
                               std::uint16_t luminosity, std::uint16_t alpha, double tint,
                               double intensity, const Kernel::String& globalName)
{
    return Make(tint, intensity, globalName, FromWords(hue, saturation, luminosity, alpha));
}

Kernel::Counted<ColourHSL> ColourHSL::CreateFakeTemporary(const Raster::PixelHSLAF& channels,
                                                          double tint, double intensity,
                                                          const Kernel::String& globalName)
{
    return Make(tint, intensity, globalName, channels);
}

void ColourHSL::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const auto channel : m_channels.channels)
        hash.Add(channel);
    Colour::AccumulateHash(hash);
}

bool ColourHSL::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    return HaveSameChannels(m_channels, static_cast<const ColourHSL&>(other).m_channels) &&
           Colour::CompareMembers(other);
}

bool ColourHSL::AreUntintedColoursEqual(const Colour& other) const
{
    const auto* colour = dynamic_cast<const ColourHSL*>(&other);
    return colour && HaveSameChannels(m_channels, colour->m_channels);
}

Kernel::String ColourHSL::GetDefaultName() const
{
    return Colour::GetDefaultName(Kernel::FormatVT(
        "H:%1 S:%2 L:%3", ToRoundedString(m_channels[0] * 360.0f),
        ToRoundedString(m_channels[1] * 100.0f), ToRoundedString(m_channels[2] * 100.0f)));
}

Kernel::String ColourHSL::GetCSSAttributes() const
{
    return Kernel::FormatVT("hsla(%1,%2%%,%3%%,%4)", ToCutString(m_channels[0] * 360.0f),
                            ToCutString(m_channels[1] * 100.0f),
                            ToCutString(m_channels[2] * 100.0f),
                            Kernel::ToString(m_channels.Alpha(), 1, 0));
}

template class ColourOf<ColourHSL>;

namespace {

[[maybe_unused]] const auto& registration = ColourHSL::GetTypeSharedClassProperties();

} // namespace

} // namespace Renderer
