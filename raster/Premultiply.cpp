#include <raster/Convert.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>

#include <raster/Pixel.h>

namespace Raster {

namespace {

/// Colour ÷ alpha. Rounded back by Multiply it gives the stored value again, since it is at most
/// half a step off and alpha is at most 1.
template<class Channel>
Channel Divide(Channel colour, Channel alpha) noexcept
{
    if constexpr (std::is_floating_point_v<Channel>) {
        return colour / alpha;
    } else {
        // Max² + Max/2 fits into 32 bits.
        constexpr std::uint32_t Max = std::numeric_limits<Channel>::max();
        return static_cast<Channel>(std::min(Max, (colour * Max + alpha / 2U) / alpha));
    }
}

template<class Channel>
Channel Multiply(Channel colour, Channel alpha) noexcept
{
    if constexpr (std::is_floating_point_v<Channel>) {
        return colour * alpha;
    } else {
        constexpr std::uint32_t Max = std::numeric_limits<Channel>::max();
        return static_cast<Channel>((std::uint32_t{colour} * alpha + Max / 2) / Max);
    }
}

/// Calls \p function(colour, alpha) for every colour channel of pixels that are neither opaque nor
/// transparent; the colour of the latter becomes 0.
template<class P, class Function>
void ForEachColour(P* pixels, std::size_t count, const Function& function)
{
    using Channel = typename P::ChannelType;
    if constexpr (P::ColourCount > 0) {
        for (P* pixel = pixels; pixel != pixels + count; ++pixel) {
            const Channel alpha = pixel->Alpha();
            if (alpha == P::Max)
                continue;
            for (std::size_t c = 0; c < P::ColourCount; ++c)
                (*pixel)[c] = alpha > 0 ? function((*pixel)[c], alpha) : Channel(0);
        }
    }
}

} // namespace

void Unpremultiply(Format format, void* pixels, std::size_t count)
{
    WithPixelOfFormat(format, false, [&](auto pixel) {
        using P = decltype(pixel);
        ForEachColour(static_cast<P*>(pixels), count, Divide<typename P::ChannelType>);
        return true;
    });
}

void Premultiply(Format format, void* pixels, std::size_t count)
{
    WithPixelOfFormat(format, false, [&](auto pixel) {
        using P = decltype(pixel);
        ForEachColour(static_cast<P*>(pixels), count, Multiply<typename P::ChannelType>);
        return true;
    });
}

} // namespace Raster
