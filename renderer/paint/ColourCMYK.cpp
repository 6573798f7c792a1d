#include <renderer/paint/ColourCMYK.h>

#include <renderer/paint/ColourOfBody.h>
#include <renderer/paint/ColourText.h>

namespace Renderer {

ColourCMYK::ColourCMYK() : m_channels{0, 0, 0, 1, 1} {}

ColourCMYK::ColourCMYK(const Raster::PixelCMYKA8& channels)
{
    std::transform(channels.channels.begin(), channels.channels.end(), m_channels.channels.begin(),
                   ColourConversion::ToFloat<std::uint8_t>);
}

ColourCMYK::ColourCMYK(const Raster::PixelCMYKAF& channels) : m_channels(channels) {}

void ColourCMYK::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const auto channel : m_channels.channels)
        hash.Add(channel);
    Colour::AccumulateHash(hash);
}

bool ColourCMYK::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    return HaveSameChannels(m_channels, static_cast<const ColourCMYK&>(other).m_channels) &&
           Colour::CompareMembers(other);
}

bool ColourCMYK::AreUntintedColoursEqual(const Colour& other) const
{
    const auto* colour = dynamic_cast<const ColourCMYK*>(&other);
    return colour && HaveSameChannels(m_channels, colour->m_channels);
}

Kernel::String ColourCMYK::GetDefaultName() const
{
    return Colour::GetDefaultName(Kernel::FormatVT(
        "C:%1 M:%2 Y:%3 K:%4", ToRoundedString(m_channels[0] * 100.0f),
        ToRoundedString(m_channels[1] * 100.0f), ToRoundedString(m_channels[2] * 100.0f),
        ToRoundedString(m_channels[3] * 100.0f)));
}

template class ColourOf<ColourCMYK>;

namespace {

[[maybe_unused]] const auto& registration = ColourCMYK::GetTypeSharedClassProperties();

} // namespace

} // namespace Renderer
