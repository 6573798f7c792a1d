#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include <kernel/Counted.h>
#include <kernel/OutStream.h>
#include <raster/DynamicBitmap.h>
#include <raster/Export.h>
#include <raster/PalettisedBitmap.h>

namespace Raster {

/// Decoders refuse pictures of more pixels than this, or than their caller expects, before they
/// allocate anything for them.
inline constexpr std::uint64_t MaxDecodedPixels = std::uint64_t{1} << 28;

/// \name Reading
///
/// The result is premultiplied: RGBA8 or IA8 for depths up to 8 bits, RGBA16 or IA16 for 16 bits,
/// IA for grey files, CMYKA8 for files in CMYK or YCCK, LABA16 for Lab. The embedded profile is
/// kept if it is valid and of the picture's space; without one the colours are in the default
/// profile of the format, and gamma and chromaticity chunks are ignored. So is an orientation noted
/// by a camera.
///
/// \param maxPixels pictures of more pixels are refused.
/// \throws Kernel::FormatException when the bytes are damaged, end early or claim too large a
///         picture; std::bad_alloc when there is no memory for it.
/// @{
RASTER_EXPORT Kernel::Counted<const DynamicBitmap>
ReadPNG(std::span<const unsigned char> bytes, std::uint64_t maxPixels = MaxDecodedPixels);
RASTER_EXPORT Kernel::Counted<const DynamicBitmap>
ReadJPEG(std::span<const unsigned char> bytes, std::uint64_t maxPixels = MaxDecodedPixels);
/// The first picture of the file, in strips or tiles of any compression of libtiff: grey, RGB, CMYK
/// and Lab of 8 or 16 bits channel by channel (CMYK of 16 bits loses the lower 8); palettes, fewer
/// bits, YCbCr and the like become RGBA8. Floating point is refused.
RASTER_EXPORT Kernel::Counted<const DynamicBitmap>
ReadTIFF(std::span<const unsigned char> bytes, std::uint64_t maxPixels = MaxDecodedPixels);
/// The first frame on the file's canvas, RGBA8 in sRGB; what it leaves free is transparent.
RASTER_EXPORT Kernel::Counted<const DynamicBitmap>
ReadGIF(std::span<const unsigned char> bytes, std::uint64_t maxPixels = MaxDecodedPixels);
/// Of an animation, the first frame.
RASTER_EXPORT Kernel::Counted<const DynamicBitmap>
ReadWebP(std::span<const unsigned char> bytes, std::uint64_t maxPixels = MaxDecodedPixels);
/// The first part of the file, its data window, from the channels R, G, B or Y, and A. The result
/// is RGBAUF in the linear profile of the file's chromaticities (those of sRGB if it names none).
RASTER_EXPORT Kernel::Counted<const DynamicBitmap>
ReadEXR(std::span<const unsigned char> bytes, std::uint64_t maxPixels = MaxDecodedPixels);
/// Recognises the file by its first bytes.
RASTER_EXPORT Kernel::Counted<const DynamicBitmap>
ReadImage(std::span<const unsigned char> bytes, std::uint64_t maxPixels = MaxDecodedPixels);
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

/// Writes a palettised bitmap as PNG, with 1, 2, 4 or 8 bits per pixel, the fewest that its palette
/// needs. The palette keeps its alpha and its order; the profile is treated as above. The stream is
/// left open.
///
/// \throws as above.
RASTER_EXPORT void WritePNG(Kernel::OutStream& out, const PalettisedBitmap& bitmap,
                            int compression = 6);

/// Writes a palettised bitmap as GIF, in one frame that is not interlaced. The palette is brought
/// into sRGB; its entries of less than half alpha become the one transparent entry that a file can
/// have, the others opaque. The stream is left open.
///
/// \throws Kernel::OutStream::WriteException when the stream fails; std::invalid_argument for sides
///         above 65,535 pixels.
RASTER_EXPORT void WriteGIF(Kernel::OutStream& out, const PalettisedBitmap& bitmap);

/// Writes an RGBA8, IA8 or CMYKA8 bitmap as baseline JPEG, composited on white (paper), with its
/// profile unless that is the default of its format. CMYK is stored as YCCK. From quality 90 on,
/// colour keeps its full resolution. The stream is left open.
///
/// \param quality 1 to 100.
/// \throws as WritePNG, and std::invalid_argument for sides above 65,500 pixels.
RASTER_EXPORT void WriteJPEG(Kernel::OutStream& out, const DynamicBitmap& bitmap, int quality = 90);

/// Writes a bitmap of any integer format as TIFF (BigTIFF when it may exceed 4 GiB), deflated, and
/// without alpha when it is opaque throughout. Alpha is associated (premultiplied, the stored
/// values themselves); Lab is stored as CIELab with D50 white, plain, with unassociated alpha, its
/// a* and b* rounded to 1/256. The profile is embedded; RGB and grey without one get the default
/// profile of their format. The file is made in memory first; the stream is left open.
///
/// \throws as WritePNG.
RASTER_EXPORT void WriteTIFF(Kernel::OutStream& out, const DynamicBitmap& bitmap);

/// Writes an RGBA8 bitmap as WebP, unpremultiplied, and without alpha when it is opaque. Its
/// profile is embedded unless it is sRGB. The file is made in memory first; the stream is left
/// open.
///
/// \param quality 1 to 100 of lossy compression; none: lossless.
/// \throws as WritePNG, and std::invalid_argument for sides above 16,383 pixels.
RASTER_EXPORT void WriteWebP(Kernel::OutStream& out, const DynamicBitmap& bitmap,
                             std::optional<int> quality = {});

/// Writes an RGBAUF bitmap as OpenEXR: 32-bit floating point, ZIP compression, premultiplied, and
/// without alpha when it is opaque. EXR files are linear: colours are brought from the bitmap's
/// profile (sRGB if it has none) to ICCManager::GetLinearRGBProfile, unbounded; those that are in
/// it already are stored as they are. Non-finite values become 0. The file is made in memory first;
/// the stream is left open.
///
/// \throws as WritePNG.
RASTER_EXPORT void WriteEXR(Kernel::OutStream& out, const DynamicBitmap& bitmap);

} // namespace Raster
