#include <raster/PaletteMatcher.h>

#include <algorithm>
#include <bit>
#include <cstdlib>

#include <raster/Convert.h>

namespace Raster {

namespace {

constexpr unsigned SeenBits = 14;

} // namespace

void PaletteMatcher::Entries::Add(const PixelRGBA8& colour, std::size_t index)
{
    m_points.push_back(MakeColourPoint(colour));
    m_indices.push_back(static_cast<std::uint8_t>(index));
}

void PaletteMatcher::Entries::MakeTree()
{
    if (!IsEmpty())
        m_tree.emplace(m_points);
}

std::uint8_t PaletteMatcher::Entries::Find(const PixelRGBA8& pixel) const
{
    return m_indices[m_tree->Find(MakeColourPoint(pixel))];
}

PaletteMatcher::PaletteMatcher(const DynamicPalette& palette)
{
    for (unsigned i = 0; i < palette.GetSize(); ++i)
        m_colours.push_back(palette.Get<PixelRGBA8>(i));
    Premultiply(Format::RGBA8, m_colours.data(), m_colours.size());
    for (std::size_t i = 0; i < m_colours.size(); ++i) {
        m_all.Add(m_colours[i], i);
        if (m_colours[i].Alpha() == 255)
            m_opaque.Add(m_colours[i], i);
    }
    m_all.MakeTree();
    m_opaque.MakeTree();
    // A slot that was never used looks like one that has seen the transparent pixel.
    m_seen.assign(std::size_t{1} << SeenBits, {0, Search({})});
}

std::vector<int> PaletteMatcher::FindSpacings() const
{
    const auto measure = [](const PixelRGBA8& a, const PixelRGBA8& b) {
        int largest = 0;
        for (std::size_t c = 0; c < a.ChannelCount; ++c)
            largest = std::max(largest, std::abs(a[c] - b[c]));
        return largest;
    };
    std::vector<int> spacings(m_colours.size(), 255), distinct;
    for (std::size_t i = 0; i < m_colours.size(); ++i) {
        for (const PixelRGBA8& other : m_colours)
            if (other != m_colours[i])
                spacings[i] = std::min(spacings[i], measure(m_colours[i], other));
        const auto here = m_colours.begin() + std::ptrdiff_t(i);
        if (std::find(m_colours.begin(), here, *here) == here)
            distinct.push_back(spacings[i]);
    }
    const auto middle = distinct.begin() + std::ptrdiff_t(distinct.size() / 2);
    std::nth_element(distinct.begin(), middle, distinct.end());
    for (int& spacing : spacings)
        spacing = std::max(spacing, *middle);
    return spacings;
}

std::uint8_t PaletteMatcher::Search(const PixelRGBA8& pixel) const
{
    return pixel.Alpha() == 255 && !m_opaque.IsEmpty() ? m_opaque.Find(pixel) : m_all.Find(pixel);
}

std::uint8_t PaletteMatcher::Find(const PixelRGBA8& pixel)
{
    const auto key = std::bit_cast<std::uint32_t>(pixel);
    Seen& seen = m_seen[key * 0x9e3779b1U >> (32 - SeenBits)]; // Fibonacci hashing
    if (seen.pixel != key)
        seen = {key, Search(pixel)};
    return seen.index;
}

} // namespace Raster
