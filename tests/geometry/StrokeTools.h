#pragma once

#include <cmath>
#include <initializer_list>
#include <numbers>

#include <gtest/gtest.h>

#include <geometry/Stroker.h>

#include "GeometryOracles.h"

/// What the tests of strokes share.
namespace StrokeTools {

using Geometry::CurveDbl;
using Geometry::Point;
using Geometry::PolyCurveDbl;
using Geometry::StrokeCap;
using Geometry::StrokeJoin;
using Geometry::StrokeParameters;
using Polygons = Geometry::PolyPolygonType<double>;
using Rect = Kernel::RectT<double>;
inline constexpr double pi = std::numbers::pi;

inline StrokeParameters MakePen(double width, StrokeJoin join = StrokeJoin::Mitre,
                                StrokeCap cap = StrokeCap::Butt, double tolerance = 1e-4)
{
    StrokeParameters pen;
    pen.width = width;
    pen.join = join;
    pen.cap = cap;
    pen.tolerance = tolerance;
    return pen;
}

inline Polygons Stroke(const PolyCurveDbl& path, const StrokeParameters& pen)
{
    Polygons out;
    Geometry::StrokePolyCurve(path, pen, out);
    for (const Point p : out.GetPoints())
        EXPECT_TRUE(std::isfinite(p.x) && std::isfinite(p.y));
    return out;
}

inline PolyCurveDbl MakePolyline(std::initializer_list<Point> points, bool closed = false)
{
    PolyCurveDbl path;
    path.MoveTo(*points.begin());
    for (const Point* p = points.begin() + 1; p != points.end(); ++p)
        path.LineTo(*p);
    if (closed)
        path.Close();
    return path;
}

/// A run of one curve.
inline PolyCurveDbl MakeCubic(Point p0, Point p1, Point p2, Point p3)
{
    PolyCurveDbl path;
    path.MoveTo(p0);
    path.CurveTo(p1, p2, p3);
    return path;
}

inline PolyCurveDbl MakeCircle(double radius)
{
    PolyCurveDbl circle;
    circle.AddEllipse({0, 0}, radius, radius);
    return circle;
}

} // namespace StrokeTools
