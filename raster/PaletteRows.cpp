#include <raster/PaletteRows.h>

#include <algorithm>
#include <stdexcept>

#include <raster/Convert.h>

namespace Raster {

namespace {

/// Pixels of less alpha than this are transparent where there is only one bit of it.
constexpr unsigned HalfAlpha = 128;

void PlaceOnWhite(PixelRGBA8& pixel)
{
    const unsigned paper = 255U - pixel.Alpha();
    for (std::size_t c = 0; c < 3; ++c)
        pixel[c] = static_cast<std::uint8_t>(std::min(255U, pixel[c] + paper));
    pixel.Alpha() = 255;
}

void MakeOneBit(PixelRGBA8& pixel)
{
    if (pixel.Alpha() < HalfAlpha) {
        pixel = {};
        return;
    }
    Unpremultiply(Format::RGBA8, &pixel, 1);
    pixel.Alpha() = 255;
}

} // namespace

void CheckQuantisable(const DynamicBitmap& bitmap)
{
    if (bitmap.GetFormat() != Format::RGBA8)
        throw std::invalid_argument("only RGBA8 pictures can be palettised");
}

PaletteAlpha FindPaletteAlpha(const DynamicPalette& palette)
{
    PaletteAlpha alpha = PaletteAlpha::None;
    for (unsigned i = 0; i < palette.GetSize(); ++i) {
        const unsigned value = palette.Get<PixelRGBA8>(i).Alpha();
        if (value > 0 && value < 255)
            return PaletteAlpha::Full;
        if (value == 0)
            alpha = PaletteAlpha::OneBit;
    }
    return alpha;
}

PaletteRows::PaletteRows(const DynamicBuffer& buffer, PaletteAlpha alpha)
    : m_buffer(buffer), m_alpha(alpha), m_row(buffer.GetWidth())
{}

const PixelRGBA8* PaletteRows::GetRow(unsigned y)
{
    const auto* source = reinterpret_cast<const PixelRGBA8*>(m_buffer.GetRow(y));
    std::transform(source, source + m_row.size(), m_row.begin(), [this](PixelRGBA8 pixel) {
        if (pixel.Alpha() == 255)
            return pixel;
        if (m_alpha == PaletteAlpha::None)
            PlaceOnWhite(pixel);
        else if (m_alpha == PaletteAlpha::OneBit)
            MakeOneBit(pixel);
        else if (pixel.Alpha() == 0)
            pixel = {};
        return pixel;
    });
    return m_row.data();
}

} // namespace Raster
