#include <gtest/gtest.h>

#include <geometry/Spline.h>
#include <renderer/paint/BlendOptions.h>
#include <renderer/paint/ColourNamed.h>
#include <renderer/paint/ColourRegistration.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/ColourVisitor.h>
#include <renderer/paint/FillBackBuffer.h>
#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillBlendMode.h>
#include <renderer/paint/FillBuffer.h>
#include <renderer/paint/FillDescriptor.h>
#include <renderer/paint/FillGradient.h>
#include <renderer/paint/FillMulti.h>
#include <renderer/paint/FillNone.h>
#include <renderer/paint/FillSolid.h>

namespace Renderer {
namespace {

using Raster::PixelRGBA8;

Kernel::Consolidated<Colour> RGB(const PixelRGBA8& pixel)
{
    return ColourRGB::Create(pixel);
}

const PixelRGBA8 Opaque{10, 20, 30, 255};
const PixelRGBA8 Fifth{10, 20, 30, 51};

Kernel::Consolidated<FillGradient> MakeGradient(const PixelRGBA8& from, const PixelRGBA8& to)
{
    return FillGradient::Create(FillGradient::Linear,
                                Gradient::Create({{RGB(from), 0.0}, {RGB(to), 1.0}}));
}

/// A 2 × 1 bitmap of alphas 51 and 255.
Kernel::Counted<const Raster::DynamicBitmap> MakeBitmap()
{
    const auto buffer = Raster::DynamicBuffer::Create(Raster::Format::RGBA8, 2, 1);
    buffer->GetRow(0)[3] = 51;
    buffer->GetRow(0)[7] = 255;
    return Kernel::MakeCounted<Raster::DynamicBitmap>(buffer);
}

TEST(Fill, KnowsItsAlpha)
{
    using Raster::ExtendType;
    using Raster::ResamplerType;
    const auto bitmap = [](ExtendType extend, bool ignoreAlpha) {
        return FillBitmap::Create(MakeBitmap(), extend, ResamplerType::Bilinear, ignoreAlpha);
    };
    const auto multi = [](std::initializer_list<FillDescriptorConst> fills) {
        const auto fill = Kernel::MakeCounted<FillMulti>();
        for (const auto& entry : fills)
            fill->AddFillDescriptor(entry);
        return Fill::Consolidate(fill);
    };
    const auto fifth = FillSolid::Create(RGB(Fifth));
    struct Case
    {
        Kernel::Consolidated<Fill> fill;
        bool none, invariant, nonFull, flat;
        double mean;
    };
    for (const Case& c : {
             Case{FillNone::Create(), true, true, true, true, 0.0},
             Case{FillSolid::Create(RGB(Opaque)), false, true, false, true, 1.0},
             Case{fifth, false, true, true, true, 0.2},
             Case{MakeGradient(Opaque, Opaque), false, false, false, true, 1.0},
             Case{MakeGradient(Fifth, Opaque), false, false, true, false, 0.6},
             Case{MakeGradient(Opaque, {10, 20, 30, 204}), false, false, true, false, 0.9},
             Case{FillGradient::Create(FillGradient::Radial, nullptr), true, false, true, true,
                  0.0},
             Case{bitmap(ExtendType::Clamp, false), false, false, true, false, 0.6},
             Case{bitmap(ExtendType::Wrap, true), false, false, false, true, 1.0},
             Case{bitmap(ExtendType::Transparent, true), false, false, true, false, 1.0},
             Case{FillBuffer::Create(MakeBitmap()->GetBuffer()), false, false, true, false, 0.6},
             Case{FillBuffer::Create(nullptr), true, false, true, false, 0.0},
             Case{FillBackBuffer::Create(), false, false, true, false, 1.0},
             Case{multi({}), true, true, true, true, 0.0},
             Case{multi({{}, FillDescriptorConst::CreateNone()}), true, true, true, true, 0.0},
             Case{multi({fifth, fifth}), false, true, true, true, 0.36},
             Case{multi({MakeGradient(Fifth, Opaque), FillDescriptorConst::CreateSolid(Opaque)}),
                  false, false, false, true, 1.0},
         }) {
        SCOPED_TRACE(static_cast<int>(c.fill->GetKind()));
        EXPECT_EQ(c.fill->IsFillNone(), c.none);
        EXPECT_EQ(c.fill->IsSpatiallyInvariant(), c.invariant);
        EXPECT_EQ(c.fill->HasNonFullAlpha(), c.nonFull);
        EXPECT_EQ(c.fill->IsFlatAlpha(), c.flat);
        EXPECT_NEAR(c.fill->GetMeanAlpha(), c.mean, 1e-7);
    }
}

TEST(Fill, SettersReachEveryColourOfAFreshCopy)
{
    const auto shared = MakeGradient(Fifth, Opaque);
    const auto multi = Kernel::MakeCounted<FillMulti>();
    multi->AddFillDescriptor(FillDescriptorConst());
    multi->AddFillDescriptor({shared, Raster::AffineTransform::Scaling(2, 2)});
    multi->SetAlpha(0.5);
    multi->SetTint(0.25);
    multi->SetNoise(0.1);
    multi->SetIntensity(3.0);
    EXPECT_EQ(multi->GetAlpha(), 0.5);
    EXPECT_EQ(multi->GetTint(), 0.25);
    EXPECT_EQ(multi->GetNoise(), 0.1);
    EXPECT_EQ(multi->GetIntensity(), 3.0);
    EXPECT_TRUE(multi->HasNoise());
    const auto& changed = dynamic_cast<const FillGradient&>(*multi->GetDescriptors()[1]->GetFill());
    for (const auto& stop : changed.GetGradient()->GetColours())
        EXPECT_EQ(stop.colour->GetAlphaF(), 0.5);
    EXPECT_EQ(multi->GetDescriptors()[1]->GetTransform().m00, 2);
    EXPECT_FALSE(shared->HasNoise());
    EXPECT_NEAR(shared->GetAlpha(), 0.2, 1e-7);
}

TEST(Fill, OneObjectPerValue)
{
    EXPECT_EQ(FillSolid::Create(RGB(Opaque)), FillSolid::Create(RGB(Opaque)));
    EXPECT_FALSE(FillSolid::Create(RGB(Opaque)) == FillSolid::Create(RGB(Fifth)));
    EXPECT_EQ(MakeGradient(Opaque, Fifth), MakeGradient(Opaque, Fifth));
    EXPECT_FALSE(MakeGradient(Opaque, Fifth) == MakeGradient(Fifth, Opaque));
    EXPECT_EQ(Fill::Consolidate(FillNone::Create()->Clone()), FillNone::Create());
    EXPECT_EQ(FillSolid::Create(nullptr)->GetColour(), RGB({0, 0, 0, 255}));

    // The transform of a stack's solid entry does not count, that of a gradient does.
    const auto stack = [](const Kernel::Consolidated<Fill>& fill, double scale) {
        const auto multi = Kernel::MakeCounted<FillMulti>();
        multi->AddFillDescriptor({fill, Raster::AffineTransform::Scaling(scale, 1)});
        return Fill::Consolidate(multi);
    };
    EXPECT_EQ(stack(FillSolid::Create(RGB(Opaque)), 1), stack(FillSolid::Create(RGB(Opaque)), 2));
    EXPECT_FALSE(stack(MakeGradient(Opaque, Fifth), 1) == stack(MakeGradient(Opaque, Fifth), 2));
}

/// Turns RGB colours red and keeps the others; counts bitmaps.
class Redden : public ColourVisitor
{
public:
    using ColourVisitor::Visit;
    Kernel::Counted<const Colour> Visit(const Kernel::Counted<const ColourRGB>& colour) override
    {
        const auto red = ColourRGB::CreateFakeTemporary(PixelRGBA8{255, 0, 0, 255});
        red->SetAlphaF(colour->GetAlphaF());
        return red;
    }
    Kernel::Counted<const FillBitmap> Visit(const Kernel::Counted<const FillBitmap>& fill) override
    {
        ++bitmaps;
        return fill;
    }

