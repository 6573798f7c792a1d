#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <random>
#include <set>
#include <stdexcept>

#include <gtest/gtest.h>

#include <raster/Convert.h>
#include <raster/Quantise.h>

#include "../icc/TestFiles.h"

using namespace Raster;
using RasterTest::MakeRandomBitmap;

namespace {

using Bitmap = Kernel::Counted<const DynamicBitmap>;
using Painter = std::function<PixelRGBA8(unsigned x, unsigned y)>;

/// A picture of plain colours, which are premultiplied.
Bitmap Paint(unsigned width, unsigned height, const Painter& painter)
{
    const auto buffer = DynamicBuffer::Create(Format::RGBA8, width, height);
    for (unsigned y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<PixelRGBA8*>(buffer->GetRow(y));
        for (unsigned x = 0; x < width; ++x)
            row[x] = painter(x, y);
        Premultiply(Format::RGBA8, row, width);
    }
    return Kernel::MakeCounted<const DynamicBitmap>(buffer);
}

std::uint8_t Byte(double value)
{
    return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
}

/// Smooth colours and some noise, much as in a photograph.
Bitmap PaintPhotograph()
{
    std::mt19937 random(3);
    return Paint(160, 120, [&](double x, double y) -> PixelRGBA8 {
        const double noise = double(random() % 9);
        return {Byte(x * 1.5 + noise), Byte(128 + 100 * std::sin(x / 30 + y / 50) - noise),
                Byte(y * 2 * std::cos(x / 90)), 255};
    });
}

const PixelRGBA8* GetRow(const DynamicBuffer& buffer, unsigned y)
{
    return reinterpret_cast<const PixelRGBA8*>(buffer.GetRow(y));
}

/// The mean squared difference over all channels of premultiplied pixels.
double Measure(const DynamicBuffer& a, const DynamicBuffer& b)
{
    double sum = 0;
    for (unsigned y = 0; y < a.GetHeight(); ++y)
        for (unsigned x = 0; x < a.GetWidth(); ++x)
            for (std::size_t c = 0; c < 4; ++c)
                sum += std::pow(double(GetRow(a, y)[x][c]) - GetRow(b, y)[x][c], 2);
    return sum / a.GetWidth() / a.GetHeight() / 4;
}

double MeasureReduced(const Bitmap& bitmap, unsigned count)
{
    const auto palette = MakeOptimalPalette(*bitmap, count, PaletteAlpha::Full);
    EXPECT_LE(palette.GetSize(), count);
    return Measure(*bitmap->GetBuffer(), *Palettise(*bitmap, palette)->MakeBuffer());
}

/// The least squared error of \p count levels for greys 0…n−1 that are used alike: each level
/// stands for a run of n/count of them, an even number whose middle is half a level off.
double GetLeastGreyError(double n, double count)
{
    const double run = n / count;
    return ((run * run - 1) / 12 + 0.25) * 3 / 4;
}

TEST(OptimalPalette, IsTheColoursThemselvesWhenThereAreFew)
{
    // Colours with alpha, opaque ones and none at all, each in exactly its own entry.
    std::mt19937 random(7);
    std::vector<PixelRGBA8> colours{{0, 0, 0, 0}, {255, 255, 255, 255}};
    while (colours.size() < 40)
        colours.push_back({std::uint8_t(random()), std::uint8_t(random()), std::uint8_t(random()),
                           std::uint8_t(random() % 2 ? 255 : 1 + random() % 254)});
    const auto bitmap = Paint(
        64, 50, [&](unsigned x, unsigned y) { return colours[(x * 7 + y * 13) % colours.size()]; });
    for (const bool diffuse : {false, true}) {
        const auto palette = MakeOptimalPalette(*bitmap, 40, PaletteAlpha::Full);
        const auto picture = Palettise(*bitmap, palette, diffuse);
        EXPECT_EQ(Measure(*bitmap->GetBuffer(), *picture->MakeBuffer()), 0.0) << diffuse;
        EXPECT_EQ(palette.Get<PixelRGBA8>(0), (PixelRGBA8{0, 0, 0, 0}));
    }
}

TEST(OptimalPalette, ComesCloseToTheLeastError)
{
    const auto greys = Paint(256, 4, [](unsigned x, unsigned) -> PixelRGBA8 {
        const auto level = std::uint8_t(x);
        return {level, level, level, 255};
    });
    for (const unsigned count : {2U, 8U, 64U})
        EXPECT_LE(MeasureReduced(greys, count), 1.02 * GetLeastGreyError(256, count)) << count;
    EXPECT_EQ(MeasureReduced(greys, 256), 0.0);

    // More colours never cost anything, and more distinct ones than are counted alone do no harm.
    for (const Bitmap& bitmap :
         {PaintPhotograph(), MakeRandomBitmap(Format::RGBA8, 300, 300, false, true),
          MakeRandomBitmap(Format::RGBA8, 300, 300, false, false)}) {
        double before = MeasureReduced(bitmap, 2);
        for (const unsigned count : {4U, 16U, 64U, 256U}) {
            const double error = MeasureReduced(bitmap, count);
            EXPECT_LT(error, 0.75 * before) << count;
            before = error;
        }
    }
}

TEST(OptimalPalette, KeepsFlatColoursOpacityAndTransparencyExact)
{
    const PixelRGBA8 paper{250, 251, 252, 255};
    std::mt19937 random(11);
    const auto bitmap = Paint(100, 100, [&](unsigned x, unsigned y) -> PixelRGBA8 {
        if (x < 20)
            return {};
        if (x < 70)
            return paper;
        const auto alpha = y < 50 ? 255 : 1 + random() % 254;
        return {std::uint8_t(random()), std::uint8_t(random()), 90, std::uint8_t(alpha)};
    });
    for (const unsigned count : {2U, 3U, 4U, 9U, 200U}) {
        for (const bool diffuse : {false, true}) {
            const auto palette = MakeOptimalPalette(*bitmap, count, PaletteAlpha::Full);
            const auto buffer = Palettise(*bitmap, palette, diffuse)->MakeBuffer();
            bool isKept = true;
            for (unsigned y = 0; y < 100; ++y) {
                for (unsigned x = 0; x < 100; ++x) {
                    const auto& before = GetRow(*bitmap->GetBuffer(), y)[x];
                    const auto& after = GetRow(*buffer, y)[x];
                    isKept &= before.Alpha() != 0 || after == PixelRGBA8{};
                    isKept &= before.Alpha() != 255 || after.Alpha() == 255;
                }
            }
            EXPECT_TRUE(isKept) << count << diffuse;
            if (count >= 9) {
                EXPECT_EQ(GetRow(*buffer, 0)[50], paper) << count << diffuse;
            }
        }
    }
}

TEST(Palettise, FollowsTheAlphaOfThePalette)
{
    const auto bitmap = Paint(4, 1, [](unsigned x, unsigned) -> PixelRGBA8 {
        constexpr std::uint8_t alphas[] = {0, 127, 128, 255};
        return {255, 0, 0, alphas[x]};
    });
    const PixelRGBA8 red{255, 0, 0, 255}, pink{255, 127, 127, 255}, white{255, 255, 255, 255};
    const PixelRGBA8 glass{255, 0, 0, 127};
    const auto reduce = [&](const std::vector<PixelRGBA8>& colours) {
        DynamicPalette palette;
        for (const auto& colour : colours)
            EXPECT_TRUE(palette.Add(DynamicPixel(colour)));
        const std::uint8_t* row = nullptr;
        const auto picture = Palettise(*bitmap, palette);
        row = picture->GetRow(0);
        return std::vector<int>(row, row + 4);
    };
    EXPECT_EQ(reduce({white, red, pink}), (std::vector{0, 2, 2, 1})) << "on paper";
    EXPECT_EQ(reduce({white, {}, red, red}), (std::vector{1, 1, 2, 2})) << "one bit";
    EXPECT_EQ(reduce({red, {}, glass}), (std::vector{1, 2, 2, 0})) << "all of it";
}

TEST(Palettise, ReservesAnEntryForTransparency)
{
    DynamicPalette full;
    for (unsigned i = 0; i < 256; ++i)
        full.Add(DynamicPixel(PixelRGBA8{std::uint8_t(i), 0, 0, 255}));
    const auto picture = [](unsigned unused, std::uint8_t alpha) {
        return Paint(512, 1, [=](unsigned x, unsigned) -> PixelRGBA8 {
            return {std::uint8_t(x % 256 == unused ? 0 : x), 0, 0,
                    x == 1 ? alpha : std::uint8_t{255}};
        });
    };
    EXPECT_EQ(ReserveTransparentEntry(*picture(77, 255), full), full) << "not needed";
    for (const unsigned unused : {77U, 255U}) {
        const auto palette = ReserveTransparentEntry(*picture(unused, 127), full);
        ASSERT_EQ(palette.GetSize(), 256U);
        EXPECT_EQ(palette.Get<PixelRGBA8>(255), PixelRGBA8{});
        for (unsigned i = 0; i < 255; ++i)
            EXPECT_EQ(palette.Get<PixelRGBA8>(i)[0], i + (i >= unused));
    }
}

TEST(Palettise, DiffusionKeepsTheMeanColour)
{
    // A slope of greys in black and white: every stretch of it has the mean of the slope there.
    const auto slope = Paint(256, 64, [](unsigned x, unsigned) -> PixelRGBA8 {
        const auto level = std::uint8_t(x);
        return {level, level, level, 255};
    });
    DynamicPalette palette;
    palette.Add(DynamicPixel(PixelRGBA8{0, 0, 0, 255}));
    palette.Add(DynamicPixel(PixelRGBA8{255, 255, 255, 255}));
    const auto expectMeans = [&](const char* what) {
        const auto picture = Palettise(*slope, palette, true);
        for (unsigned left = 0; left < 256; left += 16) {
            double white = 0;
            for (unsigned y = 0; y < 64; ++y)
                for (unsigned x = left; x < left + 16; ++x)
                    white += picture->GetRow(y)[x] == 1;
            EXPECT_NEAR(white / 16 / 64 * 255, left + 7.5, 4) << what << left;
        }
    };
    expectMeans("two ");
    for (int i = 0; i < 20; ++i)
        palette.Add(DynamicPixel(PixelRGBA8{0, 0, 0, 255}));
    expectMeans("repeated ");
    for (int i = 0; i < 30; ++i) // far from the dark greys, and near to each other
        palette.Add(DynamicPixel(PixelRGBA8{0, 0, std::uint8_t(255 - i), 255}));
    const auto mixed = Palettise(*slope, palette, true)->MakeBuffer();
    for (unsigned left = 0; left < 96; left += 32) {
        double red = 0;
        for (unsigned y = 0; y < 64; ++y)
            for (unsigned x = left; x < left + 32; ++x)
                red += GetRow(*mixed, y)[x][0];
        EXPECT_NEAR(red / 32 / 64, left + 15.5, 4) << left;
    }

    // Where no mixture gives the colour, no speck of quite another one comes in.
    const auto beyond = Paint(200, 200, [](unsigned, unsigned) -> PixelRGBA8 {
        return {100, 140, 60, 255};
    });
    palette.Reset(Format::RGBA8);
    for (const PixelRGBA8& colour :
         {PixelRGBA8{90, 130, 60, 255}, {110, 140, 70, 255}, {255, 0, 0, 255}, {240, 10, 10, 255}})
        palette.Add(DynamicPixel(colour));
    const auto calm = Palettise(*beyond, palette, true);
    for (unsigned y = 0; y < 200; ++y)
        EXPECT_LE(*std::max_element(calm->GetRow(y), calm->GetRow(y) + 200), 1);
}

TEST(Palettise, RefusesWhatItCannotDo)
{
    const auto bitmap = Paint(1, 1, [](unsigned, unsigned) { return PixelRGBA8{}; });
    const auto grey = MakeRandomBitmap(Format::IA8, 2, 2, false, true);
    const DynamicPalette empty;
    EXPECT_THROW(MakeOptimalPalette(*grey, 2, PaletteAlpha::Full), std::invalid_argument);
    EXPECT_THROW(MakeOptimalPalette(*bitmap, 1, PaletteAlpha::Full), std::invalid_argument);
    EXPECT_THROW(MakeOptimalPalette(*bitmap, 257, PaletteAlpha::Full), std::invalid_argument);
    EXPECT_THROW(Palettise(*bitmap, empty), std::invalid_argument);
    DynamicPalette palette;
    EXPECT_FALSE(palette.Add(DynamicPixel(PixelRGBA16{})));
    palette.Add(DynamicPixel(PixelRGBA8{}));
    EXPECT_THROW(PalettisedBitmap(1, 1, {1}, palette), std::invalid_argument);
    EXPECT_THROW(PalettisedBitmap(2, 1, {0}, palette), std::invalid_argument);
    EXPECT_THROW(PalettisedBitmap(0, 0, {}, palette), std::invalid_argument);
    EXPECT_THROW(PalettisedBitmap(1, 1, {0}, empty), std::invalid_argument);
    EXPECT_EQ(MakeOptimalPalette(*bitmap, 2, PaletteAlpha::Full).GetSize(), 1U) << "one colour";
}

} // namespace
