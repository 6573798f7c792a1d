#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include <geometry/Stroker.h>

#include "GeometryOracles.h"

namespace {

using Geometry::Point;
using Geometry::PolyCurveDbl;
using Geometry::StrokeCap;
using Geometry::StrokeJoin;
using Geometry::StrokeParameters;
using Polygons = Geometry::PolyPolygonType<double>;
using Rect = Kernel::RectT<double>;
constexpr double pi = std::numbers::pi;

Polygons Dash(const PolyCurveDbl& path, const std::vector<double>& dashes, double phase = 0.0,
              StrokeCap cap = StrokeCap::Butt, StrokeJoin join = StrokeJoin::Mitre)
{
    StrokeParameters pen;
    pen.width = 2.0;
    pen.cap = cap;
    pen.join = join;
    pen.dashes = dashes;
    pen.dashPhase = phase;
    pen.tolerance = 1e-4;
    Polygons out;
    Geometry::StrokePolyCurve(path, pen, out);
    return out;
}

PolyCurveDbl MakeLine(Point a, Point b)
{
    PolyCurveDbl path;
    path.MoveTo(a);
    path.LineTo(b);
    return path;
}

/// The horizontal extents of the dashes of a line along the x axis.
std::vector<std::pair<double, double>> Extents(const Polygons& polygons)
{
    std::vector<std::pair<double, double>> extents;
    for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i) {
        Geometry::BoundingBoxT<double> box;
        for (const Point p : polygons.GetPolygon(i).points)
            box.Add(p);
        extents.emplace_back(box.GetRect().left, box.GetRect().right);
    }
    return extents;
}

void ExpectExtents(const Polygons& polygons, const std::vector<std::pair<double, double>>& expected)
{
    const auto extents = Extents(polygons);
    ASSERT_EQ(extents.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(extents[i].first, expected[i].first, 1e-9);
        EXPECT_NEAR(extents[i].second, expected[i].second, 1e-9);
    }
}

TEST(StrokerDash, PatternAndPhaseAlongALine)
{
    const PolyCurveDbl line = MakeLine({0, 0}, {10, 0});
    ExpectExtents(Dash(line, {3, 2}), {{0, 3}, {5, 8}});
    ExpectExtents(Dash(line, {3, 2}, 1), {{0, 2}, {4, 7}, {9, 10}});
    ExpectExtents(Dash(line, {3, 2}, -1), {{1, 4}, {6, 9}});
    ExpectExtents(Dash(line, {3, 2}, 5e6 + 4), {{1, 4}, {6, 9}});
    ExpectExtents(Dash(line, {3, 2}, 3), {{2, 5}, {7, 10}});
    ExpectExtents(Dash(line, {3}), {{0, 3}, {6, 9}});
    ExpectExtents(Dash(line, {1, 1, 2}), {{0, 1}, {2, 4}, {5, 6}, {8, 9}}); // odd: twice
    ExpectExtents(Dash(line, {3, 0, 1, 2}), {{0, 4}, {6, 10}});             // no seam
    ExpectExtents(Dash(line, {20, 5}), {{0, 10}});
    // Sums of tenths are inexact; no sliver of a dash appears for it.
    EXPECT_EQ(Dash(line, {0.1, 0.1}, 0.1 * 7, StrokeCap::Round).GetPolygonCount(), 50u);
    EXPECT_EQ(Dash(line, {0.1, 0.1}, 0, StrokeCap::Round).GetPolygonCount(), 50u);
}

TEST(StrokerDash, PatternsThatAreSolid)
{
    const PolyCurveDbl line = MakeLine({0, 0}, {10, 0});
    for (const std::vector<double>& dashes :
         std::vector<std::vector<double>>{{}, {0, 0}, {3, -1}, {2, 0}, {1e-9, 1e-9}})
        ExpectExtents(Dash(line, dashes), {{0, 10}});
    const double nan = std::nan("");
    EXPECT_TRUE(Dash(line, {nan, 1}).IsEmpty());
    EXPECT_TRUE(Dash(line, {1, 1}, nan).IsEmpty());
}

TEST(StrokerDash, CapsAndDotsFollowThePath)
{
    const PolyCurveDbl line = MakeLine({0, 0}, {10, 0});
    ExpectExtents(Dash(line, {2, 6}, 0, StrokeCap::Square), {{-1, 3}, {7, 11}});
    const PolyCurveDbl diagonal = MakeLine({0, 0}, {8, 8});
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
    PolyCurveDbl path;
    path.MoveTo({0, 0});
    path.LineTo({10, 0});
    path.LineTo({10, 10});
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
    PolyCurveDbl circle;
    circle.AddEllipse({0, 0}, 50, 50);
    const double degree = pi / 180.0 * 50.0;
    for (const double tolerance : {0.01, 0.5}) {
        StrokeParameters pen;
        const double dashes[] = {degree, degree};
        pen.width = 2.0;
        pen.dashes = dashes;
        pen.tolerance = tolerance;
        Polygons out;
        Geometry::StrokePolyCurve(circle, pen, out);
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

TEST(StrokerDash, EveryRunStartsThePatternAnew)
{
    PolyCurveDbl path = MakeLine({0, 0}, {4, 0});
    path.MoveTo({0, 9});
    path.LineTo({4, 9});
    ExpectExtents(Dash(path, {3, 2}), {{0, 3}, {0, 3}});
}

} // namespace
