#include <raster/Quantise.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <tuple>

#include <raster/ColourClusters.h>
#include <raster/ColourHistogram.h>
#include <raster/PaletteRows.h>

namespace Raster {

namespace {

/// The colours of a picture in three classes that share no palette entry, so that what is opaque or
/// transparent stays so.
struct PictureColours
{
    ColourHistogram opaque;
    ColourHistogram translucent;
    bool hasTransparent = false;

    void Add(const PixelRGBA8& pixel, std::uint64_t count)
    {
        if (pixel.Alpha() == 255)
            opaque.Add(pixel, count);
        else if (pixel.Alpha() > 0)
            translucent.Add(pixel, count);
        else
            hasTransparent = true;
    }
};

void CountRow(PictureColours& colours, const PixelRGBA8* row, unsigned width)
{
    for (const PixelRGBA8 *run = row, *end = row + width; run != end;) {
        const PixelRGBA8* next = std::find_if(run, end, [&](auto pixel) { return pixel != *run; });
        colours.Add(*run, static_cast<std::uint64_t>(next - run));
        run = next;
    }
}

PictureColours CountColours(const DynamicBuffer& buffer, PaletteAlpha alpha)
{
    PictureColours colours;
    PaletteRows rows(buffer, alpha);
    for (unsigned y = 0; y < buffer.GetHeight(); ++y)
        CountRow(colours, rows.GetRow(y), buffer.GetWidth());
    return colours;
}

std::vector<WeightedColour> MakeWeighted(const ColourHistogram& histogram)
{
    std::vector<WeightedColour> result;
    result.reserve(histogram.GetColours().size());
    for (const ColourHistogram::Colour& colour : histogram.GetColours()) {
        const double count = double(colour.count);
        std::array<double, 4> mean;
        for (std::size_t c = 0; c < mean.size(); ++c)
            mean[c] = double(colour.sum[c]) / count;
        ColourPoint point;
        for (std::size_t c = 0; c < 3; ++c)
            point[c] = static_cast<float>(2.0 * mean[c] - mean[3]);
        point[3] = static_cast<float>(mean[3]);
        result.push_back({point, count});
    }
    return result;
}

/// The colour of a point with alpha, not premultiplied.
PixelRGBA8 MakePixel(const ColourPoint& point)
{
    const auto round = [](float value) {
        return static_cast<std::uint8_t>(std::clamp(value, 0.0F, 255.0F) + 0.5F);
    };
    const float alpha = point[3];
    PixelRGBA8 pixel;
    for (std::size_t c = 0; c < 3; ++c)
        pixel[c] = round(0.5F * (point[c] + alpha) * 255.0F / alpha);
    pixel.Alpha() = round(alpha);
    return pixel;
}

/// The classes that get palette entries, as many as there is room for: the opaque one first.
std::vector<std::vector<WeightedColour>> ListClasses(const PictureColours& colours,
                                                     std::size_t room)
{
    std::vector<std::vector<WeightedColour>> classes;
    for (const ColourHistogram* histogram : {&colours.opaque, &colours.translucent})
        if (!histogram->GetColours().empty() && classes.size() < room)
            classes.push_back(MakeWeighted(*histogram));
    return classes;
}

/// By alpha, then by brightness, then by channels.
auto GetSortKey(const PixelRGBA8& pixel)
{
    const int brightness = 30 * pixel[0] + 59 * pixel[1] + 11 * pixel[2];
    return std::tuple(pixel.Alpha(), brightness, pixel.channels);
}

} // namespace

DynamicPalette MakeOptimalPalette(const DynamicBitmap& bitmap, unsigned count, PaletteAlpha alpha)
{
    CheckQuantisable(bitmap);
    if (count < 2 || count > DynamicPalette::MaxIndexed)
        throw std::invalid_argument("a palette has 2 to 256 colours");
    const PictureColours colours = CountColours(bitmap.GetPixels(), alpha);
    const std::size_t room = count - (colours.hasTransparent ? 1 : 0);

    std::vector<PixelRGBA8> pixels;
    if (colours.hasTransparent)
        pixels.push_back({});
    for (const auto& centres : FindColourClusters(ListClasses(colours, room), room))
        std::ranges::transform(centres, std::back_inserter(pixels), MakePixel);
    std::ranges::sort(pixels, {}, GetSortKey);
    const auto repeated = std::ranges::unique(pixels);
    pixels.erase(repeated.begin(), repeated.end());

    DynamicPalette palette;
    for (const PixelRGBA8& pixel : pixels)
        palette.Add(DynamicPixel(pixel));
    return palette;
}

} // namespace Raster
