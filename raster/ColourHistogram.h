#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include <raster/Pixel.h>

namespace Raster {

/// Counts the colours of a picture. As long as there are no more than MaxColours, each is counted
/// alone; beyond that, colours that agree in all but their low bits are counted as one, which is
/// their mean. What comes out does not depend on the order in which pixels come in, but for the
/// order of the colours.
class ColourHistogram
{
public:
    static constexpr std::size_t MaxColours = std::size_t{1} << 15;

    struct Colour
    {
        std::array<std::uint64_t, 4> sum; ///< of the channels
        std::uint64_t count;
        std::uint32_t key;
    };

    ColourHistogram();

    void Add(const PixelRGBA8& pixel, std::uint64_t count);
    const std::vector<Colour>& GetColours() const noexcept { return m_colours; }

private:
    /// The slot of a key: the one that holds it, or the free one where it belongs.
    std::uint32_t& FindSlot(std::uint32_t key) noexcept;
    std::uint32_t MakeKey(std::uint32_t pixel) const noexcept;
    void Merge(const Colour& colour);
    /// Drops another low bit of the colours, until there is room again.
    void Coarsen();

    unsigned m_droppedBits = 0;
    std::vector<Colour> m_colours;
    std::vector<std::uint32_t> m_slots; ///< open addressing: 1 + the index of a colour, 0 if free
};

} // namespace Raster
