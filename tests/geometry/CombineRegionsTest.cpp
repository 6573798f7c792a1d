#include <cstdlib>
#include <limits>
#include <numbers>
#include <tuple>

#include <gtest/gtest.h>

#include <geometry/CombineRegions.h>

#include "GeometryOracles.h"

namespace {

using Geometry::CombineRegions;
using Geometry::Point;
using Geometry::PolyCurveDbl;
using Geometry::RegionOperation;
using Geometry::WindingOrderMode;
using Polygons = Geometry::PolyPolygonType<double>;
using enum RegionOperation;
constexpr auto EvenOdd = WindingOrderMode::EvenOdd;
constexpr auto NonZero = WindingOrderMode::NonZero;
constexpr RegionOperation Operations[] = {Unite, Intersect, Subtract, Exclude};

bool IsInside(int winding, WindingOrderMode rule)
{
    return rule == EvenOdd ? winding % 2 != 0 : winding != 0;
}

bool IsKept(bool a, bool b, RegionOperation operation)
{
    const bool kept[] = {a || b, a && b, a && !b, a != b};
    return kept[static_cast<int>(operation)];
}

double GetDistance(Point p, const Polygons& polygons)
{
    double least = 1e300;
    for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i) {
        const auto points = polygons.GetPolygon(i).points;
        least = std::min({least, Oracle::DistanceToPolyline(p, points),
                          Oracle::DistanceToSegment(p, points.back(), points.front())});
    }
    return least;
}

/// Checks at random points, but for those within \p margin of an edge, that \p result encloses each
/// of those once that the operation keeps.
void ExpectCombined(const Polygons& a, WindingOrderMode ruleA, const Polygons& b,
                    WindingOrderMode ruleB, RegionOperation operation, const Polygons& result,
                    double margin, Oracle::Random& random)
{
    auto box = a.GetBoundingBox();
    box.Add(b.GetBoundingBox());
    const auto& rect = box.GetRect();
    for (int i = 0; i < 60; ++i) {
        const Point p{random.Uniform(rect.left, rect.right), random.Uniform(rect.top, rect.bottom)};
        if (std::min(GetDistance(p, a), GetDistance(p, b)) < margin)
            continue;
        const bool kept = IsKept(IsInside(Oracle::WindingNumber(p, a), ruleA),
                                 IsInside(Oracle::WindingNumber(p, b), ruleB), operation);
        ASSERT_EQ(Oracle::WindingNumber(p, result), kept ? -1 : 0)
            << p.x << ' ' << p.y << " operation " << static_cast<int>(operation);
    }
}

/// Polygons with points all over the place, on a coarse lattice (coincident edges, points on edges,
/// crossings of many edges in a point), nearly on a line, or far from the origin.
Polygons MakePolygons(int kind, Oracle::Random& random)
{
    Polygons polygons;
    for (int count = 1 + static_cast<int>(random.Uniform(0, 3)); count > 0; --count) {
        polygons.BeginPolygon();
        for (int points = 1 + static_cast<int>(random.Uniform(0, 30)); points > 0; --points) {
            Point p = random.InSquare(10);
            if (kind == 1)
                p = {std::round(p.x), std::round(p.y)};
            else if (kind == 2)
                p = {3.0 * std::round(p.x / 3.0), 3.0 * std::round(p.y / 3.0)};
            else if (kind == 3)
                p.y *= 1e-8;
            else if (kind == 4)
                p.x += 1e6;
            polygons.AddPoint(p);
        }
    }
    return polygons;
}

TEST(CombineRegions, EnclosesWhatTheOperationKeeps)
{
    Oracle::Random random(3);
    for (int round = 0; round < 240; ++round) {
        const Polygons a = MakePolygons(round % 5, random), b = MakePolygons(round % 5, random);
        const auto ruleA = round % 2 ? EvenOdd : NonZero, ruleB = round % 4 / 2 ? EvenOdd : NonZero;
        for (const RegionOperation operation : Operations) {
            Polygons result;
            ASSERT_TRUE(CombineRegions(a, ruleA, b, ruleB, operation, result));
            ASSERT_NO_FATAL_FAILURE(
                ExpectCombined(a, ruleA, b, ruleB, operation, result, 2e-7, random))
                << "round " << round;
        }
    }
}

