#pragma once

#include <vector>

#include <raster/Quantise.h>

namespace Raster {

/// \throws std::invalid_argument for pictures that are not RGBA8.
void CheckQuantisable(const DynamicBitmap& bitmap);

/// What a palette can hold of alpha.
PaletteAlpha FindPaletteAlpha(const DynamicPalette& palette);

/// Gives the rows of an RGBA8 picture, premultiplied, with no more of its alpha than asked for:
/// transparent pixels are all zero, with OneBit the others are opaque, with None all are.
class PaletteRows
{
public:
    PaletteRows(const DynamicBuffer& buffer, PaletteAlpha alpha);

    /// The pixels of a row, valid until the next call.
    const PixelRGBA8* GetRow(unsigned y);

private:
    const DynamicBuffer& m_buffer;
    PaletteAlpha m_alpha;
    std::vector<PixelRGBA8> m_row;
};

} // namespace Raster
