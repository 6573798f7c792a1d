#pragma once

#include <cstdint>
#include <vector>

#include <kernel/Counted.h>
#include <raster/DynamicBuffer.h>
#include <raster/DynamicPalette.h>
#include <raster/ICCProfile.h>

namespace Raster {

/// An immutable picture whose pixels are indices into a palette, and the profile of the palette's
/// colours (none means the default of its format). The picture of GIF and PNG-8 files.
class RASTER_EXPORT PalettisedBitmap : public DynamicBase
{
public:
    /// \param indices row by row from the top, width bytes each.
    /// \param palette 1 to 256 colours, RGBA8.
    /// \throws std::invalid_argument when the sizes don't fit, or the palette is of another format
    ///         or length, or has no entry of some index.
    PalettisedBitmap(unsigned width, unsigned height, std::vector<std::uint8_t> indices,
                     DynamicPalette palette, Kernel::Counted<const ICCProfile> profile = {});
    ~PalettisedBitmap() override;

    unsigned GetWidth() const noexcept { return m_width; }
    unsigned GetHeight() const noexcept { return m_height; }
    const DynamicPalette& GetPalette() const noexcept { return m_palette; }
    const Kernel::Counted<const ICCProfile>& GetProfile() const noexcept { return m_profile; }

    /// The indices of row \p y, 0 ≤ y < height.
    const std::uint8_t* GetRow(unsigned y) const noexcept
    {
        return m_indices.data() + std::size_t{y} * m_width;
    }

    /// The picture in RGBA8, premultiplied. \return null when there is no memory for it.
    Kernel::Counted<DynamicBuffer> MakeBuffer() const;

private:
    unsigned m_width;
    unsigned m_height;
    std::vector<std::uint8_t> m_indices;
    DynamicPalette m_palette;
    Kernel::Counted<const ICCProfile> m_profile;
};

} // namespace Raster
