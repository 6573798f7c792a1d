#pragma once

#include <cstddef>
#include <cstdint>

#include <raster/Pixel.h>

namespace Raster {

/// \name How the samples of TIFF files stand for our channels
///
/// CIELab files of 16 bits hold L* as 0…65535 for 0…100 and a* and b* as signed numbers of 256
/// steps a unit; of 8 bits, L* as 0…255 and a* and b* as signed units (TIFF 6.0, section 23, and
/// its supplement 1). ICCLab files hold a* and b* with an offset of 128 units, and in 16 bits L*
/// with 0xff00 for 100 (ICC version 2). Our Lab has 257 steps a unit, an offset of 128 and 0xffff
/// for 100.
/// @{

/// The code of one sample.
enum class TiffCode
{
    Plain,          ///< the fraction of the range
    Inverted,       ///< 0 is white
    SignedOpponent, ///< a* or b* of CIELab
    ICCLightness,
    ICCOpponent,
};

/// Whether associated alpha means just what our storage is. Of Lab, TIFF's and ours would have
/// different zeros: that goes with plain colours and unassociated alpha.
constexpr bool KeepsPremultiplied(Format format) noexcept
{
    return format != Format::LABA16;
}

/// a* or b* from our 257 steps a unit to the signed 256.
constexpr std::uint16_t EncodeTiffOpponent(std::uint32_t value) noexcept
{
    return static_cast<std::uint16_t>((value * 256 + 128) / 257 - 0x8000);
}

/// Its inverse, within a step; values that ours cannot hold become the largest.
constexpr std::uint16_t DecodeTiffOpponent(std::uint32_t offsetValue) noexcept
{
    const std::uint32_t value = (offsetValue * 257 + 128) / 256;
    return static_cast<std::uint16_t>(value < 0xffff ? value : 0xffff);
}

/// Writes the channels of \p width pixels as samples, the alpha left out if \p dropsAlpha.
template<class P>
void EncodeTiffRow(const P* pixels, std::size_t width, bool dropsAlpha,
                   typename P::ChannelType* samples)
{
    const std::size_t count = P::ChannelCount - (dropsAlpha ? 1 : 0);
    for (std::size_t x = 0; x < width; ++x) {
        for (std::size_t c = 0; c < count; ++c) {
            auto value = pixels[x][c];
            if constexpr (sizeof(value) == 2) {
                if (P::Roles[c] == ChannelRole::Opponent)
                    value = EncodeTiffOpponent(value);
            }
            *samples++ = value;
        }
    }
}

/// Turns one sample into a channel; both may have 8 or 16 bits.
template<class Channel, class Sample>
constexpr Channel DecodeTiffSample(TiffCode code, Sample sample) noexcept
{
    constexpr bool isByte = sizeof(Sample) == 1;
    // The fraction of the range in 16 bits, or the value in 256 steps a unit.
    std::uint32_t value = sample;
    switch (code) {
    case TiffCode::Plain:
        value *= isByte ? 257 : 1;
        break;
    case TiffCode::Inverted:
        value = 0xffff - value * (isByte ? 257 : 1);
        break;
    case TiffCode::SignedOpponent:
        value = isByte ? (value ^ 0x80) * 257 : DecodeTiffOpponent(value ^ 0x8000);
        break;
    case TiffCode::ICCLightness:
        value = isByte ? value * 257 : value < 0xff00 ? (value * 0xffff + 0x7f80) / 0xff00 : 0xffff;
        break;
    case TiffCode::ICCOpponent:
        value = isByte ? value * 257 : DecodeTiffOpponent(value);
        break;
    }
    if constexpr (sizeof(Channel) == 1)
        value = (value + 128) / 257;
    return static_cast<Channel>(value);
}

/// Decodes one channel of \p count pixels from every \p step-th sample on.
template<class P, class Sample>
void DecodeTiffChannel(TiffCode code, const Sample* samples, std::size_t step, P* pixels,
                       std::size_t count, std::size_t channel)
{
    const auto decode = [&](auto constantCode) {
        for (std::size_t x = 0; x < count; ++x)
            pixels[x][channel] =
                DecodeTiffSample<typename P::ChannelType>(constantCode(), samples[x * step]);
    };
    switch (code) {
    case TiffCode::Plain:
        return decode([] { return TiffCode::Plain; });
    case TiffCode::Inverted:
        return decode([] { return TiffCode::Inverted; });
    case TiffCode::SignedOpponent:
        return decode([] { return TiffCode::SignedOpponent; });
    case TiffCode::ICCLightness:
        return decode([] { return TiffCode::ICCLightness; });
    case TiffCode::ICCOpponent:
        return decode([] { return TiffCode::ICCOpponent; });
    }
}
/// @}

} // namespace Raster
