// Transforms, tolerances, the abort flag and the other state that all targets share.

#include <cmath>

#include "TargetFixture.h"

namespace Renderer {
namespace {

using Raster::AffineTransform;
using Mode = RenderTarget::TransformScalarMode;

class StateTest : public TargetTest
{};

TEST_F(StateTest, StartsWithItsDefaults)
{
    EXPECT_EQ(target->GetCurrentTransform(), AffineTransform::Params{});
    EXPECT_DOUBLE_EQ(target->GetLogicalExpansionTolerance(), 1.0 / 3.0);
    EXPECT_TRUE(target->GetRoundMidPixel() && target->IsFinalPass() && target->GetAntialias() &&
                target->GetAllowEffects());
    EXPECT_FALSE(target->GetPerfectClipping() || target->GetDithering() ||
                 target->GetPrefersVectorClips() || target->IsAllowDegradedBitmaps() ||
                 target->IsAborting() || target->IsRetinaPass() || target->HasClipPaths());
    EXPECT_EQ(target->GetUpResamplerType(), Raster::ResamplerType::Bilinear);
    EXPECT_EQ(target->GetDeviceClip(), (Kernel::RectT<int>{0, 0, Width, Height}));
    target->DetachBuffer();
    EXPECT_EQ(target->GetDeviceClip(), (Kernel::RectT<int>{}));
    EXPECT_FALSE(target->GetBuffer());
}

TEST_F(StateTest, PushedTransformsActInLocalCoordinatesAndPopBack)
{
    const auto scale = AffineTransform::Scaling(2, 3), move = AffineTransform::Translation(10, 20);
    target->SetLogToDevTransform(AffineTransform::Scaling(10, 10));
    target->PushTransform(move, Mode::Concatenate);
    target->PushTransform(scale, Mode::Concatenate);
    const auto p = target->GetCurrentTransform().Map({1, 1});
    EXPECT_DOUBLE_EQ(p.x, 120);
    EXPECT_DOUBLE_EQ(p.y, 230);
    EXPECT_EQ(target->GetScalarTransform(), AffineTransform::Concatenate(scale, move));

    target->PushTransform(scale, Mode::Reset);
    EXPECT_EQ(target->GetScalarTransform(), AffineTransform::Params{});
    target->PushTransform(scale, AffineTransform::Scaling(7, 7));
    EXPECT_DOUBLE_EQ(target->GetScalarTransform().m00, 7);
    target->PushTransform(scale, Mode::Inherit);
    EXPECT_DOUBLE_EQ(target->GetScalarTransform().m00, 7);
    for (int i = 0; i < 5; ++i)
        target->PopTransform();
    EXPECT_EQ(target->GetWorldTransform(), AffineTransform::Params{});
    EXPECT_EQ(target->GetScalarTransform(), AffineTransform::Params{});
}

TEST_F(StateTest, ToleranceFollowsTheScaleAndSurvivesCollapse)
{
    target->SetDeviceExpansionTolerance(0.2);
    EXPECT_TRUE(target->IsRetinaPass());
    target->SetWorldTransform({3, 1, 0, 0, 4, 0});
    EXPECT_DOUBLE_EQ(target->GetLogicalExpansionTolerance(), 0.2 / 4.0);
    target->SetWorldTransform({1, -1, 0, 1, -1, 0});
    EXPECT_DOUBLE_EQ(target->GetLogicalExpansionTolerance(), 0.2);
    target->SetRasterizationScaleFactor(2.0);
    EXPECT_FALSE(target->GetRoundMidPixel());
    target->SetRasterizationScaleFactor(3.0);
    EXPECT_TRUE(target->GetRoundMidPixel());
}

TEST_F(StateTest, ClipQueriesAreLogical)
{
    target->SetLogToDevTransform(AffineTransform::Scaling(2, 2));
    EXPECT_EQ(target->GetLogicalClip(), (Kernel::RectT<double>{0, 0, 20, 15}));
    EXPECT_TRUE(target->IsRectInClip({1, 1, 19, 14}, true));
    EXPECT_FALSE(target->IsRectInClip({1, 1, 21, 14}, true));
    EXPECT_TRUE(target->IsRectInClip({1, 1, 21, 14}, false));
    EXPECT_FALSE(target->IsRectInClip({21, 1, 25, 14}, false));
}

TEST_F(StateTest, AbortFlagIsSharedAndStopsDrawing)
{
    bool flag = false;
    target->SetAbortPointer(&flag);
    target->SetAbort(true);
    EXPECT_TRUE(flag && target->IsAborting());
    auto set = Kernel::MakeCounted<ConstPolyPolyCurve>();
    set->Add(Rectangle(0, 0, 10, 10));
    target->DrawPolyPolyCurve(set, 1.0F, Solid(Red), {}, {});
    target->Blend(1.0F, FillBlendMode::Normal, BlendOptions::Identity(), Solid(Red), {});
    EXPECT_EQ(Area(), 0);
    target->SetAbortPointer(nullptr);
    EXPECT_FALSE(target->IsAborting());
    target->DrawPolyPolyCurve(set, 1.0F, Solid(Red), {}, {});
    EXPECT_EQ(Area(), 100);
}

class OddNames : public RenderingFilter
{
public:
    bool ShouldRender(Kernel::NonCounted<const Renderable> r) const override
    {
        return r->GetName() == "odd";
    }
    bool ShouldRenderContainer(Kernel::NonCounted<const Renderable>) const override
    {
        return false;
    }
};

class Named : public Renderable
{
public:
    explicit Named(const char* name) : m_name(name) {}
    Kernel::String GetName() const override { return m_name; }

private:
    Kernel::String m_name;
};

TEST_F(StateTest, RenderingFilterDecides)
{
    const Kernel::Counted<Named> odd = Kernel::MakeCounted<Named>("odd"),
                                 even = Kernel::MakeCounted<Named>("even");
    EXPECT_TRUE(target->ShouldRender(*even) && target->ShouldRenderContainer(*odd));
    target->SetRenderingFilter(Kernel::MakeCounted<OddNames>());
    EXPECT_TRUE(target->ShouldRender(*odd));
    EXPECT_FALSE(target->ShouldRender(*even) || target->ShouldRenderContainer(*odd));
}

TEST_F(StateTest, BuffersAttachInPlaceElsewhereOrNotAtAll)
{
    using Raster::DynamicBuffer;
    const auto page = DynamicBuffer::Create(Raster::Format::RGBA8, 50, 50);
    ASSERT_TRUE(target->AttachBuffer(page, {10, 10, 20, 20}));
    Fill({0, 0, 50, 50}, Red);
    EXPECT_EQ(Area(), 100);
    EXPECT_EQ(At(10, 10), Red);
    EXPECT_EQ(At(9, 10), Nothing);

    const auto tile = DynamicBuffer::Create(Raster::Format::RGBA8, 16, 16);
    ASSERT_TRUE(target->AttachBuffer(tile, {1000, 2000, 1016, 2016}));
    Fill({1004, 0, 1006, 5000}, Blue);
    EXPECT_EQ(At(4, 0), Blue);
    EXPECT_EQ(At(3, 0), Nothing);
    EXPECT_EQ(Area(), 32);

    const BufferState state = target->GetBufferState();
    EXPECT_FALSE(target->AttachBuffer(tile, {1000, 2000, 1017, 2016}));
    EXPECT_FALSE(
        target->AttachBuffer(DynamicBuffer::Create(Raster::Format::IA8, 90, 90), {0, 0, 9, 9}));
    EXPECT_EQ(target->GetBuffer(), tile);
    target->DetachBuffer();
    Fill({1000, 2000, 1016, 2016}, Red);
    ASSERT_TRUE(target->SetBufferState(state));
    EXPECT_EQ(Area(), 32);
    EXPECT_FALSE(target->CreateBuffer(4000000000U, 4000000000U));
    for (const int format : {6, 7, 8, 10, 77})
        EXPECT_EQ(BitmapRenderTarget::Create(Raster::Format(format), {}), nullptr);
}

} // namespace
} // namespace Renderer
