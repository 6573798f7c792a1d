#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include <renderer/paint/FillNone.h>
#include <renderer/paint/LineStyleDescriptor.h>

namespace Renderer {
namespace {

using Raster::AffineTransform;

const AffineTransform::Params Identity;
constexpr double Margin = LineStyleDescriptorConst::InflationMargin;

TEST(LineStyle, StartsWithoutLine)
{
    EXPECT_TRUE(LineStyle().IsNone());
    EXPECT_TRUE(LineStyleDescriptorConst().IsLineStyleNone());
    EXPECT_FALSE(LineStyleDescriptorConst(Kernel::Consolidated<LineStyle>()).IsLineStyleVisible());
    EXPECT_EQ(LineStyleDescriptorConst::CreateNone(), LineStyleDescriptorConst());
}

TEST(LineStyle, TypeFollowsWeightAndPattern)
{
    LineStyle style(2.0);
    EXPECT_EQ(style.GetType(), LineStyle::Solid);
    style.SetDashPattern({});
    EXPECT_EQ(style.GetType(), LineStyle::Solid);
    style.SetDashPattern({1, 2});
    EXPECT_EQ(style.GetType(), LineStyle::Dashed);
    LineStyle brush(1.0);
    brush.SetType(LineStyle::RasterBrush);
    brush.SetDashPattern({1, 2});
    EXPECT_EQ(brush.GetType(), LineStyle::RasterBrush);

    EXPECT_EQ(LineStyle::Consolidate(style), LineStyle::Consolidate(*style.Clone()));
    EXPECT_FALSE(LineStyle::Consolidate(style) == LineStyle::Consolidate(LineStyle(2.0)));
}

TEST(LineStyle, PostScriptNumbers)
{
    int number = 7;
    EXPECT_TRUE(LineStyle::GetPostScriptCap(LineStyle::SquareCap, number) && number == 2);
    EXPECT_TRUE(LineStyle::GetPostScriptCap(LineStyle::RoundCap, number) && number == 1);
    EXPECT_TRUE(LineStyle::GetPostScriptJoin(LineStyle::MitreJoin, number) && number == 0);
    EXPECT_TRUE(LineStyle::GetPostScriptJoin(LineStyle::BevelJoin, number) && number == 2);
    EXPECT_FALSE(LineStyle::GetPostScriptJoin(LineStyle::NoJoin, number));
    EXPECT_FALSE(LineStyle::GetPostScriptCap(static_cast<LineStyle::LineCap>(3), number));
    EXPECT_EQ(number, 2);
}

TEST(LineStyleDescriptor, Visibility)
{
    EXPECT_TRUE(LineStyleDescriptorConst(2e-6).IsLineStyleVisible());
    EXPECT_FALSE(LineStyleDescriptorConst(5e-7).IsLineStyleVisible());
    const LineStyleDescriptor line(1.0);
    EXPECT_TRUE(line.IsLineStyleVisible());
    EXPECT_TRUE(line->IsLineStyleVisible(FillDescriptorConst::CreateSolid({0, 0, 0, 255})));
    EXPECT_FALSE(line->IsLineStyleVisible(FillDescriptorConst::CreateNone()));
    EXPECT_FALSE(line->IsLineStyleVisible(FillDescriptorConst()));
}

TEST(LineStyleDescriptor, EffectiveWeight)
{
    const auto scalar = AffineTransform::Scaling(3, 3);
    const auto device = AffineTransform::Scaling(2, 2);
    LineStyleDescriptorConst line(1.5);
    EXPECT_DOUBLE_EQ(line.GetEffectiveWeight(Identity, scalar, device), 9.0);
    EXPECT_DOUBLE_EQ(
        line.GetEffectiveWeight(Identity, AffineTransform::Concatenate(scalar, device)), 9.0);
    // s of a non-uniform map is √((4² + 2²)/2).
    EXPECT_DOUBLE_EQ(line.GetEffectiveWeight(Identity, AffineTransform::Scaling(4, 2)),
                     1.5 * std::sqrt(10.0));
    line.SetScale(false);
    EXPECT_DOUBLE_EQ(line.GetEffectiveWeight(Identity, scalar, device), 3.0);
    EXPECT_DOUBLE_EQ(
        LineStyleDescriptorConst(1.5, true).GetEffectiveWeight(Identity, scalar, device), 1.5);
    EXPECT_EQ(LineStyleDescriptorConst(1e300).GetEffectiveWeight(
                  Identity, AffineTransform::Scaling(1e300, 1e300)),
              0.0);
}

TEST(LineStyleDescriptor, InflationHoldsTheStroke)
{
    const Kernel::RectT<double> rect{0, 0, 10, 20};
    const auto reach = [&](const LineStyleDescriptorConst& line) { // less the margin
        const auto grown = line.InflateBaseRect(rect, Identity, Identity);
        EXPECT_DOUBLE_EQ(grown.right - 10, -grown.left);
        EXPECT_DOUBLE_EQ(grown.bottom - 20, -grown.top);
        EXPECT_DOUBLE_EQ(-grown.top, -grown.left);
        return -grown.left - (line.IsLineStyleVisible() ? Margin : 0.0);
    };
    using L = LineStyle;
    struct Case
    {
        L::LineCap cap;
        L::LineJoin join;
        double limit, reach; ///< of a line of weight 4
    };
    for (const Case& c :
         {Case{L::ButtCap, L::RoundJoin, 10, 2},
          Case{L::SquareCap, L::RoundJoin, 10, 2 * std::numbers::sqrt2},
          Case{L::SquareCap, L::MitreJoin, 10, 20}, Case{L::ButtCap, L::MitreJoin, 0.1, 2}}) {
        LineStyle style(4.0);
        style.SetCap(c.cap);
        style.SetJoin(c.join);
        style.SetMiterLimit(c.limit);
        EXPECT_DOUBLE_EQ(reach(LineStyleDescriptorConst(LineStyle::Consolidate(style))), c.reach);
        EXPECT_DOUBLE_EQ(style.GetLineInflationPixels96(), c.reach);
    }
    EXPECT_DOUBLE_EQ(reach(LineStyleDescriptorConst()), 0);

    LineStyleDescriptorConst outside(4.0);
    outside.SetStrokeAlignment(LineStyleDescriptorConst::Outside);
    EXPECT_DOUBLE_EQ(reach(outside), 4);
    const auto pressure = Kernel::MakeCounted<Geometry::CurveDbl>(Geometry::Point{0, 0.5});
    pressure->LineTo({1, 3});
    outside.SetPressure(pressure);
    EXPECT_DOUBLE_EQ(reach(outside), 12);
}

TEST(LineStyleDescriptor, InflationFollowsThePen)
{
    const Kernel::RectT<double> rect{0, 0, 10, 20};
    // The pen is a circle of weight 2 in logical units; on the device an ellipse.
    const auto current = AffineTransform::Scaling(3, 1);
    const auto device =
        LineStyleDescriptorConst(2.0).InflateSpreadRect({0, 0, 30, 20}, current, current);
    EXPECT_DOUBLE_EQ(device.left, -3 - Margin);
    EXPECT_DOUBLE_EQ(device.bottom, 21 + Margin);
    const auto logical = LineStyleDescriptorConst(2.0).InflateBaseRect(rect, current, current);
    EXPECT_DOUBLE_EQ(logical.left, -1 - Margin / 3);
    EXPECT_DOUBLE_EQ(logical.top, -1 - Margin);

    // A resolution-independent pen is a circle on the device.
    const LineStyleDescriptorConst hairline(2.0, true);
    EXPECT_DOUBLE_EQ(hairline.InflateSpreadRect(rect, current, current).left, -1 - Margin);
    EXPECT_DOUBLE_EQ(hairline.InflateBaseRect(rect, current, current).left, -(1 + Margin) / 3);
    EXPECT_DOUBLE_EQ(hairline.InflateBaseRect(rect, current, current).top, -1 - Margin);

    // Maps of scale 0 count as scale 1; singular ones show nothing.
    EXPECT_DOUBLE_EQ(
        LineStyleDescriptorConst(2.0).InflateBaseRect(rect, {1, -1, 0, 1, -1, 0}, Identity).left,
        -1);
    EXPECT_EQ(hairline.InflateBaseRect(rect, AffineTransform::Scaling(0, 1), Identity), rect);
    const auto unset = Kernel::RectT<double>::MakeUnset();
    EXPECT_TRUE(InflateRect(unset, hairline, Identity, Identity).IsUnset());
}

TEST(LineStyleDescriptor, RedundantPressure)
{
    const auto profile = [](double from, double to) {
        const auto curve = Kernel::MakeCounted<Geometry::CurveDbl>(Geometry::Point{0, from});
        curve->CurveTo({0.3, from}, {0.6, to}, {1, to});
        return curve;
    };
    EXPECT_TRUE(LineStyleDescriptorConst::IsPressureProfileRedundant(nullptr));
    EXPECT_TRUE(LineStyleDescriptorConst::IsPressureProfileRedundant(profile(1, 1)));
    EXPECT_FALSE(LineStyleDescriptorConst::IsPressureProfileRedundant(profile(1, 0.9)));
    LineStyleDescriptorConst a(1.0), b(1.0);
    a.SetPressure(profile(1, 2));
    EXPECT_FALSE(a == b);
    b.SetPressure(profile(1, 2));
    EXPECT_EQ(a, b);
}

} // namespace
} // namespace Renderer
