#pragma once

#include <cstdint>
#include <span>

#include <kernel/Counted.h>
#include <kernel/OutStream.h>
#include <raster/DynamicBitmap.h>
#include <raster/Export.h>

namespace Raster {

/// Decoders refuse pictures of more pixels than this before they allocate anything.
inline constexpr std::uint64_t MaxDecodedPixels = std::uint64_t{1} << 28;

/// \name Reading
/// The result is premultiplied: RGBA8 or IA8 for depths up to 8 bits, RGBA16 or IA16 for 16 bits (IA
/// for grey files, CMYKA8 for JPEG files in CMYK or YCCK), with the embedded profile if it is valid.
/// \throws Kernel::FormatException when the bytes are damaged or too large a picture is claimed.
/// @{
RASTER_EXPORT Kernel::Counted<const DynamicBitmap> ReadPNG(std::span<const unsigned char> bytes);
RASTER_EXPORT Kernel::Counted<const DynamicBitmap> ReadJPEG(std::span<const unsigned char> bytes);
/// Recognises the file by its first bytes.
RASTER_EXPORT Kernel::Counted<const DynamicBitmap> ReadImage(std::span<const unsigned char> bytes);
/// @}

/// Writes an RGBA8, RGBA16, IA8 or IA16 buffer as PNG, unpremultiplied, with its profile when it has
/// one (otherwise marked as sRGB). \param compression 0 (none) to 9 (smallest).
/// \throws Kernel::OutStream::WriteException when the stream fails; std::invalid_argument for other
///         formats.
RASTER_EXPORT void WritePNG(Kernel::OutStream& out, const DynamicBitmap& bitmap, int compression = 6);

/// Writes an RGBA8 or IA8 buffer as JPEG, composited on white. \param quality 1 to 100.
/// \throws as WritePNG.
RASTER_EXPORT void WriteJPEG(Kernel::OutStream& out, const DynamicBitmap& bitmap, int quality = 90);

} // namespace Raster
