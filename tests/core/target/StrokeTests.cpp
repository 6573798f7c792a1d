// Strokes in the pixels of a target.

#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>

#include <geometry/CombineRegions.h>
#include <geometry/Stroker.h>
#include <renderer/paint/LineStyleDescriptorConst.h>

#include "TargetFixture.h"

namespace Renderer {
namespace {

using Geometry::Point;
using Geometry::PolyCurveDbl;
using Kernel::Counted;
using Raster::AffineTransform;
using Transform = AffineTransform::Params;
using Rect = Kernel::RectT<double>;

class StrokeTest : public TargetTest
{
protected:
    double Uniform(double low, double high)
    {
        return low + (high - low) * (static_cast<double>(m_random()) / 4294967296.0);
    }
    int Choose(int count) { return static_cast<int>(Uniform(0, count)); }
    Point InSquare(double half) { return {Uniform(-half, half), Uniform(-half, half)}; }

    /// \param closing how many of three runs are closed
    Counted<PolyCurveDbl> MakePath(Point centre, double size, int closing = 1)
    {
        auto path = Kernel::MakeCounted<PolyCurveDbl>();
        for (int run = Choose(2); run >= 0; --run) {
            const auto point = [&] { return centre + InSquare(size); };
            path->MoveTo(point());
            for (int k = Choose(4); k >= 0; --k) {
                if (Choose(2))
                    path->LineTo(point());
                else
                    path->CurveTo(point(), point(), point());
            }
            if (Choose(3) < closing)
                path->Close();
        }
        return path;
    }

    LineStyleDescriptorConst MakeLine(double weight)
    {
        LineStyle style(weight, Choose(3) == 0);
        style.SetCap(static_cast<LineStyle::LineCap>(Choose(3)));
        style.SetJoin(static_cast<LineStyle::LineJoin>(Choose(4)));
        style.SetMiterLimit(Uniform(0.5, 4));
        if (Choose(3) == 0)
            style.SetDashPattern({Uniform(0, 5), Uniform(1, 5)});
        LineStyleDescriptorConst line(LineStyle::Consolidate(style));
        line.SetScale(Choose(2) == 0);
        line.SetStrokeAlignment(static_cast<LineStyleDescriptorConst::StrokeAlignment>(Choose(3)));
        return line;
    }

    Transform MakeMap()
    {
        const double scale = std::exp(Uniform(-1, 1));
        return {scale * Uniform(-1.5, 1.5), scale * Uniform(-1.5, 1.5), 0,
                scale * Uniform(-1.5, 1.5), scale * Uniform(-1.5, 1.5), 0};
    }

