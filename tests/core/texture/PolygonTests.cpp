// Exact areas and texture places of polygons, against closed forms.

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <renderer/core/texture/CPolygon.h>

namespace Renderer::Texture {
namespace {

using Point = Kernel::PointT<double>;
using Points = std::vector<Point>;

constexpr int Side = 24; // of the pages
constexpr std::int32_t Whole = CCoverage::Whole;

std::vector<CVertex> MakeVertices(const Points& points)
{
    std::vector<CVertex> vertices;
    for (const Point p : points)
        vertices.push_back({p.x, p.y, 0.0F, 0.0F});
    return vertices;
}

/// The areas of all pixels of the page, found column range by column range.
std::vector<std::int32_t> GetAreas(const Points& points, int step = Side)
{
    CPolygon polygon(MakeVertices(points));
    CCoverage row;
    std::vector<std::int32_t> areas(Side * Side);
    for (int y = 0; y < Side; ++y)
        for (int left = 0; left < Side; left += step) {
            polygon.ComputeCoverages(y, left, std::min(left + step, Side), row);
            EXPECT_LE(row.begin, row.fullBegin);
            EXPECT_LE(row.fullBegin, row.fullEnd);
            EXPECT_LE(row.fullEnd, row.end);
            for (int x = row.begin; x < row.end; ++x) {
                areas[std::size_t(y * Side + x)] = row.GetArea(x);
                EXPECT_TRUE(x >= row.fullEnd || (row.GetArea(x) == Whole) == (x >= row.fullBegin));
            }
        }
    return areas;
}

/// The signed area of a convex polygon within a pixel: cut by one side after the other (Sutherland
/// and Hodgman, 1974), then the shoelace formula.
double GetCommonArea(Points points, int x, int y)
{
    const auto cut = [&points](double a, double b, double c) { // keeps a·x + b·y + c ≥ 0
        Points kept;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const Point p = points[i], q = points[(i + 1) % points.size()];
            const double dp = a * p.x + b * p.y + c, dq = a * q.x + b * q.y + c;
            if (dp >= 0.0)
                kept.push_back(p);
            if ((dp < 0.0) != (dq < 0.0))
                kept.push_back(p + (dp / (dp - dq)) * (q - p));
        }
        points = kept;
    };
    cut(1, 0, -x);
    cut(-1, 0, x + 1);
    cut(0, 1, -y);
    cut(0, -1, y + 1);
    double sum = 0.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point p = points[i], q = points[(i + 1) % points.size()];
        sum += 0.5 * (p.x * q.y - p.y * q.x);
    }
    return sum;
}

class Random
{
public:
    explicit Random(unsigned seed) : m_engine(seed) {}
    double In(double from, double to)
    {
        return std::uniform_real_distribution<double>(from, to)(m_engine);
    }
    /// A convex polygon: points of a circle, pressed flat and moved about.
    Points MakeConvex()
    {
        const std::size_t count = 3 + m_engine() % (CPolygon::MaxVertices - 2);
        std::vector<double> angles(count);
        for (double& angle : angles)
            angle = In(0, 6.2831853);
        std::ranges::sort(angles);
        const Point centre{In(-2, Side + 2), In(-2, Side + 2)};
        const double radius = std::pow(10.0, In(-1.5, 1.5)), flat = In(0.01, 1);
        Points points;
        for (const double angle : angles)
            points.push_back({centre.x + radius * std::cos(angle),
                              centre.y + radius * flat * std::sin(angle + 0.3)});
        return points;
    }

private:
    std::mt19937 m_engine;
};

TEST(Polygon, AreasAreExact)
{
    Random random(1);
    for (int i = 0; i < 400; ++i) {
        SCOPED_TRACE(i);
        const Points points = random.MakeConvex();
        const auto areas = GetAreas(points);
        ASSERT_EQ(areas, GetAreas(points, 5)); // whatever columns are asked for
        ASSERT_EQ(areas, GetAreas({points.rbegin(), points.rend()}));
        for (int y = 0; y < Side; ++y)
            for (int x = 0; x < Side; ++x)
                ASSERT_NEAR(double(areas[std::size_t(y * Side + x)]) / Whole,
                            std::abs(GetCommonArea(points, x, y)), 2e-5)
                    << x << ' ' << y;
    }
}

