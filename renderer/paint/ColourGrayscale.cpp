#include <renderer/paint/ColourGrayscale.h>

#include <renderer/paint/ColourOfBody.h>
#include <renderer/paint/ColourText.h>

namespace Renderer {

using ColourConversion::ToFloat;

ColourGrayscale::ColourGrayscale() : m_channels{0, 1} {}

ColourGrayscale::ColourGrayscale(double grey, double alpha)
    : ColourGrayscale(static_cast<float>(grey), static_cast<float>(alpha))
{}

ColourGrayscale::ColourGrayscale(float grey, float alpha) : m_channels{grey, alpha} {}

ColourGrayscale::ColourGrayscale(std::uint8_t grey, std::uint8_t alpha)
    : ColourGrayscale(ToFloat(grey), ToFloat(alpha))
{}

ColourGrayscale::ColourGrayscale(std::uint16_t grey, std::uint16_t alpha)
    : ColourGrayscale(ToFloat(grey), ToFloat(alpha))
{}

void ColourGrayscale::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const auto channel : m_channels.channels)
        hash.Add(channel);
    Colour::AccumulateHash(hash);
}

bool ColourGrayscale::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    return HaveSameChannels(m_channels, static_cast<const ColourGrayscale&>(other).m_channels) &&
           Colour::CompareMembers(other);
}

bool ColourGrayscale::AreUntintedColoursEqual(const Colour& other) const
{
    const auto* colour = dynamic_cast<const ColourGrayscale*>(&other);
    return colour && HaveSameChannels(m_channels, colour->m_channels);
}

Kernel::String ColourGrayscale::GetDefaultName() const
{
    return Colour::GetDefaultName(
        Kernel::FormatVT("B:%1", ToRoundedString(m_channels[0] * 100.0f)));
}

template class ColourOf<ColourGrayscale>;

namespace {

[[maybe_unused]] const auto& registration = ColourGrayscale::GetTypeSharedClassProperties();

} // namespace

} // namespace Renderer
