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
///
/// The result is premultiplied: RGBA8 or IA8 for depths up to 8 bits, RGBA16 or IA16 for 16 bits,
/// IA for grey files, CMYKA8 for JPEG files in CMYK or YCCK. The embedded profile is kept if it is
/// valid and of the picture's space; without one the colours are in the default profile of the
/// format, and gamma and chromaticity chunks are ignored. So is an orientation noted by a camera.
///
/// \throws Kernel::FormatException when the bytes are damaged, end early or claim too large a
///         picture; std::bad_alloc when there is no memory for it.
/// @{
RASTER_EXPORT Kernel::Counted<const DynamicBitmap> ReadPNG(std::span<const unsigned char> bytes);
RASTER_EXPORT Kernel::Counted<const DynamicBitmap> ReadJPEG(std::span<const unsigned char> bytes);
/// Recognises the file by its first bytes.
RASTER_EXPORT Kernel::Counted<const DynamicBitmap> ReadImage(std::span<const unsigned char> bytes);
/// @}

/// Writes an RGBA8, RGBA16, IA8 or IA16 bitmap as PNG, unpremultiplied, and without alpha when it
/// is opaque throughout. Its profile is embedded; without one, or with the default profile of its
/// format, the file is marked as sRGB. The stream is left open.
///
/// \param compression 0 (none) to 9 (smallest).
/// \throws Kernel::OutStream::WriteException when the stream fails; std::invalid_argument for other
///         formats and compressions.
RASTER_EXPORT void WritePNG(Kernel::OutStream& out, const DynamicBitmap& bitmap,
                            int compression = 6);

/// Writes an RGBA8 or IA8 bitmap as baseline JPEG, composited on white, with its profile unless
/// that is the default of its format. From quality 90 on, colour keeps its full resolution. The
/// stream is left open.
///
/// \param quality 1 to 100.
/// \throws as WritePNG, and std::invalid_argument for sides above 65,500 pixels.
RASTER_EXPORT void WriteJPEG(Kernel::OutStream& out, const DynamicBitmap& bitmap, int quality = 90);

} // namespace Raster
