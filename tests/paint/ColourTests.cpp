#include <gtest/gtest.h>

#include <renderer/paint/ColourCMYK.h>
#include <renderer/paint/ColourGrayscale.h>
#include <renderer/paint/ColourHSL.h>
#include <renderer/paint/ColourLAB.h>
#include <renderer/paint/ColourNamed.h>
#include <renderer/paint/ColourRegistration.h>
#include <renderer/paint/ColourRGB.h>

namespace Renderer {
namespace {

using Raster::PixelCMYKAF;
using Raster::PixelHSLAF;
using Raster::PixelLABA16;
using Raster::PixelRGBA8;
using Raster::PixelRGBAUF;

TEST(ColourName, TellsChannelsThenAlphaThenTint)
{
    const auto name = [](const auto& colour) { return colour->GetDefaultName(); };
    EXPECT_EQ(name(ColourRGB::Create(PixelRGBAUF{1.2f, -0.1f, 0.5f, 1})), "R:306 G:-26 B:128");
    EXPECT_EQ(name(ColourRGB::Create(PixelRGBAUF{1, 0, 0, 0.5f}, 0.4)),
              "R:255 G:0 B:0 A:50% T:40%");
    EXPECT_EQ(name(ColourRGB::Create(PixelRGBAUF{0, 0, 0, 0.995f}, 0.995)), "R:0 G:0 B:0");
    EXPECT_EQ(name(ColourCMYK::Create(PixelCMYKAF{0.125f, 1, 0, 0.5f, 0.994f})),
              "C:13 M:100 Y:0 K:50 A:99%");
    EXPECT_EQ(name(ColourHSL::Create(0.5, 0.999, 0.25, 1.0)), "H:180 S:100 L:25");
    EXPECT_EQ(name(ColourLAB::Create(PixelLABA16{65535, 0, 0x8080, 65535})), "L:100 A:-128 B:0");
    EXPECT_EQ(name(ColourGrayscale::Create(0.5, 1.0, 0.2)), "B:50 T:20%");
    EXPECT_EQ(name(ColourRegistration::Create(0.3)), "Registration Colour T:30%");
    const auto base = ColourRGB::Create(PixelRGBAUF{1, 0, 0, 0.5f});
    EXPECT_EQ(name(ColourNamed::Create("Brick 100%", false, base, nullptr)), "Brick 100% A:50%");
}

TEST(ColourCSS, SpeaksRGBExceptHSL)
{
    const auto css = [](const auto& colour) { return colour->GetCSSAttributes(); };
    EXPECT_EQ(css(ColourRGB::Create(PixelRGBA8{255, 0, 0, 255}, 0.4)), "rgba(255,153,153,1)");
    EXPECT_EQ(css(ColourRGB::Create(PixelRGBA8{1, 2, 3, 51})), "rgba(1,2,3,0.2)");
    EXPECT_EQ(css(ColourCMYK::Create(PixelCMYKAF{0, 1, 1, 0, 1})), "rgba(255,0,0,1)");
    EXPECT_EQ(css(ColourGrayscale::Create(1.0, 0.0)), "rgba(255,255,255,0)");
    EXPECT_EQ(css(ColourHSL::Create(0.5, 0.999, 0.25, 0.5, 0.1)), "hsla(180,99%,25%,0.5)");
    EXPECT_EQ(css(ColourNamed::Create("X", false, ColourHSL::Create(0.0, 1.0, 0.5, 1.0), nullptr)),
              "hsla(0,100%,50%,1)");
    EXPECT_EQ(css(ColourRegistration::Create()), "");
}

TEST(ColourEquality, OneObjectPerValue)
{
    const PixelRGBAUF red{1, 0, 0, 1};
    const auto colour = ColourRGB::Create(red, 0.5, 2.0, "Brand");
    EXPECT_EQ(colour, ColourRGB::Create(red, 0.5, 2.0, "Brand"));
    EXPECT_EQ(ColourRGB::Create(red), ColourRGB::Create(PixelRGBA8{255, 0, 0, 255}));
    EXPECT_EQ(ColourRGB::Create(red), ColourRGB::Create(PixelRGBAUF{1, -0.0f, 0, 1})) << "-0 is 0";
    EXPECT_FALSE(colour == ColourRGB::Create(red, 0.5, 2.0, "Other"));
    EXPECT_FALSE(colour == ColourRGB::Create(red, 0.6, 2.0, "Brand"));
    EXPECT_FALSE(ColourRGB::Create(red) == ColourRGB::Create(PixelRGBAUF{1, 1e-7f, 0, 1}))
        << "channels are exact";
    EXPECT_TRUE(colour->IsGlobal());
    EXPECT_FALSE(ColourRGB::Create(red)->IsGlobal());

    // Attributes are equal within a millionth, though such objects may stay apart.
    const auto close = ColourRGB::CreateFakeTemporary(red, 0.5000005, 2.0, "Brand");
    EXPECT_TRUE(close->Equals(*colour));
    close->SetOverprint(true);
    EXPECT_FALSE(close->Equals(*colour));
    EXPECT_FALSE(close->IsConsolidated());
    EXPECT_EQ(close->Clone()->GetGlobalName(), "Brand");
    EXPECT_TRUE(close->Clone()->IsOverprint());
}

TEST(ColourEquality, UntintedIgnoresAttributes)
{
    const PixelRGBAUF red{1, 0, 0, 1};
    const auto a = ColourRGB::Create(red, 0.5, 2.0, "Brand");
    const auto b = ColourRGB::Create(red);
    EXPECT_TRUE(a->AreUntintedColoursEqual(*b));
    EXPECT_FALSE(a->AreUntintedColoursEqual(*ColourRGB::Create(PixelRGBAUF{1, 0, 0, 0.5f})));
    EXPECT_FALSE(a->AreUntintedColoursEqual(*ColourHSL::Create(0.0, 1.0, 0.5, 1.0)));
    EXPECT_TRUE(
        ColourRegistration::Create(0.1)->AreUntintedColoursEqual(*ColourRegistration::Create()));

    const auto named = ColourNamed::Create("A", false, a, nullptr);
    EXPECT_TRUE(named->AreUntintedColoursEqual(*ColourNamed::Create("A", false, b, nullptr)));
    EXPECT_FALSE(named->AreUntintedColoursEqual(*ColourNamed::Create("A", false, b, b)));
    EXPECT_FALSE(named->AreUntintedColoursEqual(*ColourNamed::Create("A", true, b, nullptr)));
    EXPECT_FALSE(named->AreUntintedColoursEqual(*ColourNamed::Create("B", false, b, nullptr)));
    EXPECT_FALSE(named->AreUntintedColoursEqual(*a));
}

TEST(ColourNamed, PassesAlphaToItsColours)
{
    const auto base = ColourRGB::Create(PixelRGBA8{9, 9, 9, 255});
    const auto named = ColourNamed::CreateFakeTemporary("A", false, base, base);
    named->SetAlphaF(0.25);
    EXPECT_EQ(named->GetAlphaF(), 0.25);
    EXPECT_EQ(named->GetSRGBColour()->GetAlphaF(), 0.25);
    EXPECT_EQ(base->GetAlphaF(), 1.0) << "shared colours do not change";
    EXPECT_EQ(ColourNamed().GetBaseColour()->GetType(), Colour::RGB);
}

TEST(ColourFactories, TakeEachDepthAlike)
{
    const std::uint16_t full = 65535, half = 32768;
    EXPECT_EQ(ColourHSL::Create(half, full, full, full)->GetColourInternal()[0], 32768 / 65535.0f);
    EXPECT_EQ(ColourHSL::Create(PixelHSLAF{0.5f, 1, 1, 1}), ColourHSL::Create(0.5, 1.0, 1.0, 1.0));
    EXPECT_EQ(ColourGrayscale::Create(1.0, 1.0), ColourGrayscale::Create(full, full));
    EXPECT_EQ(ColourGrayscale::Create(1.0f, 1.0f),
              ColourGrayscale::Create(std::uint8_t{255}, std::uint8_t{255}));
    EXPECT_EQ(ColourRGB::Create(Raster::PixelRGBA16{full, 0, full, full}),
              ColourRGB::Create(Raster::PixelRGBAF{1, 0, 1, 1}));
    EXPECT_EQ(ColourCMYK::Create(Raster::PixelCMYKA8{255, 0, 0, 255, 255}),
              ColourCMYK::Create(PixelCMYKAF{1, 0, 0, 1, 1}));
}

} // namespace
} // namespace Renderer
