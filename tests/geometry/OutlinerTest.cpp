#include <limits>

#include <geometry/BoundedTolerance.h>
#include <geometry/Outliner.h>
#include <support/RandomCurves.h>

#include "StrokeTools.h"

namespace {

using namespace StrokeTools;
using Geometry::PathOutliner;
using Geometry::WidthProfile;
using TestSupport::RandomCurves;

PolyCurveDbl Outline(const PolyCurveDbl& path, const StrokeParameters& pen,
                     const WidthProfile* profile = nullptr)
{
    PolyCurveDbl out;
    PathOutliner outliner;
    if (outliner.SetPen(pen, profile))
        for (const CurveDbl& run : path.GetCurves())
            outliner.Outline(run, out);
    return out;
}

Polygons Expand(const PolyCurveDbl& outline, double tolerance)
{
    Polygons polygons;
    outline.ExpandAdaptive(tolerance, polygons);
    return polygons;
}

std::size_t CountSegments(const PolyCurveDbl& path)
{
    std::size_t count = 0;
    for (const CurveDbl& run : path.GetCurves())
        count += run.GetSegmentCount();
    return count;
}

StrokeParameters MakeRandomPen(RandomCurves& random, double tolerance)
{
    StrokeParameters pen;
    pen.width = random.Magnitude(-0.3, 1.5);
    pen.cap = StrokeCap(random.Index(3));
    pen.join = StrokeJoin(random.Index(4));
    pen.mitreLimit = random.Number(1.0, 6.0);
    pen.tolerance = tolerance;
    return pen;
}

double GetArea(const Polygons& polygons)
{
    return polygons.IsEmpty() ? 0.0 : Oracle::NonZeroArea(polygons, 200);
}

WidthProfile MakeProfile(std::initializer_list<Point> points)
{
    return WidthProfile(MakePolyline(points).GetCurves()[0]);
}

TEST(PathOutliner, CurvesTakeFewSegments)
{
    PolyCurveDbl ellipse;
    ellipse.AddEllipse({0, 0}, 50, 15);
    const struct
    {
        PolyCurveDbl path;
        double width;
        std::size_t most; // per segment of the path, both sides and caps together
    } cases[] = {
        {MakeCircle(30), 1, 2},
        {MakeCircle(30), 16, 2},
        {ellipse, 4, 4},
        {MakeCubic({0, 0}, {20, 30}, {60, 30}, {100, 0}), 4, 7},
        {MakeCubic({0, 0}, {30, 40}, {60, -40}, {100, 0}), 4, 10},
        {MakeCubic({0, 0}, {120, 60}, {-20, 60}, {100, 0}), 4, 20},
        {MakePolyline({{0, 0}, {50, 10}, {20, 60}}, true), 4, 3},
    };
    for (const auto& c : cases) {
        const PolyCurveDbl out =
            Outline(c.path, MakePen(c.width, StrokeJoin::Mitre, StrokeCap::Butt, c.width / 500));
        EXPECT_LE(CountSegments(out), c.most * CountSegments(c.path)) << &c - cases;
    }
}

TEST(PathOutliner, RandomOutlinesKeepWithinThePensReachAndNeverCancel)
{
    constexpr double tolerance = 0.02;
    std::size_t segments = 0, sources = 0;
    for (int kind = 0; kind < RandomCurves::KindCount; ++kind) {
        RandomCurves random(71U + static_cast<unsigned>(kind));
        for (int i = 0; i < 150; ++i) {
            const PolyCurveDbl path = random.MakePath(RandomCurves::Kind(kind));
            const StrokeParameters pen = MakeRandomPen(random, tolerance);
            const PolyCurveDbl outline = Outline(path, pen);
            segments += CountSegments(outline);
            sources += CountSegments(path);
            ASSERT_LE(CountSegments(outline), 90 * CountSegments(path)) << kind << ' ' << i;
            double reach = 1.0;
            if (pen.cap == StrokeCap::Square)
                reach = std::numbers::sqrt2;
            if (pen.join == StrokeJoin::Mitre)
                reach = std::max(reach, pen.mitreLimit);
            Polygons line;
            path.ExpandAdaptive(tolerance, line);
            std::vector<Point> points(line.GetPoints());
            if (path.GetCurves()[0].IsClosed())
                points.push_back(points.front());
            const Polygons polygons = Expand(outline, tolerance);
            const double most = 0.5 * pen.width * reach * (1.0 + 1e-6) + 3.0 * tolerance;
            for (const Point p : polygons.GetPoints()) {
                ASSERT_TRUE(std::isfinite(p.x) && std::isfinite(p.y)) << kind << ' ' << i;
                ASSERT_LE(Oracle::DistanceToPolyline(p, points), most) << kind << ' ' << i;
            }
            for (int k = 0; k < 40; ++k) {
                const Point p{random.Number(0, 64), random.Number(0, 64)};
                ASSERT_LE(Oracle::WindingNumber(p, polygons), 0) << kind << ' ' << i;
            }
        }
    }
    EXPECT_LE(segments, 26 * sources);
}

TEST(PathOutliner, DrawsAndLeavesOutWhatTheStrokerDoes)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    PolyCurveDbl dot;
    dot.MoveTo({3, 4});
    dot.Close();
    PolyCurveDbl started;
    started.MoveTo({3, 4});
    const double dashes[] = {0.0, 3.0, 2.0, 0.0, 1.0, 4.0}, fine[] = {1e-9, 1e-9};
    const PolyCurveDbl paths[] = {
        dot,
        started,
        MakeCubic({1, 1}, {1, 1}, {1, 1}, {1, 1}),
        MakePolyline({{0, 0}, {10, 0}, {10, 0}, {10, 10}}, true),
        MakePolyline({{0, 0}, {nan, 0}}),
        MakePolyline({{0, 0}, {1e101, 0}}),
        MakeCubic({0, 0}, {30, 40}, {60, -40}, {100, 0}),
        MakeCircle(10),
        PolyCurveDbl(Rect{0, 0, 30, 20}),
    };
    const std::span<const double> patterns[] = {{}, dashes, fine};
    for (const PolyCurveDbl& path : paths)
        for (const auto cap : {StrokeCap::Butt, StrokeCap::Square, StrokeCap::Round})
            for (const double width : {-1.0, 0.0, nan, 2.0})
                for (const auto pattern : patterns) {
                    StrokeParameters pen = MakePen(width, StrokeJoin::Round, cap, 0.01);
                    pen.dashes = pattern;
                    pen.dashPhase = 1.0;
                    Polygons stroke;
                    Geometry::StrokePolyCurve(path, pen, stroke);
                    const Polygons outline = Expand(Outline(path, pen), 0.01);
                    const double area = GetArea(stroke);
                    EXPECT_NEAR(GetArea(outline), area, 0.002 * area)
                        << &path - paths << ' ' << int(cap) << ' ' << width << ' '
                        << pattern.size();
                    EXPECT_EQ(outline.GetPolygonCount(), stroke.GetPolygonCount());
                }
    // Sizes beyond all reason end, too.
    for (const double size : {1e-90, 1e6, 1e15, 1e95})
        for (const double width : {1e-3, 1e12, 1e99}) {
            PolyCurveDbl path = MakeCubic({0, 0}, {size, size}, {-size, size}, {0, 0.5 * size});
            path.LineTo({-size, 0});
            const PolyCurveDbl outline = Outline(path, MakePen(width, StrokeJoin::Round));
            for (const CurveDbl& run : outline.GetCurves())
                for (const Point p : run.GetPoints())
                    ASSERT_TRUE(std::isfinite(p.x) && std::isfinite(p.y));
        }
}

