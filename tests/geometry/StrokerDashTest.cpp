#include <vector>

#include "StrokeTools.h"

namespace {

using namespace StrokeTools;

Polygons Dash(const PolyCurveDbl& path, const std::vector<double>& dashes, double phase = 0.0,
              StrokeCap cap = StrokeCap::Butt, double tolerance = 1e-4)
{
    StrokeParameters pen = MakePen(2.0, StrokeJoin::Mitre, cap, tolerance);
    pen.dashes = dashes;
    pen.dashPhase = phase;
    Polygons out;
    Geometry::StrokePolyCurve(path, pen, out);
    return out;
}

/// Compares the horizontal extents of the dashes.
void ExpectExtents(const Polygons& polygons, const std::vector<std::pair<double, double>>& expected)
{
    ASSERT_EQ(polygons.GetPolygonCount(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        Geometry::BoundingBoxT<double> box;
        for (const Point p : polygons.GetPolygon(i).points)
            box.Add(p);
        EXPECT_NEAR(box.GetRect().left, expected[i].first, 1e-9);
        EXPECT_NEAR(box.GetRect().right, expected[i].second, 1e-9);
    }
}

const PolyCurveDbl Line = MakePolyline({{0, 0}, {10, 0}});

TEST(StrokerDash, PatternAndPhaseAlongALine)
{
    ExpectExtents(Dash(Line, {3, 2}), {{0, 3}, {5, 8}});
    ExpectExtents(Dash(Line, {3, 2}, 1), {{0, 2}, {4, 7}, {9, 10}});
    ExpectExtents(Dash(Line, {3, 2}, -1), {{1, 4}, {6, 9}});
    ExpectExtents(Dash(Line, {3, 2}, 5e6 + 4), {{1, 4}, {6, 9}});
    ExpectExtents(Dash(Line, {3, 2}, 3), {{2, 5}, {7, 10}});
    ExpectExtents(Dash(Line, {3}), {{0, 3}, {6, 9}});
    ExpectExtents(Dash(Line, {1, 1, 2}), {{0, 1}, {2, 4}, {5, 6}, {8, 9}}); // odd: twice
    ExpectExtents(Dash(Line, {3, 0, 1, 2}), {{0, 4}, {6, 10}});             // no seam
    ExpectExtents(Dash(Line, {20, 5}), {{0, 10}});
    // Sums of tenths are inexact; no sliver of a dash appears for it.
    EXPECT_EQ(Dash(Line, {0.1, 0.1}, 0.1 * 7, StrokeCap::Round).GetPolygonCount(), 50u);
    EXPECT_EQ(Dash(Line, {0.1, 0.1}, 0, StrokeCap::Round).GetPolygonCount(), 50u);
}

TEST(StrokerDash, PatternsThatAreSolid)
{
    for (const std::vector<double>& dashes :
         std::vector<std::vector<double>>{{}, {0, 0}, {3, -1}, {2, 0}, {1e-9, 1e-9}})
        ExpectExtents(Dash(Line, dashes), {{0, 10}});
    const double nan = std::nan("");
    EXPECT_TRUE(Dash(Line, {nan, 1}).IsEmpty());
    EXPECT_TRUE(Dash(Line, {1, 1}, nan).IsEmpty());
}

TEST(StrokerDash, CapsAndDotsFollowThePath)
{
    ExpectExtents(Dash(Line, {2, 6}, 0, StrokeCap::Square), {{-1, 3}, {7, 11}});
    const PolyCurveDbl diagonal = MakePolyline({{0, 0}, {8, 8}});
    const std::vector<double> dots = {0, std::sqrt(32.0)};
    EXPECT_TRUE(Dash(diagonal, dots).IsEmpty());
    const Polygons squares = Dash(diagonal, dots, -std::sqrt(8.0), StrokeCap::Square);
    ASSERT_EQ(squares.GetPolygonCount(), 2u);
    EXPECT_NEAR(squares.GetBoundingBox().GetRect().left, 2.0 - std::sqrt(2.0),
                1e-9); // on its corner
    EXPECT_NEAR(Oracle::NonZeroArea(Dash(diagonal, dots, -1, StrokeCap::Round)), 2.0 * pi, 1e-2);
}

TEST(StrokerDash, CornersInsideAndAtTheEndsOfDashes)
{
    const PolyCurveDbl path = MakePolyline({{0, 0}, {10, 0}, {10, 10}});
    // One dash runs around the corner, with its mitre: 6 long on either side.
    const Polygons around = Dash(path, {12, 100}, -4);
    ASSERT_EQ(around.GetPolygonCount(), 1u);
    EXPECT_EQ(around.GetBoundingBox().GetRect(), (Rect{4, -1, 11, 6}));
    EXPECT_NEAR(Oracle::NonZeroArea(around), 24.0, 1e-6);
    // A dash that ends at the corner stops there, the next one starts in the new direction.
    const Polygons ends = Dash(path, {10, 100});
    EXPECT_EQ(ends.GetBoundingBox().GetRect(), (Rect{0, -1, 10, 1}));
    const Polygons starts = Dash(path, {10, 100}, -10);
    EXPECT_EQ(starts.GetBoundingBox().GetRect(), (Rect{9, 0, 11, 10}));
}

TEST(StrokerDash, ClosedRunsJoinAcrossTheirStart)
{
    const PolyCurveDbl square(Rect{0, 0, 10, 10});
    // On from 35 over the start to 5: one piece around the corner at the origin.
    const Polygons merged = Dash(square, {10, 30}, 5);
    ASSERT_EQ(merged.GetPolygonCount(), 1u);
    EXPECT_EQ(merged.GetBoundingBox().GetRect(), (Rect{-1, -1, 5, 5}));
    EXPECT_NEAR(Oracle::NonZeroArea(merged), 20.0, 1e-6);
    // Off at the start: no merging.
    EXPECT_EQ(Dash(square, {10, 10}, 10).GetPolygonCount(), 2u);
    // A dash as long as the run is the closed outline itself.
    EXPECT_NEAR(Oracle::NonZeroArea(Dash(square, {50, 10})), 80.0, 1e-6);
    // The pattern fits exactly: the last gap ends where the first dash begins.
    EXPECT_NEAR(Oracle::NonZeroArea(Dash(square, {5, 5})), 40.0, 1e-6);
}

TEST(StrokerDash, FollowsTheLengthOfCurves)
{
    // 100 dashes and gaps of 1° each would drift visibly if lengths were those of coarse chords.
    const double degree = pi / 180.0 * 50.0;
    for (const double tolerance : {0.01, 0.5}) {
        const Polygons out =
            Dash(MakeCircle(50), {degree, degree}, 0.0, StrokeCap::Butt, tolerance);
        ASSERT_GE(out.GetPolygonCount(), 180u);
        ASSERT_LE(out.GetPolygonCount(), 181u);
        EXPECT_NEAR(Oracle::NonZeroArea(out), 180.0 * degree * 2.0, 2.0);
        // The dash at 90° (the one at the start of the run comes last) starts there to within a
        // fiftieth of its length.
        const auto points = out.GetPolygon(44).points;
        const double start = std::atan2(points.front().y, points.front().x) * 180.0 / pi;
        EXPECT_NEAR(start, 90.0, 0.02);
    }
}

TEST(StrokerDash, WholePeriodsAroundACurveAreAlike)
{
    const PolyCurveDbl circle = MakeCircle(50);
    const auto line = Oracle::SampleCurve(circle.GetCurves()[0], 5000);
    double length = 0.0;
    for (std::size_t i = 1; i < line.size(); ++i)
        length += std::hypot(line[i].x - line[i - 1].x, line[i].y - line[i - 1].y);
    for (const double tolerance : {0.01, 0.1, 0.5})
        for (const std::size_t count : {3u, 12u, 100u})
            for (const double phase : {0.0, 0.3, 0.5, 0.9}) {
                const double period = length / static_cast<double>(count);
                const Polygons out = Dash(circle, {0.6 * period, 0.4 * period}, phase * period,
                                          StrokeCap::Butt, tolerance);
                ASSERT_EQ(out.GetPolygonCount(), count) << tolerance << ' ' << phase;
                for (std::size_t i = 0; i < count; ++i)
                    EXPECT_NEAR(-Oracle::SignedArea(out.GetPolygon(i).points), 1.2 * period,
                                0.012 * period + 0.1 * tolerance)
                        << tolerance << ' ' << count << ' ' << phase << ' ' << i;
            }
}

TEST(StrokerDash, EveryRunStartsThePatternAnew)
{
    PolyCurveDbl path = MakePolyline({{0, 0}, {4, 0}});
    path.MoveTo({0, 9});
    path.LineTo({4, 9});
    ExpectExtents(Dash(path, {3, 2}), {{0, 3}, {0, 3}});
}

} // namespace
