#include <raster/Quantise.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

#include <raster/ErrorDiffusion.h>
#include <raster/PaletteMatcher.h>
#include <raster/PaletteRows.h>

namespace Raster {

namespace {

void CheckPalette(const DynamicPalette& palette)
{
    if (palette.GetFormat() != Format::RGBA8 || palette.GetSize() == 0 ||
        palette.GetSize() > DynamicPalette::MaxIndexed)
        throw std::invalid_argument("a palette has 1 to 256 colours in RGBA8");
}

bool HasTransparent(const DynamicBuffer& buffer)
{
    PaletteRows rows(buffer, PaletteAlpha::OneBit);
    for (unsigned y = 0; y < buffer.GetHeight(); ++y) {
        const PixelRGBA8* row = rows.GetRow(y);
        if (std::any_of(row, row + buffer.GetWidth(),
                        [](auto pixel) { return pixel.Alpha() == 0; }))
            return true;
    }
    return false;
}

/// The entry that the fewest opaque pixels need, the last one of several.
unsigned FindLeastUsed(const DynamicBuffer& buffer, const DynamicPalette& palette)
{
    std::array<std::uint64_t, DynamicPalette::MaxIndexed> counts{};
    PaletteMatcher matcher(palette);
    PaletteRows rows(buffer, PaletteAlpha::OneBit);
    for (unsigned y = 0; y < buffer.GetHeight(); ++y) {
        const PixelRGBA8* row = rows.GetRow(y);
        for (unsigned x = 0; x < buffer.GetWidth(); ++x)
            if (row[x].Alpha() > 0)
                ++counts[matcher.Find(row[x])];
    }
    const auto last = std::min_element(counts.rend() - palette.GetSize(), counts.rend());
    return static_cast<unsigned>(counts.rend() - last) - 1;
}

} // namespace

DynamicPalette ReserveTransparentEntry(const DynamicBitmap& bitmap, DynamicPalette palette)
{
    CheckQuantisable(bitmap);
    CheckPalette(palette);
    if (FindPaletteAlpha(palette) != PaletteAlpha::None || !HasTransparent(bitmap.GetPixels()))
        return palette;
    if (palette.GetSize() == DynamicPalette::MaxIndexed)
        palette.Remove(FindLeastUsed(bitmap.GetPixels(), palette));
    palette.Add(DynamicPixel(PixelRGBA8{}));
    return palette;
}

Kernel::Counted<const PalettisedBitmap> Palettise(const DynamicBitmap& bitmap,
                                                  const DynamicPalette& palette, bool diffuse)
{
    CheckQuantisable(bitmap);
    CheckPalette(palette);
    const DynamicBuffer& buffer = bitmap.GetPixels();
    const unsigned width = buffer.GetWidth();
    std::vector<std::uint8_t> indices(std::size_t{width} * buffer.GetHeight());
    PaletteRows rows(buffer, FindPaletteAlpha(palette));
    PaletteMatcher matcher(palette);
    ErrorDiffusion diffusion(matcher, width);
    for (unsigned y = 0; y < buffer.GetHeight(); ++y) {
        const PixelRGBA8* row = rows.GetRow(y);
        std::uint8_t* out = indices.data() + std::size_t{y} * width;
        if (diffuse)
            diffusion.ChooseRow(row, out);
        else
            std::transform(row, row + width, out, [&](auto pixel) { return matcher.Find(pixel); });
    }
    return Kernel::MakeCounted<const PalettisedBitmap>(
        width, buffer.GetHeight(), std::move(indices), palette, bitmap.GetProfile());
}

} // namespace Raster
