#pragma once

#include <agg_basics.h>

#include <geometry/Polygon.h>

namespace Benchmarks {

/// Polygons as a vertex source of AGG.
class AggPath
{
public:
    explicit AggPath(const Geometry::PolyPolygonType<double>& polygons) : m_polygons(polygons) {}

    void rewind(unsigned)
    {
        m_polygon = 0;
        m_point = 0;
    }

    unsigned vertex(double* x, double* y)
    {
        *x = *y = 0.0; // unread at ends, but handed on
        while (m_polygon < m_polygons.GetPolygonCount()) {
            const auto polygon = m_polygons.GetPolygon(m_polygon);
            if (m_point < polygon.points.size()) {
                *x = polygon.points[m_point].x;
                *y = polygon.points[m_point].y;
                return m_point++ == 0 ? agg::path_cmd_move_to : agg::path_cmd_line_to;
            }
            ++m_polygon;
            m_point = 0;
            if (polygon.closed)
                return EndPolygon;
        }
        return agg::path_cmd_stop;
    }

private:
    static constexpr unsigned EndPolygon =
        unsigned(agg::path_cmd_end_poly) | unsigned(agg::path_flags_close);

    const Geometry::PolyPolygonType<double>& m_polygons;
    std::size_t m_polygon = 0;
    std::size_t m_point = 0;
};

} // namespace Benchmarks
