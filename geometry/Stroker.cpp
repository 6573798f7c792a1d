#include <geometry/Stroker.h>

#include <algorithm>
#include <cmath>

#include <geometry/stroke/StrokeDash.h>
#include <geometry/stroke/StrokeOutline.h>
#include <geometry/stroke/StrokePath.h>

namespace Geometry {

/// A pen with all that it needs to follow runs.
class PathStroker::Pen
{
public:
    void Set(const StrokeParameters& parameters)
    {
        const double tolerance =
            parameters.tolerance > 0.0 ? parameters.tolerance : 1e-3 * parameters.width;
        const auto precision = StrokePrecision::Make(0.5 * parameters.width, tolerance);
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
    constexpr double largest = 1e100; // beyond it squares would not be finite
    const double unit = parameters.dashUnit;
    const auto isUsable = [](double value) { return std::abs(value) <= largest; };
    const auto isUsableLength = [&](double value) { return isUsable(value * unit); };
    if (!(parameters.width > 0.0 && isUsable(parameters.width) &&
          isUsableLength(parameters.dashPhase)))
        return false;
    if (!std::all_of(parameters.dashes.begin(), parameters.dashes.end(), isUsableLength))
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
