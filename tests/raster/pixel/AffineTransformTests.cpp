#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include <raster/AffineTransform.h>

using Raster::AffineTransform;
using Params = AffineTransform::Params;

namespace {

const Params Maps[] = {
    {},
    {2, 0, 5, 0, -3, 7},
    {0.8, -0.6, 1, 0.6, 0.8, 2},
    {1, 0.9, 0, 0, 0.1, -4},
    {1e-200, 0, 0, 0, 2e-200, 0},
    {1e150, 3e150, 1, -2e150, 1e150, 1},
    {1e-12, 0, 3, 0, 1e12, 4},
};

} // namespace

TEST(AffineTransform, InverseUndoesTheMap)
{
    for (const Params& map : Maps) {
        Params inverse;
        ASSERT_TRUE(AffineTransform::Invert(map, inverse));
        const Params there = AffineTransform::Concatenate(map, inverse);
        EXPECT_TRUE(AffineTransform::IsIdentity(there, 1e-9)) << map.m00;
    }
}

TEST(AffineTransform, RefusesToInvertWhatHasNoInverse)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const Params bad[] = {{0, 0, 1, 0, 0, 1},         {1, 2, 0, 2, 4, 0},
                          {0.1, 0.3, 0, 0.2, 0.6, 0}, {nan, 0, 0, 0, 1, 0},
                          {1, 0, infinity, 0, 1, 0},  {1e-310, 0, 0, 0, 1, 0}};
    for (const Params& map : bad) {
        Params inverse = AffineTransform::Translation(7, 8);
        EXPECT_FALSE(AffineTransform::Invert(map, inverse)) << map.m00;
        EXPECT_EQ(inverse, AffineTransform::Translation(7, 8));
    }
}

TEST(AffineTransform, ConcatenationMapsByTheFirstThenTheSecond)
{
    const auto both = AffineTransform::Concatenate(Maps[1], Maps[2]);
    const auto expected = Maps[2].Map(Maps[1].Map({3, 4}));
    EXPECT_DOUBLE_EQ(both.Map({3, 4}).x, expected.x);
    EXPECT_DOUBLE_EQ(both.Map({3, 4}).y, expected.y);
    // From the x axis to the y axis.
    const auto turned = AffineTransform::Rotation(std::numbers::pi / 2).Map({1, 0});
    EXPECT_NEAR(turned.x, 0, 1e-15);
    EXPECT_NEAR(turned.y, 1, 1e-15);
}

TEST(AffineTransform, SingularValuesBoundTheStretch)
{
    for (const Params& map : Maps) {
        double largest = 0;
        double smallest = std::numeric_limits<double>::infinity();
        for (int i = 0; i < 100000; ++i) {
            const double angle = std::numbers::pi * i / 100000;
            const auto v = map.MapVector({std::cos(angle), std::sin(angle)});
            largest = std::max(largest, std::hypot(v.x, v.y));
            smallest = std::min(smallest, std::hypot(v.x, v.y));
        }
        EXPECT_NEAR(AffineTransform::GetLargestSingularValue(map) / largest, 1, 1e-8);
        EXPECT_NEAR(AffineTransform::GetSmallestSingularValue(map) / smallest, 1, 1e-3);
    }
    EXPECT_EQ(AffineTransform::GetSmallestSingularValue({0, 0, 0, 0, 0, 0}), 0);
    EXPECT_DOUBLE_EQ(AffineTransform::GetScale({3, 0, 9, 0, 4, 9}), std::sqrt(12.5));
}

TEST(AffineTransform, MapsRectanglesToTheirBox)
{
    const Kernel::RectT<double> rect{1, 2, 4, 8};
    const auto box = AffineTransform::MapRect({0, -2, 10, 1, 0.5, 0}, rect);
    EXPECT_EQ(box, (Kernel::RectT<double>{-6, 2, 6, 8}));
    EXPECT_TRUE(AffineTransform::MapRect(Maps[1], Kernel::RectT<double>::MakeUnset()).IsUnset());
    EXPECT_TRUE(AffineTransform::MapRect(Maps[1], {5, 0, 1, 10}).IsEmpty());
    EXPECT_EQ(AffineTransform::MapRect(AffineTransform::FromRect(rect), {0, 0, 1, 1}), rect);
}