/// A mesh of quadrangles with random inner corners, half of them cut in two, tiles the page: no
/// pixel has more or less than its whole area.
TEST(Polygon, CommonEdgesLeaveNoRest)
{
    Random random(2);
    for (int i = 0; i < 60; ++i) {
        SCOPED_TRACE(i);
        constexpr int Cells = 7;
        const double cell = double(Side) / Cells, reach = cell * 0.24;
        std::map<std::pair<int, int>, Point> corners;
        for (int v = 0; v <= Cells; ++v)
            for (int u = 0; u <= Cells; ++u) {
                const bool isInnerU = u > 0 && u<Cells, isInnerV = v> 0 && v < Cells;
                corners[{u, v}] = {u * cell + (isInnerU ? random.In(-reach, reach) : 0),
                                   v * cell + (isInnerV ? random.In(-reach, reach) : 0)};
            }
        std::vector<std::int32_t> sum(Side * Side);
        const auto add = [&](const Points& points) {
            const auto areas = GetAreas(points);
            for (std::size_t k = 0; k < sum.size(); ++k)
                sum[k] += areas[k];
        };
        for (int v = 0; v < Cells; ++v)
            for (int u = 0; u < Cells; ++u) {
                const Points quad{corners[{u, v}], corners[{u + 1, v}], corners[{u + 1, v + 1}],
                                  corners[{u, v + 1}]};
                if ((u + v + i) % 2 == 0) {
                    add(quad);
                } else { // cut in two, with one half the other way round
                    add({quad[0], quad[1], quad[2]});
                    add({quad[3], quad[2], quad[0]});
                }
            }
        EXPECT_EQ(std::ranges::count(sum, Whole), Side * Side);
    }
}

TEST(Polygon, RowsAreClipped)
{
    CPolygon polygon(MakeVertices({{2.5, 0}, {9.25, 0}, {9.25, 1}, {2.5, 1}}));
    CCoverage row;
    const auto expect = [&](int left, int right, std::array<int, 4> ends) {
        polygon.ComputeCoverages(0, 0, Side, row);
        CPolygon::ClipCoverages(left, right, row);
        EXPECT_EQ((std::array{row.begin, row.fullBegin, row.fullEnd, row.end}), ends);
    };
    expect(0, Side, {2, 3, 9, 10});
    expect(3, 9, {3, 3, 9, 9});
    expect(5, 7, {5, 5, 7, 7});
    EXPECT_EQ(row.GetShare(5), 1.0F);
    expect(-7, 3, {2, 3, 3, 3});
    EXPECT_EQ(row.GetShare(2), 0.5F);
    polygon.ComputeCoverages(0, 12, 20, row);
    EXPECT_TRUE(row.IsEmpty());
    CPolygon(MakeVertices({{1, 1}, {5, 1}, {3, 1}})).ComputeCoverages(1, 0, Side, row);
    EXPECT_TRUE(row.IsEmpty());
}

TEST(Polygon, ParallelogramsAreMappedAffinely)
{
    Random random(3);
    for (int i = 0; i < 100; ++i) {
        const Point a{random.In(0, 9), random.In(0, 9)};
        const Point u{random.In(4, 9), random.In(-3, 3)}, v{random.In(-3, 3), random.In(4, 9)};
        const auto corner = [&](double s, double t) {
            const Point p = a + s * u + t * v;
            return CVertex{p.x, p.y, float(0.25 + 0.5 * s), float(t), float(1.0 - 0.5 * s)};
        };
        QuadrangleMap map({corner(0, 0), corner(1, 0), corner(1, 1), corner(0, 1)});
        for (const double s : {0.0, 0.3, 1.0})
            for (const double t : {0.0, 0.6, 1.0}) {
                const Point p = a + s * u + t * v;
                map.BeginRow(p.y);
                const TexturePlace place = map.At(p.x);
                EXPECT_NEAR(place.u, 0.25 + 0.5 * s, 1e-6);
                EXPECT_NEAR(place.v, t, 1e-6);
                EXPECT_NEAR(place.opacity, 1.0 - 0.5 * s, 1e-6);
            }
    }
}

/// Slices of a bend, down to one whose inner edge is a point, agree on the lines between them.
TEST(Polygon, SlicesAgreeOnTheirCommonEdges)
{
    Random random(4);
    for (int i = 0; i < 300; ++i) {
        const Point centre{random.In(0, 9), random.In(0, 9)};
        const double start = random.In(0, 6.28), turn = random.In(0.01, 0.2);
        const double inner = i % 3 == 0 ? 0.0 : random.In(0, 5), outer = inner + random.In(1, 9);
        const auto at = [&](int slice, double radius) {
            const double angle = start + turn * slice;
            return centre + radius * Point{std::cos(angle), std::sin(angle)};
        };
        const auto makeMap = [&](int slice) {
            const auto corner = [&](int side, double radius, float v) {
                const Point p = at(slice + side, radius);
                return CVertex{p.x, p.y, 0.1F * float(slice + side), v};
            };
            return QuadrangleMap({corner(0, outer, 0), corner(1, outer, 0), corner(1, inner, 1),
                                  corner(0, inner, 1)});
        };
        QuadrangleMap before = makeMap(0), after = makeMap(1);
        for (const double share : {0.1, 0.5, 0.9}) {
            const Point p = at(1, outer + share * (inner - outer));
            for (QuadrangleMap* map : {&before, &after}) {
                map->BeginRow(p.y);
                EXPECT_NEAR(map->At(p.x).u, 0.1, 1e-5);
                EXPECT_NEAR(map->At(p.x).v, share, 1e-5);
            }
        }
    }
}

} // namespace
} // namespace Renderer::Texture
