#pragma once

#include <type_traits>

#include <raster/Pixel.h>

namespace Renderer::Blending {

/// What the roles of a pixel's channels amount to.
enum class ColourLayout
{
    Grey, ///< one additive channel
    RGB,  ///< three additive channels
    CMYK, ///< four subtractive channels, the last one black
    Lab,  ///< lightness and two opponents
};

/// Reads the layout off the channel roles.
template<class PixelT>
constexpr ColourLayout GetLayout()
{
    using enum Raster::ChannelRole;
    constexpr auto& roles = PixelT::Roles;
    constexpr auto count = PixelT::ColourCount;
    static_assert(roles[PixelT::AlphaIndex] == Alpha, "the last channel must be alpha");
    if constexpr (count == 1 && roles[0] == Additive) {
        return ColourLayout::Grey;
    } else if constexpr (count == 3 && roles[0] == Additive && roles[1] == Additive &&
                         roles[2] == Additive) {
        return ColourLayout::RGB;
    } else if constexpr (count == 4 && roles[0] == Subtractive && roles[3] == Subtractive) {
        return ColourLayout::CMYK;
    } else {
        static_assert(count == 3 && roles[0] == Lightness && roles[1] == Opponent &&
                      roles[2] == Opponent);
        return ColourLayout::Lab;
    }
}

/// Float pixels keep colour beyond 0…1.
template<class PixelT>
inline constexpr bool IsUnbounded = std::is_floating_point_v<typename PixelT::ChannelType>;

} // namespace Renderer::Blending
