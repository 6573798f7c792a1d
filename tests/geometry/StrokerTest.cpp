#include <limits>

#include "StrokeTools.h"

namespace {

using namespace StrokeTools;

TEST(Stroker, AreaOfASquareWithEachJoin)
{
    const PolyCurveDbl square(Kernel::RectT<double>{0, 0, 10, 10});
    // Both bands of width 1 and the four corners of the outer one.
    const double bands = 40.0 + (100.0 - 64.0);
    const auto area = [&](StrokeJoin join, double limit) {
        StrokeParameters pen = MakePen(2.0, join);
        pen.mitreLimit = limit;
        return Oracle::NonZeroArea(Stroke(square, pen));
    };
    EXPECT_NEAR(area(StrokeJoin::Mitre, std::numbers::sqrt2), bands + 4.0, 1e-6);
    EXPECT_NEAR(area(StrokeJoin::Mitre, 1.414), bands + 2.0, 1e-6);
    EXPECT_NEAR(area(StrokeJoin::Bevel, 4.0), bands + 2.0, 1e-6);
    EXPECT_NEAR(area(StrokeJoin::Round, 4.0), bands + pi, 1e-3);
    EXPECT_NEAR(area(StrokeJoin::None, 4.0), bands, 1e-6);
}

TEST(Stroker, MitreLimitHoldsForRotatedRightAngles)
{
    StrokeParameters pen = MakePen(2.0, StrokeJoin::Mitre);
    pen.mitreLimit = std::numbers::sqrt2;
    for (double angle = 0.0; angle < 6.3; angle += 0.01) {
        const Point u{std::cos(angle), std::sin(angle)};
        const Polygons out = Stroke(
            MakePolyline({Point{5, 5} - 10.0 * u, {5, 5}, {5 - 10 * u.y, 5 + 10 * u.x}}), pen);
        double furthest = 0.0;
        for (const Point p : out.GetPoints())
            if (std::hypot(p.x - 5, p.y - 5) < 5.0)
                furthest = std::max(furthest, std::hypot(p.x - 5, p.y - 5));
        ASSERT_NEAR(furthest, std::numbers::sqrt2, 1e-9) << angle;
    }
}

TEST(Stroker, AreaOfAnArcWithEachCap)
{
    const double handle = 10.0 * 0.5519150244935; // a quarter of radius 10 about the origin
    const PolyCurveDbl arc = MakeCubic({10, 0}, {10, handle}, {handle, 10}, {0, 10});
    for (const double width : {0.5, 4.0, 19.0}) {
        const double band = 10.0 * width * 0.5 * pi;
        const auto area = [&](StrokeCap cap) {
            return Oracle::NonZeroArea(Stroke(arc, MakePen(width, StrokeJoin::Mitre, cap)));
        };
        EXPECT_NEAR(area(StrokeCap::Butt), band, 2e-3 * band);
        if (width > 10.0)
            continue; // the caps reach over the band
        EXPECT_NEAR(area(StrokeCap::Square), band + width * width, 2e-3 * band);
        EXPECT_NEAR(area(StrokeCap::Round), band + 0.25 * pi * width * width, 2e-3 * band);
    }
}

TEST(Stroker, EndsOfCurvesAreCutAcrossTheTangent)
{
    // However coarse the curve, a butt cap ends on the true normal.
    const PolyCurveDbl arc = MakeCubic({10, 0}, {10, 5.519}, {5.519, 10}, {0, 10});
    for (const double tolerance : {0.001, 0.3, 2.0}) {
        const Polygons out =
            Stroke(arc, MakePen(6.0, StrokeJoin::Round, StrokeCap::Butt, tolerance));
        const Kernel::RectT<double> box = out.GetBoundingBox().GetRect();
        EXPECT_NEAR(box.left, 0.0, 1e-9);
        EXPECT_NEAR(box.top, 0.0, 1e-9);
    }
}

TEST(Stroker, RunsWithoutLength)
{
    for (const bool closed : {false, true}) {
        PolyCurveDbl path;
        path.MoveTo({3, 4});
        path.LineTo({3, 4});
        path.CurveTo({3, 4}, {3, 4}, {3, 4});
        if (closed)
            path.Close();
        EXPECT_TRUE(Stroke(path, MakePen(2, StrokeJoin::Round, StrokeCap::Butt)).IsEmpty());
        const Polygons square = Stroke(path, MakePen(2, StrokeJoin::Round, StrokeCap::Square));
        EXPECT_EQ(square.GetBoundingBox().GetRect(), (Kernel::RectT<double>{2, 3, 4, 5}));
        EXPECT_NEAR(Oracle::NonZeroArea(square), 4.0, 1e-9);
        const Polygons disc = Stroke(path, MakePen(2, StrokeJoin::Round, StrokeCap::Round));
        EXPECT_NEAR(Oracle::NonZeroArea(disc), pi, 1e-3);
    }
    PolyCurveDbl started; // a pen that was set down and never drawn with leaves no mark
    started.MoveTo({1, 1});
    EXPECT_TRUE(Stroke(started, MakePen(2, StrokeJoin::Round, StrokeCap::Round)).IsEmpty());
    started.Close();
    EXPECT_FALSE(Stroke(started, MakePen(2, StrokeJoin::Round, StrokeCap::Round)).IsEmpty());
}

TEST(Stroker, TurnBackGetsACapOrABevel)
{
    const PolyCurveDbl path = MakePolyline({{0, 0}, {10, 0}, {4, 0}});
    EXPECT_NEAR(Oracle::NonZeroArea(Stroke(path, MakePen(2, StrokeJoin::Round))), 20 + 0.5 * pi,
                1e-3);
    EXPECT_NEAR(Oracle::NonZeroArea(Stroke(path, MakePen(2, StrokeJoin::Bevel))), 20.0, 1e-9);
    StrokeParameters mitre = MakePen(2, StrokeJoin::Mitre);
    mitre.mitreLimit = 1e9;
    EXPECT_NEAR(Oracle::NonZeroArea(Stroke(path, mitre)), 20.0, 1e-9);
}

/// What a round pen covers: all points within half its width of the path. The winding number counts
/// pieces that all have one orientation, so it is never of the other sign.
void ExpectRoundPen(const PolyCurveDbl& path, double width, double tolerance, unsigned seed,
                    int count)
{
    const StrokeParameters pen = MakePen(width, StrokeJoin::Round, StrokeCap::Round, tolerance);
    const Polygons out = Stroke(path, pen);
    const Kernel::RectT<double> box = out.GetBoundingBox().GetRect();
    std::vector<std::vector<Point>> lines;
    for (const CurveDbl& curve : path.GetCurves())
        lines.push_back(Oracle::SampleCurve(curve, 300));
    Oracle::Random random(seed);
    const double margin = tolerance + 0.004;
    for (int i = 0; i < count; ++i) {
        const Point p{random.Uniform(box.left - width, box.right + width),
                      random.Uniform(box.top - width, box.bottom + width)};
        double distance = 1e300;
        for (const auto& line : lines)
            distance = std::min(distance, Oracle::DistanceToPolyline(p, line));
        const int winding = Oracle::WindingNumber(p, out);
        ASSERT_LE(winding, 0) << p.x << ' ' << p.y << ' ' << distance;
        if (distance < 0.5 * width - margin) {
            ASSERT_NE(winding, 0) << p.x << ' ' << p.y << ' ' << distance << ' ' << width;
        } else if (distance > 0.5 * width + margin) {
            ASSERT_EQ(winding, 0) << p.x << ' ' << p.y << ' ' << distance << ' ' << width;
        }
    }
}

TEST(Stroker, RoundPenCoversWhatIsNear)
{
    unsigned seed = 1;
    for (const auto& cubic : Oracle::MakeCubics(40, 5)) {
        const PolyCurveDbl path =
            MakeCubic(100.0 * cubic[0], 100.0 * cubic[1], 100.0 * cubic[2], 100.0 * cubic[3]);
        for (const double width : {0.3, 8.0, 60.0, 300.0})
            for (const double tolerance : {0.05, 1.0})
                ASSERT_NO_FATAL_FAILURE(ExpectRoundPen(path, width, tolerance, ++seed, 120))
                    << "width " << width << " tolerance " << tolerance;
    }
}

TEST(Stroker, RoundPenCoversWhatIsNearPolylinesAndClosedRuns)
{
    Oracle::Random random(17);
    for (unsigned i = 0; i < 30; ++i) {
        PolyCurveDbl path;
        path.MoveTo(random.InSquare(50));
        for (int k = 0; k < 6; ++k) {
            if (random.Uniform(0, 1) < 0.6)
                path.LineTo(random.InSquare(50));
            else
                path.CurveTo(random.InSquare(50), random.InSquare(50), random.InSquare(50));
        }
        if (i % 2 == 0)
            path.Close();
        for (const double width : {2.0, 30.0})
            ASSERT_NO_FATAL_FAILURE(ExpectRoundPen(path, width, 0.05, i, 120)) << i;
    }
    // The pen reaches from just outside to beyond the centre.
    for (const double width : {1.0, 38.0, 40.0, 44.0, 200.0})
        ASSERT_NO_FATAL_FAILURE(ExpectRoundPen(MakeCircle(20), width, 0.05, 3, 400)) << width;
}

TEST(Stroker, CornersBesideTightCurvesHaveNoCracks)
{
    for (const double radius : {5.0, 50.0}) {
        for (const double share : {0.9, 0.98, 0.995, 1.0}) {
            for (double turn = 0.1; turn < 8.0; turn *= 1.6) {
                const double bend = share * radius, sweep = 0.5 * pi;
                const double handle = 4.0 / 3.0 * std::tan(0.25 * sweep) * bend;
                const double onwards = sweep + 0.5 * pi - turn * pi / 180.0;
                PolyCurveDbl path = MakeCubic({bend, 0}, {bend, handle}, {handle, bend}, {0, bend});
                path.LineTo(
                    {3.0 * radius * std::cos(onwards), bend + 3.0 * radius * std::sin(onwards)});
                // Along an arc inside the pen, across the wedge that the corner opens.
                const Polygons outline =
                    Stroke(path, MakePen(2.0 * radius, StrokeJoin::Round, StrokeCap::Round, 0.1));
                for (int i = 0; i < 2000; ++i) {
                    const double angle = onwards + 0.5 * pi - 0.1 + 0.3 * i / 2000;
                    const Point p{0.9 * radius * std::cos(angle),
                                  bend + 0.9 * radius * std::sin(angle)};
                    ASSERT_NE(Oracle::WindingNumber(p, outline), 0)
                        << radius << ' ' << share << ' ' << turn << ' ' << i;
                }
            }
        }
    }
}

TEST(Stroker, SmoothCurvesAreCoveredOnce)
{
    // No overlap along a curve that is wider than the pen: the signed area is the area.
    const PolyCurveDbl circle = MakeCircle(20);
    const auto signedArea = [](const Polygons& polygons) {
        double sum = 0.0;
        for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i)
            sum -= Oracle::SignedArea(polygons.GetPolygon(i).points);
        return sum;
    };
    const double expected = 2.0 * pi * 20.0 * 30.0;
    EXPECT_NEAR(signedArea(Stroke(circle, MakePen(30, StrokeJoin::Mitre))), expected,
                1e-3 * expected);
    Polygons flat, out;
    circle.ExpandAdaptive(0.01, flat);
    Geometry::StrokePolyPolygon(flat, MakePen(30, StrokeJoin::Round), out);
    EXPECT_NEAR(signedArea(out), expected, 2e-2 * expected);
}

