#include <set>

#include <gtest/gtest.h>

#include <renderer/paint/ColourCMYK.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/ForceColourVisitor.h>
#include <renderer/paint/Palette.h>

namespace Renderer {
namespace {

using Raster::DynamicPalette;
using Raster::DynamicPixel;
using Raster::Format;
using Raster::PixelRGBA8;

/// The entries as bytes, which must be plain opaque ColourRGB.
std::vector<PixelRGBA8> List(const Kernel::Consolidated<Palette>& palette)
{
    std::vector<PixelRGBA8> pixels;
    for (const auto& colour : palette->GetColours()) {
        PixelRGBA8 pixel;
        colour->GetColour(pixel, true, {});
        EXPECT_EQ(colour, (Kernel::Consolidated<Colour>(ColourRGB::Create(pixel))));
        EXPECT_EQ(pixel.Alpha(), 255);
        pixels.push_back(pixel);
    }
    return pixels;
}

constexpr PixelRGBA8 RGB(unsigned red, unsigned green, unsigned blue)
{
    return {std::uint8_t(red), std::uint8_t(green), std::uint8_t(blue), 255};
}

TEST(Palette, FixedPalettesHoldTheirColours)
{
    const std::vector<PixelRGBA8> blackAndWhite{RGB(0, 0, 0), RGB(255, 255, 255)};
    EXPECT_EQ(List(Palette::GetBlackAndWhitePalette()), blackAndWhite);

    const auto web = List(Palette::GetWebPalette());
    const auto mac = List(Palette::GetMacintoshPalette());
    const auto windows = List(Palette::GetWindowsPalette());
    EXPECT_EQ(web.size(), 216U);
    EXPECT_EQ(mac.size(), 256U);
    EXPECT_EQ(windows.size(), 256U);
    for (const auto& palette : {web, mac, windows}) {
        std::set<std::array<std::uint8_t, 4>> distinct;
        for (const auto& pixel : palette)
            distinct.insert(pixel.channels);
        EXPECT_EQ(distinct.size(), palette.size());
        for (const auto& pixel : web)
            EXPECT_TRUE(distinct.contains(pixel.channels)) << "they hold the web's colours";
    }

    const PixelRGBA8 macBegin[] = {RGB(255, 255, 255), RGB(255, 255, 204), RGB(255, 255, 153),
                                   RGB(255, 255, 102), RGB(255, 255, 51),  RGB(255, 255, 0),
                                   RGB(255, 204, 255), RGB(255, 204, 204)};
    const PixelRGBA8 macRamps[] = {RGB(0, 0, 51),  RGB(238, 0, 0), RGB(221, 0, 0), RGB(187, 0, 0),
                                   RGB(170, 0, 0), RGB(136, 0, 0), RGB(119, 0, 0), RGB(85, 0, 0),
                                   RGB(68, 0, 0),  RGB(34, 0, 0),  RGB(17, 0, 0),  RGB(0, 238, 0)};
    const PixelRGBA8 macEnd[] = {RGB(0, 0, 17), RGB(238, 238, 238)};
    EXPECT_TRUE(std::equal(std::begin(macBegin), std::end(macBegin), mac.begin()));
    EXPECT_TRUE(std::equal(std::begin(macRamps), std::end(macRamps), mac.begin() + 214));
    EXPECT_TRUE(std::equal(std::begin(macEnd), std::end(macEnd), mac.begin() + 244));
    EXPECT_EQ(mac[254], RGB(17, 17, 17));
    EXPECT_EQ(mac[255], RGB(0, 0, 0));
    const PixelRGBA8 windowsBegin[] = {
        RGB(0, 0, 0),     RGB(128, 0, 0),   RGB(0, 128, 0),     RGB(128, 128, 0),   RGB(0, 0, 128),
        RGB(128, 0, 128), RGB(0, 128, 128), RGB(128, 128, 128), RGB(192, 192, 192), RGB(255, 0, 0)};
    EXPECT_TRUE(std::equal(std::begin(windowsBegin), std::end(windowsBegin), windows.begin()));
    EXPECT_EQ(windows[15], RGB(255, 255, 255));
}

TEST(Palette, GreysAreEquallySpacedAndLimited)
{
    const auto levels = [](unsigned n) {
        std::vector<int> result;
        for (const auto& pixel : List(Palette::CreateGrayscale(n))) {
            EXPECT_TRUE(pixel[0] == pixel[1] && pixel[1] == pixel[2]);
            result.push_back(pixel[0]);
        }
        return result;
    };
    EXPECT_EQ(levels(0), std::vector<int>{});
    EXPECT_EQ(levels(1), std::vector{0});
    EXPECT_EQ(levels(3), (std::vector{0, 128, 255}));
    EXPECT_EQ(levels(4), (std::vector{0, 85, 170, 255}));
    EXPECT_EQ(levels(256)[77], 77);
    EXPECT_EQ(levels(4000000000U).size(), 256U);
}

TEST(Palette, IsAValueOfItsColoursInOrder)
{
    const Kernel::Consolidated<Colour> red = ColourRGB::Create(RGB(255, 0, 0));
    const Kernel::Consolidated<Colour> blue = ColourRGB::Create(RGB(0, 0, 255));
    EXPECT_EQ(Palette::GetWebPalette(), Palette::GetWebPalette());
    EXPECT_EQ(Palette::Create({red, nullptr, blue}), Palette::Create({red, blue}));
    EXPECT_FALSE(Palette::Create({red, blue}) == Palette::Create({blue, red}));
    EXPECT_FALSE(Palette::Create({red}) == Palette::Create({red, red}));
    const auto clone = Palette::Create({red, blue})->Clone();
    EXPECT_FALSE(clone->IsConsolidated());
    EXPECT_TRUE(clone->Equals(*Palette::Create({red, blue})));

    ForceColourVisitor toGrey(Raster::ColourSpace::Grey, {});
    ForceColourVisitor toRGB(Raster::ColourSpace::RGB, {});
    const auto palette = Palette::GetWebPalette();
    EXPECT_EQ(palette->Accept(toRGB), palette);
    const auto greys = palette->Accept(toGrey);
    for (const auto& colour : greys->GetColours())
        EXPECT_EQ(colour->GetType(), Colour::Grayscale);
}

TEST(Palette, GoesIntoAndComesFromPixels)
{
    const auto half = ColourRGB::Create(PixelRGBA8{255, 0, 0, 128}, 0.4);
    const auto ink = ColourCMYK::Create(Raster::PixelCMYKA8{0, 255, 255, 0, 255});
    const auto palette = Palette::Create({half, ink});
    DynamicPalette pixels;
    pixels.Add(DynamicPixel(PixelRGBA8{}));
    palette->FillDynamicPalette(pixels, Format::RGBA8, {});
    ASSERT_EQ(pixels.GetSize(), 2U) << "what was there is gone";
    EXPECT_EQ(pixels.Get<PixelRGBA8>(0), (PixelRGBA8{255, 153, 153, 128}));
    EXPECT_EQ(pixels.Get<PixelRGBA8>(1), RGB(255, 0, 0));
    EXPECT_EQ(List(Palette::CreateFromDynamicPalette(pixels, Format::RGBA8)),
              (std::vector{RGB(255, 153, 153), RGB(255, 0, 0)}))
        << "opaque";
    EXPECT_TRUE(List(Palette::CreateFromDynamicPalette(pixels, Format::RGBA16)).empty());

    // Through every format that can say these colours and back.
    const auto mac = Palette::GetMacintoshPalette();
    for (const Format format : {Format::RGBA8, Format::RGBA16, Format::RGBAUF, Format::CMYKA8}) {
        mac->FillDynamicPalette(pixels, format, {});
        EXPECT_EQ(pixels.GetFormat(), format);
        const auto back = List(Palette::CreateFromDynamicPalette(pixels, format));
        const auto expected = List(mac);
        const int tolerance = format == Format::CMYKA8 ? 1 : 0;
        for (unsigned i = 0; i < 256; ++i)
            for (std::size_t c = 0; c < 3; ++c)
                EXPECT_NEAR(back[i][c], expected[i][c], tolerance) << int(format) << ' ' << i;
    }
    mac->FillDynamicPalette(pixels, Format::None, {});
    EXPECT_EQ(pixels.GetSize(), 0U);
}

} // namespace
} // namespace Renderer
