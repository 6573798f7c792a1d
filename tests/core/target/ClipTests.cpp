// Clip paths, device clips and composite groups of the RGBA8 target.

#include "TargetFixture.h"

namespace Renderer {
namespace {

using Geometry::WindingOrderMode;
using CompositeInit = RenderTarget::CompositeInit;
using Kernel::RectT;

class ClipTest : public TargetTest
{
protected:
    void PushRect(const RectT<double>& rect)
    {
        target->PushClipPath(Kernel::MakeCounted<PolyPolygon>(rect), WindingOrderMode::NonZero);
    }
    void FillAll(const PixelRGBA8& colour) { Fill({0, 0, Width, Height}, colour); }
    void PushGroup(float opacity, FillBlendMode::BlendMode mode = FillBlendMode::Normal)
    {
        target->PushComposite(CompositeInit::Clear, mode, BlendOptions::Identity(), opacity);
    }
};

TEST_F(ClipTest, NestedPathsMultiply)
{
    PushRect({4.5, 4, 20, 20});
    PushRect({2, 4.5, 30, 20});
    FillAll(Red);
    EXPECT_EQ(At(4, 10).Alpha(), 128);
    EXPECT_EQ(At(10, 4).Alpha(), 128);
    EXPECT_EQ(At(4, 4).Alpha(), 64);
    EXPECT_EQ(At(10, 10), Red);
    EXPECT_EQ(At(25, 10), Nothing);
    target->PopClipPath();
    EXPECT_TRUE(target->HasClipPaths());
    target->Clear();
    FillAll(Red);
    EXPECT_NEAR(Area(), 15.5 * 16, 0.2);
    target->PopClipPath();
    EXPECT_FALSE(target->HasClipPaths());
    FillAll(Red);
    EXPECT_EQ(Area(), Width * Height);
}

TEST_F(ClipTest, AllThreeKindsOfPathsClipAlike)
{
    auto circle = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    circle->AddEllipse({5, 5}, 4, 4);
    const auto place = Raster::AffineTransform::Translation(10, 8);
    target->SetDeviceExpansionTolerance(0.01);
    const auto draw = [&] {
        target->Clear();
        FillAll(Red);
        target->PopClipPath();
        return BytesOf(target);
    };
    target->PushTransform(place, RenderTarget::TransformScalarMode::Concatenate);
    target->PushClipCurvesPath(circle, WindingOrderMode::EvenOdd);
    auto flat = Kernel::MakeCounted<PolyPolygon>();
    circle->ExpandAdaptive(0.01, *flat);
    target->PopTransform();
    const auto curve = draw();
    EXPECT_NEAR(Area(), 16 * 3.14159, 0.3);
    auto set = Kernel::MakeCounted<ConstPolyPolyCurve>();
    set->Add(circle, place);
    target->PushClipPolyCurvesPath(set, WindingOrderMode::EvenOdd);
    EXPECT_EQ(draw(), curve);
    target->PushTransform(place, RenderTarget::TransformScalarMode::Concatenate);
    target->PushClipPath(flat, WindingOrderMode::EvenOdd);
    target->PopTransform();
    EXPECT_EQ(draw(), curve);
    // A path that encloses nothing lets nothing through.
    target->PushClipPath({}, WindingOrderMode::EvenOdd);
    draw();
    EXPECT_EQ(Area(), 0);
}

TEST_F(ClipTest, GroupsUniteTheirMembers)
{
    target->PushClipPathGroup();
    PushRect({2, 2, 8, 8});
    PushRect({5.5, 5, 12, 12});
    target->PopClipPathGroup();
    PushRect({0, 0, 10, 30});
    FillAll(Red);
    EXPECT_EQ(At(3, 3), Red);
    EXPECT_EQ(At(9, 10), Red);
    EXPECT_EQ(At(5, 10).Alpha(), 128);
    EXPECT_EQ(At(5, 6), Red); // inside both
    EXPECT_EQ(At(11, 10), Nothing);
    EXPECT_EQ(At(9, 3), Nothing);
    target->PopClipPath();
    target->PopClipPath();
    EXPECT_FALSE(target->HasClipPaths());
}

TEST_F(ClipTest, TheSecondFlagChoosesAntialiasingUnderClips)
{
    PushRect({0, 0, 30, 30});
    target->DrawRectangle({3.5, 3.5, 6.5, 6.5}, 1.0F, Solid(Red), {}, {});
    EXPECT_EQ(Area(), 16);
    target->Clear();
    PushRect({4.25, 0, 30, 30});
    target->DrawRectangle({3.5, 3.5, 6.5, 6.5}, 1.0F, Solid(Red), {}, {});
    EXPECT_EQ(At(4, 5).Alpha(), 192); // the clip's own edge stays smooth
    EXPECT_EQ(At(6, 6).Alpha(), 255);
}

TEST_F(ClipTest, LogicalDeviceClipsKeepTheExactRectangle)
{
    target->PushLogicalDeviceClip({5, 5, 15, 15});
    EXPECT_EQ(target->GetDeviceClip(), (RectT<int>{5, 5, 15, 15}));
    EXPECT_FALSE(target->HasClipPaths());
    target->PushLogicalDeviceClip({7.5, 2, 40, 10.25});
    EXPECT_EQ(target->GetDeviceClip(), (RectT<int>{7, 5, 15, 11}));
    EXPECT_TRUE(target->HasClipPaths());
    FillAll(Red);
    EXPECT_EQ(At(7, 6).Alpha(), 128);
    EXPECT_EQ(At(10, 10).Alpha(), 64);
    target->PopDeviceClip();
    EXPECT_FALSE(target->HasClipPaths());
    target->Clear();
    target->PopDeviceClip();
    FillAll(Red);
    EXPECT_EQ(Area(), Width * Height);
}

TEST_F(ClipTest, ClearAndBlendKeepToTheDeviceClip)
{
    FillAll(Red);
    target->PushLogicalDeviceClip({5, 5, 15, 15});
    target->Clear();
    EXPECT_EQ(Area(), Width * Height - 100);
    target->SetWorldTransform(Raster::AffineTransform::Rotation(0.5));
    target->Blend(1.0F, FillBlendMode::Normal, BlendOptions::Identity(), Solid(Blue), {});
    EXPECT_EQ(At(5, 5), Blue);
    EXPECT_EQ(At(14, 14), Blue);
    EXPECT_EQ(At(4, 5), Red);
}

TEST_F(ClipTest, GroupsBlendAsOneObjectUnderTheClip)
{
    PushRect({2.5, 0, 40, 30});
    PushGroup(0.5F);
    EXPECT_FALSE(target->HasClipPaths());
    Fill({0, 0, 10, 10}, Red);
    Fill({5, 0, 15, 10}, Blue);
    EXPECT_NE(target->GetCurrentBuffer(), target->GetBuffer());
    EXPECT_EQ(Area(), 0);
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(At(4, 5), (PixelRGBA8{{127, 0, 0, 127}}));
    EXPECT_EQ(At(7, 5), (PixelRGBA8{{0, 0, 127, 127}}));
    EXPECT_EQ(At(2, 5).Alpha(), 64); // the clip's edge counts once
    EXPECT_EQ(At(1, 5), Nothing);
    EXPECT_TRUE(target->HasClipPaths());
    target->PopClipPath();
}

TEST_F(ClipTest, GroupsNestAndTakeModesAndPaint)
{
    FillAll({{100, 100, 100, 255}});
    PushGroup(1.0F, FillBlendMode::Multiply);
    Fill({0, 0, 20, 20}, {{128, 255, 0, 255}});
    PushGroup(0.5F);
    Fill({0, 0, 10, 10}, {{0, 0, 0, 255}});
    target->PopCompositeAsFill({}, {});
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(At(15, 15), (PixelRGBA8{{50, 100, 0, 255}}));
    EXPECT_EQ(At(5, 5), (PixelRGBA8{{25, 50, 0, 255}}));
    EXPECT_EQ(At(25, 25), (PixelRGBA8{{100, 100, 100, 255}}));

    target->Clear();
    PushGroup(1.0F);
    Fill({0, 0, 10, 10}, {{255, 0, 0, 128}});
    target->PopCompositeAsFill(Solid(Blue), Solid({{0, 0, 0, 128}}));
    EXPECT_EQ(At(5, 5), (PixelRGBA8{{0, 0, 64, 64}}));
    EXPECT_EQ(At(15, 5), Nothing);

    target->Clear();
    PushGroup(1.0F);
    Fill({0, 0, 10, 10}, {{255, 0, 0, 128}});
    target->PopCompositeAsTransparency(Solid(Green), {});
    EXPECT_EQ(At(5, 5), (PixelRGBA8{{0, 128, 0, 128}}));
}

TEST_F(ClipTest, EraseAndMaskWorkOnWholeGroups)
{
    FillAll(Red);
    PushGroup(1.0F, FillBlendMode::Erase);
    Fill({0, 0, 10, 10}, {{9, 9, 9, 128}});
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(At(5, 5).Alpha(), 127);
    EXPECT_EQ(At(15, 5), Red);
    PushGroup(1.0F, FillBlendMode::Mask);
    Fill({10, 0, 20, 10}, {{9, 9, 9, 255}});
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(At(15, 5), Red);
    EXPECT_EQ(At(25, 5), Nothing);
}

TEST_F(ClipTest, GroupsOutOfSightSwallowWhatIsDrawn)
{
    target->PushLogicalDeviceClip({100, 100, 200, 200});
    PushGroup(1.0F);
    FillAll(Red);
    PushGroup(0.5F);
    FillAll(Red);
    target->PopCompositeAsFill({}, {});
    target->PopCompositeAsFill({}, {});
    target->PopDeviceClip();
    EXPECT_EQ(Area(), 0);
    FillAll(Blue);
    EXPECT_EQ(At(0, 0), Blue);
    // Unbalanced pops do no harm.
    target->PopCompositeAsFill({}, {});
    target->PopClipPath();
    target->PopDeviceClip();
}

TEST_F(ClipTest, SubRendersLandOnTheSamePixels)
{
    target->SetLogToDevTransform(Raster::AffineTransform::Scaling(2, 2));
    const auto sub = target->PushSubRender({2, 2, 8, 8}, Raster::Format::RGBA8, {});
    ASSERT_TRUE(sub);
    sub->DrawRectangle({1, 1, 5, 5}, 1.0F, Solid(Red), {}, {});
    target->PopSubRender({});
    EXPECT_EQ(At(4, 4), Red);
    EXPECT_EQ(At(3, 3), Nothing);
    EXPECT_EQ(Area(), 36);
    const auto clip = target->GetDeviceClip();
    EXPECT_FALSE(target->PushSubRender({100, 100, 200, 200}, Raster::Format::RGBA8, {}));
    EXPECT_FALSE(target->PushSubRender({1, 1, 5, 5}, Raster::Format::None, {}));
    EXPECT_EQ(target->GetDeviceClip(), clip);
}

} // namespace
} // namespace Renderer
