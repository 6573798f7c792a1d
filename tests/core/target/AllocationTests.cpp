// A target that has drawn a while draws the next shape without asking for memory.

#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillGradient.h>
#include <renderer/paint/FillSolid.h>
#include <renderer/paint/Gradient.h>
#include <renderer/paint/LineStyle.h>
#include <support/AllocationCount.h>

#include "TargetFixture.h"

namespace Renderer {

class AllocationTest : public TargetTest
{
protected:
    struct NamedPaint
    {
        const char* name;
        FillDescriptorConst paint;
    };

    static FillDescriptorConst Gradient(FillGradient::FillGradientType type)
    {
        const auto colour = [](const PixelRGBA8& pixel) {
            return Solid(pixel).GetFill()->GetColour();
        };
        const auto stops = Renderer::Gradient::Create(
            {{colour(Red), 0.0}, {colour(Green), 0.4}, {colour({{0, 0, 255, 100}}), 1.0}});
        return {FillGradient::Create(type, stops), {20, 3, 5, -2, 15, 8}};
    }

    static FillDescriptorConst Picture(Raster::ResamplerType resampler,
                                       const Raster::AffineTransform::Params& transform)
    {
        const auto buffer = Raster::DynamicBuffer::Create(Raster::Format::RGBA8, 24, 24);
        const auto bitmap = Kernel::MakeCounted<Raster::DynamicBitmap>(buffer);
        return {FillDescriptorConst::CreateBitmap(bitmap, Raster::ExtendType::Wrap, resampler),
                transform};
    }

    static std::vector<NamedPaint> Paints()
    {
        using enum Raster::ResamplerType;
        return {{"solid", Solid(Red)},
                {"translucent", Solid({{10, 20, 30, 99}})},
                {"linear", Gradient(FillGradient::Linear)},
                {"radial", Gradient(FillGradient::Radial)},
                {"elliptical", Gradient(FillGradient::Elliptical)},
                {"conical", Gradient(FillGradient::Conical)},
                {"nearest", Picture(NearestNeighbour, {24, 0, 3, 0, 24, 2})},
                {"bilinear", Picture(Bilinear, {24, 0, 3.4, 0, 24, 2.2})},
                {"magnified", Picture(Bilinear, {50, 0, 3.4, 0, 41, 2.2})},
                {"minified", Picture(Bilinear, {9, 1, 3.4, -1, 8, 2.2})}};
    }

    static Kernel::Counted<const Geometry::PolyCurveDbl> Shape()
    {
        Geometry::PolyCurveDbl shape({3.3, 4.1, 31.2, 25.7});
        shape.MoveTo({5, 20});
        shape.CurveTo({35, -20}, {2, 40}, {38, 8});
        return Kernel::MakeCounted<Geometry::PolyCurveDbl>(shape);
    }

    /// How often \p draw asks for memory once it has been called a few times.
    template<class Draw>
    static unsigned long Count(const Draw& draw)
    {
        for (int i = 0; i < 3; ++i)
            draw();
        const unsigned long before = TestSupport::GetAllocationCount();
        for (int i = 0; i < 5; ++i)
            draw();
        return TestSupport::GetAllocationCount() - before;
    }
};

TEST_F(AllocationTest, FillsAndStrokesAskForNoMemory)
{
    const auto shape = Shape();
    const auto polygons = Kernel::MakeCounted<PolyPolygon>();
    shape->ExpandAdaptive(0.1, *polygons);
    LineStyle dashed(1.3);
    dashed.SetType(LineStyle::Dashed);
    dashed.SetDashPattern({3, 1, 0.5, 1});
    const FillDescriptorConst red = Solid(Red);
    const LineStyleDescriptorConst none, solid(2.5), dashes(LineStyle::Consolidate(dashed));
    target->SetLogToDevTransform({1.1, 0.1, 0, -0.05, 0.9, 0});
    for (const auto& [name, paint] : Paints()) {
        for (const float opacity : {1.0F, 0.5F}) {
            SCOPED_TRACE(testing::Message() << name << " at opacity " << opacity);
            const auto curve =
                [&](const FillDescriptorConst& fill, const FillDescriptorConst& transparency,
                    const FillDescriptorConst& line, const LineStyleDescriptorConst& style) {
                    target->DrawPolyCurve(shape, opacity, FillBlendMode::Normal,
                                          BlendOptions::Identity(), fill, transparency, line, style,
                                          Geometry::WindingOrderMode::EvenOdd, true, true);
                };
            EXPECT_EQ(Count([&] { curve(paint, {}, {}, none); }), 0U);
            EXPECT_EQ(Count([&] { curve({}, {}, paint, solid); }), 0U);
            EXPECT_EQ(Count([&] { curve({}, {}, paint, dashes); }), 0U);
            EXPECT_EQ(Count([&] { curve(paint, {}, paint, solid); }), 0U);
            EXPECT_EQ(Count([&] { curve(red, paint, {}, none); }), 0U);
            EXPECT_EQ(Count([&] {
                          target->DrawPolyPolygon(polygons, opacity, FillBlendMode::Multiply,
                                                  BlendOptions::Identity(), paint, {},
                                                  Geometry::WindingOrderMode::NonZero, true, true);
                      }),
                      0U);
        }
    }
}

TEST_F(AllocationTest, BitmapsAskForNoMemory)
{
    const auto buffer = Raster::DynamicBuffer::Create(Raster::Format::RGBA8, 24, 24);
    const auto bitmap = Kernel::MakeCounted<Raster::DynamicBitmap>(buffer);
    for (const double side : {24.0, 37.0, 9.0}) {
        SCOPED_TRACE(side);
        EXPECT_EQ(Count([&] {
                      target->DrawBitmap({1.25, 2, 1.25 + side, 2 + side}, bitmap, 0.5F,
                                         FillBlendMode::Normal, BlendOptions::Identity());
                  }),
                  0U);
    }
}

TEST_F(AllocationTest, ShapesUnderClipsAskForNoMemory)
{
    const auto shape = Shape();
    const FillDescriptorConst paint = Solid(Green);
    target->PushClipCurvesPath(Shape(), Geometry::WindingOrderMode::EvenOdd);
    EXPECT_EQ(Count([&] {
                  target->PushTransform({1, 0, 0.5, 0, 1, 0.25}, {});
                  target->DrawPolyCurve(shape, 0.7F, FillBlendMode::Normal,
                                        BlendOptions::Identity(), paint, {}, {}, {},
                                        Geometry::WindingOrderMode::EvenOdd, true, true);
                  target->PopTransform();
              }),
              0U);
}

} // namespace Renderer