TEST(PathOutliner, PressureCoversTheIntegralOfTheWidth)
{
    // Where an outline does not overlap itself, its area is the integral of the width along the
    // path: what bends take from one side they give to the other.
    PolyCurveDbl bump; // y = 3·x·(1 − x)
    bump.MoveTo({0, 0});
    bump.CurveTo({1.0 / 3, 1}, {2.0 / 3, 1}, {1, 0});
    const struct
    {
        WidthProfile profile;
        double mean, start, end;
    } profiles[] = {
        {MakeProfile({{0, 0}, {1, 1}}), 0.5, 0, 1},
        {MakeProfile({{0, 1}, {0.25, 0.5}, {1, 0}}), 0.375, 1, 0},
        {MakeProfile({{0, 0.5}, {0.5, 0.5}, {0.5, 1.5}, {1, 1.5}}), 1, 0.5, 1.5},
        {MakeProfile({{0.25, 1}, {0.75, 0}}), 0.5, 1, 0},
        {MakeProfile({{0, 1}, {0.8, 1}, {0.3, 5}, {1, 0}}), 0.8 + 0.2 * 0.5 * 10.0 / 7, 1, 0},
        {MakeProfile({{0, -1}, {0.5, -1}, {0.5, 1}, {1, 1}}), 0.5, 0, 1},
        {WidthProfile(bump.GetCurves()[0]), 0.5, 0, 0},
    };
    const struct
    {
        PolyCurveDbl path;
        double length;
    } paths[] = {
        {MakePolyline({{0, 0}, {60, 80}}), 100},
        {MakePolyline({{0, 0}, {80, 0}, {80, 20}}), 100},
        {MakeCircle(40), 2 * pi * 40},
    };
    for (const auto& p : paths)
        for (const auto& f : profiles) {
            StrokeParameters pen = MakePen(6, StrokeJoin::Bevel, StrokeCap::Butt, 0.002);
            const double area = p.length * pen.width * f.mean;
            const double butt = Oracle::NonZeroArea(Expand(Outline(p.path, pen, &f.profile), 1e-3));
            // A corner of half width r, here at most 4.5, covers r² twice and the bevel half of it.
            const bool hasCorner = p.path.GetCurves()[0].GetSegmentCount() == 2;
            const double corner = hasCorner ? 0.5 * 4.5 * 4.5 : 0.0;
            EXPECT_NEAR(butt, area - 0.5 * corner, 0.5 * corner + 2e-3 * area + 0.02)
                << &p - paths << ' ' << &f - profiles;
            if (p.path.GetCurves()[0].IsClosed())
                continue;
            pen.cap = StrokeCap::Round;
            const double caps = 0.5 * pi * 9.0 * (f.start * f.start + f.end * f.end);
            const double round =
                Oracle::NonZeroArea(Expand(Outline(p.path, pen, &f.profile), 1e-3));
            EXPECT_NEAR(round - butt, caps, 2e-3 * area + 0.02);
        }

    // Dashes take their width from the whole run: from 2 to 4 and from 6 to 8 of a cone.
    const double dashes[] = {20, 20};
    StrokeParameters pen = MakePen(6);
    pen.dashes = dashes;
    pen.dashPhase = 20;
    const Polygons dashed = Expand(Outline(paths[0].path, pen, &profiles[0].profile), 1e-3);
    EXPECT_EQ(dashed.GetPolygonCount(), 2u);
    EXPECT_NEAR(Oracle::NonZeroArea(dashed), 6.0 * 20 * (0.3 + 0.7), 1e-3);
}

