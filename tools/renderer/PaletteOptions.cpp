#include "PaletteOptions.h"

#include <renderer/paint/Palette.h>

#include "DrawCommand.h"

namespace Command {

namespace {

using Renderer::Palette;

struct NamedPalette
{
    const char* name;
    Kernel::Consolidated<Palette> (*make)();
};

constexpr NamedPalette Palettes[] = {
    {"web", Palette::GetWebPalette},
    {"mac", Palette::GetMacintoshPalette},
    {"windows", Palette::GetWindowsPalette},
    {"grey", [] { return Palette::CreateGrayscale(Raster::DynamicPalette::MaxIndexed); }},
    {"bw", Palette::GetBlackAndWhitePalette},
};

Kernel::Consolidated<Palette> MakePalette(const std::string& name)
{
    std::string known;
    for (const NamedPalette& palette : Palettes) {
        if (name == palette.name)
            return palette.make();
        known += std::string(known.empty() ? "" : ", ") + palette.name;
    }
    throw UsageException("--palette " + name + " is not one of " + known);
}

} // namespace

void CheckPaletteOptions(const PaletteOptions& options)
{
    if (options.colours && (*options.colours < 2 || *options.colours > 256))
        throw UsageException("--colours must be from 2 to 256");
    if (options.palette.empty())
        return;
    if (options.colours)
        throw UsageException("--palette and --colours exclude each other");
    MakePalette(options.palette);
}

Kernel::Counted<const Raster::PalettisedBitmap> Palettise(const Raster::DynamicBitmap& bitmap,
                                                          const PaletteOptions& options,
                                                          Raster::PaletteAlpha alpha)
{
    Raster::DynamicPalette palette;
    if (options.palette.empty()) {
        const auto count = static_cast<unsigned>(options.colours.value_or(256));
        palette = Raster::MakeOptimalPalette(bitmap, count, alpha);
    } else {
        MakePalette(options.palette)->FillDynamicPalette(palette, Raster::Format::RGBA8, {});
        palette = Raster::ReserveTransparentEntry(bitmap, std::move(palette));
    }
    return Raster::Palettise(bitmap, palette, options.diffuse);
}

} // namespace Command
