#include <cmath>
#include <random>

#include <gtest/gtest.h>
#include <raster/Convert.h>

#include "TestPictures.h"

using namespace Raster;
using ProfileSet = ICCManager::ICCProfileSet;

namespace {

template<class Target, class Source>
Target ConvertOne(const Source& pixel, const ProfileSet& profiles = {})
{
    const auto buffer = DynamicBuffer::Create(FormatOfPixel<Source>, 1, 1);
    *reinterpret_cast<Source*>(buffer->GetRow(0)) = pixel;
    const auto result = ConvertBuffer(buffer, {}, FormatOfPixel<Target>, profiles);
    return GetPixel<Target>(*result, 0, 0);
}

std::vector<float> ConvertFloats(ColourSpace from, std::vector<float> values, ColourSpace to)
{
    std::vector<float> result(to == ColourSpace::CMYK ? 5 : to == ColourSpace::Grey ? 2 : 4);
    ConvertFloatPixel(from, values.data(), to, result.data());
    return result;
}

void ExpectNear(const std::vector<float>& got, const std::vector<float>& expected, float tolerance)
{
    ASSERT_EQ(got.size(), expected.size());
    for (std::size_t i = 0; i < got.size(); ++i)
        EXPECT_NEAR(got[i], expected[i], tolerance) << "channel " << i;
}

} // namespace

TEST(Premultiply, BytesGoToTheNearestAndBack)
{
    for (unsigned alpha = 0; alpha < 256; ++alpha)
        for (unsigned colour = 0; colour <= alpha; ++colour) {
            const PixelIA8 stored{{std::uint8_t(colour), std::uint8_t(alpha)}};
            PixelIA8 pixel = stored;
            Unpremultiply(Format::IA8, &pixel, 1);
            const double plain = alpha ? 255.0 * colour / alpha : 0;
            ASSERT_LE(std::abs(pixel[0] - plain), 0.5);
            const double back = pixel[0] * alpha / 255.0;
            Premultiply(Format::IA8, &pixel, 1);
            ASSERT_LE(std::abs(pixel[0] - back), 0.5);
            ASSERT_EQ(pixel, stored);
        }
}

TEST(Premultiply, EveryFormatComesBack)
{
    ForEachPixelType([](auto pixel) {
        using P = decltype(pixel);
        const auto picture = MakePicture<P>(300, 1);
        const auto copy = MakePicture<P>(300, 1);
        Unpremultiply(FormatOfPixel<P>, copy->GetData(), 300);
        Premultiply(FormatOfPixel<P>, copy->GetData(), 300);
        for (unsigned x = 0; x < 300; ++x)
            for (std::size_t c = 0; c < P::ChannelCount; ++c)
                ASSERT_NEAR(double(GetPixel<P>(*copy, x, 0)[c]),
                            double(GetPixel<P>(*picture, x, 0)[c]), 1e-7);
    });
    // Colours beyond alpha saturate, and those of transparent pixels vanish.
    PixelRGBA8 pixels[] = {{{200, 10, 0, 100}}, {{7, 8, 9, 0}}};
    Unpremultiply(Format::RGBA8, pixels, 2);
    EXPECT_EQ(pixels[0], (PixelRGBA8{{255, 26, 0, 100}}));
    EXPECT_EQ(pixels[1], PixelRGBA8{});
}

TEST(ConvertFloatPixel, KnownColours)
{
    using enum ColourSpace;
    ExpectNear(ConvertFloats(RGB, {0.5f, 0.5f, 0.5f, 0.3f}, HSL), {0, 0, 0.5f, 0.3f}, 1e-6f);
    ExpectNear(ConvertFloats(RGB, {1, 0, 0, 1}, HSL), {0, 1, 0.5f, 1}, 1e-6f);
    ExpectNear(ConvertFloats(RGB, {1, 0, 1, 1}, HSL), {300.0f / 360, 1, 0.5f, 1}, 1e-6f);
    ExpectNear(ConvertFloats(RGB, {0.2f, 0.4f, 0.3f, 1}, HSL), {150.0f / 360, 1.0f / 3, 0.3f, 1},
               1e-6f);
    ExpectNear(ConvertFloats(RGB, {-3, 0, 7, 1}, HSL), {240.0f / 360, 1, 0.5f, 1}, 1e-6f);
    ExpectNear(ConvertFloats(RGB, {0, 0, 0, 1}, CMYK), {0, 0, 0, 1, 1}, 0);
    ExpectNear(ConvertFloats(RGB, {1, 1, 1, 0.5f}, CMYK), {0, 0, 0, 0, 0.5f}, 0);
    ExpectNear(ConvertFloats(CMYK, {0.5f, 0, 1, 0.5f, 1}, RGB), {0.25f, 0.5f, 0, 1}, 1e-6f);
    ExpectNear(ConvertFloats(Grey, {0.4f, 0.9f}, CMYK), {0, 0, 0, 0.6f, 0.9f}, 1e-6f);
    ExpectNear(ConvertFloats(RGB, {1, 0.5f, 0, 1}, Grey), {0.595f, 1}, 1e-6f);
    ExpectNear(ConvertFloats(LAB, {1, 128 / 255.0f, 128 / 255.0f, 0.2f}, RGB), {1, 1, 1, 0.2f},
               1e-3f);
}

