#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include <geometry/EllipticArc.h>

#include "GeometryOracles.h"

namespace {

using Geometry::CurveDbl;
using Geometry::EllipticArc;
using Geometry::Point;

CurveDbl Draw(Point start, const EllipticArc& arc)
{
    CurveDbl curve(start);
    Geometry::AppendEllipticArc(curve, arc);
    return curve;
}

/// The area between the arc and its chord.
double SignedArea(const CurveDbl& curve)
{
    return Oracle::SignedArea(Oracle::SampleCurve(curve, 400));
}

TEST(EllipticArc, FlagsChooseAmongTheFourArcs)
{
    // A chord of 90° of the unit circle: its two segments have the areas π/4 − ½ and 3π/4 + ½.
    const double small = std::numbers::pi / 4.0 - 0.5, large = 3.0 * std::numbers::pi / 4.0 + 0.5;
    for (const bool largeArc : {false, true}) {
        for (const bool sweep : {false, true}) {
            const CurveDbl curve = Draw({1, 0}, {1, 1, 0.3, largeArc, sweep, {0, 1}});
            const double expected = (sweep ? 1.0 : -1.0) * (largeArc ? large : small);
            EXPECT_NEAR(SignedArea(curve), expected, 1e-3);
            EXPECT_EQ(curve.GetSegmentCount(), largeArc ? 3u : 1u);
            EXPECT_EQ(curve.GetPoints().back(), (Point{0, 1}));
        }
    }
}

TEST(EllipticArc, EveryPointLiesOnTheRotatedEllipse)
{
    const double rotation = 0.7;
    const double c = std::cos(rotation), s = std::sin(rotation);
    const auto place = [&](double angle) {
        const double x = 5.0 * std::cos(angle), y = 2.0 * std::sin(angle);
        return Point{40.0 + c * x - s * y, -30.0 + s * x + c * y};
    };
    for (double sweep = 0.2; sweep < 6.2; sweep += 0.5) {
        const EllipticArc arc{-5, 2, rotation, sweep > std::numbers::pi, true, place(1.0 + sweep)};
        for (const Point p : Oracle::SampleCurve(Draw(place(1.0), arc), 50)) {
            const Point d = p - Point{40, -30};
            const double radius = std::hypot((c * d.x + s * d.y) / 5.0, (c * d.y - s * d.x) / 2.0);
            ASSERT_NEAR(radius, 1.0, 2e-4);
        }
    }
}

TEST(EllipticArc, RadiiThatAreTooSmallGrow)
{
    const CurveDbl curve = Draw({0, 0}, {1, 1, 0, false, true, {10, 0}});
    EXPECT_EQ(curve.GetSegmentCount(), 2u);
    EXPECT_NEAR(curve.GetBoundingBox().GetRect().top, -5.0, 1e-9);
    EXPECT_NEAR(std::abs(SignedArea(curve)), 12.5 * std::numbers::pi, 0.02);
}

TEST(EllipticArc, DegeneratesToLinesAndNothing)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double radius : {0.0, nan, std::numeric_limits<double>::infinity(), 1e-320}) {
        const CurveDbl curve = Draw({1, 1}, {radius, 3, 0, false, true, {4, 5}});
        ASSERT_EQ(curve.GetSegmentCount(), 1u) << radius;
        EXPECT_EQ(curve.GetSegment(0), CurveDbl::Segment::Line);
    }
    EXPECT_EQ(Draw({1, 1}, {2, 3, 0, true, true, {1, 1}}).GetSegmentCount(), 0u);

    Geometry::PolyCurveDbl path;
    path.MoveTo({0, 0});
    Geometry::AppendEllipticArc(path, {0, 0}, {1, 1, 0, false, false, {2, 0}});
    EXPECT_EQ(path.GetCurves()[0].GetSegmentCount(), 2u);
}

TEST(EllipticArc, ErrorFallsWithTheSixthPowerOfTheAngle)
{
    for (const double angle : {0.5 * std::numbers::pi, 0.25 * std::numbers::pi}) {
        const double handle = Geometry::GetArcHandleLength(angle);
        const double c = std::cos(angle), s = std::sin(angle);
        const Point p[] = {{1, 0}, {1, handle}, {c + handle * s, s - handle * c}, {c, s}};
        double error = 0.0;
        for (int k = 0; k <= 1000; ++k) {
            const Point q = Oracle::EvaluateCubic(p, k / 1000.0);
            error = std::max(error, std::abs(std::hypot(q.x, q.y) - 1.0));
        }
        EXPECT_LT(error, 2.1e-4 * std::pow(angle / (0.5 * std::numbers::pi), 6));
    }
}

} // namespace
