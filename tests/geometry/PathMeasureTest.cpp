#include <limits>

#include <gtest/gtest.h>

#include <geometry/PathMeasure.h>
#include <support/RandomCurves.h>

#include "GeometryOracles.h"
#include "StrokeTools.h"

namespace {

using namespace StrokeTools;
using Geometry::PathMeasure;
using TestSupport::RandomCurves;

double Norm(Point a)
{
    return std::hypot(a.x, a.y);
}

/// A path as a polyline so fine that its chords are as long as the curves, to some 1e-9.
struct FinePath
{
    static constexpr int Pieces = 1 << 15;

    explicit FinePath(const CurveDbl& run)
    {
        const auto& p = run.GetPoints();
        Add(p.front());
        for (std::size_t i = 0; i < run.GetSegmentCount(); ++i)
            for (int k = 1; k <= Pieces; ++k)
                Add(run.GetSegment(i) == CurveDbl::Segment::Line
                        ? p[3 * i] + (double(k) / Pieces) * (p[3 * i + 3] - p[3 * i])
                        : Oracle::EvaluateCubic(std::span(p).subspan(3 * i, 4),
                                                double(k) / Pieces));
        if (run.IsClosed())
            Add(p.front());
    }
    void Add(Point point)
    {
        lengths.push_back(points.empty() ? 0.0 : lengths.back() + Norm(point - points.back()));
        points.push_back(point);
    }
    Point Find(double length) const
    {
        const auto next = std::ranges::upper_bound(lengths, length);
        if (next == lengths.end())
            return points.back();
        const auto i = static_cast<std::size_t>(next - lengths.begin());
        const double share = (length - lengths[i - 1]) / (lengths[i] - lengths[i - 1]);
        return points[i - 1] + share * (points[i] - points[i - 1]);
    }

    std::vector<Point> points;
    std::vector<double> lengths;
};

void Check(const CurveDbl& run)
{
    const FinePath fine(run);
    if (fine.lengths.back() < 1e-4) // the chords are as short as their points are coarse
        return;
    const PathMeasure measure{PolyCurveDbl(run)};
    const double length = measure.GetLength();
    ASSERT_NEAR(length, fine.lengths.back(), 2e-8 * length);
    for (int i = 0; i <= 50; ++i) {
        const double at = length * i / 50.0, step = 1e-6 * length;
        const auto place = measure.Locate(at);
        ASSERT_LE(Norm(place.point - fine.Find(at)), 1e-7 * length) << i;
        ASSERT_NEAR(Norm(place.direction), 1.0, 1e-12) << i;
        const Point before = measure.Locate(at - step).point - place.point;
        const Point after = measure.Locate(at + step).point - place.point;
        // The direction is that to the one side or the other, which differ at corners.
        if (i == 0 || i == 50)
            continue;
        const double ahead = Norm(after - step * place.direction);
        const double back = Norm(before + step * place.direction);
        ASSERT_LE(std::min(ahead, back), 0.01 * step) << i;
    }
}

TEST(PathMeasure, FindsLengthsAndPlacesOfTheHardestCurves)
{
    for (int kind = 0; kind < RandomCurves::KindCount; ++kind) {
        RandomCurves random(5U + static_cast<unsigned>(kind));
        for (int i = 0; i < 12; ++i) {
            SCOPED_TRACE(std::to_string(kind) + ' ' + std::to_string(i));
            ASSERT_NO_FATAL_FAILURE(
                Check(random.MakePath(RandomCurves::Kind(kind)).GetCurves()[0]));
        }
    }
    const PolyCurveDbl cases[] = {
        MakeCubic({0, 0}, {1, 1}, {0, 1}, {1, 0}),      // a cusp
        MakeCubic({0, 0}, {1e6, 1}, {-1e6, 1}, {1, 0}), // hairpins
        MakeCubic({0, 0}, {0, 0}, {0, 0}, {7, 1}),      // slow at its start
        MakeCubic({0, 0}, {30, 0}, {-20, 0}, {10, 0}),  // turns back on its line
        MakeCubic({1e8, 1e8}, {1e8, 1e8 + 9}, {1e8 + 9, 1e8}, {1e8 + 9, 1e8 + 9}),
    };
    for (const PolyCurveDbl& path : cases) {
        SCOPED_TRACE(&path - cases);
        ASSERT_NO_FATAL_FAILURE(Check(path.GetCurves()[0]));
    }
}

TEST(PathMeasure, FollowsRunsAndLeavesOutWhatHasNoLength)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    PolyCurveDbl path(Kernel::RectT<double>{0, 0, 3, 2}); // 10 long, closed by a line
    EXPECT_TRUE(PathMeasure(path).IsLoop());
    path.MoveTo({20, 0});
    path.LineTo({20, 0});
    path.LineTo({nan, 0});
    path.CurveTo({20, 5}, {20, 5}, {20, 5});
    path.MoveTo({20, 5});
    path.CurveTo({20, 5}, {28, 5}, {28, 5}); // stands still at both ends
    const PathMeasure measure(path);
    EXPECT_EQ(measure.GetSegmentCount(), 5U);
    EXPECT_FALSE(measure.IsLoop());
    EXPECT_NEAR(measure.GetLength(), 18.0, 1e-12);
    const struct
    {
        double distance;
        Point point, direction;
    } places[] = {
        {-1, {0, 0}, {1, 0}},  {4, {3, 1}, {0, 1}},   {9, {0, 1}, {0, -1}},
        {10, {0, 0}, {0, -1}}, {14, {24, 5}, {1, 0}}, {10 + 1e-13, {20, 5}, {1, 0}},
        {18, {28, 5}, {1, 0}}, {99, {28, 5}, {1, 0}},
    };
    for (const auto& expected : places) {
        const auto place = measure.Locate(expected.distance);
        EXPECT_LE(Norm(place.point - expected.point), 1e-9) << expected.distance;
        EXPECT_LE(Norm(place.direction - expected.direction), 1e-9) << expected.distance;
    }
    EXPECT_EQ(PathMeasure(PolyCurveDbl()).GetLength(), 0.0);
}

} // namespace