    int bitmaps = 0;
};

TEST(ColourVisitor, ReplacesColoursThroughoutAFill)
{
    Redden visitor;
    const auto multi = Kernel::MakeCounted<FillMulti>();
    multi->AddFillDescriptor(FillDescriptorConst::CreateSolid(Fifth));
    multi->AddFillDescriptor(
        {MakeGradient(Opaque, Fifth), Raster::AffineTransform::Translation(5, 6)});
    multi->AddFillDescriptor(FillDescriptorConst::CreateBitmap(MakeBitmap(), {}, {}));
    FillDescriptor descriptor(Fill::Consolidate(multi));
    descriptor.Accept(visitor);

    const auto& entries = dynamic_cast<const FillMulti&>(*descriptor.GetFill()).GetDescriptors();
    EXPECT_EQ(entries[0]->GetFill(),
              (Kernel::Consolidated<Fill>(FillSolid::Create(RGB({255, 0, 0, 51})))));
    EXPECT_EQ(entries[1]->GetFill(),
              (Kernel::Consolidated<Fill>(MakeGradient({255, 0, 0, 255}, {255, 0, 0, 51}))));
    EXPECT_EQ(entries[1]->GetTransform().m12, 6);
    EXPECT_EQ(visitor.bitmaps, 1);

    const auto registration = FillSolid::Create(ColourRegistration::Create());
    EXPECT_EQ(registration->Accept(visitor).Get(), registration.Get()) << "untouched";
    ColourVisitor idle;
    EXPECT_EQ(descriptor.GetFill()->Accept(idle).Get(), descriptor.GetFill().Get());
}

TEST(FillDescriptor, HoldsAFillInItsFrame)
{
    const FillDescriptorConst empty;
    EXPECT_TRUE(empty.IsEmpty() && empty.IsFillNone());
    EXPECT_EQ(empty.GetCSSAttributes(), "");
    EXPECT_FALSE(FillDescriptorConst::CreateNone().IsEmpty());
    EXPECT_TRUE(FillDescriptorConst::CreateNone().IsFillNone());
    EXPECT_EQ(&FillDescriptor::CreateNone(), &FillDescriptorConst::CreateNone());

    const auto solid = FillDescriptor::CreateSolid({255, 0, 0, 255});
    EXPECT_EQ(solid.GetCSSAttributes(), "background-color: rgba(255,0,0,1);");
    const auto moved = Raster::AffineTransform::Translation(1, 2);
    EXPECT_EQ(FillDescriptorConst(solid, moved), solid) << "solid everywhere";
    const FillDescriptorConst gradient(MakeGradient(Opaque, Fifth));
    EXPECT_FALSE(FillDescriptorConst(gradient, moved) == gradient);

    FillDescriptor holder(gradient);
    holder.SetTransform(moved);
    const FillDescriptorConst& value = holder;
    EXPECT_EQ(value.GetTransform(), moved);
    EXPECT_EQ(value.GetFill(), gradient.GetFill());
    holder.SetFill(solid.GetFill());
    EXPECT_EQ(holder.GetTransform(), moved);
    EXPECT_EQ(holder.Clone()->GetFill(), solid.GetFill());
}

TEST(BlendOptions, CompareByTheValuesOfTheirCurves)
{
    using Points = std::vector<Geometry::Point>;
    const auto make = [](int channel, const Points& points, double gamma) {
        BlendOptions options;
        options.SetChannelCurve(BlendOptions::Side::Destination, channel,
                                Kernel::MakeCounted<const Geometry::Spline>(points));
        options.SetBlendGamma(gamma);
        return options;
    };
    const auto hash = [](const BlendOptions& options) {
        Kernel::HashAccumulator accumulator;
        options.AccumulateHash(accumulator);
        return accumulator.GetHash();
    };
    const Points ramp{{0, 0}, {1, 1}};
    EXPECT_EQ(make(2, ramp, 1.8), make(2, ramp, 1.8));
    EXPECT_EQ(hash(make(2, ramp, 1.8)), hash(make(2, ramp, 1.8)));
    EXPECT_EQ(make(2, ramp, 1.8), make(2, ramp, 1.8 + 5e-7));
    for (const BlendOptions& other : {make(3, ramp, 1.8), make(2, {{0, 0}, {1, 0.5}}, 1.8),
                                      make(2, ramp, 1.81), BlendOptions::Identity()}) {
        EXPECT_FALSE(make(2, ramp, 1.8) == other);
        EXPECT_NE(hash(make(2, ramp, 1.8)), hash(other));
    }
}

TEST(BlendOptions, IdentityMeansNothingSet)
{
    using Side = BlendOptions::Side;
    EXPECT_TRUE(BlendOptions::Identity().IsIdentity());
    BlendOptions options;
    options.SetBlendGamma(2.2000005);
    options.SetChannelCurve(Side::Destination, 4, Kernel::MakeCounted<Geometry::Spline>(1.0));
    EXPECT_TRUE(options.IsIdentity());

    const auto ramp =
        Kernel::MakeCounted<Geometry::Spline>(std::vector<Geometry::Point>{{0, 0}, {1, 1}});
    options.SetChannelCurve(Side::Source, 2, ramp);
    EXPECT_FALSE(options.IsIdentityCurves());
    EXPECT_EQ(options.GetChannelCurve(Side::Source, 2).Get(), ramp.Get());
    EXPECT_FALSE(options.GetChannelCurve(Side::Destination, 2));
    EXPECT_FALSE(options.GetMasterCurve(Side::Source));

    BlendOptions gamma;
    gamma.SetBlendGamma(1.0);
    EXPECT_FALSE(gamma.IsIdentity());
    BlendOptions antialiasing;
    antialiasing.SetAntialiasingGamma(Kernel::MakeCounted<Geometry::CurveDbl>());
    EXPECT_FALSE(antialiasing.IsIdentity());
}

TEST(FillBlendMode, Names)
{
    EXPECT_EQ(FillBlendMode::ToString(FillBlendMode::Add, false), "Add");
    EXPECT_EQ(FillBlendMode::ToString(FillBlendMode::Add, true), "");
    EXPECT_EQ(FillBlendMode::ToString(FillBlendMode::Color, true), "Color");
    EXPECT_EQ(FillBlendMode::ToString(FillBlendMode::Nameless, false), "");
    EXPECT_EQ(FillBlendMode::ToString(static_cast<FillBlendMode::BlendMode>(33), false), "");
}

} // namespace
} // namespace Renderer
