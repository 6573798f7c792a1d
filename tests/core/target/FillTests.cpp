// Filled and stroked shapes on the RGBA8 target.

#include <cmath>
#include <limits>
#include <numbers>

#include "TargetFixture.h"
#include <renderer/paint/FillMulti.h>
#include <renderer/paint/FillNone.h>
#include <renderer/paint/LineStyle.h>

namespace Renderer {
namespace {

using Geometry::WindingOrderMode;
using Raster::AffineTransform;

class FillTest : public TargetTest
{
protected:
    void Stroke(Kernel::Counted<const Geometry::PolyCurveDbl> curve, const LineStyle& style)
    {
        target->DrawPolyCurve(std::move(curve), 1.0F, {}, Solid(Red),
                              LineStyleDescriptorConst(LineStyle::Consolidate(style)));
    }
    static Kernel::Counted<Geometry::PolyCurveDbl> Line(double x1, double y1, double x2, double y2)
    {
        auto curve = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
        curve->MoveTo({x1, y1});
        curve->LineTo({x2, y2});
        return curve;
    }
};

TEST_F(FillTest, CoversPixelsByTheirArea)
{
    Fill({5, 5, 10, 10}, Red);
    EXPECT_EQ(At(5, 5), Red);
    EXPECT_EQ(At(10, 9), Nothing);
    EXPECT_EQ(Area(), 25);
    target->Clear();
    Fill({20.25, 20, 21, 21}, Red);
    EXPECT_EQ(At(20, 20), (PixelRGBA8{{192, 0, 0, 192}})); // of 256, as coverage counts
    target->Clear();
    Fill({0.2, 0.2, 0.8, 0.8}, Red); // truncated bounds would be empty
    EXPECT_NEAR(Area(), 0.36, 0.005);
    target->Clear();
    target->SetWorldTransform(AffineTransform::Concatenate(AffineTransform::Rotation(0.3),
                                                           AffineTransform::Translation(20, 15)));
    Fill({-6, -5, 6, 5}, Red);
    EXPECT_NEAR(Area(), 120, 0.3);
}

TEST_F(FillTest, FollowsTheWindingRule)
{
    auto nested = Kernel::MakeCounted<PolyPolygon>(Kernel::RectT<double>{2, 2, 12, 12});
    nested->AddRect({5, 5, 9, 9});
    const auto draw = [&](WindingOrderMode winding) {
        target->Clear();
        target->DrawPolyPolygon(nested, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                                Solid(Red), {}, winding, true, true);
        return Area();
    };
    EXPECT_EQ(draw(WindingOrderMode::EvenOdd), 84);
    EXPECT_EQ(draw(WindingOrderMode::NonZero), 100);
}

TEST_F(FillTest, DrawsNothingForWhatIsNotDrawable)
{
    const double nan = std::nan(""), huge = std::numeric_limits<double>::infinity();
    Fill({1, 1, 9, 9}, Red, 0.0F);
    Fill({1, 1, 9, 9}, Red, -1.0F);
    Fill({1, 1, 9, 9}, Red, std::nanf(""));
    Fill({1, nan, 9, 9}, Red);
    Fill({1, 1, 9, huge}, Red);
    target->DrawPolyCurve(Rectangle(1, 1, 9, 9), 1.0F, {}, {}, {});
    target->DrawPolyCurve(Rectangle(1, 1, 9, 9), 1.0F, FillDescriptorConst::CreateNone(),
                          Solid(Red), {});
    target->DrawPolyCurve({}, 1.0F, Solid(Red), {}, {});
    target->DrawPolyPolygon({}, 1.0F, Solid(Red));
    target->SetWorldTransform({nan, 0, 0, 0, 1, 0});
    Fill({1, 1, 9, 9}, Red);
    target->SetWorldTransform({0, 0, 3, 0, 0, 3});
    Fill({1, 1, 9, 9}, Red);
    target->DrawPolyCurve(Rectangle(1, 1, 9, 9), 1.0F, {}, Solid(Red),
                          LineStyleDescriptorConst(2.0));
    EXPECT_EQ(Area(), 0);
}

TEST_F(FillTest, TruncatesOpacityToAByteAndMultipliesTransparency)
{
    Fill({0, 0, 1, 1}, Red, 0.5F);
    EXPECT_EQ(At(0, 0), (PixelRGBA8{{127, 0, 0, 127}}));
    Fill({1, 0, 2, 1}, Red, 7.0F);
    EXPECT_EQ(At(1, 0), Red);
    target->DrawPolyCurve(Rectangle(2, 0, 3, 1), 0.5F, FillBlendMode::Normal,
                          BlendOptions::Identity(), Solid(Red), Solid({{9, 9, 9, 128}}), {}, {},
                          WindingOrderMode::EvenOdd, true, true);
    EXPECT_EQ(At(2, 0), (PixelRGBA8{{64, 0, 0, 64}}));
    // A transparency that paints nothing leaves the fill alone.
    target->DrawPolyCurve(Rectangle(3, 0, 4, 1), 1.0F, FillBlendMode::Normal,
                          BlendOptions::Identity(), Solid(Red), FillDescriptorConst::CreateNone(),
                          {}, {}, WindingOrderMode::EvenOdd, true, true);
    EXPECT_EQ(At(3, 0), Red);
}

TEST_F(FillTest, StacksTheFillsOfAMulti)
{
    const auto part = [](const PixelRGBA8& colour) {
        return Kernel::Counted<const FillDescriptorConst>(new FillDescriptorConst(Solid(colour)));
    };
    const auto fill = FillMulti::Create({part({{255, 0, 0, 255}}), part({{0, 0, 255, 128}})});
    target->DrawPolyCurve(Rectangle(0, 0, 4, 4), 1.0F, FillDescriptorConst(fill), {}, {});
    EXPECT_EQ(At(1, 1), (PixelRGBA8{{127, 0, 128, 255}}));
}

TEST_F(FillTest, BlendModesCombineWithTheBackdrop)
{
    Fill({0, 0, 10, 10}, {{200, 100, 50, 255}});
    Fill({0, 0, 5, 10}, {{128, 128, 128, 255}}, 1.0F, FillBlendMode::Multiply);
    EXPECT_EQ(At(2, 2), (PixelRGBA8{{100, 50, 25, 255}}));
    Fill({5, 0, 10, 10}, {{100, 100, 100, 255}}, 1.0F, FillBlendMode::Difference);
    EXPECT_EQ(At(7, 2), (PixelRGBA8{{100, 0, 50, 255}}));
    // Values that have no span function count as Normal.
    Fill({0, 0, 10, 10}, Red, 1.0F, FillBlendMode::Erase);
    EXPECT_EQ(At(2, 2), Red);
}

TEST_F(FillTest, GammaShapesCoverageForOneCallOrAll)
{
    target->SetGamma(2.0);
    Fill({0.5, 0, 1, 1}, Red);
    EXPECT_EQ(At(0, 0).Alpha(), 64);
    // A curve replaces the target's gamma for its call alone.
    auto curve = Kernel::MakeCounted<Geometry::CurveDbl>(Geometry::Point{0, 1});
    curve->LineTo({1, 1});
    BlendOptions options;
    options.SetAntialiasingGamma(curve);
    target->DrawPolyCurve(Rectangle(2.5, 0, 3, 1), 1.0F, FillBlendMode::Normal, options, Solid(Red),
                          {}, {}, {}, WindingOrderMode::EvenOdd, true, true);
    EXPECT_EQ(At(2, 0).Alpha(), 255);
    EXPECT_EQ(At(1, 0).Alpha(), 0);
    Fill({4.5, 0, 5, 1}, Red);
    EXPECT_EQ(At(4, 0).Alpha(), 64);
}

TEST_F(FillTest, AliasedDrawingTouchesEveryPixelWithArea)
{
    target->SetAntialias(false);
    Fill({1.4, 1.4, 4.6, 3.2}, Red);
    EXPECT_EQ(Area(), 12);
    EXPECT_EQ(At(1, 1), Red);
    EXPECT_EQ(At(4, 3), Red);
    target->Clear();
    Fill({-10, 28.5, 90, 400}, Red); // beyond the page on three sides
    EXPECT_EQ(Area(), 80);
    target->Clear();
    Fill({-60000, 3, 60000, 4}, Red);
    EXPECT_EQ(Area(), 40);
}

TEST_F(FillTest, WideTargetsAreDrawnToTheirEnd)
{
    target = Make(60000, 3);
    Fill({0, 1, 60000, 2}, Red);
    EXPECT_EQ(Area(), 60000);
    EXPECT_EQ(At(59999, 1), Red);
    EXPECT_EQ(At(59999, 0), Nothing);
    target->SetAntialias(false);
    Fill({0, 0, 60000, 1}, Red);
    EXPECT_EQ(Area(), 120000);
}

TEST_F(FillTest, StrokesCoverTheirClosedForms)
{
    LineStyle style(4.0);
    Stroke(Line(10, 10, 30, 10), style);
    EXPECT_NEAR(Area(), 80, 0.1);
    style.SetCap(LineStyle::SquareCap);
    target->Clear();
    Stroke(Line(10, 10, 30, 10), style);
    EXPECT_NEAR(Area(), 96, 0.1);
    style.SetCap(LineStyle::RoundCap);
    target->SetDeviceExpansionTolerance(0.01);
    target->Clear();
    Stroke(Line(10, 10, 30, 10), style);
    EXPECT_NEAR(Area(), 80 + 4 * std::numbers::pi, 0.15);

    style.SetCap(LineStyle::ButtCap);
    style.SetDashPattern({2, 1}); // times nothing: lengths in the weight's units
    target->Clear();
    Stroke(Line(5, 10, 35, 10), style);
    EXPECT_NEAR(Area(), 80, 0.2);
    EXPECT_EQ(At(5, 10), Red);
    EXPECT_EQ(At(7, 10), Nothing);
}

TEST_F(FillTest, PensFollowTheMapUnlessResolutionIndependent)
{
    // Twice as wide in x as in y: the weight follows the scale of both, the pen the map.
    target->SetLogToDevTransform(AffineTransform::Scaling(4, 2));
    LineStyle style(1.0);
    Stroke(Line(5, 2, 5, 12), style); // upright: as wide as the map makes it
    EXPECT_NEAR(Area(), 4.0 * 20, 0.2);
    target->Clear();
    Stroke(Line(2, 5, 8, 5), style);
    EXPECT_NEAR(Area(), 2.0 * 24, 0.2);
    target->Clear();
    style.SetResIndependent(true);
    Stroke(Line(5, 2, 5, 12), style);
    EXPECT_NEAR(Area(), 20, 0.2);
    // Without the scale flag the weight ignores what was pushed.
    target->SetLogToDevTransform({});
    target->PushTransform(AffineTransform::Scaling(5, 5),
                          RenderTarget::TransformScalarMode::Concatenate);
    LineStyleDescriptorConst fixed(1.0);
    fixed.SetScale(false);
    target->Clear();
    target->DrawPolyCurve(Line(1, 2, 5, 2), 1.0F, {}, Solid(Red), fixed);
    EXPECT_NEAR(Area(), 20, 0.1);
}

TEST_F(FillTest, FillAndStrokeAreOneObject)
{
    const auto draw = [&](float opacity, bool behind) {
        target->Clear();
        LineStyleDescriptorConst style(4.0);
        style.SetBehind(behind);
        target->DrawPolyCurve(Rectangle(10, 10, 30, 20), opacity, Solid(Red), Solid(Blue), style);
    };
    draw(0.5F, false);
    EXPECT_EQ(At(20, 15), (PixelRGBA8{{127, 0, 0, 127}}));
    EXPECT_EQ(At(11, 15), (PixelRGBA8{{0, 0, 127, 127}})); // no fill shines through the stroke
    EXPECT_EQ(At(9, 15), (PixelRGBA8{{0, 0, 127, 127}}));
    draw(0.5F, true);
    EXPECT_EQ(At(11, 15), (PixelRGBA8{{127, 0, 0, 127}}));
    EXPECT_EQ(At(9, 15), (PixelRGBA8{{0, 0, 127, 127}}));
}

TEST_F(FillTest, GlyphsStandWhereTheyAreMeasured)
{
    // A glyph half an em wide and high, standing on the baseline; it advances by a whole em.
    const auto glyph =
        Kernel::MakeCounted<Geometry::GlyphMetrics>(7U, 1.0, Rectangle(0, -0.5, 0.5, 0));
    const std::vector<Kernel::Counted<const Geometry::GlyphMetrics>> glyphs{glyph, {}, glyph};
    const auto draw = [&](const Geometry::GlyphPosition* positions) {
        target->Clear();
        target->DrawGlyphMetrics({4, 10}, glyphs, Kernel::Font(), 8.0, positions, 1.0F,
                                 FillBlendMode::Normal, BlendOptions::Identity(), Solid(Red), {},
                                 {}, {}, true);
        return RenderTarget::MeasureGlyphMetrics({4, 10}, glyphs, 8.0, positions);
    };
    EXPECT_EQ(draw(nullptr), (Kernel::RectT<double>{4, 6, 16, 10}));
    EXPECT_EQ(Area(), 32);
    EXPECT_EQ(At(12, 6), Red);
    const Geometry::GlyphPosition positions[] = {{0, 0, 0}, {0, 0, 0}, {10, 8, std::numbers::pi}};
    const auto box = draw(positions);
    EXPECT_NEAR(box.bottom, 22, 1e-9);
    EXPECT_NEAR(box.left, 4, 1e-9);
    EXPECT_NEAR(Area(), 32, 0.01);
    EXPECT_EQ(At(12, 20), Red); // upside down: left of and below its place
}

TEST_F(FillTest, DrawsTheSameBytesEveryTime)
{
    const auto draw = [&] {
        target->Clear();
        target->DrawEllipse({1, 2, 33, 27}, 0.7F, Solid(Red), Solid(Blue),
                            LineStyleDescriptorConst(1.7));
        target->DrawCircle({20, 15}, 9.3, 0.4F, Solid(Green), {}, {});
        return BytesOf(target);
    };
    const auto first = draw();
    EXPECT_EQ(draw(), first);
    // Drawn in tiles, the page is the same.
    const auto page = Raster::DynamicBuffer::Create(Raster::Format::RGBA8, Width, Height);
    for (int y = 0; y < Height; y += 7) {
        for (int x = 0; x < Width; x += 11) {
            ASSERT_TRUE(target->AttachBuffer(
                page, {x, y, std::min(x + 11, Width), std::min(y + 7, Height)}));
            target->DrawEllipse({1, 2, 33, 27}, 0.7F, Solid(Red), Solid(Blue),
                                LineStyleDescriptorConst(1.7));
            target->DrawCircle({20, 15}, 9.3, 0.4F, Solid(Green), {}, {});
        }
    }
    EXPECT_EQ(BytesOf(target), first);
}

} // namespace
} // namespace Renderer
