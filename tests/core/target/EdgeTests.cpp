// What targets do at the limits of their arguments and with calls in odd order.

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <random>
#include <utility>

#include "TargetFixture.h"
#include <raster/ColourTransform.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/LineStyle.h>
#include <support/RandomCurves.h>

namespace Renderer {
namespace {

using Geometry::WindingOrderMode;
using CompositeInit = RenderTarget::CompositeInit;
using Kernel::RectT;
using Raster::AffineTransform;

class EdgeTest : public TargetTest
{
protected:
    static constexpr int Largest = std::numeric_limits<int>::max();

    void PushGroup(CompositeInit init = CompositeInit::Clear)
    {
        target->PushComposite(init, FillBlendMode::Normal, BlendOptions::Identity(), 1.0F);
    }
    void PushRect(const RectT<double>& rect)
    {
        target->PushClipPath(Kernel::MakeCounted<PolyPolygon>(rect), WindingOrderMode::NonZero);
    }
    void FillAll(const PixelRGBA8& colour) { Fill({0, 0, Width, Height}, colour); }
};

TEST_F(EdgeTest, RunsBesideThePageChangeNothing)
{
    TestSupport::RandomCurves random(11);
    for (int n = 0; n < 400; ++n) {
        // Runs all around the page, most of them beside it; sometimes one that is not finite.
        auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
        for (int i = 0; i < 20; ++i) {
            auto part = random.MakePath(TestSupport::RandomCurves::Kind(n % 6));
            const double size = random.Number(0.2, 2.0);
            const Geometry::Point place{random.Number(-150.0, 150.0), random.Number(-150.0, 150.0)};
            part.Transform([&](Geometry::Point p) { return size * p + place; });
            path->AddCurve(part.GetCurves()[0]);
        }
        if (n % 50 == 0)
            path->LineTo({std::numeric_limits<double>::infinity(), 0.0});
        target->SetWorldTransform(AffineTransform::Rotation(random.Number(0.0, 6.0)));
        target->SetAntialias(n % 3 != 0);
        const auto rule = n % 2 ? WindingOrderMode::EvenOdd : WindingOrderMode::NonZero;
        target->Clear();
        target->DrawPolyCurve(path, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                              Solid(Red), {}, {}, {}, rule, true, true);
        const auto bytes = BytesOf(target);
        // The same polygons without a look at where runs are.
        auto polygons = Kernel::MakeCounted<PolyPolygon>();
        const double stretch =
            AffineTransform::GetLargestSingularValue(target->GetCurrentTransform());
        path->ExpandAdaptive(std::min(target->GetLogicalExpansionTolerance(),
                                      target->GetDeviceExpansionTolerance() / stretch),
                             *polygons);
        target->Clear();
        target->DrawPolyPolygon(polygons, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                                Solid(Red), {}, rule, true, true);
        ASSERT_EQ(bytes, BytesOf(target)) << n;
    }
}

TEST_F(EdgeTest, AliasedTilesAreThePage)
{
    std::mt19937 random(5);
    const auto page = Raster::DynamicBuffer::Create(Raster::Format::RGBA8, Width, Height);
    for (int n = 0; n < 300; ++n) {
        std::uniform_real_distribution<double> place(n % 2 ? -300.0 : -40000.0,
                                                     n % 2 ? 300 : 40000);
        const auto shape = Kernel::MakeCounted<PolyPolygon>();
        shape->BeginPolygon();
        for (int i = 0; i < 5; ++i)
            shape->AddPoint({place(random) + 20, place(random) + 15});
        const auto draw = [&] {
            target->SetAntialias(false);
            target->Clear();
            target->DrawPolyPolygon(shape, 1.0F, Solid(Red));
        };
        ASSERT_TRUE(target->CreateBuffer(Width, Height));
        draw();
        const auto whole = BytesOf(target);
        for (int y = 0; y < Height; y += 3)
            for (int x = 0; x < Width; x += 4) {
                ASSERT_TRUE(target->AttachBuffer(page, {x, y, x + 4, y + 3}));
                draw();
            }
        ASSERT_EQ(BytesOf(target), whole) << n;
    }
}

TEST_F(EdgeTest, UnbalancedCallsStayInsideTheirGroup)
{
    target->PushLogicalDeviceClip({0, 0, 20, 20});
    PushRect({0, 0, 10.5, 30});
    target->PushClipPathGroup();
    PushRect({0, 0, 5, 30});
    PushGroup();
    // More pops than pushes do not reach outside…
    for (int i = 0; i < 3; ++i) {
        target->PopDeviceClip();
        target->PopClipPath();
        target->PopClipPathGroup();
    }
    EXPECT_EQ(target->GetDeviceClip(), (RectT<int>{0, 0, 11, 20}));
    // … and what is left over does not get out.
    target->PushLogicalDeviceClip({3.5, 3.5, 4, 4});
    PushRect({3, 3, 4, 4});
    target->PushClipPathGroup();
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(target->GetDeviceClip(), (RectT<int>{0, 0, 20, 20}));
    PushRect({8, 0, 9, 30});
    target->PopClipPathGroup(); // the one from before the group: two members
    FillAll(Red);
    EXPECT_EQ(Area(), 20 * 6);
    target->PopClipPath();
    FillAll(Red);
    EXPECT_NEAR(Area(), 20 * 10.5, 0.1);
    target->PopClipPath();
    target->PopDeviceClip();
    EXPECT_FALSE(target->HasClipPaths());
    for (int i = 0; i < 3; ++i)
        target->PopTransform();
    EXPECT_EQ(target->GetScalarTransform(), AffineTransform::Params{});
}

TEST_F(EdgeTest, PagesMayLieAnywhere)
{
    const auto tile = Raster::DynamicBuffer::Create(Raster::Format::RGBA8, 40, 40);
    for (const int x : {-Largest, -3000000, 2000000, 9000000, Largest - 38}) {
        ASSERT_TRUE(target->AttachBuffer(tile, {x, 10, x + 38, 50}));
        const bool within = std::abs(double(x)) < 2097152;
        for (const bool antialias : {true, false}) {
            target->Clear();
            target->SetAntialias(antialias);
            PushRect({x + 2.0, 12.0, x + 30.0, 40.0});
            target->PushLogicalDeviceClip({-1e300, -1e300, 1e300, 1e300});
            PushGroup(CompositeInit::CopyBackdrop);
            Fill({-1e9, 0, 1e18, 1e9}, Red);
            Fill({double(x), 12, x + 4.0, 14}, Blue);
            target->PopCompositeAsFill({}, {});
            target->PopDeviceClip();
            target->PopClipPath();
            EXPECT_EQ(At(3, 3), within ? Blue : Nothing) << x;
            EXPECT_EQ(At(4, 3), within ? Red : Nothing) << x;
            EXPECT_EQ(At(1, 3), Nothing);
        }
    }
    // A state with a clip beyond its rectangle does not let drawing out.
    BufferState state = target->GetBufferState();
    state.rect = {0, 0, 10, 10};
    state.deviceClip = {-1000, -1000, 1000, 1000};
    ASSERT_TRUE(target->SetBufferState(state));
    EXPECT_EQ(target->GetDeviceClip(), state.rect);
}

TEST_F(EdgeTest, FloodsThePlane)
{
    const auto plane = Kernel::MakeCounted<PolyPolygon>(RectT<double>::MakeUnset());
    for (const auto& transform :
         {AffineTransform::Params{}, AffineTransform::Rotation(0.7),
          AffineTransform::Translation(1e6, -1e6), AffineTransform::Scaling(1e-6, -1e6)}) {
        target->Clear();
        target->SetWorldTransform(transform);
        target->DrawPolyPolygon(plane, 1.0F, Solid(Red));
        EXPECT_EQ(Area(), Width * Height);
    }
    // As a device clip it bounds nothing.
    target->PushLogicalDeviceClip(RectT<double>::MakeUnset());
    EXPECT_EQ(target->GetDeviceClip(), (RectT<int>{0, 0, Width, Height}));
}

TEST_F(EdgeTest, SetsOfCurvesHaveOnePaintAndOnePen)
{
    auto set = Kernel::MakeCounted<ConstPolyPolyCurve>();
    auto line = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    line->MoveTo({0, 0});
    line->LineTo({1, 0});
    set->Add(line, AffineTransform::Concatenate(AffineTransform::Scaling(10, 10),
                                                AffineTransform::Translation(5, 8)));
    target->DrawPolyPolyCurve(set, 1.0F, {}, Solid(Red), LineStyleDescriptorConst(2.0));
    EXPECT_NEAR(Area(), 20, 0.1);
    EXPECT_EQ(target->GetWorldTransform(), AffineTransform::Params{});
}

TEST_F(EdgeTest, OneObjectTakesTheFlagThatHoldsUnderClips)
{
    PushRect({0, 0, 30, 30});
    target->DrawRectangle({3.5, 3.5, 16.5, 16.5}, 0.5F, Solid(Red), Solid(Blue),
                          LineStyleDescriptorConst(2.0));
    // The conveniences draw aliased under clips: full coverage or none.
    for (int x = 0; x < Width; ++x)
        EXPECT_TRUE(At(x, 10).Alpha() == 0 || At(x, 10).Alpha() == 127) << x;
    EXPECT_EQ(At(2, 10).Alpha(), 127);
}

TEST_F(EdgeTest, SubRendersNestAndAreMatted)
{
    target->SetWorldTransform(AffineTransform::Rotation(0.4));
    const RectT<double> everywhere{-1000, -1000, 1000, 1000};
    const auto outer = target->PushSubRender(everywhere, Raster::Format::RGBA8, {});
    ASSERT_TRUE(outer);
    const auto inner = target->PushSubRender(everywhere, Raster::Format::RGBA8, {});
    ASSERT_TRUE(inner);
    for (const auto& sub : {outer, inner})
        sub->SetLogToDevTransform({});
    outer->DrawRectangle({30, 2, 33.5, 5}, 1.0F, Solid(Red), {}, {});
    inner->DrawRectangle({5, 5, 6, 6}, 1.0F, Solid(Blue), {}, {});
    target->PopSubRender({});
    EXPECT_EQ(At(5, 5), Blue);
    EXPECT_EQ(Area(), 1);
    target->PopSubRender(ColourRGB::Create(Green));
    // Pixels come back as they are, whatever the transform, above the matte.
    EXPECT_EQ(At(30, 2), Red);
    EXPECT_EQ(At(33, 2), (PixelRGBA8{{128, 127, 0, 255}}));
    EXPECT_EQ(At(5, 5), Green);
    EXPECT_EQ(Area(), Width * Height);
    EXPECT_EQ(target->GetDeviceClip(), (RectT<int>{0, 0, Width, Height}));
    EXPECT_EQ(target->GetWorldTransform(), AffineTransform::Rotation(0.4));
}

class SwapRedAndBlue final : public Raster::ColourTransform
{
public:
    /// \param patience after so many blocks every further one fails.
    explicit SwapRedAndBlue(int patience = std::numeric_limits<int>::max()) : m_patience(patience)
    {}
    void Apply(Raster::PixelRGBAF* pixels, std::size_t count,
               const Raster::ICCManager::ICCProfileSet&) const override
    {
        if (m_patience-- <= 0)
            throw std::bad_alloc();
        for (std::size_t i = 0; i < count; ++i)
            std::swap(pixels[i][0], pixels[i][2]);
    }
    bool IsIdentity() const override { return false; }
    std::uint64_t GetHash() const override { return 1; }
    bool IsEqual(const ColourTransform&) const override { return true; }

private:
    mutable int m_patience;
};

TEST_F(EdgeTest, ColourTransformsActOnThePaintOfGroupsAndMayBeEmpty)
{
    target->PushColourTransform({});
    FillAll(Red);
    EXPECT_EQ(At(1, 1), Red);
    target->PushColourTransform(Kernel::MakeCounted<SwapRedAndBlue>());
    FillAll(Red);
    EXPECT_EQ(At(1, 1), Blue);
    target->Clear();
    PushGroup();
    Fill({0, 0, 9, 9}, Green);
    target->PopCompositeAsTransparency(Solid(Red), {});
    PushGroup();
    Fill({9, 0, 18, 9}, Red);
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(At(1, 1), Blue);
    EXPECT_EQ(At(10, 1), Blue); // once
}

TEST_F(EdgeTest, CallsThatFailHalfWayLeaveNothingBehind)
{
    const auto drawObject = [&] {
        target->DrawPolyCurve(Rectangle(5.5, 5.5, 20, 20), 0.5F, FillBlendMode::Normal,
                              BlendOptions::Identity(), Solid(Red), {}, Solid(Blue),
                              LineStyleDescriptorConst(3.0), WindingOrderMode::EvenOdd, true, true);
    };
    const auto drawPlain = [&] {
        target->Clear();
        drawObject();
        target->DrawCircle({20, 15}, 9.3, 0.4F, Solid(Green), {}, {});
        return BytesOf(target);
    };
    const auto plain = drawPlain();
    int failures = 0;
    const auto attempt = [&](auto&& call) {
        try {
            call();
        } catch (const std::bad_alloc&) {
            ++failures;
        }
    };
    for (int patience = 0; patience < 90; patience += 3) {
        target->PushColourTransform(Kernel::MakeCounted<SwapRedAndBlue>(patience));
        attempt(drawObject);
        const auto sub = target->PushSubRender({0, 0, 30, 30}, Raster::Format::RGBA8, {});
        sub->DrawRectangle({0, 0, 30, 30}, 1.0F, Solid(Red), {}, {});
        attempt([&] { target->PopSubRender({}); });
        target->PopColourTransform();
        EXPECT_EQ(target->GetDeviceClip(), (RectT<int>{0, 0, Width, Height}));
        ASSERT_EQ(drawPlain(), plain) << patience;
    }
    EXPECT_GT(failures, 30);
}

} // namespace
} // namespace Renderer
