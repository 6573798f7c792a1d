#include <raster/Codecs.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

#include <raster/CodecSupport.h>
#include <raster/PngOutput.h>

namespace Raster {

namespace {

/// Everything that is changed while libpng may jump.
struct PaletteWriteState : PngOutput
{
    const PalettisedBitmap* bitmap;
    png_color colours[DynamicPalette::MaxIndexed];
    png_byte alphas[DynamicPalette::MaxIndexed];
    int colourCount;
    int alphaCount; ///< up to the last entry that is not opaque
};

void CollectPalette(PaletteWriteState& state, const DynamicPalette& palette)
{
    state.colourCount = int(palette.GetSize());
    for (unsigned i = 0; i < palette.GetSize(); ++i) {
        const auto entry = palette.Get<PixelRGBA8>(i);
        state.colours[i] = {entry[0], entry[1], entry[2]};
        state.alphas[i] = entry.Alpha();
        if (entry.Alpha() < 255)
            state.alphaCount = int(i) + 1;
    }
}

/// Bits per index: the fewest that tell all entries apart.
int GetDepth(int colourCount)
{
    return colourCount <= 2 ? 1 : colourCount <= 4 ? 2 : colourCount <= 16 ? 4 : 8;
}

void WriteFile(PaletteWriteState& state)
{
    BeginPng(state);
    // Neighbouring indices have nothing to do with each other: differences only disturb.
    png_set_filter(state.png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    png_set_IHDR(state.png, state.info, state.bitmap->GetWidth(), state.bitmap->GetHeight(),
                 GetDepth(state.colourCount), PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    SetPngColourSpace(state);
    png_set_PLTE(state.png, state.info, state.colours, state.colourCount);
    if (state.alphaCount > 0)
        png_set_tRNS(state.png, state.info, state.alphas, state.alphaCount, nullptr);
    png_write_info(state.png, state.info);
    png_set_packing(state.png);
    for (unsigned y = 0; y < state.bitmap->GetHeight(); ++y)
        png_write_row(state.png, state.bitmap->GetRow(y));
    png_write_end(state.png, nullptr);
}

} // namespace

void WritePNG(Kernel::OutStream& out, const PalettisedBitmap& bitmap, int compression)
{
    if (compression < 0 || compression > 9)
        throw std::invalid_argument("the compression of a PNG file is from 0 to 9");
    const auto profile = GetProfileToEmbed(Format::RGBA8, bitmap.GetProfile());
    PaletteWriteState state{};
    state.profile = profile.Get();
    state.compression = compression;
    state.bitmap = &bitmap;
    CollectPalette(state, bitmap.GetPalette());
    WritePngFile(out, WriteFile, state);
}

} // namespace Raster