    std::mt19937 m_random{5};
};

/// The box of all pixels that are not transparent.
Rect GetTouched(const Counted<BitmapRenderTarget>& target)
{
    RGBA8Buffer view;
    EXPECT_TRUE(view.Attach(target->GetBuffer()));
    Geometry::BoundingBoxT<double> box;
    for (unsigned y = 0; y < view.GetHeight(); ++y)
        for (unsigned x = 0; x < view.GetWidth(); ++x)
            if (view.GetRow(y)[x] != PixelRGBA8{}) {
                box.Add({x + 0.0, y + 0.0});
                box.Add({x + 1.0, y + 1.0});
            }
    return box.IsValid() ? box.GetRect() : Rect{};
}

TEST_F(StrokeTest, InflatedRectanglesHoldEveryTouchedPixel)
{
    constexpr int size = 96;
    for (int round = 0; round < 1000; ++round) {
        const auto canvas = Make(size, size);
        Transform device = AffineTransform::Scaling(Uniform(0.5, 2), Uniform(0.5, 2));
        device.m02 = device.m12 = size / 2;
        canvas->SetLogToDevTransform(device);
        canvas->PushTransform(MakeMap(), static_cast<RenderTarget::TransformScalarMode>(Choose(3)));
        const Transform current = canvas->GetCurrentTransform();
        const Transform scalar = canvas->GetScalarTransform();
        const auto path = MakePath({}, 12);
        const auto line = MakeLine(std::exp(Uniform(-4, 2)));
        canvas->DrawPolyCurve(path, 1, FillBlendMode::Normal, BlendOptions::Identity(), {}, {},
                              Solid(Red), line, Geometry::WindingOrderMode::NonZero, true, true);
        const auto touched = GetTouched(canvas);
        if (touched.IsEmpty())
            continue;
        const Rect box = path->GetBoundingBox().GetRect();
        const auto holds = [&](const Rect& grown) {
            return Rect{std::floor(grown.left), std::floor(grown.top), std::ceil(grown.right),
                        std::ceil(grown.bottom)}
                .Contains(touched);
        };
        const Rect base =
            AffineTransform::MapRect(current, line.InflateBaseRect(box, current, scalar, device));
        const Rect spread =
            line.InflateSpreadRect(AffineTransform::MapRect(current, box), current, scalar, device);
        EXPECT_TRUE(holds(base)) << round;
        EXPECT_TRUE(holds(spread)) << round;
    }
}

TEST_F(StrokeTest, InflatedRectanglesHoldMitresOfHairlinesAndWithoutLimit)
{
    auto spike = Kernel::MakeCounted<PolyCurveDbl>();
    spike->MoveTo({20, 45});
    spike->LineTo({60, 45});
    spike->LineTo({20, 47});
    const Rect box = spike->GetBoundingBox().GetRect();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double limit : {60.0, 1e308, infinity})
        for (const double weight : {0.02, 0.1, 1.0})
            for (const bool isResIndependent : {false, true}) {
                LineStyle style(weight, isResIndependent);
                style.SetJoin(LineStyle::MitreJoin);
                style.SetMiterLimit(limit);
                const LineStyleDescriptorConst line(LineStyle::Consolidate(style));
                const auto canvas = Make(96, 96);
                canvas->DrawPolyCurve(spike, 1, FillBlendMode::Normal, BlendOptions::Identity(), {},
                                      {}, Solid(Red), line, Geometry::WindingOrderMode::NonZero,
                                      true, true);
                const Rect touched = GetTouched(canvas);
                EXPECT_GE(touched.right, 64.0); // the tip is 20 widths long at least
                for (const Rect& grown :
                     {line.InflateBaseRect(box, {}, {}), line.InflateSpreadRect(box, {}, {})}) {
                    EXPECT_TRUE(grown.Contains(touched)) << weight << ' ' << limit;
                    EXPECT_LT(grown.right, infinity);
                }
            }
}

TEST_F(StrokeTest, MitresWithoutLimitAreWholeInGroups)
{
    auto path = Kernel::MakeCounted<PolyCurveDbl>();
    path->MoveTo({20, 40});
    path->LineTo({60, 40});
    path->LineTo({20, 60});
    auto back = Kernel::MakeCounted<PolyCurveDbl>(*path);
    back->LineTo({60, 40});
    back->LineTo({20, 60}); // back on the very same way there is none
    for (const double limit : {1e308, std::numeric_limits<double>::infinity()}) {
        LineStyle style(6.0);
        style.SetJoin(LineStyle::MitreJoin);
        style.SetMiterLimit(limit);
        for (const auto& drawn : {path, back}) {
            const auto canvas = Make(96, 96);
            canvas->DrawPolyCurve(drawn, 0.5F, FillBlendMode::Normal, BlendOptions::Identity(),
                                  Solid(Red), {}, Solid(Red),
                                  LineStyleDescriptorConst(LineStyle::Consolidate(style)),
                                  Geometry::WindingOrderMode::NonZero, true, true);
            const double tip = 3.0 / std::tan(0.5 * std::atan(0.5));
            EXPECT_NEAR(GetTouched(canvas).right, 60.0 + tip, 1.0);
        }
    }
}

// ---- alignment ----

using Alignment = LineStyleDescriptorConst::StrokeAlignment;

class AlignmentTest : public StrokeTest
{
protected:
    static constexpr int Size = 80;

    /// The alpha of every pixel of a stroke.
    static std::vector<int> Draw(const Counted<PolyCurveDbl>& path, const LineStyle& style,
                                 Alignment alignment, Geometry::WindingOrderMode rule,
                                 const Transform& map)
    {
        const auto canvas = Make(Size, Size);
        canvas->SetDeviceExpansionTolerance(0.02);
        canvas->PushTransform(map, RenderTarget::TransformScalarMode::Concatenate);
        LineStyleDescriptorConst line(LineStyle::Consolidate(style));
        line.SetStrokeAlignment(alignment);
        canvas->DrawPolyCurve(path, 1, FillBlendMode::Normal, BlendOptions::Identity(), {}, {},
                              Solid(Red), line, rule, true, true);
        return GetAlphas(canvas);
    }

