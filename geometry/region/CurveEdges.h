#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include <geometry/PolyCurve.h>
#include <geometry/region/Grid.h>

namespace Geometry {

/// The segments of paths as edges that know where on their segment they lie. Segments that are the
/// same but for their direction get the same edges.
class CurveEdges
{
public:
    struct Segment
    {
        std::array<Point, 4> points;
        bool isLine;

        Point Evaluate(double t) const noexcept;
        Point GetDerivative(double t) const noexcept;
        /// The control points of the part between two parameters, which may run backwards.
        std::array<Point, 4> GetPart(double from, double to) const noexcept;
    };

    CurveEdges(const Grid& grid, double tolerance) : m_grid(grid), m_tolerance(tolerance) {}

    /// Adds the segments of a path; open runs are closed. Runs with a point that is not finite are
    /// left out.
    void Add(const PolyCurveDbl& path, int region);

    std::span<const GridEdge> GetEdges() const noexcept { return m_edges; }
    const Segment& GetSegment(std::uint32_t edge) const
    {
        return m_segments[m_spans[edge].segment];
    }
    /// Whether one edge follows on another, in their direction or against it, within a segment.
    bool IsNext(std::uint32_t edge, std::uint32_t next, bool isForward) const;
    /// The parameter of the point of an edge that lies next to \p point.
    double GetParameter(std::uint32_t edge, GridPoint point) const;

    /// Whether the points of a run can be worked with.
    static bool IsUsable(const CurveDbl& run);

private:
    /// What an edge is of its segment.
    struct Span
    {
        std::uint32_t segment;
        double from, to;
    };

    void AddLine(Point from, Point to, int region);
    void AddCubic(const Point* points, int region);
    void AddEdge(GridPoint from, GridPoint to, const Span& span, int region);

    Grid m_grid;
    double m_tolerance;
    std::vector<Segment> m_segments;
    std::vector<GridEdge> m_edges;
    std::vector<Span> m_spans; // one per edge
    std::vector<std::pair<double, Point>> m_steps;
};

} // namespace Geometry
