#include "Shapes.h"

#include <cmath>
#include <numbers>

#include <raster/AffineTransform.h>

namespace Benchmarks {

namespace {

using Geometry::Point;
using Geometry::PolyCurveDbl;
using Geometry::WindingOrderMode;

PolyCurveDbl MakeRect(double side, Random&)
{
    return PolyCurveDbl(Kernel::RectT<double>{0.0, 0.0, side, side});
}

/// A square turned by 20°, touching the sides of the given one.
PolyCurveDbl MakeRotatedRect(double side, Random&)
{
    const double angle = std::numbers::pi / 9.0;
    const double half = 0.5 * side / (std::cos(angle) + std::sin(angle));
    PolyCurveDbl path(Kernel::RectT<double>{-half, -half, half, half});
    const auto turn = Raster::AffineTransform::Rotation(angle);
    path.Transform([&](Point p) {
        const Point q = turn.Map(p);
        return Point{q.x + 0.5 * side, q.y + 0.5 * side};
    });
    return path;
}

PolyCurveDbl MakeRoundRect(double side, Random&)
{
    const double r = 0.2 * side;
    const double k = 0.45 * r; // from the corner to the handle
    PolyCurveDbl path;
    path.MoveTo({r, 0.0});
    path.LineTo({side - r, 0.0});
    path.CurveTo({side - k, 0.0}, {side, k}, {side, r});
    path.LineTo({side, side - r});
    path.CurveTo({side, side - k}, {side - k, side}, {side - r, side});
    path.LineTo({r, side});
    path.CurveTo({k, side}, {0.0, side - k}, {0.0, side - r});
    path.LineTo({0.0, r});
    path.CurveTo({0.0, k}, {k, 0.0}, {r, 0.0});
    path.Close();
    return path;
}

/// A polygon through random points, which crosses itself in all directions.
template<int Count>
PolyCurveDbl MakePolygon(double side, Random& random)
{
    PolyCurveDbl path;
    for (int i = 0; i < Count; ++i) {
        const double x = random.Below(side);
        const Point point{x, random.Below(side)};
        if (i == 0)
            path.MoveTo(point);
        else
            path.LineTo(point);
    }
    path.Close();
    return path;
}

/// A rosette whose closed line runs around the centre seven times, in 48 curves.
PolyCurveDbl MakeRosette(double side, Random&)
{
    constexpr int Pieces = 48;
    const double step = 2.0 * std::numbers::pi / Pieces;
    const auto at = [&](double t) {
        const double r = 0.5 * side * (0.62 + 0.38 * std::cos(17.0 * t));
        return Point{0.5 * side + r * std::cos(7.0 * t), 0.5 * side + r * std::sin(7.0 * t)};
    };
    PolyCurveDbl path;
    path.MoveTo(at(0.0));
    for (int i = 0; i < Pieces; ++i) {
        // Each piece is bent towards the curve at its thirds.
        const double t = i * step;
        path.CurveTo(at(t + step / 3.0), at(t + 2.0 * step / 3.0), at(t + step));
    }
    path.Close();
    return path;
}

/// Leaves of a fern: 60 small closed runs of two curves each.
PolyCurveDbl MakeFern(double side, Random&)
{
    PolyCurveDbl path;
    for (int i = 0; i < 60; ++i) {
        const double along = (i / 2 + 0.5) / 30.0;
        const double reach = 0.48 * side * std::sin(std::numbers::pi * std::sqrt(along));
        const double way = i % 2 == 0 ? 1.0 : -1.0;
        const Point root{0.5 * side, side * (0.04 + 0.9 * along)};
        const Point tip{root.x + way * reach, root.y - 0.03 * side};
        const double bulge = 0.03 * side;
        path.MoveTo(root);
        path.CurveTo({root.x + way * 0.3 * reach, root.y - bulge},
                     {root.x + way * 0.7 * reach, tip.y - bulge}, tip);
        path.CurveTo({root.x + way * 0.7 * reach, tip.y + bulge},
                     {root.x + way * 0.3 * reach, root.y + bulge}, root);
        path.Close();
    }
    return path;
}

PolyCurveDbl MakeTriangle(double side, Random&)
{
    PolyCurveDbl path;
    path.MoveTo({0.5 * side, 0.0});
    path.LineTo({side, 0.9 * side});
    path.LineTo({0.0, side});
    path.Close();
    return path;
}

/// An open line that swings over the square.
PolyCurveDbl MakeWave(double side, Random&)
{
    PolyCurveDbl path;
    path.MoveTo({0.0, 0.5 * side});
    for (int i = 0; i < 4; ++i) {
        const double left = 0.25 * side * i;
        const double swing = i % 2 == 0 ? 0.0 : side;
        path.CurveTo({left + 0.05 * side, swing}, {left + 0.2 * side, swing},
                     {left + 0.25 * side, 0.5 * side});
    }
    return path;
}

} // namespace

const std::array<Shape, 13> FilledShapes{{
    {"rect-aligned", MakeRect, WindingOrderMode::NonZero, true},
    {"rect-unaligned", MakeRect},
    {"rect-rotated", MakeRotatedRect},
    {"round-rect", MakeRoundRect},
    {"triangle", MakeTriangle},
    {"polygon10-nonzero", MakePolygon<10>},
    {"polygon10-evenodd", MakePolygon<10>, WindingOrderMode::EvenOdd},
    {"polygon20-nonzero", MakePolygon<20>},
    {"polygon20-evenodd", MakePolygon<20>, WindingOrderMode::EvenOdd},
    {"polygon40-nonzero", MakePolygon<40>},
    {"polygon40-evenodd", MakePolygon<40>, WindingOrderMode::EvenOdd},
    {"rosette", MakeRosette, WindingOrderMode::EvenOdd},
    {"fern", MakeFern},
}};

const std::array<StrokedShape, 4> StrokedShapes{{
    {"rect-2", MakeRect, 2.0},
    {"rect-8", MakeRect, 8.0},
    {"curve-2", MakeWave, 2.0},
    {"curve-8", MakeWave, 8.0},
}};

} // namespace Benchmarks
