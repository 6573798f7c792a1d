// The outline of a stroke, filled, is the stroke as it is drawn.

#include <cmath>
#include <cstdlib>

#include <renderer/paint/LineStyleDescriptor.h>
#include <support/RandomCurves.h>

#include "TargetFixture.h"

namespace Renderer {
namespace {

using Geometry::CurveDbl;
using Geometry::Point;
using Geometry::PolyCurveDbl;
using Geometry::WindingOrderMode;
using Kernel::Counted;
using TestSupport::RandomCurves;
using Transform = Raster::AffineTransform::Params;

LineStyleDescriptorConst MakeRandomLine(RandomCurves& random)
{
    LineStyle style(random.Magnitude(-0.3, 1.3), random.Index(6) == 0);
    style.SetCap(LineStyle::LineCap(random.Index(3)));
    style.SetJoin(LineStyle::LineJoin(random.Index(4)));
    style.SetMiterLimit(random.Number(1.0, 5.0));
    if (random.Index(3) == 0) {
        style.SetDashPattern({random.Number(1.0, 9.0), random.Number(1.0, 9.0)});
        style.SetDashPhase(random.Number(-5.0, 20.0));
    }
    return LineStyleDescriptorConst(LineStyle::Consolidate(style));
}

Counted<const CurveDbl> MakePressure(std::initializer_list<Point> points)
{
    auto pressure = Kernel::MakeCounted<CurveDbl>(*points.begin());
    for (const Point* p = points.begin() + 1; p != points.end(); ++p)
        pressure->LineTo(*p);
    return pressure;
}

/// Mostly the identity; else a stretch and a shear that keep the middle.
Transform MakeRandomMap(RandomCurves& random)
{
    Transform map;
    if (random.Index(3) > 0)
        return map;
    map.m00 = random.Number(0.3, 1.5);
    map.m11 = random.Number(0.3, 1.5);
    map.m01 = random.Number(-0.5, 0.5);
    map.m02 = 32.0 - 32.0 * (map.m00 + map.m01);
    map.m12 = 32.0 - 32.0 * map.m11;
    return map;
}

class OutlineTest : public TargetTest
{
protected:
    static constexpr unsigned Side = 64;
    static constexpr double Tolerance = 0.002;

    OutlineTest() : page(Make(Side, Side)) { page->SetDeviceExpansionTolerance(Tolerance); }

    std::vector<unsigned char> Draw(Counted<const PolyCurveDbl> path,
                                    const LineStyleDescriptorConst& line, bool fill)
    {
        page->Clear();
        const auto paint = FillDescriptorConst::CreateSolid(Red);
        page->DrawPolyCurve(path, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                            fill ? paint : FillDescriptorConst(), {},
                            fill ? FillDescriptorConst() : paint, line, WindingOrderMode::NonZero,
                            true, true);
        return BytesOf(page);
    }

    struct Differences
    {
        std::size_t any = 0;   ///< how many pixels differ by more than a step,
        std::size_t gross = 0; ///< and by more than an eighth: edges or parts that only one has
    };

    /// Compares a stroke with its outline, filled.
    Differences Compare(Counted<const PolyCurveDbl> path, const LineStyleDescriptorConst& line)
    {
        const auto stroke = Draw(path, line, false);
        const auto outline =
            line.GetPolyCurveOutline(*path, page->GetCurrentTransform(), page->GetScalarTransform(),
                                     page->GetLogToDevTransform(), Tolerance);
        const auto filled = Draw(outline, LineStyleDescriptorConst(), true);
        Differences count;
        for (std::size_t i = 3; i < stroke.size(); i += 4) {
            const int difference = std::abs(stroke[i] - filled[i]);
            count.any += difference > 1;
            count.gross += difference > 32;
        }
        return count;
    }

