#include <gtest/gtest.h>

#include <renderer/paint/ColourCMYK.h>
#include <renderer/paint/ColourGrayscale.h>
#include <renderer/paint/ColourHSL.h>
#include <renderer/paint/ColourLAB.h>
#include <renderer/paint/ColourNamed.h>
#include <renderer/paint/ColourRegistration.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/ConvertColourOrProfileVisitor.h>
#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillDescriptor.h>
#include <renderer/paint/FillGradient.h>
#include <renderer/paint/FillMulti.h>
#include <renderer/paint/FillSolid.h>
#include <renderer/paint/ForceColourVisitor.h>
#include <tests/raster/icc/TestProfiles.h>

namespace Renderer {
namespace {

using namespace RasterTest;
using AnyColour = Kernel::Counted<const Colour>;
using ProfileSet = Colour::ICCProfileSet;
using Raster::ColourSpace;
using Raster::Format;
using Raster::PixelLABA16;
using Raster::PixelRGBA8;

constexpr double Tint = 0.75, Intensity = 0.5, Noise = 0.25;

template<class T>
AnyColour Any(const Kernel::Consolidated<T>& colour)
{
    return colour.GetCounted();
}

/// One colour of each model, with attributes of its own.
std::vector<AnyColour> MakeColours()
{
    const auto rgb = ColourRGB::Create(PixelRGBA8{200, 90, 40, 128});
    const auto cmyk = ColourCMYK::Create(Raster::PixelCMYKAF{0.2F, 0.7F, 0.5F, 0.1F, 0.5F});
    const std::vector<Kernel::Counted<Colour>> colours{
        ColourRGB::CreateFakeTemporary(PixelRGBA8{30, 160, 220, 128}),
        ColourHSL::CreateFakeTemporary(0.3, 0.6, 0.4, 0.5),
        ColourCMYK::CreateFakeTemporary(Raster::PixelCMYKAF{0.1F, 0.3F, 0.6F, 0.2F, 0.5F}),
        ColourGrayscale::CreateFakeTemporary(0.4, 0.5),
        ColourLAB::CreateFakeTemporary(PixelLABA16{33000, 36000, 30000, 32768}),
        ColourNamed::CreateFakeTemporary("rust", true, rgb, rgb),
        ColourNamed::CreateFakeTemporary("wine", false, cmyk, nullptr)};
    std::vector<AnyColour> result;
    for (const auto& colour : colours) {
        colour->SetTint(Tint);
        colour->SetIntensity(Intensity);
        colour->SetNoise(Noise);
        colour->SetOverprint(true);
        colour->SetGlobalName("swatch");
        result.push_back(Colour::Consolidate(colour));
    }
    return result;
}

void ExpectSameAttributes(const Colour& a, const Colour& b)
{
    EXPECT_EQ(a.GetTint(), b.GetTint());
    EXPECT_EQ(a.GetIntensity(), b.GetIntensity());
    EXPECT_EQ(a.GetNoise(), b.GetNoise());
    EXPECT_EQ(a.IsOverprint(), b.IsOverprint());
    EXPECT_EQ(a.GetGlobalName(), b.GetGlobalName());
    EXPECT_NEAR(a.GetAlphaF(), b.GetAlphaF(), 1e-5);
}

/// What the colour looks like.
PixelLABA16 Look(const Colour& colour, const ProfileSet& profiles)
{
    PixelLABA16 pixel;
    colour.GetColour(pixel, false, profiles);
    return pixel;
}

void ExpectSameLook(const PixelLABA16& a, const PixelLABA16& b, double tolerance)
{
    for (std::size_t c = 0; c < 4; ++c)
        EXPECT_NEAR(a[c] / 65535.0, b[c] / 65535.0, tolerance) << c;
}

/// Sets that differ in every profile that colours can be in.
struct Sets
{
    ProfileSet from = MakeFullSet();
    ProfileSet to = MakeFullSet();

