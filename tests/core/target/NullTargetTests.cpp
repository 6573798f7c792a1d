// The targets that draw nothing and outlines.

#include <renderer/core/NullRenderTarget.h>
#include <renderer/core/RenderTargetFactory.h>

#include "TargetFixture.h"

namespace Renderer {
namespace {

using Geometry::WindingOrderMode;
using Kernel::MakeCounted;
using Raster::AffineTransform;

TEST(NullTarget, KeepsClipsAndColourTransforms)
{
    const auto target = MakeCounted<NullRenderTarget>(false);
    const Kernel::RectT<int> all{-1073741823, -1073741823, 1073741823, 1073741823};
    EXPECT_EQ(target->GetDeviceClip(), all);
    EXPECT_FALSE(target->HasClipPaths() || target->IsFinalPass());

    target->SetLogToDevTransform(AffineTransform::Scaling(2, 2));
    target->PushLogicalDeviceClip({-1.3, 0.3, 10.4, 20.9});
    EXPECT_EQ(target->GetDeviceClip(), (Kernel::RectT<int>{-2, 0, 20, 41}));
    EXPECT_TRUE(target->HasClipPaths());
    target->PushLogicalDeviceClip({5, -5, 50, 10});
    EXPECT_EQ(target->GetDeviceClip(), (Kernel::RectT<int>{10, 0, 20, 20}));
    target->PushLogicalDeviceClip({5, 3, 2, 10}); // inside out
    EXPECT_TRUE(target->GetDeviceClip().IsEmpty());
    for (int i = 0; i < 3; ++i)
        target->PopDeviceClip();
    EXPECT_EQ(target->GetDeviceClip(), all);
    EXPECT_FALSE(target->HasClipPaths());

    // Groups are transparent: three kinds of paths in one count one by one.
    target->PushClipPathGroup();
    target->PushClipPath({}, WindingOrderMode::EvenOdd);
    target->PushClipCurvesPath({}, WindingOrderMode::NonZero);
    target->PushClipPolyCurvesPath({}, WindingOrderMode::NonZero);
    target->PopClipPathGroup();
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(target->HasClipPaths());
        target->PopClipPath();
    }
    EXPECT_FALSE(target->HasClipPaths());

    target->PushColourTransform({});
    target->SetColourTransforms({{}, {}, {}});
    target->PopColourTransform();
    EXPECT_EQ(target->GetColourTransforms().size(), 2U);
}

TEST(NullTarget, LeavesEffectsToTheCaller)
{
    const auto target = MakeCounted<NullRenderTarget>();
    const auto effects = MakeCounted<FilterEffectsContext>(FilterEffectsContext::Effects());
    EXPECT_FALSE(target->PushFilterEffects(effects, {0, 0, 5, 5}));
    std::vector<Kernel::Counted<const FilterEffectsContext>> parts;
    target->SplitFilterEffects(effects, {0, 0, 5, 5}, parts);
    ASSERT_EQ(parts.size(), 1U);
    EXPECT_EQ(parts[0].Get(), effects.Get());
    EXPECT_FALSE(target->PushSubRender({0, 0, 5, 5}, Raster::Format::IA8, {}));
}

/// Counts the paths that reach the most basic call.
class PathCounter : public NullRenderTarget
{
public:
    using NullRenderTarget::DrawPolyCurve;
    void DrawPolyCurve(Kernel::Counted<const Geometry::PolyCurveDbl>, float,
                       FillBlendMode::BlendMode, const BlendOptions&, const FillDescriptorConst&,
                       const FillDescriptorConst&, const FillDescriptorConst&,
                       const LineStyleDescriptorConst&, WindingOrderMode, bool, bool) override
    {
        ++count;
    }
    int count = 0;
};

TEST(NullTarget, SplitsSetsForThoseWhoDeriveFromIt)
{
    const auto target = MakeCounted<PathCounter>();
    const auto path = MakeCounted<Geometry::PolyCurveDbl>(Kernel::RectT<double>{0, 0, 5, 5});
    const auto set = MakeCounted<ConstPolyPolyCurve>();
    for (int i = 0; i < 3; ++i)
        set->Add(path);
    target->DrawPolyPolyCurve(set, 1.0F, {}, {}, LineStyleDescriptorConst::CreateNone());
    EXPECT_EQ(target->count, 3);
    target->SetAbort(true);
    target->DrawPolyPolyCurve(set, 1.0F, {}, {}, LineStyleDescriptorConst::CreateNone());
    EXPECT_EQ(target->count, 3);
}

class WireframeTest : public TargetTest
{
protected:
    WireframeTest()
    {
        target = Kernel::Counted<BitmapRenderTarget>(
            RenderTargetFactory::CreateWireframeRenderTarget({}));
        EXPECT_TRUE(target->CreateBuffer(Width, Height));
        EXPECT_FALSE(target->GetAllowEffects());
    }

    /// The frame of the rectangle from (5.5, 5.5) to (20.5, 15.5), one pixel wide, and no more.
    void ExpectFrame() const
    {
        for (int y = 0; y < Height; ++y)
            for (int x = 0; x < Width; ++x) {
                const bool within = x >= 5 && x <= 20 && y >= 5 && y <= 15;
                const bool inside = x > 5 && x < 20 && y > 5 && y < 15;
                const bool corner = (x == 5 || x == 20) && (y == 5 || y == 15);
                // Round joins this small are flattened to bevels, which leave an eighth of the pixel.
                const int alpha = !within || inside ? 0 : 255;
                EXPECT_NEAR(At(x, y)[3], alpha, corner ? 32 : 0) << x << ", " << y;
                EXPECT_EQ(At(x, y)[0], 0);
            }
    }
};

TEST_F(WireframeTest, OutlinesShapesWhateverTheirPaintAndClips)
{
    const Kernel::RectT<double> rect{5.5, 5.5, 20.5, 15.5};
    const auto path = Rectangle(5.5, 5.5, 20.5, 15.5);
    const auto polygons = MakeCounted<PolyPolygon>(rect);
    const auto none = LineStyleDescriptorConst::CreateNone();
    target->PushClipPathGroup();
    target->PushClipPath(MakeCounted<PolyPolygon>(Kernel::RectT<double>{0, 0, 7, 7}),
                         WindingOrderMode::EvenOdd);
    target->PopClipPathGroup();
    target->PushClippingMask({0, 0, 3, 3}, {});
    target->PushComposite(RenderTarget::CompositeInit::Clear, FillBlendMode::Multiply, {}, 0.1F);
    EXPECT_FALSE(target->HasClipPaths());
    const auto draw = [&](auto&& call) {
        target->Clear();
        call();
        ExpectFrame();
    };
    draw([&] { target->DrawPolyCurve(path, 0.2F, Solid(Red), {}, none); });
    draw([&] {
        target->DrawPolyCurve(path, 0.0F, FillBlendMode::Erase, {}, {}, Solid(Nothing), Solid(Red),
                              LineStyleDescriptorConst(9.0), WindingOrderMode::NonZero, false,
                              false);
    });
    draw([&] { target->DrawPolyPolygon(polygons, 0.2F, Solid(Red)); });
    const auto bitmap = MakeCounted<Raster::DynamicBitmap>(
        Raster::DynamicBuffer::Create(Raster::Format::RGBA8, 2, 2), nullptr);
    draw([&] {
        target->DrawBitmap(rect, bitmap, 0.2F, FillBlendMode::Normal, BlendOptions::Identity(),
                           true);
    });
    target->PopCompositeAsFill({}, {});
    target->PopClippingMask();
    target->PopClipPath();
    ExpectFrame();
}

} // namespace
} // namespace Renderer
