#include <support/AllocationCount.h>

#include "StrokeTools.h"

namespace {

using namespace StrokeTools;
using Geometry::PathStroker;
constexpr double Tolerance = 0.1;

/// A mitred pen, as coarse as those of a screen.
StrokeParameters MakeCoarsePen(double width, StrokeCap cap = StrokeCap::Butt)
{
    return MakePen(width, StrokeJoin::Mitre, cap, Tolerance);
}

TEST(PathStroker, PolygonsGetNoMorePointsThanTheyHaveCorners)
{
    const Polygons rect = Stroke(PolyCurveDbl(Rect{0, 0, 30, 20}), MakeCoarsePen(2.0));
    ASSERT_EQ(rect.GetPolygonCount(), 2u);
    for (std::size_t i = 0; i < 2; ++i)
        ASSERT_EQ(rect.GetPolygon(i).points.size(), 4u);
    EXPECT_EQ(rect.GetBoundingBox().GetRect(), (Rect{-1, -1, 31, 21}));
    EXPECT_NEAR(Oracle::NonZeroArea(rect), 200.0, 1e-9);

    const PolyCurveDbl line = MakePolyline({{0, 0}, {30, 40}});
    EXPECT_EQ(Stroke(line, MakeCoarsePen(2.0)).GetPoints().size(), 4u);
    EXPECT_EQ(Stroke(line, MakeCoarsePen(2.0, StrokeCap::Square)).GetPoints().size(), 8u);
}

TEST(PathStroker, CirclesGetAboutTheFewestPoints)
{
    // Chords of the angle θ stray by R·θ²/8 from an arc of radius R.
    for (const double radius : {2.0, 20.0, 200.0}) {
        for (const double width : {1.0, 10.0, 100.0}) {
            const double outer = radius + 0.5 * width;
            const double fewest = std::ceil(2.0 * pi / std::sqrt(8.0 * Tolerance / outer));
            const double points = static_cast<double>(
                Stroke(MakeCircle(radius), MakeCoarsePen(width)).GetPoints().size());
            EXPECT_LE(points, 2.0 * (1.25 * fewest + 12.0)) << radius << ' ' << width;
        }
    }
}

TEST(PathStroker, EdgesOfCurvesAreCentred)
{
    // Inscribed chords would take some 0.06 from the outer edge and give as much to the inner one.
    const StrokeParameters pen = MakeCoarsePen(10.0);
    for (const double radius : {20.0, 60.0}) {
        const Polygons out = Stroke(MakeCircle(radius), pen);
        ASSERT_EQ(out.GetPolygonCount(), 2u);
        for (std::size_t i = 0; i < 2; ++i) {
            const double area = Oracle::SignedArea(out.GetPolygon(i).points);
            const double edge = std::sqrt(std::abs(area) / pi);
            const double expected = edge > radius ? radius + 5.0 : radius - 5.0;
            EXPECT_NEAR(edge, expected, 0.01);
        }
    }
    // So are round caps.
    PolyCurveDbl dot;
    dot.MoveTo({0, 0});
    dot.Close();
    const StrokeParameters round = MakeCoarsePen(40.0, StrokeCap::Round);
    EXPECT_NEAR(std::sqrt(Oracle::NonZeroArea(Stroke(dot, round)) / pi), 20.0, 0.01);
}

TEST(PathStroker, TightCurvesAreCoveredAsFarAsThePenReaches)
{
    // Arcs tighter than the pen, whose normals run on beyond the centre, with nothing beside them
    // that would cover a gap.
    const double handle = 0.5522847498;
    for (const double radius : {0.5, 2.0, 7.0, 9.5, 11.0}) {
        for (const double flat : {1.0, 0.4}) {
            const double x = radius, y = radius * flat;
            PolyCurveDbl path = MakeCubic({x, 0}, {x, handle * y}, {handle * x, y}, {0, y});
            path.CurveTo({-handle * x, y}, {-x, handle * y}, {-x, 0});
            const StrokeParameters pen = MakeCoarsePen(20.0);
            const Polygons out = Stroke(path, pen);
            const auto line = Oracle::SampleCurve(path.GetCurves()[0], 200);
            for (std::size_t i = 20; i + 20 < line.size(); i += 3) {
                const Point tangent = line[i + 1] - line[i - 1];
                const double length = std::hypot(tangent.x, tangent.y);
                for (double reach = -0.99; reach < 1.0; reach += 0.0571) {
                    const double away = reach * (10.0 - pen.tolerance - 0.01) / length;
                    const Point p = line[i] + away * Point{-tangent.y, tangent.x};
                    ASSERT_LT(Oracle::WindingNumber(p, out), 0)
                        << radius << ' ' << flat << ' ' << i << ' ' << reach;
                }
            }
        }
    }
}

TEST(PathStroker, KeepsItsMemory)
{
    PolyCurveDbl path = MakeCircle(30.0);
    path.MoveTo({0, 0});
    path.CurveTo({50, 10}, {-40, 10}, {10, 0});
    path.LineTo({70, 5});
    path.LineTo({0, 9});
    Polygons polyline;
    polyline.AddRect({0, 0, 40, 50});
    const double dashes[] = {3.0, 1.0, 2.0};
    PathStroker stroker;
    Polygons out;
    std::size_t before = 0;
    for (int round = 0; round < 2; ++round) {
        before = TestSupport::GetAllocationCount();
        for (const auto cap : {StrokeCap::Butt, StrokeCap::Square, StrokeCap::Round}) {
            for (const bool dashed : {false, true}) {
                StrokeParameters pen = MakeCoarsePen(6.0, cap);
                pen.join = dashed ? StrokeJoin::Round : StrokeJoin::Mitre;
                if (dashed)
                    pen.dashes = dashes;
                out.Clear();
                ASSERT_TRUE(stroker.SetPen(pen));
                const auto twice = [](Point p) { return 2.0 * p; };
                for (const auto& curve : path.GetCurves()) {
                    stroker.Stroke(curve, out);
                    stroker.StrokeMapped(curve, twice, out);
                }
                stroker.StrokeMapped(polyline.GetPolygon(0).points, true, twice, out);
            }
        }
    }
    EXPECT_EQ(TestSupport::GetAllocationCount(), before);
}

TEST(PathStroker, MapsRunsAndCountsDashesInUnits)
{
    PolyCurveDbl path = MakeCubic({0, 0}, {5, 10}, {20, -10}, {30, 0});
    const double dashes[] = {1.5, 1.0};
    StrokeParameters pen = MakeCoarsePen(3.0, StrokeCap::Round);
    pen.dashes = dashes;
    pen.dashPhase = 0.5;
    pen.dashUnit = 2.0;
    PathStroker stroker;
    Polygons mapped;
    ASSERT_TRUE(stroker.SetPen(pen));
    const auto map = [](Point p) { return Point{3.0 * p.x - p.y, 2.0 * p.y + 7.0}; };
    stroker.StrokeMapped(path.GetCurves()[0], map, mapped);

    path.Transform(map);
    const double longer[] = {3.0, 2.0};
    pen.dashes = longer;
    pen.dashPhase = 1.0;
    pen.dashUnit = 1.0;
    EXPECT_EQ(mapped.GetPoints(), Stroke(path, pen).GetPoints());
}

} // namespace
