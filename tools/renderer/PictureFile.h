#pragma once

#include <string>

#include <kernel/Counted.h>
#include <kernel/OutStream.h>
#include <raster/DynamicBitmap.h>
#include <raster/Format.h>
#include <raster/ICCProfile.h>
#include <raster/PalettisedBitmap.h>
#include <raster/Quantise.h>

namespace Command {

/// A kind of picture file.
struct PictureKind
{
    const char* ending; ///< with its dot, in small letters
    /// Null for files that hold palettised pictures alone.
    void (*write)(Kernel::OutStream& out, const Raster::DynamicBitmap& bitmap);
    /// Whether files of this kind hold pixels of a format as they are.
    bool (*holds)(Raster::Format format);
    /// Null for files that hold no palettised pictures.
    void (*writePalettised)(Kernel::OutStream& out,
                            const Raster::PalettisedBitmap& bitmap) = nullptr;
    /// What palettes of this kind of file hold of alpha.
    Raster::PaletteAlpha paletteAlpha = Raster::PaletteAlpha::None;
};

/// The kind that a path's ending tells. \throws UsageException for endings that tell none.
const PictureKind& FindPictureKind(const std::string& path);

/// The format in which a picture goes into a file: its own where the file holds it; else grey stays
/// grey and 16 bits stay 16 bits as far as the file has them, and all else becomes RGB.
Raster::Format FindHeldFormat(const PictureKind& kind, Raster::Format drawn);

/// Brings a finished picture into a format, by the ICC transforms where there are profiles.
/// \param profile the colours asked for, or none. Pictures in RGB are in sRGB and are brought into
///        it; others have been drawn in it, and keep it while they stay in their colour space.
/// \throws std::bad_alloc when there is no memory for it.
Raster::DynamicBitmap ConvertPicture(const Kernel::Counted<const Raster::DynamicBuffer>& picture,
                                     Raster::Format format,
                                     const Kernel::Counted<const Raster::ICCProfile>& profile);

} // namespace Command