TEST(PathOutliner, SizesBeyondAllReasonTakeNoMoreThanABudgetOfPoints)
{
    PolyCurveDbl path = MakeCubic({20, 20}, {180, 20}, {20, 180}, {180, 180});
    path.LineTo({100, 20});
    for (const double factor : {1e6, 1e200})
        for (const double width : {5.0, 1e15, 1e95}) {
            const WidthProfile profiles[] = {MakeProfile({{0, 0.2}, {1, factor}}),
                                             MakeProfile({{0, -factor}, {1, factor}})};
            for (const WidthProfile& profile : profiles) {
                EXPECT_EQ(profile.Evaluate(0, 1.0).factor, WidthProfile::MostFactor);
                const StrokeParameters pen = MakePen(width, StrokeJoin::Round, StrokeCap::Round);
                PathOutliner outliner;
                EXPECT_EQ(outliner.SetPen(pen, &profile), width < 1e94);
                const PolyCurveDbl outline = Outline(path, pen, &profile);
                const std::size_t segments = CountSegments(outline);
                EXPECT_LE(segments, 2000U);
                const Polygons polygons =
                    Expand(outline, Geometry::GetBoundedTolerance(outline, 0.05));
                EXPECT_LE(polygons.GetPoints().size(), (1U << 20) + 20 * segments);
                for (const Point p : polygons.GetPoints())
                    ASSERT_TRUE(std::isfinite(p.x) && std::isfinite(p.y)) << factor << ' ' << width;
            }
        }
    EXPECT_EQ(Geometry::GetBoundedTolerance(MakeCircle(1e6), 0.01), 0.01);
    // Handles far beyond the page bend the path within the steps of its numbers.
    for (const double far : {1e9, 1e15, 1e18, 1e30})
        for (const double width : {1.0, 1e6}) {
            const WidthProfile profile = MakeProfile({{0, 0.2}, {1, 1}});
            const StrokeParameters pen = MakePen(width, StrokeJoin::Round, StrokeCap::Round);
            const PolyCurveDbl outline =
                Outline(MakeCubic({0, 0}, {far, 0}, {0, far}, {100, 150}), pen, &profile);
            EXPECT_LE(CountSegments(outline), 2000U) << far << ' ' << width;
            EXPECT_GE(CountSegments(outline), 4U) << far << ' ' << width;
        }
}

TEST(WidthProfile, IsAFunctionWhateverTheCurve)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const auto at = [](const WidthProfile& profile, double share) {
        std::size_t span = 0;
        while (profile.GetSpanEnd(span) < share)
            ++span;
        return profile.Evaluate(span, share).factor;
    };
    EXPECT_TRUE(WidthProfile().IsRedundant());
    EXPECT_TRUE(WidthProfile(CurveDbl()).IsRedundant());
    EXPECT_TRUE(MakeProfile({{0, 1}, {0.5, 1 + 1e-7}, {1, 1}}).IsRedundant());
    EXPECT_FALSE(MakeProfile({{0, 1}, {0.5, nan}, {1, 1}}).IsRedundant());
    EXPECT_NEAR(at(MakeProfile({{0, 1}, {0.5, nan}, {1, 1}}), 0.25), 0.5, 1e-12);
    EXPECT_NEAR(at(MakeProfile({{nan, 7}, {0, 1}, {nan, 7}, {1, 3}}), 0.9), 3, 1e-12);
    EXPECT_EQ(at(MakeProfile({{0, -5}, {1, 5}}), 0.4), 0.0);
    // Controls outside of the ends, and x that is not even.
    const WidthProfile wild(MakeCubic({0, 0}, {2, 1}, {-1, 1}, {1, 0}).GetCurves()[0]);
    EXPECT_NEAR(at(wild, 0.5), 0.75, 1e-12);
    const WidthProfile slow(MakeCubic({0, 0}, {0, 0}, {0, 1}, {1, 1}).GetCurves()[0]);
    EXPECT_NEAR(at(slow, 0.125), 0.5, 1e-12); // x = t³, y = 3t² − 2t³
}

} // namespace