TEST(Stroker, NothingLiesBeyondTheMitreLimit)
{
    Oracle::Random random(23);
    const auto cubics = Oracle::MakeCubics(300, 29); // cusps first
    for (unsigned i = 0; i < 600; ++i) {
        const auto& cubic = cubics[i / 2];
        PolyCurveDbl path =
            MakeCubic(50.0 * cubic[0], 50.0 * cubic[1], 50.0 * cubic[2], 50.0 * cubic[3]);
        if (i % 3 > 0)
            path.CurveTo(random.InSquare(50), random.InSquare(50), random.InSquare(50));
        if (i % 3 > 1)
            path.Close();
        StrokeParameters pen = MakePen(random.Uniform(0.1, 40), static_cast<StrokeJoin>(i % 4),
                                       static_cast<StrokeCap>(i % 3), random.Uniform(0.01, 2));
        pen.mitreLimit = random.Uniform(1, 3);
        const double dashes[] = {random.Uniform(0, 20), random.Uniform(1, 20)};
        if (i % 5 == 0)
            pen.dashes = dashes;
        const double reach =
            0.5 * pen.width * std::max(pen.mitreLimit, std::numbers::sqrt2) + pen.tolerance;
        const auto line = Oracle::SampleCurve(path.GetCurves()[0], 200);
        const Polygons out = Stroke(path, pen);
        for (std::size_t k = 0; k < out.GetPoints().size(); k += 7)
            ASSERT_LE(Oracle::DistanceToPolyline(out.GetPoints()[k], line), reach);
    }
}

