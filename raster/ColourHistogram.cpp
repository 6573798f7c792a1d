#include <raster/ColourHistogram.h>

#include <algorithm>
#include <bit>

namespace Raster {

namespace {

constexpr unsigned SlotBits = 17;
static_assert(ColourHistogram::MaxColours * 4 <= std::size_t{1} << SlotBits);

} // namespace

ColourHistogram::ColourHistogram() : m_slots(std::size_t{1} << SlotBits) {}

void ColourHistogram::Add(const PixelRGBA8& pixel, std::uint64_t count)
{
    Colour colour{{}, count, MakeKey(std::bit_cast<std::uint32_t>(pixel))};
    for (std::size_t c = 0; c < colour.sum.size(); ++c)
        colour.sum[c] = count * pixel[c];
    Merge(colour);
    if (m_colours.size() > MaxColours)
        Coarsen();
}

std::uint32_t& ColourHistogram::FindSlot(std::uint32_t key) noexcept
{
    constexpr std::uint32_t mask = (1U << SlotBits) - 1;
    std::uint32_t slot = key * 0x9e3779b1U >> (32 - SlotBits); // Fibonacci hashing
    while (m_slots[slot] != 0 && m_colours[m_slots[slot] - 1].key != key)
        slot = (slot + 1) & mask;
    return m_slots[slot];
}

std::uint32_t ColourHistogram::MakeKey(std::uint32_t pixel) const noexcept
{
    return pixel & 0x01010101U * (0xffU & (0xffU << m_droppedBits));
}

void ColourHistogram::Merge(const Colour& colour)
{
    std::uint32_t& slot = FindSlot(colour.key);
    if (slot == 0) {
        m_colours.push_back(colour);
        slot = static_cast<std::uint32_t>(m_colours.size());
        return;
    }
    Colour& known = m_colours[slot - 1];
    known.count += colour.count;
    for (std::size_t c = 0; c < known.sum.size(); ++c)
        known.sum[c] += colour.sum[c];
}

void ColourHistogram::Coarsen()
{
    while (m_colours.size() > MaxColours) {
        ++m_droppedBits;
        std::vector<Colour> finer;
        finer.swap(m_colours);
        std::ranges::fill(m_slots, 0U);
        for (Colour& colour : finer) {
            colour.key = MakeKey(colour.key);
            Merge(colour);
        }
    }
}

} // namespace Raster
