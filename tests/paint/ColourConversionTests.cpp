#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <renderer/paint/ColourCMYK.h>
#include <renderer/paint/ColourGrayscale.h>
#include <renderer/paint/ColourHSL.h>
#include <renderer/paint/ColourLAB.h>
#include <renderer/paint/ColourNamed.h>
#include <renderer/paint/ColourRegistration.h>
#include <renderer/paint/ColourRGB.h>
#include <tests/raster/icc/TestProfiles.h>

namespace Renderer {
namespace {

using Raster::PixelCMYKA8;
using Raster::PixelCMYKAF;
using Raster::PixelHSLAF;
using Raster::PixelIA16;
using Raster::PixelIA8;
using Raster::PixelLABA16;
using Raster::PixelRGBA16;
using Raster::PixelRGBA8;
using Raster::PixelRGBAF;
using Raster::PixelRGBAUF;

template<class P>
P Get(const Colour& colour, bool applyTint = false, const Colour::ICCProfileSet& profiles = {})
{
    P pixel;
    colour.GetColour(pixel, applyTint, profiles);
    return pixel;
}

template<class P>
void ExpectNear(const P& actual, const P& expected, double tolerance)
{
    for (std::size_t c = 0; c < P::ChannelCount; ++c)
        EXPECT_NEAR(actual[c], expected[c], tolerance) << "channel " << c;
}

Kernel::Counted<Colour> RGB(float r, float g, float b, float a = 1.0f)
{
    return ColourRGB::CreateFakeTemporary(PixelRGBAUF{r, g, b, a});
}

Kernel::Counted<Colour> CMYK(float c, float m, float y, float k, float a = 1.0f)
{
    return ColourCMYK::CreateFakeTemporary(PixelCMYKAF{c, m, y, k, a});
}

TEST(ColourConversion, ClampsRGBExceptUnbounded)
{
    const auto colour = RGB(1.2f, -0.1f, 0.5f);
    EXPECT_EQ(Get<PixelRGBA8>(*colour), (PixelRGBA8{255, 0, 128, 255}));
    EXPECT_EQ(Get<PixelRGBA16>(*colour), (PixelRGBA16{65535, 0, 32768, 65535}));
    EXPECT_EQ(Get<PixelRGBAF>(*colour), (PixelRGBAF{1, 0, 0.5f, 1}));
    EXPECT_EQ(Get<PixelRGBAUF>(*colour), (PixelRGBAUF{1.2f, -0.1f, 0.5f, 1}));
    EXPECT_EQ(Get<Raster::PixelAlpha8>(*RGB(0, 0, 0, 0.5f))[0], 128);
    EXPECT_EQ(Get<Raster::PixelAlpha16>(*RGB(0, 0, 0, 0.25f))[0], 16384);
    EXPECT_EQ(Get<Raster::PixelAlphaF>(*RGB(0, 0, 0, 0.3f))[0], 0.3f);
}

TEST(ColourConversion, KeepsTheLowBitsOfChannelsThatAreNotClamped)
{
    EXPECT_EQ(Get<PixelRGBA8>(*RGB(0, 0, 0, 2.0f)).Alpha(), 510 - 256);
    EXPECT_EQ(Get<PixelCMYKA8>(*CMYK(2.0f, -1.0f, 0, 0))[0], 510 - 256);
    EXPECT_EQ(Get<PixelCMYKA8>(*CMYK(2.0f, -1.0f, 0, 0))[1], 256 - 254);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Get<PixelRGBA8>(*RGB(nan, infinity, -infinity, nan)), (PixelRGBA8{0, 255, 0, 0}));
    EXPECT_EQ(Get<PixelCMYKA8>(*CMYK(nan, infinity, 1e30f, 0, nan)), (PixelCMYKA8{0, 0, 0, 0, 0}));
    // No conversion of such values may trap.
    Get<PixelLABA16>(*RGB(nan, infinity, 1e30f));
    Get<PixelHSLAF>(*RGB(nan, infinity, 1e30f));
    Get<PixelRGBA8>(*ColourHSL::CreateFakeTemporary(PixelHSLAF{nan, infinity, -1e30f, nan}));
    Get<PixelRGBA8>(*ColourGrayscale::CreateFakeTemporary(nan, 1e30f));
}

TEST(ColourConversion, HSLFormulas)
{
    ExpectNear(Get<PixelHSLAF>(*RGB(1, 0, 1, 0.25f)), {300.0f / 360, 1, 0.5f, 0.25f}, 1e-6);
    ExpectNear(Get<PixelHSLAF>(*RGB(2, -1, 0)), {0, 1, 0.5f, 1}, 1e-6); // clamped first
    EXPECT_EQ(Get<PixelRGBA8>(*ColourHSL::Create(0.3, 0.0, 0.2, 1.0)),
              (PixelRGBA8{51, 51, 51, 255}));
}

TEST(ColourConversion, CMYKFormulas)
{
    EXPECT_EQ(Get<PixelCMYKA8>(*RGB(0, 0, 0)), (PixelCMYKA8{0, 0, 0, 255, 255}));
    EXPECT_EQ(Get<PixelCMYKA8>(*RGB(1, 1, 1)), (PixelCMYKA8{0, 0, 0, 0, 255}));
    EXPECT_EQ(Get<PixelCMYKA8>(*RGB(1, 0.5f, 0, 0.5f)), (PixelCMYKA8{0, 128, 255, 0, 128}));
    EXPECT_EQ(Get<PixelRGBA8>(*CMYK(0, 0, 0, 1)), (PixelRGBA8{0, 0, 0, 255}));

    // Every 8-bit ink, against the formula in double precision.
    for (int ink = 0; ink < 256; ++ink) {
        const int black = (ink * 37) % 256;
        const auto pixel = Get<PixelRGBA8>(*ColourCMYK::CreateFakeTemporary(PixelCMYKA8{
            static_cast<std::uint8_t>(ink), 255, 0, static_cast<std::uint8_t>(black), 100}));
        const double k = black / 255.0;
        EXPECT_NEAR(pixel[0], 255 * (1 - std::min(1.0, ink / 255.0 * (1 - k) + k)), 0.5001);
        EXPECT_EQ(pixel[1], 0);
        EXPECT_EQ(pixel[2], 255 - black);
        EXPECT_EQ(pixel[3], 100);
    }
}

TEST(ColourConversion, GreyFormulas)
{
    for (unsigned value = 0; value < 256; ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        const auto grey = ColourGrayscale::CreateFakeTemporary(byte, byte);
        EXPECT_EQ(Get<PixelRGBA8>(*grey), (PixelRGBA8{byte, byte, byte, byte}));
        EXPECT_EQ(Get<PixelIA8>(*grey), (PixelIA8{byte, byte}));
    }
    // 0.50001 × 65535 is cut to 32768, and 0.49999 × 65535 to 32766: just below the half of 255
    // steps.
    EXPECT_EQ(Get<PixelRGBA8>(*ColourGrayscale::Create(0.50001, 1.0))[0], 128);
    EXPECT_EQ(Get<PixelRGBA8>(*ColourGrayscale::Create(0.49999, 1.0))[0], 127);
    // 0.5 × 65535 = 32767.5 is cut as well and falls below the half; rounding would give 128.
    EXPECT_EQ(Get<PixelRGBA8>(*ColourGrayscale::Create(0.5, 1.0))[0], 127);
    const std::uint16_t word = 12345;
    EXPECT_EQ(Get<PixelIA16>(*ColourGrayscale::Create(word, word)), (PixelIA16{word, word}));
    EXPECT_EQ(Get<PixelCMYKAF>(*ColourGrayscale::Create(0.25f, 1.0f)),
              (PixelCMYKAF{0, 0, 0, 0.75f, 1}));
}

TEST(ColourConversion, LABFormulas)
{
    // L* 50 is sRGB 118.9; a* 80, b* 67 at L* 54 is about pure red under D50.
    const auto grey = ColourLAB::CreateFakeTemporary(PixelLABA16{32768, 0x8080, 0x8080, 32768});
    const auto pixel = Get<PixelRGBA8>(*grey);
    EXPECT_NEAR(pixel[0], 119, 1);
    EXPECT_NEAR(pixel[1], 119, 1);
    EXPECT_NEAR(pixel[2], 119, 1);
    EXPECT_EQ(pixel[3], 128);
    const auto white = Get<PixelLABA16>(*RGB(1, 1, 1, 0.5f));
    ExpectNear(white, PixelLABA16{65535, 0x8080, 0x8080, 32768}, 40);
}

TEST(ColourConversion, GoesThroughTheProfilesWhereThereAreAny)
{
    const auto profiles = RasterTest::MakeFullSet();
    auto& manager = Raster::ICCManager::GetInstance();

    // 8-bit RGB from inks: exactly the platform's transform of the 8-bit inks.
    const auto cmyk = CMYK(0.3f, 0.6f, 0.1f, 0.2f, 0.5f);
    const auto inks = Get<PixelCMYKA8>(*cmyk);
    PixelRGBA8 expected;
    ASSERT_TRUE(manager.DoTransform(Raster::Format::CMYKA8, profiles, &inks, Raster::Format::RGBA8,
                                    profiles, &expected, 1));
    EXPECT_EQ(Get<PixelRGBA8>(*cmyk, false, profiles), expected);
    EXPECT_NE(Get<PixelRGBA8>(*cmyk, false, profiles), Get<PixelRGBA8>(*cmyk));

    // There and back through float stays as close as the inks' coarse table lets it.
    const auto there = Get<PixelCMYKAF>(*RGB(0.6f, 0.4f, 0.4f), false, profiles);
    const auto back = Get<PixelRGBAF>(*ColourCMYK::CreateFakeTemporary(there), false, profiles);
    ExpectNear(back, PixelRGBAF{0.6f, 0.4f, 0.4f, 1}, 0.06);

    // Unbounded float is in the alternative RGB profile, of gamma 1 where the other has 2.2.
    const auto lab = ColourLAB::CreateFakeTemporary(PixelLABA16{32768, 0x8080, 0x8080, 65535});
    const auto bounded = Get<PixelRGBAF>(*lab, false, profiles);
    const auto unbounded = Get<PixelRGBAUF>(*lab, false, profiles);
    EXPECT_NEAR(unbounded[1], std::pow(bounded[1], 2.2), 2e-3);
    EXPECT_GT(bounded[1], 2 * unbounded[1]);

    // RGB values are the document's own: no transform between RGB pixels.
    EXPECT_EQ(Get<PixelRGBAUF>(*RGB(0.2f, 0.4f, 0.6f), false, profiles),
              (PixelRGBAUF{0.2f, 0.4f, 0.6f, 1}));
    EXPECT_EQ(Get<PixelRGBA8>(*RGB(0.2f, 0.4f, 0.6f), false, profiles),
              (PixelRGBA8{51, 102, 153, 255}));
}

TEST(ColourTint, MixesWithPaper)
{
    const auto red = ColourRGB::CreateFakeTemporary(PixelRGBA8{255, 0, 0, 255}, 0.4);
    EXPECT_EQ(Get<PixelRGBA8>(*red, true), (PixelRGBA8{255, 153, 153, 255}));
    EXPECT_EQ(Get<PixelRGBA8>(*red, false), (PixelRGBA8{255, 0, 0, 255}));
    EXPECT_EQ(Get<PixelRGBA16>(*red, true), (PixelRGBA16{65535, 39321, 39321, 65535}));
    ExpectNear(Get<PixelRGBAUF>(*red, true), PixelRGBAUF{1, 0.6f, 0.6f, 1}, 1e-6);
    ExpectNear(Get<PixelHSLAF>(*red, true), PixelHSLAF{0, 1, 0.8f, 1}, 1e-6);

    const auto ink = ColourCMYK::CreateFakeTemporary(PixelCMYKA8{255, 0, 0, 100, 77}, 0.4);
    EXPECT_EQ(Get<PixelCMYKA8>(*ink, true), (PixelCMYKA8{102, 0, 0, 40, 77}));
    const auto lab = ColourLAB::CreateFakeTemporary(PixelLABA16{0, 0, 65535, 1000}, 0.5);
    EXPECT_EQ(Get<PixelLABA16>(*lab, true), (PixelLABA16{32768, 16448, 49216, 1000}));
    const auto grey = ColourGrayscale::CreateFakeTemporary(0.0, 0.5, 0.25);
    EXPECT_EQ(Get<PixelIA8>(*grey, true), (PixelIA8{191, 128}));
}

TEST(ColourRegistration, IsAllInkAndNoLight)
{
    const auto colour = ColourRegistration::Create(0.4);
    EXPECT_EQ(Get<PixelRGBA8>(*colour), (PixelRGBA8{0, 0, 0, 255}));
    EXPECT_EQ(Get<PixelRGBA8>(*colour, true), (PixelRGBA8{153, 153, 153, 255}));
    EXPECT_EQ(Get<PixelCMYKAF>(*colour), (PixelCMYKAF{1, 1, 1, 1, 1}));
    ExpectNear(Get<PixelCMYKAF>(*colour, true), PixelCMYKAF{0.4f, 0.4f, 0.4f, 0.4f, 1}, 1e-6);
    EXPECT_EQ(Get<PixelLABA16>(*colour), (PixelLABA16{0, 0x8080, 0x8080, 65535}));
}

TEST(ColourNamed, PrefersTheSRGBEquivalentIn8BitRGBOnly)
{
    const auto base = Colour::Consolidate(Kernel::Counted<const Colour>(CMYK(0, 0, 0, 1)));
    const auto sRGB = ColourRGB::Create(PixelRGBA8{255, 128, 0, 255});
    const auto named = ColourNamed::Create("Orange", true, base, sRGB, 0.4);
    EXPECT_EQ(Get<PixelRGBA8>(*named), (PixelRGBA8{255, 128, 0, 255}));
    EXPECT_EQ(Get<PixelRGBA16>(*named), (PixelRGBA16{0, 0, 0, 65535}));
    EXPECT_EQ(Get<PixelCMYKA8>(*named, true), (PixelCMYKA8{0, 0, 0, 102, 255}));
    EXPECT_EQ(Get<PixelRGBA8>(*ColourNamed::Create("Black", false, base, nullptr)),
              (PixelRGBA8{0, 0, 0, 255}));

    // In a document of wide primaries the sRGB colour has smaller coordinates, and less of red.
    const auto wide = Get<PixelRGBA8>(*named, false, RasterTest::MakeFullSet());
    EXPECT_LT(wide[0], 250);
    EXPECT_GT(wide[2], 0);
}

TEST(GetRasterDynamicPixel, TakesEveryFormatTinted)
{
    const auto red = ColourRGB::Create(PixelRGBA8{255, 0, 0, 128}, 0.4);
    const auto pixel = red->GetRasterDynamicPixel(Raster::Format::RGBA8, {});
    ASSERT_EQ(pixel.GetFormat(), Raster::Format::RGBA8);
    EXPECT_EQ(pixel.Get<PixelRGBA8>(), (PixelRGBA8{255, 153, 153, 128}));
    EXPECT_EQ(red->GetRasterDynamicPixel(Raster::Format::M8, {}).Get<Raster::PixelAlpha8>()[0],
              128);
    EXPECT_EQ(red->GetRasterDynamicPixel(Raster::Format::None, {}), Raster::DynamicPixel());
    EXPECT_EQ(red->GetRasterDynamicPixel(static_cast<Raster::Format>(77), {}),
              Raster::DynamicPixel());
}

} // namespace
} // namespace Renderer
