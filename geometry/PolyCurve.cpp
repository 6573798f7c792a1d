#include <geometry/PolyCurve.h>

#include <numbers>

#include <geometry/EllipticArc.h>

namespace Geometry {

PolyCurveDbl::PolyCurveDbl(const Kernel::RectT<double>& rect)
{
    CurveDbl curve(Point{rect.left, rect.top});
    curve.LineTo({rect.right, rect.top});
    curve.LineTo({rect.right, rect.bottom});
    curve.LineTo({rect.left, rect.bottom});
    curve.SetClosed(true);
    AddCurve(std::move(curve));
}

PolyCurveDbl::PolyCurveDbl(CurveDbl curve)
{
    AddCurve(std::move(curve));
}

void PolyCurveDbl::MoveTo(Point start)
{
    m_curves.emplace_back(start);
}

void PolyCurveDbl::LineTo(Point end)
{
    OpenRun(end).LineTo(end);
}

void PolyCurveDbl::CurveTo(Point control1, Point control2, Point end)
{
    OpenRun(control1).CurveTo(control1, control2, end);
}

void PolyCurveDbl::QuadTo(Point control, Point end)
{
    OpenRun(control).QuadTo(control, end);
}

void PolyCurveDbl::Close()
{
    if (!m_curves.empty())
        m_curves.back().SetClosed(true);
}

void PolyCurveDbl::AddCurve(CurveDbl curve)
{
    if (!curve.IsEmpty())
        m_curves.push_back(std::move(curve));
}

void PolyCurveDbl::AddEllipse(Point centre, double radiusX, double radiusY)
{
    const double handle = GetArcHandleLength(0.5 * std::numbers::pi);
    const Point x{radiusX, 0.0}, y{0.0, radiusY};
    CurveDbl curve(centre + x);
    // The four quarters, each given by the axes that it starts and ends on.
    const Point axes[] = {x, y, -1.0 * x, -1.0 * y, x};
    for (int i = 0; i < 4; ++i) {
        const Point from = axes[i], to = axes[i + 1];
        curve.CurveTo(centre + from + handle * to, centre + to + handle * from, centre + to);
    }
    curve.SetClosed(true);
    AddCurve(std::move(curve));
}

Kernel::Counted<PolyCurveDbl> PolyCurveDbl::Clone() const
{
    return Kernel::MakeCounted<PolyCurveDbl>(*this);
}

BoundingBoxT<double> PolyCurveDbl::GetBoundingBox() const noexcept
{
    BoundingBoxT<double> box;
    for (const CurveDbl& curve : m_curves)
        box.Add(curve.GetBoundingBox());
    return box;
}

void PolyCurveDbl::ExpandAdaptive(double tolerance, PolyPolygonType<double>& out) const
{
    for (const CurveDbl& curve : m_curves)
        curve.ExpandAdaptive(tolerance, out);
}

CurveDbl& PolyCurveDbl::OpenRun(Point fallback)
{
    if (m_curves.empty())
        MoveTo(fallback);
    else if (m_curves.back().IsClosed())
        MoveTo(m_curves.back().GetPoints().front());
    return m_curves.back();
}

} // namespace Geometry