TEST(CombineRegions, EdgesThatCoincideLeaveNothingBehind)
{
    struct Case
    {
        Kernel::RectT<double> a, b;
        double areas[4]; // by operation
        std::size_t points[4];
    };
    const Case cases[] = {
        {{0, 0, 4, 4}, {0, 0, 4, 4}, {16, 16, 0, 0}, {4, 4, 0, 0}},   // the same
        {{0, 0, 4, 4}, {4, 0, 6, 4}, {24, 0, 16, 24}, {6, 0, 4, 6}},  // side by side
        {{0, 0, 4, 4}, {4, 1, 6, 3}, {20, 0, 16, 20}, {8, 0, 4, 8}},  // along a part of a side
        {{0, 0, 4, 4}, {4, 4, 6, 6}, {20, 0, 16, 20}, {8, 0, 4, 8}},  // in a corner
        {{0, 0, 4, 4}, {1, 1, 3, 3}, {16, 4, 12, 12}, {4, 4, 8, 8}},  // inside
        {{0, 0, 4, 4}, {2, 2, 6, 6}, {28, 4, 12, 24}, {8, 4, 6, 12}}, // across
        {{0, 0, 0.1, 0.1}, {0.1, 0, 0.3, 0.1}, {0.03, 0, 0.01, 0.03}, {6, 0, 4, 6}},
    };
    for (const Case& c : cases)
        for (const RegionOperation operation : Operations) {
            const auto index = static_cast<std::size_t>(operation);
            Polygons out;
            ASSERT_TRUE(
                CombineRegions(Polygons(c.a), EvenOdd, Polygons(c.b), NonZero, operation, out));
            double area = 0.0;
            for (std::size_t i = 0; i < out.GetPolygonCount(); ++i)
                area -= Oracle::SignedArea(out.GetPolygon(i).points);
            EXPECT_NEAR(area, c.areas[index], 1e-9) << &c - cases << ' ' << index;
            EXPECT_EQ(out.GetPoints().size(), c.points[index]) << &c - cases << ' ' << index;
        }
}

/// Runs to and fro along the bottom and the left of a square of 100 thousands of times, by \p way.
template<class Way>
Polygons MakeRetraced(const Way& way)
{
    Polygons polygons;
    polygons.BeginPolygon();
    polygons.AddPoint({100, 100});
    polygons.AddPoint({0, 100});
    for (int i = 0; i < 10000; ++i) {
        const double along = way(i);
        polygons.AddPoint({0, along});
        polygons.AddPoint({0, 0});
        polygons.AddPoint({along, 0});
        polygons.AddPoint({0, 0});
    }
    polygons.AddPoint({100, 0});
    return polygons;
}

TEST(CombineRegions, RetracedEdgesAreOrdinary)
{
    Oracle::Random random(7);
    const Polygons retraced[] = {
        MakeRetraced([](int) { return 100.0; }),
        MakeRetraced([](int i) { return 0.01 * (i + 1); }),
        MakeRetraced([&](int) { return random.Uniform(1, 100); }),
    };
    Polygons row; // of points on the bottom, below which it reaches
    row.BeginPolygon();
    for (int i = 0; i <= 10000; ++i)
        row.AddPoint({0.01 * i, 0});
    row.AddPoint({50, -20});
    for (const Polygons& a : retraced)
        for (const auto& [operation, area, points] :
             {std::tuple(Unite, 11000.0, 5u), std::tuple(Exclude, 11000.0, 5u),
              std::tuple(Subtract, 10000.0, 4u), std::tuple(Intersect, 0.0, 0u)}) {
            Polygons out;
            ASSERT_TRUE(CombineRegions(a, NonZero, row, EvenOdd, operation, out));
            double sum = 0.0;
            for (std::size_t i = 0; i < out.GetPolygonCount(); ++i)
                sum -= Oracle::SignedArea(out.GetPolygon(i).points);
            EXPECT_NEAR(sum, area, 1e-5);
            EXPECT_GE(out.GetPoints().size(), points);
            EXPECT_LE(out.GetPoints().size(), points + 10u);
        }
}

