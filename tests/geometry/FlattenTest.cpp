#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include <geometry/Flatten.h>

#include "GeometryOracles.h"

namespace {

using Geometry::Point;

std::vector<Point> Flatten(std::span<const Point> p, double tolerance)
{
    std::vector<Point> line{p[0]};
    Geometry::FlattenCubic(p[0], p[1], p[2], p[3], tolerance,
                           [&line](Point q) { line.push_back(q); });
    return line;
}

double WangCount(std::span<const Point> p, double tolerance)
{
    const Point a = p[0] - 2.0 * p[1] + p[2], b = p[1] - 2.0 * p[2] + p[3];
    const double largest = std::max(std::hypot(a.x, a.y), std::hypot(b.x, b.y));
    return std::max(1.0, std::ceil(std::sqrt(0.75 * largest / tolerance)));
}

TEST(Flatten, StaysWithinToleranceBothWaysAtEveryScale)
{
    for (const double scale : {0.01, 1.0, 30.0, 1000.0}) {
        for (const double tolerance : {0.02, 0.3}) {
            for (auto cubic : Oracle::MakeCubics(120, 7)) {
                for (Point& p : cubic)
                    p = scale * p + Point{3.0 * scale, -scale};
                const std::vector<Point> line = Flatten(cubic, tolerance);
                ASSERT_EQ(line.back(), cubic[3]);
                const double limit = tolerance * (1.0 + 1e-9);
                std::vector<Point> samples;
                for (int k = 0; k <= 500; ++k) {
                    samples.push_back(Oracle::EvaluateCubic(cubic, k / 500.0));
                    ASSERT_LE(Oracle::DistanceToPolyline(samples.back(), line), limit);
                }
                for (std::size_t i = 1; i < line.size(); i += 7) {
                    const Point middle = 0.5 * (line[i - 1] + line[i]);
                    ASSERT_LE(Oracle::DistanceToPolyline(middle, samples), limit * 1.01);
                }
            }
        }
    }
}

TEST(Flatten, NeedsFewPieces)
{
    // Never notably more than equal steps by Wang's bound, and far fewer altogether.
    double ours = 0.0, equal = 0.0;
    for (auto cubic : Oracle::MakeCubics(300, 11)) {
        for (Point& p : cubic)
            p = 100.0 * p;
        const double pieces = static_cast<double>(Flatten(cubic, 0.05).size() - 1);
        EXPECT_LE(pieces, WangCount(cubic, 0.05) + 1.0);
        ours += pieces;
        equal += WangCount(cubic, 0.05);
    }
    EXPECT_LT(ours, 0.75 * equal);

    const std::array<Point, 4> straight = {{{0, 0}, {10, 1}, {90, 9}, {1000, 100}}};
    EXPECT_EQ(Flatten(straight, 0.01).size(), 2u);
}

TEST(Flatten, KeepsAreas)
{
    // Between an arc and its chord; an inscribed polyline would lose some 2 % of it.
    const double handle = 0.5522847498;
    const std::array<Point, 4> arc = {{{50, 0}, {50, 50 * handle}, {50 * handle, 50}, {0, 50}}};
    const std::vector<Point> line = Flatten(arc, 0.1);
    EXPECT_NEAR(Oracle::SignedArea(line), 625.0 * std::numbers::pi - 1250.0, 0.7);
}

TEST(Flatten, SurvivesWhatIsNotACurve)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double bad : {nan, infinity, -infinity, 1.7e308}) {
        const std::array<Point, 4> cubic = {{{0, 0}, {bad, -bad}, {-bad, 1}, {2, 3}}};
        const std::vector<Point> line = Flatten(cubic, 0.1);
        EXPECT_EQ(line.size(), 2u);
        EXPECT_EQ(line.back(), (Point{2, 3}));
    }
    const std::array<Point, 4> huge = {{{0, 0}, {1e30, 1e30}, {-1e30, 1e30}, {1, 0}}};
    EXPECT_LE(Flatten(huge, 1e-3).size(), Geometry::MaximumCubicPieces + 1);
    const std::array<Point, 4> arc = {{{0, 0}, {0, 1}, {1, 2}, {2, 2}}};
    EXPECT_LE(Flatten(arc, 0.0).size(), 30u);
    EXPECT_LE(Flatten(arc, nan).size(), 30u);
    EXPECT_EQ(Flatten(arc, infinity).size(), 2u);
    const std::array<Point, 4> point = {{{5, 5}, {5, 5}, {5, 5}, {5, 5}}};
    EXPECT_EQ(Flatten(point, 0.1).size(), 2u);
}

} // namespace