    Sets()
    {
        // The narrow space first: what lies outside of it has no HSL colour.
        from.SetRGB(MakeProfile(MakeSampledRGBBytes()));
        Bytes inks = MakeCMYKBytes();
        inks[30] ^= 1; // of its date: the same tables, but another profile
        to.SetCMYK(MakeProfile(inks));
        to.SetGrey(MakeProfile(MakeGreyBytes(2.6)));
        to.SetLAB(from.GetLAB());
    }
};

AnyColour Convert(const AnyColour& colour, const ProfileSet& from, const ProfileSet& to,
                  bool& changed, Format oldFormat = Format::RGBA8, Format newFormat = Format::RGBA8)
{
    ConvertColourOrProfileVisitor visitor(oldFormat, from, newFormat, to, &changed);
    return colour->Accept(visitor);
}

TEST(ConvertColourOrProfileVisitor, KeepsLookModelAndAttributes)
{
    const Sets sets;
    for (const AnyColour& colour : MakeColours()) {
        SCOPED_TRACE(colour->GetType());
        bool changed = false;
        const AnyColour result = Convert(colour, sets.from, sets.to, changed);
        EXPECT_EQ(result->GetType(), colour->GetType());
        EXPECT_EQ(result->GetColourSpace(), colour->GetColourSpace());
        ExpectSameAttributes(*result, *colour);
        if (colour->GetType() == Colour::LAB) {
            EXPECT_EQ(result, colour);
        } else {
            EXPECT_TRUE(changed);
            EXPECT_FALSE(result->Equals(*colour));
        }
        // There and back through the inks' tables, which are no inverse of each other, is far off.
        if (colour->GetColourSpace() != ColourSpace::CMYK)
            ExpectSameLook(Look(*result, sets.to), Look(*colour, sets.from), 1e-3);
    }
    const auto ink = ColourCMYK::Create(Raster::PixelCMYKAF{0.1F, 0.3F, 0.6F, 0.2F, 0.5F});
    bool changed = false;
    const AnyColour converted = Convert(Any(ink), sets.from, sets.to, changed);
    float expected[5];
    Raster::ICCManager::GetInstance()
        .GetFloatTransform(ColourSpace::CMYK, sets.from, ColourSpace::CMYK, sets.to)
        ->Apply(ink->GetColourInternal().channels.data(), expected, 1);
    for (std::size_t c = 0; c < 4; ++c)
        EXPECT_EQ(dynamic_cast<const ColourCMYK&>(*converted).GetColourInternal()[c], expected[c]);
}

TEST(ConvertColourOrProfileVisitor, FlagsNothingButChanges)
{
    const Sets sets;
    ProfileSet twin;
    twin.SetRGB(MakeProfile(MakeWideRGBBytes(2.2)));
    bool changed = false;
    for (const AnyColour& colour : MakeColours()) {
        EXPECT_EQ(Convert(colour, sets.from, sets.from, changed), colour);
        EXPECT_EQ(Convert(colour, {}, {}, changed, Format::RGBA8, Format::RGBAUF), colour);
        if (colour->GetColourSpace() == ColourSpace::RGB ||
            colour->GetColourSpace() == ColourSpace::HSL) {
            ProfileSet wide;
            wide.SetRGB(MakeProfile(MakeWideRGBBytes(2.2)));
            EXPECT_EQ(Convert(colour, twin, wide, changed), colour) << "an equal profile";
        }
    }
    const auto black = ColourRGB::Create(PixelRGBA8{0, 0, 0, 255});
    const std::vector<AnyColour> fixed{Any(black), Any(ColourHSL::Create(0.7, 0.5, 0.0, 1.0)),
                                       Any(ColourRegistration::Create(0.5)),
                                       Any(ColourNamed::Create("black", true, black, nullptr))};
    for (const AnyColour& colour : fixed)
        EXPECT_EQ(Convert(colour, sets.from, sets.to, changed), colour);
    EXPECT_FALSE(changed);
    ConvertColourOrProfileVisitor silent(Format::RGBA8, sets.from, Format::RGBA8, sets.to, nullptr);
    EXPECT_FALSE(MakeColours()[0]->Accept(silent) == MakeColours()[0]);
}

TEST(ConvertColourOrProfileVisitor, TakesTheProfileOfTheFormatAndDefaults)
{
    const ProfileSet full = MakeFullSet();
    const auto colour = ColourRGB::Create(PixelRGBA8{30, 160, 220, 255});
    ConvertColourOrProfileVisitor visitor(Format::RGBA8, {}, Format::RGBAUF, full, nullptr);
    EXPECT_EQ(visitor.GetNewRgbProfile(), full.GetAlternativeRGB());
    EXPECT_EQ(visitor.GetOldRgbProfile(),
              Raster::ICCManager::GetInstance().GetDefaultProfileForFormat(Format::RGBA8));
    ProfileSet linear = full, sRGB;
    linear.SetRGB(full.GetAlternativeRGB());
    sRGB.SetLAB(full.GetLAB());
    const AnyColour result = colour->Accept(visitor);
    ExpectSameLook(Look(*result, linear), Look(*colour, sRGB), 1e-3);
}

TEST(ConvertColourOrProfileVisitor, GoesThroughRGBWhereASideHasNoProfile)
{
    ProfileSet from = MakeFullSet(), to;
    to.SetRGB(from.GetRGB());
    const AnyColour grey = Any(ColourGrayscale::Create(0.4, 1.0));
    const AnyColour ink =
        Any(ColourCMYK::Create(Raster::PixelCMYKAF{0.1F, 0.3F, 0.6F, 0.2F, 1.0F}));
    for (const AnyColour& colour : {grey, ink}) {
        bool changed = false;
        const AnyColour result = Convert(colour, from, to, changed);
        EXPECT_TRUE(changed);
        Raster::PixelRGBAF before, after;
        colour->GetColour(before, false, from);
        result->GetColour(after, false, to);
        for (std::size_t c = 0; c < 3; ++c)
            EXPECT_NEAR(before[c], after[c], 1e-3) << c;
        if (colour == grey) {
            const AnyColour back = Convert(result, to, from, changed);
            EXPECT_NEAR(dynamic_cast<const ColourGrayscale&>(*back).GetColourInternal()[0], 0.4,
                        1e-3);
        }
    }
}

Kernel::Counted<const Raster::DynamicBitmap> MakeBitmap(Format format, Profile profile = {})
{
    return Kernel::MakeCounted<const Raster::DynamicBitmap>(
        Raster::DynamicBuffer::Create(format, 3, 2), profile);
}

const FillBitmap& AsBitmap(const Kernel::Counted<const Fill>& fill)
{
    return dynamic_cast<const FillBitmap&>(*fill);
}

TEST(ConvertColourOrProfileVisitor, GivesBitmapsTheProfileThatTheyWereIn)
{
    const Sets sets;
    bool changed = false;
    ConvertColourOrProfileVisitor visitor(Format::RGBA8, sets.from, Format::RGBA8, sets.to,
                                          &changed);
    const auto accept = [&](const Kernel::Counted<const Raster::DynamicBitmap>& bitmap) {
        return FillBitmap::Create(bitmap, Raster::ExtendType::Wrap, Raster::ResamplerType::Bicubic,
                                  true)
            ->Accept(visitor);
    };
    const auto tagged = MakeBitmap(Format::RGBA8, sets.to.GetRGB());
    EXPECT_EQ(AsBitmap(accept(tagged)).GetBitmap(), tagged);
    const auto mask = MakeBitmap(Format::M8);
    EXPECT_EQ(AsBitmap(accept(mask)).GetBitmap(), mask);
    EXPECT_FALSE(changed);
    const auto plain = MakeBitmap(Format::RGBA8);
    const auto fill = accept(plain);
    EXPECT_TRUE(changed);
    EXPECT_EQ(AsBitmap(fill).GetBitmap()->GetProfile(), sets.from.GetRGB());
    EXPECT_EQ(AsBitmap(fill).GetBitmap()->GetBuffer(), plain->GetBuffer());
    EXPECT_EQ(AsBitmap(fill).GetExtendType(), Raster::ExtendType::Wrap);
    EXPECT_TRUE(AsBitmap(fill).GetIgnoreAlpha());
    EXPECT_EQ(accept(plain), fill) << "shared as before";
}

TEST(ForceColourVisitor, BringsEveryColourIntoTheModel)
{
    const Sets sets;
    for (const ColourSpace space : {ColourSpace::HSL, ColourSpace::Grey, ColourSpace::RGB,
                                    ColourSpace::CMYK, ColourSpace::LAB}) {
        ForceColourVisitor visitor(space, sets.from);
        for (const AnyColour& colour : MakeColours()) {
            SCOPED_TRACE(testing::Message() << int(space) << " from " << colour->GetType());
            const AnyColour result = colour->Accept(visitor);
            EXPECT_EQ(result->GetColourSpace(), space);
            EXPECT_EQ(colour->GetType() == Colour::Named, result->GetType() == Colour::Named);
            ExpectSameAttributes(*result, *colour);
            const bool isChanged = result != colour;
            EXPECT_TRUE(isChanged || colour->GetColourSpace() == space);
            EXPECT_TRUE(!isChanged || colour->GetColourSpace() != space ||
                        colour->GetType() == Colour::Named);
            // Greys lose the hue, the inks of the test's tables don't match.
            if (space != ColourSpace::Grey && space != ColourSpace::CMYK)
                ExpectSameLook(Look(*result, sets.from), Look(*colour, sets.from), 2e-3);
        }
    }
    ForceColourVisitor visitor(ColourSpace::Grey, {});
    const AnyColour registration = Any(ColourRegistration::Create());
    EXPECT_EQ(registration->Accept(visitor), registration);
    const auto rgb = ColourRGB::Create(PixelRGBA8{200, 90, 40, 255});
    const auto named = ColourNamed::Create("rust", true, rgb, rgb);
    const auto forced = named->Accept(visitor);
    const auto& grey = dynamic_cast<const ColourNamed&>(*forced);
    EXPECT_EQ(grey.GetName(), "rust");
    EXPECT_TRUE(grey.IsSpot());
    EXPECT_FALSE(grey.GetSRGBColour());
}

TEST(ForceColourVisitor, ReachesAllThatAFillHolds)
{
    const auto red = ColourRGB::Create(PixelRGBA8{255, 0, 0, 255});
    const auto blue = ColourRGB::Create(PixelRGBA8{0, 0, 255, 255});
    const auto gradient = FillGradient::Create(FillGradient::Radial,
                                               Gradient::Create({{red, 0.25, 0.3, 0.1}, {blue, 1}}),
                                               false, FillGradient::Reflect, {0.1, 0.2});
    const auto multi = Kernel::MakeCounted<FillMulti>();
    multi->AddFillDescriptor({FillSolid::Create(red)});
    multi->AddFillDescriptor({gradient, Raster::AffineTransform::Scaling(2, 3)});
    multi->AddFillDescriptor(FillDescriptorConst::CreateBitmap(MakeBitmap(Format::RGBA16), {}, {}));
    multi->AddFillDescriptor(FillDescriptorConst::CreateBitmap(MakeBitmap(Format::M8), {}, {}));
    FillDescriptor descriptor(Fill::Consolidate(multi));
    ForceColourVisitor visitor(ColourSpace::Grey, {});
    descriptor.Accept(visitor);

    const auto& entries = dynamic_cast<const FillMulti&>(*descriptor.GetFill()).GetDescriptors();
    EXPECT_EQ(entries[0]->GetFill()->GetColour()->GetType(), Colour::Grayscale);
    const auto& grey = dynamic_cast<const FillGradient&>(*entries[1]->GetFill());
    for (const auto& stop : grey.GetGradient()->GetColours())
        EXPECT_EQ(stop.colour->GetType(), Colour::Grayscale);
    EXPECT_EQ(grey.GetGradient()->GetColours()[0].midpoint, 0.3);
    EXPECT_EQ(grey.GetType(), FillGradient::Radial);
    EXPECT_EQ(grey.GetSpread(), FillGradient::Reflect);
    EXPECT_FALSE(grey.GetTransformCorrected());
    EXPECT_EQ(grey.GetFocus().y, 0.2);
    EXPECT_EQ(entries[1]->GetTransform().m11, 3);
    EXPECT_EQ(AsBitmap(entries[2]->GetFill()).GetBitmap()->GetFormat(), Format::IA16);
    EXPECT_EQ(AsBitmap(entries[3]->GetFill()).GetBitmap()->GetFormat(), Format::M8);
    const FillDescriptorConst once = descriptor;
    EXPECT_EQ(once.Accept(visitor), once);
}

} // namespace
} // namespace Renderer
