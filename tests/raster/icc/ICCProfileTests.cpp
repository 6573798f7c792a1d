#include <random>

#include <gtest/gtest.h>

#include <kernel/FormatException.h>
#include <raster/Pixel.h>

#include "TestProfiles.h"

using namespace Raster;
using namespace RasterTest;

namespace {

ICCManager& Manager()
{
    return ICCManager::GetInstance();
}

/// Reads a profile that may be damaged and, if it is accepted, uses it in both directions.
bool TryProfile(const Bytes& bytes)
{
    Profile profile;
    try {
        profile = ICCProfile::Create(bytes);
    } catch (const Kernel::FormatException&) {
        return false;
    }
    ICCManager::ICCProfileSet set;
    for (const Format format : {Format::RGBA8, Format::IA8, Format::CMYKA8, Format::LABA16})
        set.SetProfile(format, profile);
    const ICCManager::ICCProfileSet srgb;
    const PixelRGBAUF colour{{0.2f, 0.9f, 0.4f, 1.0f}};
    PixelCMYKAF other, back;
    for (const auto space :
         {ColourSpace::RGB, ColourSpace::Grey, ColourSpace::CMYK, ColourSpace::LAB}) {
        if (const auto to = Manager().GetFloatTransform(ColourSpace::RGB, srgb, space, set))
            to->Apply(&colour, &other, 1);
        if (const auto from = Manager().GetFloatTransform(space, set, ColourSpace::RGB, srgb))
            from->Apply(&other, &back, 1);
    }
    Manager().GetGammaForProfile(profile);
    return true;
}

} // namespace

TEST(ICCProfile, EqualBytesAreOneProfileAndTrailingBytesAreCutOff)
{
    const Bytes bytes = MakeGreyBytes(2.0);
    const Profile first = MakeProfile(bytes);
    Bytes padded = bytes;
    padded.resize(bytes.size() + 5, 7);
    EXPECT_EQ(first.Get(), MakeProfile(padded).Get());
    EXPECT_EQ(first->GetBytes(), bytes);
    const Profile other = MakeProfile(MakeGreyBytes(2.1));
    EXPECT_NE(first.Get(), other.Get());
    EXPECT_NE(first->GetIdentity(), other->GetIdentity());
}

TEST(ICCProfile, KnowsItsSpaceAndRefusesOthers)
{
    EXPECT_EQ(MakeProfile(MakeWideRGBBytes(2))->GetColourSpace(), ColourSpace::RGB);
    EXPECT_EQ(MakeProfile(MakeGreyBytes(2))->GetColourSpace(), ColourSpace::Grey);
    EXPECT_EQ(MakeProfile(MakeCMYKBytes())->GetColourSpace(), ColourSpace::CMYK);
    Bytes link = MakeCMYKBytes();
    std::copy_n("link", 4, link.begin() + 12); // device class
    EXPECT_THROW(MakeProfile(link), Kernel::FormatException);
    Bytes luv = MakeWideRGBBytes(2);
    std::copy_n("Luv ", 4, luv.begin() + 16); // colour space
    EXPECT_THROW(MakeProfile(luv), Kernel::FormatException);
    EXPECT_THROW(MakeProfile({}), Kernel::FormatException);
    EXPECT_THROW(MakeProfile(Bytes(4096, 'x')), Kernel::FormatException);
}

TEST(ICCProfile, TruncationIsRefusedAtEveryPlace)
{
    for (const Bytes& bytes : {MakeWideRGBBytes(2.2), MakeSampledRGBBytes()}) {
        for (std::size_t size = 0; size < bytes.size(); ++size)
            EXPECT_FALSE(TryProfile(Bytes(bytes.begin(), bytes.begin() + std::ptrdiff_t(size))));
    }
}

TEST(ICCProfile, CorruptionNeverCrashes)
{
    std::mt19937 random(1);
    for (const Bytes& whole :
         {MakeWideRGBBytes(2.2), MakeSampledRGBBytes(), MakeGreyBytes(1.8), MakeCMYKBytes()}) {
        int refused = 0;
        for (int round = 0; round < 120; ++round) {
            Bytes bytes = whole;
            // Mostly in the header, the tag table and the heads of the tags.
            const std::size_t range =
                round % 4 == 0 ? bytes.size() : std::min<std::size_t>(bytes.size(), 512);
            for (unsigned hits = 1 + random() % 4; hits > 0; --hits)
                bytes[random() % range] = static_cast<unsigned char>(random());
            refused += !TryProfile(bytes);
        }
        EXPECT_GT(refused, 4);
        EXPECT_TRUE(TryProfile(whole));
    }
}

TEST(ICCProfileSet, SlotsTakeTheirSpaceOnlyAndCompareByIdentity)
{
    ICCManager::ICCProfileSet set;
    EXPECT_EQ(set, ICCManager::ICCProfileSet());
    const Profile rgb = MakeProfile(MakeWideRGBBytes(2.2));
    set.SetCMYK(rgb);
    set.SetGrey(rgb);
    set.SetLAB(rgb);
    EXPECT_EQ(set, ICCManager::ICCProfileSet());
    set.SetProfile(Format::RGBA16, rgb);
    EXPECT_EQ(set.GetProfile(Format::RGBA8).Get(), rgb.Get());
    EXPECT_FALSE(set.GetProfile(Format::RGBAUF));
    set.SetProfile(Format::RGBAUF, MakeProfile(MakeWideRGBBytes(1)));
    EXPECT_EQ(set.GetProfile(Format::RGBAUF).Get(), set.GetAlternativeRGB().Get());

    ICCManager::ICCProfileSet same;
    same.SetAlternativeRGB(set.GetAlternativeRGB());
    EXPECT_NE(set, same);
    EXPECT_NE(set.GetHash(), same.GetHash());
    same.SetRGB(rgb);
    EXPECT_EQ(set, same);
    EXPECT_EQ(set.GetHash(), same.GetHash());
    set.SetRGB(nullptr);
    EXPECT_NE(set, same);
}

TEST(ICCManager, DefaultProfilesAndGammas)
{
    const auto of = [](Format format) { return Manager().GetDefaultProfileForFormat(format); };
    EXPECT_EQ(of(Format::RGBA8)->GetColourSpace(), ColourSpace::RGB);
    EXPECT_EQ(of(Format::RGBA8).Get(), of(Format::RGBAUF).Get());
    EXPECT_EQ(of(Format::IA16)->GetColourSpace(), ColourSpace::Grey);
    EXPECT_EQ(of(Format::LABA16)->GetColourSpace(), ColourSpace::LAB);
    EXPECT_FALSE(of(Format::CMYKA8));
    EXPECT_FALSE(of(Format::M8));

    EXPECT_EQ(Manager().GetGammaForProfile(nullptr), 2.2);
    EXPECT_EQ(Manager().GetGammaForProfile(MakeProfile(MakeCMYKBytes())), 2.2);
    for (int repeat = 0; repeat < 2; ++repeat) {
        EXPECT_NEAR(Manager().GetGammaForProfile(MakeProfile(MakeGreyBytes(1.8))), 1.8, 0.01);
        EXPECT_NEAR(Manager().GetGammaForProfile(MakeProfile(MakeWideRGBBytes(1))), 1.0, 0.01);
    }
    EXPECT_NEAR(Manager().GetGammaForProfile(of(Format::RGBA8)), 2.2, 0.1);
    EXPECT_NEAR(Manager().GetGammaForProfile(of(Format::IA8)), 2.2, 0.1);
}
