#include <renderer/paint/ColourRGB.h>

#include <renderer/paint/ColourOfBody.h>
#include <renderer/paint/ColourText.h>

namespace Renderer {

namespace {

template<class P>
Raster::PixelRGBAUF ToUnbounded(const P& pixel)
{
    Raster::PixelRGBAUF result;
    std::transform(pixel.channels.begin(), pixel.channels.end(), result.channels.begin(),
                   ColourConversion::ToFloat<typename P::ChannelType>);
    return result;
}

} // namespace

ColourRGB::ColourRGB() : m_channels{0, 0, 0, 1} {}

ColourRGB::ColourRGB(const Raster::PixelRGBA8& channels) : m_channels(ToUnbounded(channels)) {}

ColourRGB::ColourRGB(const Raster::PixelRGBA16& channels) : m_channels(ToUnbounded(channels)) {}

ColourRGB::ColourRGB(const Raster::PixelRGBAF& channels) : m_channels(ToUnbounded(channels)) {}

ColourRGB::ColourRGB(const Raster::PixelRGBAUF& channels) : m_channels(channels) {}

void ColourRGB::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const auto channel : m_channels.channels)
        hash.Add(channel);
    Colour::AccumulateHash(hash);
}

bool ColourRGB::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    return HaveSameChannels(m_channels, static_cast<const ColourRGB&>(other).m_channels) &&
           Colour::CompareMembers(other);
}

bool ColourRGB::AreUntintedColoursEqual(const Colour& other) const
{
    const auto* colour = dynamic_cast<const ColourRGB*>(&other);
    return colour && HaveSameChannels(m_channels, colour->m_channels);
}

Kernel::String ColourRGB::GetDefaultName() const
{
    return Colour::GetDefaultName(Kernel::FormatVT(
        "R:%1 G:%2 B:%3", ToRoundedString(m_channels[0] * 255.0f),
        ToRoundedString(m_channels[1] * 255.0f), ToRoundedString(m_channels[2] * 255.0f)));
}

template class ColourOf<ColourRGB>;

namespace {

[[maybe_unused]] const auto& registration = ColourRGB::GetTypeSharedClassProperties();

} // namespace

} // namespace Renderer