TEST(Stroker, WhatCannotBeDrawnIsNot)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const PolyCurveDbl line = MakePolyline({{0, 0}, {10, 0}});
    for (const double width : {0.0, -1.0, nan, infinity, 1e300})
        EXPECT_TRUE(Stroke(line, MakePen(width, StrokeJoin::Round)).IsEmpty()) << width;
    for (const double bad : {nan, infinity, 1e300}) {
        PolyCurveDbl path = MakePolyline({{0, 0}, {bad, 5}, {10, 0}});
        EXPECT_TRUE(Stroke(path, MakePen(1, StrokeJoin::Round)).IsEmpty());
        path.MoveTo({0, 0}); // the next run does not suffer
        path.LineTo({4, 0});
        EXPECT_NEAR(Oracle::NonZeroArea(Stroke(path, MakePen(1, StrokeJoin::Round))), 4.0, 1e-9);
    }
    for (const double tolerance : {0.0, -1.0, nan})
        EXPECT_NEAR(Oracle::NonZeroArea(
                        Stroke(line, MakePen(2, StrokeJoin::Round, StrokeCap::Round, tolerance))),
                    20.0 + pi, 0.02);
}

TEST(Stroker, AbsurdSizesStayAffordable)
{
    const PolyCurveDbl bend = MakeCubic({0, 0}, {10, 10}, {-10, 10}, {1, 0});
    StrokeParameters pen = MakePen(1e12, StrokeJoin::Round, StrokeCap::Round, 1e-3);
    EXPECT_LT(Stroke(bend, pen).GetPoints().size(), 2'000'000u);
    // So far from the origin that neighbouring points and their tangents are rounding alone.
    PolyCurveDbl far = MakeCubic({1e30, 1e30}, {-1e18, 3e30}, {2e30, -1e12}, {1e30, 1.5e30});
    far.LineTo({1e30, 1.5e30 + 1e15});
    pen = MakePen(1e6, StrokeJoin::Round, StrokeCap::Round, 0.1);
    EXPECT_LT(Stroke(far, pen).GetPoints().size(), 20'000'000u);
    const double dashes[] = {1e25, 3e25};
    pen.dashes = dashes;
    EXPECT_LT(Stroke(far, pen).GetPoints().size(), 20'000'000u);
}

TEST(Polygon, TheUnsetRectangleIsThePlane)
{
    const Polygons plane(Kernel::RectT<double>::MakeUnset());
    const auto box = plane.GetBoundingBox().GetRect();
    EXPECT_TRUE(box.Contains({-1e20, -1e20, 1e20, 1e20}));
    EXPECT_TRUE(std::isfinite(box.Width() * box.Height()));
}

} // namespace
