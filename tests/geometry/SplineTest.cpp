#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <geometry/Spline.h>

namespace {

using Geometry::Point;
using Geometry::Spline;

TEST(Spline, PassesThroughItsPointsWithoutOvershoot)
{
    // The data set of Fritsch and Carlson (RPN 14), on which ordinary cubic splines overshoot.
    const std::vector<Point> data = {{7.99, 0},       {8.09, 2.76429e-5}, {8.19, 4.37498e-2},
                                     {8.7, 0.169183}, {9.2, 0.469428},    {10, 0.943740},
                                     {12, 0.998636},  {15, 0.999919},     {20, 0.999994}};
    const Spline spline(data);
    for (const Point p : data)
        EXPECT_NEAR(spline.Evaluate(p.x), p.y, 1e-15);
    double previous = 0.0;
    for (double x = 7.99; x <= 20.0; x += 0.001) {
        const double y = spline.Evaluate(x);
        ASSERT_GE(y, previous - 1e-15);
        previous = y;
    }
    EXPECT_LE(previous, 0.999994 + 1e-15);
}

TEST(Spline, IsSmoothClampedAndExactOnLines)
{
    const Spline line({{1, 2}, {2, 4}, {4, 8}});
    for (double x = 1.0; x <= 4.0; x += 0.1)
        EXPECT_NEAR(line.Evaluate(x), 2.0 * x, 1e-14);
    EXPECT_EQ(line.Evaluate(-100.0), 2.0);
    EXPECT_EQ(line.Evaluate(std::numeric_limits<double>::infinity()), 8.0);
    EXPECT_TRUE(std::isnan(line.Evaluate(std::numeric_limits<double>::quiet_NaN())));

    // Where the points turn, the curve does, too.
    const Spline turns({{0, 0}, {1, 1}, {2, 0.9}, {3, 2}});
    for (double x = 1.0; x <= 2.0; x += 0.01)
        EXPECT_TRUE(turns.Evaluate(x) >= 0.9 && turns.Evaluate(x) <= 1.0) << x;

    const Spline bend({{0, 0}, {1, 1}, {2, 1.5}, {3, 4}});
    for (const double x : {1.0, 2.0}) {
        const double h = 1e-6;
        const double before = (bend.Evaluate(x) - bend.Evaluate(x - h)) / h;
        const double after = (bend.Evaluate(x + h) - bend.Evaluate(x)) / h;
        EXPECT_NEAR(before, after, 1e-4);
    }
}

TEST(Spline, OrdersAndCleansItsPoints)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const Spline spline({{2, 5}, {nan, 1}, {1, 3}, {2, 9}, {3, nan}});
    EXPECT_EQ(spline.GetPoints(), (std::vector<Point>{{1, 3}, {2, 5}}));
    EXPECT_EQ(spline, Spline({{1, 3}, {2, 5}}));
    EXPECT_FALSE(spline == Spline({{1, 3}, {2, 6}}));
    EXPECT_TRUE(Spline(1.0).IsConstant(1.0));
    EXPECT_TRUE(Spline({{0, 1}, {1, 1}}).IsConstant(1.0));
    EXPECT_FALSE(Spline({{0, 1}, {1, 0}}).IsConstant(1.0));
    EXPECT_EQ(Spline(std::vector<Point>()).Evaluate(3.0), 0.0);
}

} // namespace