TEST(CombineRegions, UnusableInputEndsWell)
{
    Polygons out;
    EXPECT_TRUE(CombineRegions(Polygons(), EvenOdd, Polygons(), EvenOdd, Unite, out));
    Polygons bad(Kernel::RectT<double>{0, 0, 1, 1});
    bad.BeginPolygon();
    for (const double x : {0.0, std::numeric_limits<double>::infinity(), std::nan(""), 1e200})
        bad.AddPoint({x, 1.0});
    for (const double size : {1e-250, 1e-9, 1.0, 1e90}) {
        const Polygons square(Kernel::RectT<double>{0, 0, size, size});
        out.Clear();
        EXPECT_TRUE(CombineRegions(square, EvenOdd, square, EvenOdd, Unite, out));
        EXPECT_TRUE(CombineRegions(bad, EvenOdd, square, EvenOdd, Intersect, out));
        for (const Point p : out.GetPoints())
            EXPECT_TRUE(p.x >= 0.0 && p.x <= std::max(1.0, size)) << p.x;
    }
    Polygons rows, columns; // which cross three million times
    rows.BeginPolygon();
    columns.BeginPolygon();
    for (int i = 0; i < 1750; ++i) {
        rows.AddPoint({i % 2 ? 0.0 : 4000.0, i + 1.0});
        columns.AddPoint({i + 1.0, i % 2 ? 0.0 : 4000.0});
    }
    out.Clear();
    EXPECT_FALSE(CombineRegions(rows, EvenOdd, columns, EvenOdd, Unite, out));
    Polygons bundle; // of edges that nearly coincide, with ends all along
    bundle.BeginPolygon();
    for (int i = 0; i < 10000; ++i) {
        bundle.AddPoint({1e-4 * (i % 7), 0});
        bundle.AddPoint({1.0 + i, 0.731 * (1.0 + i)});
    }
    EXPECT_FALSE(CombineRegions(bundle, EvenOdd, {}, EvenOdd, Unite, out));
    EXPECT_TRUE(out.IsEmpty());
}

// ---- paths ----

Polygons Flatten(const PolyCurveDbl& path)
{
    Polygons out;
    path.ExpandAdaptive(1e-3, out);
    return out;
}

std::size_t CountSegments(const PolyCurveDbl& path)
{
    std::size_t count = 0;
    for (const auto& run : path.GetCurves())
        count += run.GetSegmentCount();
    return count;
}

TEST(CombineRegions, CirclesMakeALensOfTheirOwnArcs)
{
    PolyCurveDbl a, b, lens;
    a.AddEllipse({0, 0}, 10, 10);
    b.AddEllipse({12, 0}, 10, 10);
    ASSERT_TRUE(CombineRegions(a, EvenOdd, b, EvenOdd, Intersect, 0.05, lens));
    ASSERT_EQ(lens.GetCurves().size(), 1u);
    EXPECT_EQ(CountSegments(lens), 4u); // two halves of arcs from each circle
    const double half = std::acos(0.6), area = 100.0 * (2.0 * half - std::sin(2.0 * half));
    EXPECT_NEAR(Oracle::NonZeroArea(Flatten(lens)), area, 5e-4 * area);
    // Where they meet is found to far less than the tolerance.
    const auto box = lens.GetBoundingBox().GetRect();
    EXPECT_NEAR(box.left, 2.0, 1e-9);
    EXPECT_NEAR(box.top, -8.0, 5e-3); // a circle of cubics is this far from a circle
    EXPECT_NEAR(box.top + box.bottom, 0.0, 1e-6);
    // What is left of one alone, and of both as they were:
    PolyCurveDbl same;
    ASSERT_TRUE(CombineRegions(a, EvenOdd, a, NonZero, Intersect, 0.05, same));
    EXPECT_EQ(CountSegments(same), 4u);
    PolyCurveDbl nothing;
    ASSERT_TRUE(CombineRegions(a, EvenOdd, a, NonZero, Exclude, 0.05, nothing));
    EXPECT_TRUE(nothing.IsEmpty());
}

TEST(CombineRegions, PathsStayTheirOwnCurves)
{
    Oracle::Random random(11);
    constexpr double tolerance = 0.01;
    std::size_t given = 0, made = 0;
    for (int round = 0; round < 80; ++round) {
        PolyCurveDbl paths[2];
        for (PolyCurveDbl& path : paths) {
            path.MoveTo(random.InSquare(20));
            for (int k = 0; k < 4; ++k)
                if (k % 3 == 2)
                    path.LineTo(random.InSquare(20));
                else
                    path.CurveTo(random.InSquare(20), random.InSquare(20), random.InSquare(20));
        }
        const RegionOperation operation = Operations[round % 4];
        const auto rule = round % 8 < 4 ? EvenOdd : NonZero;
        PolyCurveDbl result;
        ASSERT_TRUE(
            CombineRegions(paths[0], rule, paths[1], EvenOdd, operation, tolerance, result));
        const Polygons a = Flatten(paths[0]), b = Flatten(paths[1]), combined = Flatten(result);
        ASSERT_NO_FATAL_FAILURE(
            ExpectCombined(a, rule, b, EvenOdd, operation, combined, 3.0 * tolerance, random))
            << round;
        for (const Point p : combined.GetPoints())
            ASSERT_LE(std::min(GetDistance(p, a), GetDistance(p, b)), 2.0 * tolerance) << round;
        given += CountSegments(paths[0]) + CountSegments(paths[1]);
        made += CountSegments(result);
    }
    EXPECT_LT(made, 5 * given); // these cross each other some ten times
}

} // namespace
