#include <geometry/CombineRegions.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <geometry/region/RegionLoops.h>

namespace Geometry {
namespace {

bool IsUsable(std::span<const Point> points)
{
    constexpr double largest = 1e100;
    return std::all_of(points.begin(), points.end(), [](Point point) {
        return std::abs(point.x) <= largest && std::abs(point.y) <= largest;
    });
}

void AddEdges(const PolyPolygonType<double>& polygons, int region, const Grid& grid,
              std::vector<GridEdge>& edges)
{
    for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i) {
        const auto points = polygons.GetPolygon(i).points;
        if (points.empty() || !IsUsable(points))
            continue;
        GridPoint from = grid.Round(points.back());
        for (const Point point : points) {
            const GridPoint to = grid.Round(point);
            if (from != to)
                edges.push_back({from, to, region});
            from = to;
        }
    }
}

void AddBox(const PolyPolygonType<double>& polygons, BoundingBoxT<double>& box)
{
    for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i)
        if (const auto points = polygons.GetPolygon(i).points; IsUsable(points))
            for (const Point point : points)
                box.Add(point);
}

} // namespace

bool CombineRegions(const PolyPolygonType<double>& a, WindingOrderMode ruleA,
                    const PolyPolygonType<double>& b, WindingOrderMode ruleB,
                    RegionOperation operation, PolyPolygonType<double>& out)
{
    BoundingBoxT<double> box;
    AddBox(a, box);
    AddBox(b, box);
    if (!box.IsValid())
        return true;
    const Grid grid(box);
    std::vector<GridEdge> edges;
    AddEdges(a, 0, grid, edges);
    AddEdges(b, 1, grid, edges);
    RegionLoops loops;
    if (!loops.Build(edges, ruleA, ruleB, operation))
        return false;
    for (std::size_t i = 0; i < loops.GetCount(); ++i) {
        const auto loop = loops.GetLoop(i);
        out.BeginPolygon(true);
        for (std::size_t k = 0; k < loop.size(); ++k)
            // An edge that was broken up where nothing is left of what crossed it is one again.
            if (const auto& next = loop[(k + 1) % loop.size()]; loop[k].source != next.source)
                out.AddPoint(grid.GetPoint(next.from));
    }
    return true;
}

} // namespace Geometry
