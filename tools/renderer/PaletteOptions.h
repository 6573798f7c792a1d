#pragma once

#include <optional>
#include <string>

#include <kernel/Counted.h>
#include <raster/PalettisedBitmap.h>
#include <raster/Quantise.h>

namespace Command {

/// How a picture is reduced to the colours of a palette.
struct PaletteOptions
{
    std::optional<long long> colours; ///< of the palette that is made for the picture
    std::string palette;              ///< the name of a fixed palette instead; empty: none
    bool diffuse = false;             ///< spread the error of each pixel

    /// Whether any is set, which asks for a palettised picture.
    bool IsGiven() const noexcept { return colours || !palette.empty() || diffuse; }
};

/// \throws UsageException for options that make no sense.
void CheckPaletteOptions(const PaletteOptions& options);

/// A picture in the colours of a palette.
/// \param bitmap RGBA8.
/// \param alpha what the file can hold of it; fixed palettes have one bit.
Kernel::Counted<const Raster::PalettisedBitmap> Palettise(const Raster::DynamicBitmap& bitmap,
                                                          const PaletteOptions& options,
                                                          Raster::PaletteAlpha alpha);

} // namespace Command
