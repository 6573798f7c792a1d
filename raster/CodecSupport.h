#pragma once

#include <cstdint>
#include <span>

#include <kernel/Counted.h>
#include <raster/DynamicBuffer.h>
#include <raster/ICCProfile.h>

namespace Raster {

/// The buffer of a picture that is decoded.
/// \throws Kernel::FormatException when a side is 0 or there are more pixels than \p maxPixels;
///         std::bad_alloc when the memory cannot be had.
Kernel::Counted<DynamicBuffer> MakeDecodedBuffer(Format format, std::uint64_t width,
                                                 std::uint64_t height, std::uint64_t maxPixels);

/// Whether the profile is one of the format's space.
bool IsOfFormat(const ICCProfile& profile, Format format);

/// An embedded profile; none when it is damaged or of another space than the format's.
Kernel::Counted<const ICCProfile> ReadEmbeddedProfile(std::span<const unsigned char> bytes,
                                                      Format format);

/// The profile to embed; none when it is the default of the format, of another space, or missing.
Kernel::Counted<const ICCProfile>
GetProfileToEmbed(Format format, const Kernel::Counted<const ICCProfile>& profile);

/// Whether every pixel has full alpha. Opaque pictures are written without alpha where a file can
/// do without: smaller, faster, and read by more programs.
bool IsOpaque(const DynamicBuffer& buffer);

/// Whether the format has no colour but grey.
constexpr bool IsGrey(Format format) noexcept
{
    return format == Format::IA8 || format == Format::IA16;
}

} // namespace Raster