TEST(ConvertFloatPixel, RoundTripsKeepTheColour)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> unit(0, 1);
    for (int i = 0; i < 10000; ++i) {
        const std::vector<float> rgb{unit(random), unit(random), unit(random), unit(random)};
        for (const auto space : {ColourSpace::HSL, ColourSpace::CMYK, ColourSpace::LAB})
            ExpectNear(
                ConvertFloats(space, ConvertFloats(ColourSpace::RGB, rgb, space), ColourSpace::RGB),
                rgb, space == ColourSpace::LAB ? 1e-3f : 1e-5f);
        if (HasFailure())
            break;
    }
}

TEST(ConvertBuffer, DepthAloneKeepsPremultipliedValues)
{
    EXPECT_EQ(ConvertOne<PixelRGBA16>(PixelRGBA8{{3, 1, 0, 3}}), (PixelRGBA16{{771, 257, 0, 771}}));
    EXPECT_EQ(ConvertOne<PixelRGBA8>(PixelRGBA16{{771, 385, 386, 771}}),
              (PixelRGBA8{{3, 1, 2, 3}}));
    EXPECT_EQ(ConvertOne<PixelRGBA8>(PixelRGBAUF{{-2, 0.25f, 9, 0.5f}}),
              (PixelRGBA8{{0, 64, 128, 128}}));
    EXPECT_EQ(ConvertOne<PixelRGBAUF>(PixelRGBA8{{51, 0, 0, 51}}),
              (PixelRGBAUF{{0.2f, 0, 0, 0.2f}}));
}

TEST(ConvertBuffer, WithoutProfilesTheFormulasApply)
{
    EXPECT_EQ(ConvertOne<PixelCMYKA8>(PixelRGBA8{{128, 0, 0, 128}}),
              (PixelCMYKA8{{0, 128, 128, 0, 128}}));
    EXPECT_EQ(ConvertOne<PixelRGBA8>(PixelCMYKA8{{128, 0, 0, 0, 128}}),
              (PixelRGBA8{{0, 128, 128, 128}}));
    EXPECT_EQ(ConvertOne<PixelIA16>(PixelRGBA8{{0, 255, 0, 255}}), (PixelIA16{{38666, 65535}}));
    EXPECT_EQ(ConvertOne<PixelLABA16>(PixelRGBA8{{255, 255, 255, 255}}),
              (PixelLABA16{{65535, 32896, 32896, 65535}}));
    EXPECT_EQ(ConvertOne<PixelLABA16>(PixelRGBA8{}), PixelLABA16{});
}

TEST(ConvertBuffer, MasksAreGreyAndColoursMaskByAlpha)
{
    EXPECT_EQ(ConvertOne<PixelRGBA8>(PixelAlpha16{{25700}}), (PixelRGBA8{{100, 100, 100, 255}}));
    EXPECT_EQ(ConvertOne<PixelCMYKA8>(PixelAlphaF{{1.5f}}), (PixelCMYKA8{{0, 0, 0, 0, 255}}));
    EXPECT_EQ(ConvertOne<PixelAlpha16>(PixelRGBA8{{1, 2, 3, 100}}), (PixelAlpha16{{25700}}));
    EXPECT_EQ(ConvertOne<PixelAlpha8>(PixelAlphaF{{NAN}}), PixelAlpha8{});
}

TEST(ConvertBuffer, ProfilesGiveTheTransform)
{
    ProfileSet profiles;
    profiles.SetGrey(ICCManager::GetInstance().GetDefaultProfileForFormat(Format::IA8));
    const PixelRGBA8 plain{{20, 200, 90, 128}};
    PixelIA8 expected;
    ASSERT_TRUE(ICCManager::GetInstance().DoTransform(Format::RGBA8, profiles, &plain, Format::IA8,
                                                      profiles, &expected, 1));
    Premultiply(Format::IA8, &expected, 1);

    // More than one block of pixels and an end within a block.
    const auto source = DynamicBuffer::Create(Format::RGBA8, 1001, 37);
    PixelRGBA8 stored = plain;
    Premultiply(Format::RGBA8, &stored, 1);
    for (unsigned y = 0; y < 37; ++y)
        std::fill_n(reinterpret_cast<PixelRGBA8*>(source->GetRow(y)), 1001, stored);
    const auto result = ConvertBuffer(source, {}, Format::IA8, profiles);
    ASSERT_TRUE(result);
    for (unsigned y = 0; y < 37; ++y)
        for (unsigned x = 0; x < 1001; ++x)
            ASSERT_EQ(GetPixel<PixelIA8>(*result, x, y), expected);
}

TEST(ConvertBuffer, ReturnsTheBufferItselfWhenNothingChanges)
{
    const Kernel::Counted<const DynamicBuffer> picture = MakePicture<PixelRGBA8>(3, 3);
    const auto sRGB = ICCManager::GetInstance().GetDefaultProfileForFormat(Format::RGBA8);
    EXPECT_EQ(ConvertBuffer(picture, {}, Format::RGBA8, {}), picture);
    EXPECT_EQ(ConvertBuffer(picture, sRGB, Format::RGBA8, {}), picture);
    EXPECT_FALSE(ConvertBuffer(picture, {}, Format::None, {}));
    EXPECT_FALSE(ConvertBuffer({}, {}, Format::RGBA8, {}));
}
