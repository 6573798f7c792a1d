#pragma once

#include <vector>

#include <raster/DynamicPixel.h>
#include <raster/Export.h>

namespace Raster {

/// An ordered list of pixels of one format that is known at run time: the colours of a palettised
/// picture. Colours are not premultiplied. A plain value.
class RASTER_EXPORT DynamicPalette
{
public:
    /// As many entries as the indices of a PalettisedBitmap tell apart. Palettes themselves may be
    /// longer.
    static constexpr unsigned MaxIndexed = 256;

    /// An empty palette.
    explicit DynamicPalette(Format format = Format::RGBA8) noexcept : m_format(format) {}

    Format GetFormat() const noexcept { return m_format; }
    unsigned GetSize() const noexcept { return static_cast<unsigned>(m_entries.size()); }
    const std::vector<DynamicPixel>& GetEntries() const noexcept { return m_entries; }

    /// The entry of an index below GetSize, as its own type. \pre the type stores GetFormat().
    template<class P>
    P Get(unsigned index) const noexcept
    {
        return m_entries[index].Get<P>();
    }

    /// Drops all entries and takes up another format.
    void Reset(Format format);
    /// Adds an entry at the end. \return false, with nothing added, for one of another format.
    bool Add(const DynamicPixel& entry);
    /// Drops the entry of an index below GetSize; those behind it move up.
    void Remove(unsigned index);

    friend bool operator==(const DynamicPalette&, const DynamicPalette&) noexcept = default;

private:
    Format m_format;
    std::vector<DynamicPixel> m_entries;
};

} // namespace Raster
