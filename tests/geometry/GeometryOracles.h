#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <span>
#include <utility>
#include <vector>

#include <geometry/Curve.h>
#include <geometry/Polygon.h>

/// Slow, plain answers that the geometry is measured against.
namespace Oracle {

using Geometry::Point;

/// Distance from \p p to the straight segment ab.
inline double DistanceToSegment(Point p, Point a, Point b)
{
    const Point d = b - a;
    const double square = d.x * d.x + d.y * d.y;
    const double t = square > 0.0 ? ((p.x - a.x) * d.x + (p.y - a.y) * d.y) / square : 0.0;
    const Point nearest = a + std::clamp(t, 0.0, 1.0) * d;
    return std::hypot(p.x - nearest.x, p.y - nearest.y);
}

inline double DistanceToPolyline(Point p, std::span<const Point> line)
{
    double least = std::hypot(p.x - line[0].x, p.y - line[0].y);
    for (std::size_t i = 0; i + 1 < line.size(); ++i)
        least = std::min(least, DistanceToSegment(p, line[i], line[i + 1]));
    return least;
}

/// A cubic by de Casteljau's construction.
inline Point EvaluateCubic(std::span<const Point> p, double t)
{
    const auto mix = [t](Point a, Point b) { return (1.0 - t) * a + t * b; };
    const Point a = mix(p[0], p[1]), b = mix(p[1], p[2]), c = mix(p[2], p[3]);
    return mix(mix(a, b), mix(b, c));
}

/// A run as many equal parameter steps per segment.
inline std::vector<Point> SampleCurve(const Geometry::CurveDbl& curve, int steps)
{
    const std::vector<Point>& points = curve.GetPoints();
    std::vector<Point> samples{points.front()};
    for (std::size_t i = 0; i < curve.GetSegmentCount(); ++i)
        for (int k = 1; k <= steps; ++k)
            samples.push_back(
                EvaluateCubic(std::span(points).subspan(3 * i, 4), double(k) / steps));
    if (curve.IsClosed())
        samples.push_back(points.front());
    return samples;
}

/// Calls \p function(x, direction) for every edge that crosses the height \p y.
template<class Function>
void ForEachCrossing(double y, const Geometry::PolyPolygonType<double>& polygons,
                     const Function& function)
{
    for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i) {
        const auto points = polygons.GetPolygon(i).points;
        for (std::size_t k = 0; k < points.size(); ++k) {
            const Point a = points[k], b = points[(k + 1) % points.size()];
            if ((a.y <= y) != (b.y <= y))
                function(a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x), b.y > a.y ? 1 : -1);
        }
    }
}

/// How often the polygons run around \p p, counted along a ray to the right.
inline int WindingNumber(Point p, const Geometry::PolyPolygonType<double>& polygons)
{
    int winding = 0;
    ForEachCrossing(p.y, polygons,
                    [&](double x, int direction) { winding += x > p.x ? direction : 0; });
    return winding;
}

/// The length of the line at height \p y that lies where the winding number is not 0.
inline double CoveredLength(double y, const Geometry::PolyPolygonType<double>& polygons)
{
    std::vector<std::pair<double, int>> crossings;
    ForEachCrossing(y, polygons,
                    [&](double x, int direction) { crossings.emplace_back(x, direction); });
    std::sort(crossings.begin(), crossings.end());
    double length = 0.0;
    int winding = 0;
    for (std::size_t k = 0; k + 1 < crossings.size(); ++k) {
        winding += crossings[k].second;
        if (winding != 0)
            length += crossings[k + 1].first - crossings[k].first;
    }
    return length;
}

/// The area within a closed polyline, positive where it turns from the x axis to the y axis.
inline double SignedArea(std::span<const Point> points)
{
    double area = 0.0;
    for (std::size_t k = 0; k < points.size(); ++k) {
        const Point a = points[k], b = points[(k + 1) % points.size()];
        area += 0.5 * (a.x * b.y - a.y * b.x);
    }
    return area;
}

/// The area where the winding number is not 0: in bands between the heights of all points, halved
/// until none is higher than 1/\p rows of the whole, each by its middle line. Exact where no edges
/// cross.
inline double NonZeroArea(const Geometry::PolyPolygonType<double>& polygons, int rows = 1000)
{
    std::vector<double> heights;
    for (const Point p : polygons.GetPoints())
        heights.push_back(p.y);
    std::sort(heights.begin(), heights.end());
    const double limit = (heights.back() - heights.front()) / rows;
    double area = 0.0;
    for (std::size_t h = 0; h + 1 < heights.size(); ++h) {
        const double band = heights[h + 1] - heights[h];
        const int parts = static_cast<int>(std::ceil(band / limit));
        for (int part = 0; part < parts; ++part) {
            const double y = heights[h] + (part + 0.5) * band / parts;
            area += band / parts * CoveredLength(y, polygons);
        }
    }
    return area;
}

/// Random numbers that are the same everywhere.
class Random
{
public:
    explicit Random(unsigned seed) : m_engine(seed) {}

    double Uniform(double low, double high)
    {
        return low + (high - low) * (static_cast<double>(m_engine()) / 4294967296.0);
    }

    Point InSquare(double half) { return {Uniform(-half, half), Uniform(-half, half)}; }

private:
    std::mt19937 m_engine;
};

/// Cubics in the square ±1 that are hard on curve code, and random ones after them.
inline std::vector<std::array<Point, 4>> MakeCubics(int randomCount, unsigned seed)
{
    std::vector<std::array<Point, 4>> cubics = {
        {{{-1, -1}, {1, 1}, {-1, 1}, {1, -1}}},          // cusp
        {{{-1, 0}, {1, 1}, {-1, 1}, {1, 0}}},            // loop
        {{{-0.5, 0}, {1, 1}, {-1, 1}, {-0.5, 0}}},       // closed loop
        {{{-1, 0}, {1, 0}, {-1, 0}, {1, 0}}},            // straight, to and fro
        {{{-1, 0}, {-0.3, 1e-7}, {0.3, -1e-7}, {1, 0}}}, // nearly straight
        {{{-1, 0}, {-1, 0}, {0.5, 1}, {1, 0}}},          // controls on the ends
        {{{-1, 0}, {0.5, 1}, {1, 0}, {1, 0}}},
        {{{-1, 0}, {-1, 0}, {1, 0.5}, {1, 0.5}}},
        {{{0, 0}, {0, 0}, {0, 0}, {1, 1}}},
        {{{-1, 0}, {-1, 1}, {1, -1}, {1, 0}}},                // S with an inflection
        {{{-1, 0}, {0.999, 0.001}, {-0.999, 0.001}, {1, 0}}}, // nearly a double cusp
        {{{0, 0}, {1, 0}, {1, 1}, {0.99, 0.01}}},
    };
    Random random(seed);
    for (int i = 0; i < randomCount; ++i)
        cubics.push_back(
            {random.InSquare(1), random.InSquare(1), random.InSquare(1), random.InSquare(1)});
    return cubics;
}

} // namespace Oracle
