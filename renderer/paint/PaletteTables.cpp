#include <renderer/paint/Palette.h>

#include <algorithm>
#include <array>

#include <renderer/paint/ColourRGB.h>

namespace Renderer {

namespace {

using Raster::PixelRGBA8;

constexpr unsigned MaxGreys = 256;

constexpr PixelRGBA8 RGB(unsigned red, unsigned green, unsigned blue)
{
    return {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
            static_cast<std::uint8_t>(blue), 255};
}

constexpr PixelRGBA8 Grey(unsigned level)
{
    return RGB(level, level, level);
}

/// A table of a fixed number of colours under construction.
template<std::size_t Size>
struct Table
{
    std::array<PixelRGBA8, Size> colours{};
    std::size_t count = 0;

    constexpr void Add(const PixelRGBA8& colour) { colours[count++] = colour; }
    constexpr bool Contains(const PixelRGBA8& colour) const
    {
        return std::find(colours.begin(), colours.begin() + count, colour) !=
               colours.begin() + count;
    }
};

/// The colour of a place in the cube of six levels of each channel.
constexpr PixelRGBA8 CubeColour(unsigned place)
{
    return RGB(place / 36 * 51, place / 6 % 6 * 51, place % 6 * 51);
}
constexpr unsigned CubeSize = 6 * 6 * 6;

constexpr auto WebTable = [] {
    Table<CubeSize> table;
    for (unsigned place = 0; place < CubeSize; ++place)
        table.Add(CubeColour(place));
    return table;
}();
static_assert(WebTable.count == WebTable.colours.size());

constexpr auto MacintoshTable = [] {
    Table<256> table;
    for (unsigned place = CubeSize - 1; place > 0; --place)
        table.Add(CubeColour(place));
    for (unsigned ramp = 0; ramp < 4; ++ramp) {
        for (unsigned step = 14; step > 0; --step) {
            if (step % 3 == 0)
                continue; // a level of the cube
            const unsigned level = step * 17;
            const PixelRGBA8 ramps[] = {RGB(level, 0, 0), RGB(0, level, 0), RGB(0, 0, level),
                                        Grey(level)};
            table.Add(ramps[ramp]);
        }
    }
    table.Add(Grey(0));
    return table;
}();
static_assert(MacintoshTable.count == MacintoshTable.colours.size());

constexpr auto WindowsTable = [] {
    Table<256> table;
    for (unsigned bits = 0; bits < 8; ++bits) // of red, green and blue
        table.Add(RGB((bits & 1) * 128, (bits >> 1 & 1) * 128, (bits >> 2) * 128));
    table.Add(Grey(192));
    for (unsigned bits = 1; bits < 8; ++bits)
        table.Add(RGB((bits & 1) * 255, (bits >> 1 & 1) * 255, (bits >> 2) * 255));
    for (const PixelRGBA8& pastel :
         {RGB(192, 220, 192), RGB(166, 202, 240), RGB(255, 251, 240), RGB(160, 160, 164)})
        table.Add(pastel);
    for (unsigned place = 0; place < CubeSize; ++place) {
        if (!table.Contains(CubeColour(place)))
            table.Add(CubeColour(place));
    }
    constexpr unsigned greys = 28;
    for (unsigned step = 1; step <= greys; ++step)
        table.Add(Grey((2 * 255 * step + greys + 1) / (2 * (greys + 1))));
    return table;
}();
static_assert(WindowsTable.count == WindowsTable.colours.size());

template<class Pixels>
Kernel::Consolidated<Palette> MakePalette(const Pixels& pixels)
{
    Palette::Colours colours;
    for (const PixelRGBA8& pixel : pixels)
        colours.push_back(ColourRGB::Create(pixel));
    return Palette::Create(std::move(colours));
}

} // namespace

Kernel::Consolidated<Palette> Palette::GetBlackAndWhitePalette()
{
    return CreateGrayscale(2);
}

Kernel::Consolidated<Palette> Palette::CreateGrayscale(unsigned n)
{
    n = std::min(n, MaxGreys);
    const unsigned steps = std::max(n, 2U) - 1;
    std::vector<PixelRGBA8> greys;
    for (unsigned i = 0; i < n; ++i)
        greys.push_back(Grey((2 * 255 * i + steps) / (2 * steps)));
    return MakePalette(greys);
}

Kernel::Consolidated<Palette> Palette::GetWebPalette()
{
    return MakePalette(WebTable.colours);
}

Kernel::Consolidated<Palette> Palette::GetMacintoshPalette()
{
    return MakePalette(MacintoshTable.colours);
}

Kernel::Consolidated<Palette> Palette::GetWindowsPalette()
{
    return MakePalette(WindowsTable.colours);
}

} // namespace Renderer
