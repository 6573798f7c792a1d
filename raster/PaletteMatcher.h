#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <raster/DynamicPalette.h>
#include <raster/NearestColour.h>

namespace Raster {

/// Finds the palette entry of a pixel, the same one for the same pixel every time: opaque pixels
/// get opaque entries and transparent ones a transparent entry, as far as there are any. Remembers
/// the pixels that it has seen last.
class PaletteMatcher
{
public:
    /// \param palette 1 to 256 colours in RGBA8.
    explicit PaletteMatcher(const DynamicPalette& palette);

    /// The index of the entry nearest to a premultiplied pixel.
    std::uint8_t Find(const PixelRGBA8& pixel);
    /// An entry, premultiplied.
    const PixelRGBA8& GetColour(std::uint8_t index) const noexcept { return m_colours[index]; }
    /// How far apart the entries are about each of them: the largest difference of a channel to the
    /// nearest entry of another premultiplied colour, and at least the median of that over all such
    /// colours. 255 where all are the same.
    std::vector<int> FindSpacings() const;

private:
    /// Some of the entries, and where they stand in the palette.
    class Entries
    {
    public:
        void Add(const PixelRGBA8& colour, std::size_t index);
        /// To be called after the last Add.
        void MakeTree();
        bool IsEmpty() const noexcept { return m_indices.empty(); }
        std::uint8_t Find(const PixelRGBA8& pixel) const;

    private:
        std::vector<ColourPoint> m_points;
        std::vector<std::uint8_t> m_indices;
        std::optional<NearestColour> m_tree;
    };

    struct Seen
    {
        std::uint32_t pixel;
        std::uint8_t index;
    };

    std::uint8_t Search(const PixelRGBA8& pixel) const;

    std::vector<PixelRGBA8> m_colours;
    Entries m_all;
    Entries m_opaque;
    std::vector<Seen> m_seen; ///< by a hash of the pixel
};

} // namespace Raster
