#include <renderer/paint/ColourLAB.h>

#include <renderer/paint/ColourOfBody.h>
#include <renderer/paint/ColourText.h>

namespace Renderer {

namespace {

/// a* or b* of its stored word.
Kernel::String ToOpponentString(std::uint16_t word)
{
    return ToRoundedString(word / 65535.0 * 255.0 - 128.0);
}

} // namespace

ColourLAB::ColourLAB() : m_channels{0, 0x8080, 0x8080, 65535} {}

ColourLAB::ColourLAB(const Raster::PixelLABA16& channels) : m_channels(channels) {}

Kernel::Consolidated<ColourLAB> ColourLAB::Create(const Raster::PixelLABA16& channels, double tint,
                                                  double intensity,
                                                  const Kernel::String& globalName)
{
    return Share(Make(tint, intensity, globalName, channels));
}

Kernel::Counted<ColourLAB> ColourLAB::CreateFakeTemporary(const Raster::PixelLABA16& channels,
                                                          double tint, double intensity,
                                                          const Kernel::String& globalName)
{
    return Make(tint, intensity, globalName, channels);
}

double ColourLAB::GetAlphaF() const
{
    return m_channels.Alpha() / 65535.0;
}

void ColourLAB::SetAlphaF(double alpha)
{
    m_channels.Alpha() = ColourConversion::FromFloat<std::uint16_t>(
        ColourConversion::Clamp01(static_cast<float>(alpha)));
}

void ColourLAB::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const auto channel : m_channels.channels)
        hash.Add(channel);
    Colour::AccumulateHash(hash);
}

bool ColourLAB::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    return m_channels == static_cast<const ColourLAB&>(other).m_channels &&
           Colour::CompareMembers(other);
}

bool ColourLAB::AreUntintedColoursEqual(const Colour& other) const
{
    const auto* colour = dynamic_cast<const ColourLAB*>(&other);
    return colour && m_channels == colour->m_channels;
}

Kernel::String ColourLAB::GetDefaultName() const
{
    return Colour::GetDefaultName(
        Kernel::FormatVT("L:%1 A:%2 B:%3", ToRoundedString(m_channels[0] / 65535.0 * 100.0),
                         ToOpponentString(m_channels[1]), ToOpponentString(m_channels[2])));
}

template class ColourOf<ColourLAB>;

namespace {

[[maybe_unused]] const auto& registration = ColourLAB::GetTypeSharedClassProperties();

} // namespace

} // namespace Renderer
