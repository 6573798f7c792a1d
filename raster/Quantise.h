#pragma once

#include <raster/DynamicBitmap.h>
#include <raster/Export.h>
#include <raster/PalettisedBitmap.h>

namespace Raster {

/// What a palettised picture keeps of a picture's alpha.
enum class PaletteAlpha
{
    Full,   ///< colours with alpha, as PNG files hold them
    OneBit, ///< pixels of less than half alpha become transparent, the others opaque, as in GIF
    None,   ///< the picture is composited on white (paper)
};

/// \name Palettes for pictures
///
/// Pictures are RGBA8; other formats and wrong counts throw std::invalid_argument. Colours are
/// compared as they look on black and on white; among opaque ones that is their distance in RGB.
/// @{

/// The palette that a picture is shown with best: of at most \p count colours, its squared error is
/// about the least. A picture of no more colours gets exactly these. Fully transparent pixels get
/// an entry of their own, colours that are opaque or that make up most of their group stay as they
/// are.
///
/// Groups are split along their principal axis where that lowers the squared error most (Orchard
/// and Bouman, Color quantization of images, 1991; the place of the cut as by Wu, 1992) and refined
/// by Lloyd's iteration. Sorted by alpha, then by brightness.
///
/// \param count 2 to 256.
RASTER_EXPORT DynamicPalette MakeOptimalPalette(const DynamicBitmap& bitmap, unsigned count,
                                                PaletteAlpha alpha);

/// A palette of opaque colours with room for transparency: when the picture has pixels of less than
/// half alpha, and the palette has no transparent entry, it gets one at its end. A palette of 256
/// colours loses the one that the picture uses least for it.
RASTER_EXPORT DynamicPalette ReserveTransparentEntry(const DynamicBitmap& bitmap,
                                                     DynamicPalette palette);

/// The picture in the colours of a palette, each pixel in the nearest one (the first of those that
/// are equally near). Alpha follows the palette: None when all entries are opaque, OneBit when they
/// are opaque or transparent, Full when there are others. The profile is kept.
///
/// \param palette 1 to 256 colours in RGBA8, which must be in the picture's profile.
/// \param diffuse spreads the error of each pixel over its neighbours (Floyd and Steinberg, 1976,
///        every other row from right to left). Fully transparent pixels take no part.
RASTER_EXPORT Kernel::Counted<const PalettisedBitmap>
Palettise(const DynamicBitmap& bitmap, const DynamicPalette& palette, bool diffuse = false);
/// @}

} // namespace Raster
