#include <geometry/Curve.h>

#include <array>
#include <cmath>

#include <geometry/Flatten.h>

namespace Geometry {
namespace {

bool IsFinite(Point point)
{
    return std::isfinite(point.x) && std::isfinite(point.y);
}

bool IsNear(Point a, Point b, double tolerance)
{
    return std::abs(a.x - b.x) <= tolerance && std::abs(a.y - b.y) <= tolerance;
}

/// The parameters where one coordinate of a cubic has an extremum: the roots of its derivative
/// divided by three, a·t² + b·t + c. The form q, c/q (Press et al., Numerical Recipes, 5.6) cancels
/// nothing and serves vanishing coefficients as well: their roots come out infinite or NaN.
std::array<double, 2> FindExtrema(double p0, double p1, double p2, double p3)
{
    const double c = p1 - p0;
    const double b = 2.0 * (p2 - p1 - c);
    const double a = (p3 - p0) - 3.0 * (p2 - p1);
    const double scale = std::max({std::abs(a), std::abs(b), std::abs(c)});
    const double sa = a / scale, sb = b / scale, sc = c / scale;
    const double root = std::sqrt(sb * sb - 4.0 * sa * sc); // NaN without extremum
    const double q = -0.5 * (sb + std::copysign(root, sb));
    return {q / sa, sc / q};
}

/// Grows [low, high] to hold one coordinate of a cubic whose ends it already holds.
void GrowByCubic(double p0, double p1, double p2, double p3, double& low, double& high)
{
    const double hullLow = std::min(p1, p2), hullHigh = std::max(p1, p2);
    if (hullLow >= low && hullHigh <= high)
        return; // the controls lie within, and so does the curve
    for (const double t : FindExtrema(p0, p1, p2, p3)) {
        if (!(t > 0.0 && t < 1.0))
            continue;
        const double a = std::lerp(p0, p1, t), b = std::lerp(p1, p2, t), c = std::lerp(p2, p3, t);
        const double value = std::lerp(std::lerp(a, b, t), std::lerp(b, c, t), t);
        low = std::min(low, value);
        high = std::max(high, value);
    }
}

BoundingBoxT<double> GetCubicBox(Point p0, Point p1, Point p2, Point p3)
{
    BoundingBoxT<double> box;
    box.Add(p0);
    box.Add(p3);
    if (!IsFinite(p0) || !IsFinite(p1) || !IsFinite(p2) || !IsFinite(p3))
        return box;
    Kernel::RectT<double> rect = box.GetRect();
    GrowByCubic(p0.x, p1.x, p2.x, p3.x, rect.left, rect.right);
    GrowByCubic(p0.y, p1.y, p2.y, p3.y, rect.top, rect.bottom);
    box.Add(Point{rect.left, rect.top});
    box.Add(Point{rect.right, rect.bottom});
    return box;
}

} // namespace

void CurveDbl::MoveTo(Point start)
{
    m_points.assign(1, start);
    m_segments.clear();
    m_closed = false;
}

void CurveDbl::LineTo(Point end)
{
    m_points.insert(m_points.end(), {m_points.back(), end, end});
    m_segments.push_back(Segment::Line);
}

void CurveDbl::CurveTo(Point control1, Point control2, Point end)
{
    m_points.insert(m_points.end(), {control1, control2, end});
    m_segments.push_back(Segment::Cubic);
}

void CurveDbl::QuadTo(Point control, Point end)
{
    const Point start = m_points.back();
    CurveTo(start + (2.0 / 3.0) * (control - start), end + (2.0 / 3.0) * (control - end), end);
}

bool CurveDbl::IsEqual(const CurveDbl& other, double tolerance) const noexcept
{
    return m_closed == other.m_closed && m_segments == other.m_segments &&
           std::equal(m_points.begin(), m_points.end(), other.m_points.begin(),
                      other.m_points.end(),
                      [tolerance](Point a, Point b) { return IsNear(a, b, tolerance); });
}

BoundingBoxT<double> CurveDbl::GetBoundingBox() const noexcept
{
    BoundingBoxT<double> box;
    if (!m_points.empty())
        box.Add(m_points.front());
    for (std::size_t i = 0; i < m_segments.size(); ++i) {
        const Point* p = &m_points[3 * i];
        if (m_segments[i] == Segment::Line)
            box.Add(p[3]);
        else
            box.Add(GetCubicBox(p[0], p[1], p[2], p[3]));
    }
    return box;
}

void CurveDbl::ExpandAdaptive(double tolerance, PolyPolygonType<double>& out) const
{
    if (m_points.empty())
        return;
    out.BeginPolygon(m_closed);
    out.AddPoint(m_points.front());
    for (std::size_t i = 0; i < m_segments.size(); ++i) {
        const Point* p = &m_points[3 * i];
        if (m_segments[i] == Segment::Line)
            out.AddPoint(p[3]);
        else
            FlattenCubic(p[0], p[1], p[2], p[3], tolerance, [&out](Point q) { out.AddPoint(q); });
    }
}

} // namespace Geometry
