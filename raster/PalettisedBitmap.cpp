#include <raster/PalettisedBitmap.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <raster/Convert.h>

namespace Raster {

PalettisedBitmap::PalettisedBitmap(unsigned width, unsigned height,
                                   std::vector<std::uint8_t> indices, DynamicPalette palette,
                                   Kernel::Counted<const ICCProfile> profile)
    : m_width(width),
      m_height(height),
      m_indices(std::move(indices)),
      m_palette(std::move(palette)),
      m_profile(std::move(profile))
{
    if (m_palette.GetFormat() != Format::RGBA8 || m_palette.GetSize() > DynamicPalette::MaxIndexed)
        throw std::invalid_argument("the palette of a picture has 1 to 256 colours in RGBA8");
    if (m_indices.empty() || m_indices.size() / m_width != m_height ||
        m_indices.size() % m_width != 0)
        throw std::invalid_argument("the indices of a picture are one for each of its pixels");
    if (*std::ranges::max_element(m_indices) >= m_palette.GetSize())
        throw std::invalid_argument("the picture has an index beyond its palette");
}

PalettisedBitmap::~PalettisedBitmap() = default;

Kernel::Counted<DynamicBuffer> PalettisedBitmap::MakeBuffer() const
{
    auto buffer = DynamicBuffer::Create(Format::RGBA8, m_width, m_height);
    if (!buffer)
        return buffer;
    std::vector<PixelRGBA8> colours;
    for (unsigned i = 0; i < m_palette.GetSize(); ++i)
        colours.push_back(m_palette.Get<PixelRGBA8>(i));
    Premultiply(Format::RGBA8, colours.data(), colours.size());
    for (unsigned y = 0; y < m_height; ++y) {
        const std::uint8_t* indices = GetRow(y);
        std::transform(indices, indices + m_width, reinterpret_cast<PixelRGBA8*>(buffer->GetRow(y)),
                       [&](std::uint8_t index) { return colours[index]; });
    }
    return buffer;
}

} // namespace Raster