    static std::vector<int> GetAlphas(const Counted<BitmapRenderTarget>& canvas)
    {
        std::vector<int> alphas;
        const auto bytes = BytesOf(canvas);
        for (std::size_t i = 3; i < bytes.size(); i += 4)
            alphas.push_back(bytes[i]);
        return alphas;
    }

    static double GetArea(const std::vector<int>& alphas)
    {
        return std::accumulate(alphas.begin(), alphas.end(), 0.0) / 255.0;
    }
};

TEST_F(AlignmentTest, AreasOfASquareAndACircle)
{
    const auto square = Kernel::MakeCounted<PolyCurveDbl>(Rect{20, 20, 60, 60});
    const auto circle = Kernel::MakeCounted<PolyCurveDbl>();
    circle->AddEllipse({40, 40}, 20, 20);
    LineStyle style(6.0);
    const auto area = [&](const auto& path, Alignment alignment) {
        return GetArea(Draw(path, style, alignment, Geometry::WindingOrderMode::EvenOdd, {}));
    };
    constexpr double pi = std::numbers::pi;
    const double corners[] = {0.0, 144.0, pi * 36.0, 72.0}; // of the outer band, by join
    for (int join = 0; join < 4; ++join) {
        style.SetJoin(static_cast<LineStyle::LineJoin>(join));
        EXPECT_NEAR(area(square, LineStyleDescriptorConst::Inside), 1600.0 - 28.0 * 28.0, 0.5);
        EXPECT_NEAR(area(square, LineStyleDescriptorConst::Outside), 960.0 + corners[join], 0.5);
        EXPECT_NEAR(area(circle, LineStyleDescriptorConst::Inside), pi * (400 - 196), 1.0);
        EXPECT_NEAR(area(circle, LineStyleDescriptorConst::Outside), pi * (676 - 400), 1.0);
    }
}

/// The stroke of twice the width, its parts united: where they overlap within a pixel, the
/// rasteriser would count their coverages twice.
Counted<Geometry::PolyPolygonType<double>> MakeWide(const PolyCurveDbl& path,
                                                    const LineStyle& style)
{
    Geometry::StrokeParameters pen;
    pen.width = 2.0 * style.GetWeight();
    pen.cap = static_cast<Geometry::StrokeCap>(style.GetCap());
    pen.join = static_cast<Geometry::StrokeJoin>(style.GetJoin());
    pen.mitreLimit = style.GetMiterLimit();
    pen.dashes = style.GetDashPattern();
    pen.tolerance = 0.02;
    Geometry::PolyPolygonType<double> stroke;
    Geometry::StrokePolyCurve(path, pen, stroke);
    auto united = Kernel::MakeCounted<Geometry::PolyPolygonType<double>>();
    const auto rule = Geometry::WindingOrderMode::NonZero;
    EXPECT_TRUE(Geometry::CombineRegions(stroke, rule, {}, rule, Geometry::RegionOperation::Unite,
                                         *united));
    return united;
}

TEST_F(AlignmentTest, InsideAndOutsideMakeTheStrokeOfTwiceTheWidth)
{
    for (int round = 0; round < 120; ++round) {
        const LineStyle style = *MakeLine(Uniform(0.5, 9)).GetLineStyle();
        const auto path = MakePath({40, 40}, 30, 3);
        // A pen on the device is the same whatever the map.
        Transform map;
        if (style.GetResIndependent())
            map = {0.8, 0.3, 10, -0.3, 0.7, 20};
        const auto rule = static_cast<Geometry::WindingOrderMode>(round % 2);
        const auto inside = Draw(path, style, LineStyleDescriptorConst::Inside, rule, map);
        const auto outside = Draw(path, style, LineStyleDescriptorConst::Outside, rule, map);
        path->Transform([&](Point p) { return map.Map(p); });
        const auto canvas = Make(Size, Size);
        canvas->DrawPolyPolygon(MakeWide(*path, style), 1, FillBlendMode::Normal,
                                BlendOptions::Identity(), Solid(Red), {},
                                Geometry::WindingOrderMode::NonZero, true, true);
        const auto whole = GetAlphas(canvas);
        for (std::size_t i = 0; i < whole.size(); ++i)
            ASSERT_NEAR(inside[i] + outside[i], whole[i], 3) << round << ' ' << i;
        EXPECT_GT(GetArea(whole), 1.0);
    }
}

TEST_F(AlignmentTest, OutlinesOfAlignedStrokesAreWhatIsDrawn)
{
    std::size_t segments = 0, different = 0, given = 0;
    constexpr int rounds = 60;
    for (int round = 0; round < rounds; ++round) {
        LineStyleDescriptorConst line = MakeLine(Uniform(0.5, 9));
        line.SetScale(true);
        line.SetStrokeAlignment(round % 2 ? LineStyleDescriptorConst::Inside
                                          : LineStyleDescriptorConst::Outside);
        const auto path = MakePath({40, 40}, 30, 2);
        const auto rule = static_cast<Geometry::WindingOrderMode>(round / 2 % 2);
        const Transform map{0.9, 0.3, -10, -0.2, 1.1, 7};
        const auto drawn = Draw(path, *line.GetLineStyle(), line.GetStrokeAlignment(), rule, map);
        const auto outline = line.GetPolyCurveOutline(*path, map, map, {}, 0.02, rule);
        ASSERT_TRUE(outline);
        const auto canvas = Make(Size, Size);
        canvas->SetDeviceExpansionTolerance(0.02);
        canvas->PushTransform(map, RenderTarget::TransformScalarMode::Concatenate);
        canvas->DrawPolyCurve(outline, 1, FillBlendMode::Normal, BlendOptions::Identity(),
                              Solid(Red), {}, {}, {}, Geometry::WindingOrderMode::NonZero, true,
                              true);
        const auto filled = GetAlphas(canvas);
        for (std::size_t i = 0; i < drawn.size(); ++i)
            different += std::abs(drawn[i] - filled[i]) > 4;
        EXPECT_NEAR(GetArea(drawn), GetArea(filled), 2.0) << round;
        for (const auto& run : outline->GetCurves())
            segments += run.GetSegmentCount();
        for (const auto& run : path->GetCurves())
            given += run.GetSegmentCount();
    }
    EXPECT_LT(different, std::size_t{rounds * Size * Size / 1000});
    EXPECT_LT(segments, 40 * given); // a third of them are dashed
}

TEST_F(AlignmentTest, OpenRunsAreCentred)
{
    const Transform map{1, 0.2, 0, 0, 1, 0};
    for (const bool onDevice : {false, true}) {
        const LineStyle style(5.0, onDevice);
        const auto path = MakePath({40, 40}, 25, 0);
        const auto draw = [&](Alignment alignment) {
            return Draw(path, style, alignment, Geometry::WindingOrderMode::NonZero, map);
        };
        const auto centred = draw(LineStyleDescriptorConst::Centre);
        EXPECT_EQ(draw(LineStyleDescriptorConst::Inside), centred);
        EXPECT_EQ(draw(LineStyleDescriptorConst::Outside), centred);
        // Beside a closed run they still are, and its stroke is not.
        path->AddEllipse({8, 72}, 7, 7);
        const double extra = GetArea(draw(LineStyleDescriptorConst::Inside)) - GetArea(centred);
        EXPECT_GT(extra, 80.0);
        EXPECT_LT(extra, 155.0);
    }
}

TEST_F(AlignmentTest, TranslucentStrokesOutsideDoNotDoubleTheFillOfOpenRuns)
{
    auto path = Kernel::MakeCounted<PolyCurveDbl>();
    path->MoveTo({5, 5});
    path->LineTo({25, 5});
    path->LineTo({25, 25});
    LineStyleDescriptorConst line(6.0);
    line.SetStrokeAlignment(LineStyleDescriptorConst::Outside);
    target->DrawPolyCurve(path, 0.5F, FillBlendMode::Normal, BlendOptions::Identity(), Solid(Red),
                          {}, Solid(Red), line, Geometry::WindingOrderMode::NonZero, true, true);
    EXPECT_NEAR(At(23, 10)[3], 127, 1); // fill and stroke
    EXPECT_NEAR(At(27, 10)[3], 127, 1); // stroke alone
}

// ---- hairlines ----

/// The sum of what a line covers.
double GetInk(const Counted<PolyCurveDbl>& path, const LineStyleDescriptorConst& line,
              float opacity)
{
    const Counted<BitmapRenderTarget> canvas(
        BitmapRenderTarget::Create(Raster::Format::RGBAUF, {}));
    EXPECT_TRUE(canvas->CreateBuffer(60, 60));
    canvas->DrawPolyCurve(path, opacity, FillBlendMode::Normal, BlendOptions::Identity(), {}, {},
                          FillDescriptorConst::CreateSolid({{255, 0, 0, 255}}), line,
                          Geometry::WindingOrderMode::NonZero, true, true);
    const auto buffer = canvas->GetBuffer();
    double sum = 0.0;
    for (unsigned y = 0; y < 60; ++y)
        for (unsigned x = 0; x < 60; ++x)
            sum += reinterpret_cast<const float*>(buffer->GetRow(y))[4 * x + 3];
    return sum;
}

Counted<PolyCurveDbl> MakeLineThrough(Point centre, Point way)
{
    auto path = Kernel::MakeCounted<PolyCurveDbl>();
    path->MoveTo(centre - way);
    path->LineTo(centre + way);
    return path;
}

TEST_F(StrokeTest, HairlinesKeepTheirVisualWeight)
{
    for (const double weight : {1.0, 0.25, 0.2, 1.0 / 8, 1.0 / 20, 1.0 / 100, 1.0 / 1000})
        for (const float opacity : {1.0F, 0.4F}) {
            for (double angle = 0.01; angle < 3.2; angle += 0.1) {
                const Point way{25 * std::cos(angle), 25 * std::sin(angle)};
                const auto path = MakeLineThrough(Point{30, 30} + InSquare(1), way);
                const double ink = GetInk(path, LineStyleDescriptorConst(weight), opacity);
                const double expected = 50.0 * weight * std::floor(255.0 * opacity) / 255.0;
                EXPECT_NEAR(ink, expected, 0.04 * expected) << weight << ' ' << angle;
            }
        }
}

TEST_F(StrokeTest, DotsAndDashesOfHairlinesKeepTheirVisualWeight)
{
    const auto pressure = Kernel::MakeCounted<Geometry::CurveDbl>(Point{0, 0.99999});
    pressure->LineTo({1, 0.99999}); // makes them outlines of curves
    constexpr double capAreas[] = {0.0, 1.0, std::numbers::pi / 4.0};
    for (const double weight : {0.3, 0.25, 0.2, 0.1, 0.05})
        for (int cap = 0; cap < 3; ++cap)
            for (const double dash : {0.0, weight, 0.5})
                for (const bool hasPressure : {false, true}) {
                    if (hasPressure && cap == LineStyle::RoundCap)
                        continue; // outlines are flattened with corners of discs that small cut off
                    LineStyle style(weight);
                    style.SetCap(static_cast<LineStyle::LineCap>(cap));
                    style.SetDashPattern({dash, 1.7 - dash});
                    LineStyleDescriptorConst line(LineStyle::Consolidate(style));
                    if (hasPressure)
                        line.SetPressure(pressure);
                    double ink = 0.0;
                    for (int round = 0; round < 16; ++round) {
                        const double angle = 0.2 * round;
                        const Point way{25 * std::cos(angle), 25 * std::sin(angle)};
                        ink += GetInk(MakeLineThrough({30.1, 30.2}, way), line, 1) / 16.0;
                    }
                    const double expected = 30.0 * weight * (dash + capAreas[cap] * weight);
                    // What pixels get is rounded down to 1/255 of the opacity.
                    const double rounding = 1.5 / 255.0 * std::min(1.0, weight / 0.25);
                    EXPECT_NEAR(ink, expected, 0.04 * expected + 30.0 * rounding)
                        << weight << " cap " << cap << " dash " << dash << ' ' << hasPressure;
                }
}

} // namespace
} // namespace Renderer
