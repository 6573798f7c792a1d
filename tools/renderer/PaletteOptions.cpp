#include "PaletteOptions.h"

#include <renderer/paint/ConvertColourOrProfileVisitor.h>
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

/// The colours of a fixed palette, which are sRGB, as a picture has them.
/// \param profile of the picture; sRGB without it.
Raster::DynamicPalette MakeFixedPalette(const std::string& name,
                                        const Kernel::Counted<const Raster::ICCProfile>& profile)
{
    constexpr auto format = Raster::Format::RGBA8;
    Raster::ICCManager::ICCProfileSet profiles;
    profiles.SetRGB(profile);
    Renderer::ConvertColourOrProfileVisitor visitor(format, {}, format, profiles, nullptr);
    Raster::DynamicPalette palette;
    MakePalette(name)->Accept(visitor)->FillDynamicPalette(palette, format, profiles);
    return palette;
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
        palette = Raster::ReserveTransparentEntry(
            bitmap, MakeFixedPalette(options.palette, bitmap.GetProfile()));
    }
    return Raster::Palettise(bitmap, palette, options.diffuse);
}

} // namespace Command
