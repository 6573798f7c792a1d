#include <geometry/Stroker.h>

#include <algorithm>
#include <cmath>

#include <geometry/stroke/StrokeDash.h>
#include <geometry/stroke/StrokeOutline.h>
#include <geometry/stroke/StrokePath.h>

namespace Geometry {
namespace {

/// One pen with all that it needs to follow runs.
class Stroker
{
public:
    Stroker(const StrokeParameters& parameters, PolyPolygonType<double>& out)
        : m_precision(StrokePrecision::Make(0.5 * parameters.width, parameters.tolerance)),
          m_builder(m_precision),
          m_outline(parameters, m_precision, out),
          m_dash(parameters.dashes, parameters.dashPhase)
    {}

    template<class Run>
    void Draw(const Run& run)
    {
        const StrokePath& path = m_builder.Build(run);
        if (path.vertices.size() < 2) {
            if (path.isDot)
                m_outline.AddOpen(path.vertices);
        } else if (m_dash.IsDashed()) {
            m_dash.Draw(path, m_outline);
        } else if (path.closed) {
            m_outline.AddClosed(path.vertices);
        } else {
            m_outline.AddOpen(path.vertices);
        }
    }

private:
    StrokePrecision m_precision;
    StrokePathBuilder m_builder;
    StrokeOutline m_outline;
    StrokeDash m_dash;
};

/// Whether the pen can draw at all; fills in the tolerance.
bool Check(StrokeParameters& parameters)
{
    constexpr double largest = 1e100; // beyond it squares would not be finite
    const auto isUsable = [](double value) { return std::abs(value) <= largest; };
    if (!(parameters.width > 0.0 && isUsable(parameters.width) && isUsable(parameters.dashPhase)))
        return false;
    if (!std::all_of(parameters.dashes.begin(), parameters.dashes.end(), isUsable))
        return false;
    if (!(parameters.tolerance > 0.0))
        parameters.tolerance = 1e-3 * parameters.width;
    return true;
}

} // namespace

void StrokePolyCurve(const PolyCurveDbl& path, const StrokeParameters& parameters,
                     PolyPolygonType<double>& out)
{
    StrokeParameters checked = parameters;
    if (!Check(checked))
        return;
    Stroker stroker(checked, out);
    for (const CurveDbl& curve : path.GetCurves())
        stroker.Draw(curve);
}

void StrokePolyPolygon(const PolyPolygonType<double>& path, const StrokeParameters& parameters,
                       PolyPolygonType<double>& out)
{
    StrokeParameters checked = parameters;
    if (!Check(checked))
        return;
    Stroker stroker(checked, out);
    for (std::size_t i = 0; i < path.GetPolygonCount(); ++i)
        stroker.Draw(path.GetPolygon(i));
}

} // namespace Geometry
