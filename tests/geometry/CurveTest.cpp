#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <geometry/GlyphMetrics.h>
#include <geometry/PolyCurve.h>

#include "GeometryOracles.h"

namespace {

using Geometry::CurveDbl;
using Geometry::Point;
using Geometry::PolyCurveDbl;
using Rect = Kernel::RectT<double>;

TEST(Curve, BoxIsThatOfTheCurveAndNotOfItsControls)
{
    for (const double scale : {1e-6, 1.0, 1e6, 1e200}) {
        for (const auto& cubic : Oracle::MakeCubics(300, 3)) {
            CurveDbl curve(scale * cubic[0]);
            curve.CurveTo(scale * cubic[1], scale * cubic[2], scale * cubic[3]);
            const Rect box = curve.GetBoundingBox().GetRect();
            Geometry::BoundingBoxT<double> sampled;
            for (const Point p : Oracle::SampleCurve(curve, 4000))
                sampled.Add(p);
            const Rect expected = sampled.GetRect();
            const double outwards = 1e-6 * scale, inwards = 1e-14 * scale;
            EXPECT_LE(box.left, expected.left + inwards);
            EXPECT_GE(box.left, expected.left - outwards);
            EXPECT_LE(box.top, expected.top + inwards);
            EXPECT_GE(box.top, expected.top - outwards);
            EXPECT_GE(box.right, expected.right - inwards);
            EXPECT_LE(box.right, expected.right + outwards);
            EXPECT_GE(box.bottom, expected.bottom - inwards);
            EXPECT_LE(box.bottom, expected.bottom + outwards);
        }
    }
}

TEST(Curve, NotANumberNeverEntersABox)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    CurveDbl curve(Point{1, 2});
    curve.LineTo({nan, 50});
    curve.CurveTo({nan, 3}, {4, 4}, {5, 6});
    curve.LineTo({std::numeric_limits<double>::infinity(), 0});
    EXPECT_EQ(curve.GetBoundingBox().GetRect(), (Rect{1, 2, 5, 6}));

    CurveDbl bad(Point{nan, nan});
    EXPECT_FALSE(bad.GetBoundingBox().IsValid());
    EXPECT_FALSE(CurveDbl().GetBoundingBox().IsValid());
}

TEST(Curve, QuadraticIsRaisedExactly)
{
    CurveDbl curve(Point{1, 1});
    curve.QuadTo({4, 7}, {9, -2});
    for (const double t : {0.25, 0.5, 0.8}) {
        const double u = 1.0 - t;
        const Point expected =
            u * u * Point{1, 1} + 2.0 * u * t * Point{4, 7} + t * t * Point{9, -2};
        const Point p = Oracle::EvaluateCubic(curve.GetPoints(), t);
        EXPECT_NEAR(p.x, expected.x, 1e-14);
        EXPECT_NEAR(p.y, expected.y, 1e-14);
    }
}

TEST(Curve, EqualityMindsPointsKindsAndClosing)
{
    CurveDbl a(Point{0, 0}), b(Point{0, 1e-7});
    a.LineTo({1, 1});
    b.LineTo({1, 1});
    EXPECT_TRUE(a.IsEqual(b, 1e-6));
    EXPECT_FALSE(a.IsEqual(b, 1e-8));
    b.SetClosed(true);
    EXPECT_FALSE(a.IsEqual(b, 1e-6));
    CurveDbl cubic(Point{0, 0});
    cubic.CurveTo({0, 0}, {1, 1}, {1, 1});
    EXPECT_FALSE(a.IsEqual(cubic, 1e-6));
}

TEST(PolyCurve, PenGoesOnAfterClosing)
{
    PolyCurveDbl path;
    path.Close(); // nothing to close
    path.MoveTo({1, 2});
    path.LineTo({3, 2});
    path.Close();
    path.Close();
    path.LineTo({5, 5});
    path.MoveTo({7, 7});
    ASSERT_EQ(path.GetCurves().size(), 3u);
    EXPECT_TRUE(path.GetCurves()[0].IsClosed());
    EXPECT_EQ(path.GetCurves()[1].GetPoints().front(), (Point{1, 2}));
    EXPECT_FALSE(path.GetCurves()[1].IsClosed());
    EXPECT_EQ(path.GetCurves()[2].GetSegmentCount(), 0u);
    EXPECT_EQ(path.GetBoundingBox().GetRect(), (Rect{1, 2, 7, 7}));

    Geometry::PolyPolygonType<double> polygons;
    path.ExpandAdaptive(0.1, polygons);
    ASSERT_EQ(polygons.GetPolygonCount(), 3u);
    EXPECT_TRUE(polygons.GetPolygon(0).closed);
    EXPECT_EQ(polygons.GetPolygon(1).points.size(), 2u);
    EXPECT_EQ(polygons.GetPolygon(2).points.size(), 1u);

    PolyCurveDbl lenient;
    lenient.LineTo({4, 4});
    EXPECT_EQ(lenient.GetBoundingBox().GetRect(), (Rect{4, 4, 4, 4}));

    const auto clone = path.Clone();
    clone->LineTo({100, 100});
    EXPECT_EQ(path.GetCurves()[2].GetSegmentCount(), 0u);
}

TEST(PolyCurve, EllipseKeepsToTheCircle)
{
    PolyCurveDbl path;
    path.AddEllipse({10, 20}, 3.0, 3.0);
    ASSERT_EQ(path.GetCurves().size(), 1u);
    double least = 9.0, largest = 0.0;
    for (const Point p : Oracle::SampleCurve(path.GetCurves()[0], 1000)) {
        const double radius = std::hypot(p.x - 10.0, p.y - 20.0) / 3.0;
        least = std::min(least, radius);
        largest = std::max(largest, radius);
    }
    EXPECT_NEAR(largest - 1.0, 1.96e-4, 2e-6);
    EXPECT_NEAR(1.0 - least, 1.96e-4, 2e-6);
    const Rect box = path.GetBoundingBox().GetRect();
    EXPECT_DOUBLE_EQ(box.left, 7.0);
    EXPECT_DOUBLE_EQ(box.bottom, 23.0);
    EXPECT_EQ(path.GetCurves()[0].GetPoints()[3], (Point{10, 23})); // clockwise, y down
}

TEST(GlyphMetrics, BoundsAreThoseOfTheOutline)
{
    auto outline = Kernel::MakeCounted<PolyCurveDbl>(Rect{0.1, -0.7, 0.5, 0.0});
    const Geometry::GlyphMetrics glyph(42, 0.6, outline);
    EXPECT_EQ(glyph.GetBounds().GetRect(), (Rect{0.1, -0.7, 0.5, 0.0}));
    EXPECT_EQ(glyph.GetOutline().Get(), outline.Get());
    EXPECT_FALSE(Geometry::GlyphMetrics(3, 0.25, nullptr).GetBounds().IsValid());
}

} // namespace
