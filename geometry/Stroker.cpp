#include <geometry/Stroker.h>

#include <geometry/stroke/StrokeDash.h>
#include <geometry/stroke/StrokeOutline.h>
#include <geometry/stroke/StrokePath.h>
#include <geometry/stroke/StrokePrecision.h>

namespace Geometry {

/// A pen with all that it needs to follow runs.
class PathStroker::Pen
{
public:
    void Set(const StrokeParameters& parameters)
    {
        const auto precision = StrokePrecision::Make(parameters);
        m_builder.SetPrecision(precision);
        m_outline.SetPen(parameters, precision);
        m_dash.SetPattern(parameters);
    }

    StrokePathBuilder& GetBuilder() noexcept { return m_builder; }

    void Draw(const StrokePath& path, PolyPolygonType<double>& out)
    {
        if (path.vertices.size() < 2) {
            if (path.isDot)
                m_outline.AddOpen(path.vertices, out);
        } else if (m_dash.IsDashed()) {
            m_dash.Draw(path, m_outline, out);
        } else if (path.closed) {
            m_outline.AddClosed(path.vertices, out);
        } else {
            m_outline.AddOpen(path.vertices, out);
        }
    }

private:
    StrokePathBuilder m_builder;
    StrokeOutline m_outline;
    StrokeDash m_dash;
};

PathStroker::PathStroker() : m_pen(std::make_unique<Pen>()) {}
PathStroker::~PathStroker() = default;
PathStroker::PathStroker(PathStroker&&) noexcept = default;
PathStroker& PathStroker::operator=(PathStroker&&) noexcept = default;

bool PathStroker::SetPen(const StrokeParameters& parameters)
{
    if (!CanDraw(parameters))
        return false;
    m_pen->Set(parameters);
    return true;
}

void PathStroker::Stroke(const CurveDbl& run, PolyPolygonType<double>& out)
{
    m_pen->Draw(m_pen->GetBuilder().Build(run), out);
}

void PathStroker::Stroke(std::span<const Point> points, bool closed, PolyPolygonType<double>& out)
{
    m_pen->Draw(m_pen->GetBuilder().Build(points, closed), out);
}

void StrokePolyCurve(const PolyCurveDbl& path, const StrokeParameters& parameters,
                     PolyPolygonType<double>& out)
{
    PathStroker stroker;
    if (!stroker.SetPen(parameters))
        return;
    for (const CurveDbl& curve : path.GetCurves())
        stroker.Stroke(curve, out);
}

void StrokePolyPolygon(const PolyPolygonType<double>& path, const StrokeParameters& parameters,
                       PolyPolygonType<double>& out)
{
    PathStroker stroker;
    if (!stroker.SetPen(parameters))
        return;
    for (std::size_t i = 0; i < path.GetPolygonCount(); ++i) {
        const auto polygon = path.GetPolygon(i);
        stroker.Stroke(polygon.points, polygon.closed, out);
    }
}

} // namespace Geometry