    Counted<BitmapRenderTarget> page;
};

TEST_F(OutlineTest, FilledOutlinesAreTheStrokes)
{
    constexpr int paths = 400;
    for (int kind = 0; kind < RandomCurves::KindCount; ++kind) {
        RandomCurves random(5U + static_cast<unsigned>(kind));
        std::size_t differences = 0;
        for (int i = 0; i < paths; ++i) {
            const auto path =
                Kernel::MakeCounted<PolyCurveDbl>(random.MakePath(RandomCurves::Kind(kind)));
            const LineStyleDescriptorConst line = MakeRandomLine(random);
            page->PushTransform(MakeRandomMap(random),
                                RenderTarget::TransformScalarMode::Concatenate);
            const Differences count = Compare(path, line);
            differences += count.any;
            // Where parts overlap within a pixel, their coverages add up, and parts may differ.
            EXPECT_LE(count.gross, 10U) << kind << ' ' << i;
            page->PopTransform();
        }
        EXPECT_LE(double(differences), 1e-3 * paths * Side * Side) << kind;
    }
}

TEST_F(OutlineTest, PressureAndVectorBrushesAreDrawnAsTheirOutlines)
{
    const Counted<const CurveDbl> profiles[] = {
        {}, MakePressure({{0, 1}, {1, 1}}), MakePressure({{0, 0}, {0.5, 2}, {1, 0.2}})};
    RandomCurves random(17);
    for (const auto type : {LineStyle::Solid, LineStyle::VectorBrush, LineStyle::RasterBrush})
        for (const auto& pressure : profiles)
            for (const bool resIndependent : {false, true}) {
                LineStyle style(9.0, resIndependent);
                style.SetType(type);
                LineStyleDescriptorConst line(LineStyle::Consolidate(style));
                line.SetPressure(pressure);
                const auto path =
                    Kernel::MakeCounted<PolyCurveDbl>(random.MakePath(RandomCurves::Plain));
                EXPECT_EQ(line.CanProvidePolyCurveOutline(), type != LineStyle::RasterBrush);
                if (type == LineStyle::RasterBrush)
                    EXPECT_FALSE(line.GetPolyCurveOutline(*path, {}, {}));
                else
                    EXPECT_LE(Compare(path, line).any, 4U);
            }
    EXPECT_FALSE(LineStyleDescriptorConst().CanProvidePolyCurveOutline());

    // A cone, from 0 to 24 pixels wide along 48: by columns, and as a polyline, too.
    LineStyleDescriptorConst cone(24.0);
    cone.SetPressure(MakePressure({{0, 0}, {1, 1}}));
    auto path = Kernel::MakeCounted<PolyCurveDbl>();
    path->MoveTo({8, 32});
    path->LineTo({56, 32});
    const auto drawn = Draw(path, cone, false);
    for (unsigned x = 8; x < 56; ++x) {
        double alpha = 0.0;
        for (unsigned y = 0; y < Side; ++y)
            alpha += drawn[4 * (y * Side + x) + 3] / 255.0;
        EXPECT_NEAR(alpha, 0.5 * (x - 8 + 0.5), 0.02) << x;
    }
    auto line = Kernel::MakeCounted<PolyPolygon>();
    line->BeginPolygon(false);
    line->AddPoint({8, 32});
    line->AddPoint({56, 32});
    page->Clear();
    page->DrawPolyPolyline(line, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                           FillDescriptorConst::CreateSolid(Red), {}, cone);
    EXPECT_EQ(BytesOf(page), drawn);
}

TEST(PressureProfile, LosesWhatChangesNothing)
{
    auto bent = Kernel::MakeCounted<CurveDbl>(Point{0, 0});
    bent->CurveTo({0.1, 0.5}, {0.2, 0.5}, {0.3, 0});
    bent->CurveTo({0.4, 0.1}, {0.6, 0.3}, {0.7, 0.4});
    bent->LineTo({0.8, 0.5});
    bent->LineTo({0.8, 0.5});
    bent->LineTo({1, 0.7});
    const struct
    {
        Counted<const CurveDbl> pressure;
        std::size_t segments; // that are left; 0: no profile at all
    } cases[] = {
        {{}, 0},
        {MakePressure({{0, 1}, {0.5, 1 + 5e-7}, {1, 1}}), 0},
        {MakePressure({{0, 1}, {0.5, 1.5}, {1, 2}}), 1},
        {MakePressure({{0, 1}, {0.25, 1.25 + 2e-6}, {0.5, 1.5}, {0.75, 1.75}, {1, 2}}), 3},
        {MakePressure({{0, 1}, {0.5, 1}, {0.5, 2}, {1, 2}}), 3},
        {MakePressure({{0, 2}, {0.5, 1.5}, {0.4, 1.6}, {1, 1}}), 3},
        {bent, 2},
    };
    for (const auto& c : cases) {
        LineStyleDescriptor line(2.0);
        line.SetPressure(c.pressure);
        line.OptimisePressureProfile();
        EXPECT_EQ(line.GetPressure() ? line.GetPressure()->GetSegmentCount() : 0, c.segments)
            << &c - cases;
        if (c.segments > 0) {
            EXPECT_EQ(line.GetPressure()->GetPoints().back(), c.pressure->GetPoints().back());
        }
    }
}

} // namespace
} // namespace Renderer
