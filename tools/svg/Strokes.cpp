#include <algorithm>
#include <cmath>
#include <numeric>

#include <geometry/PathMeasure.h>

#include "PaintServers.h"

namespace Svg {

namespace {

using Renderer::LineStyle;
using Renderer::LineStyleDescriptorConst;

/// More dashes than this on one path are solid to the eye, and a way to make a program hang.
constexpr double MaxDashes = 1e6;

LineStyle::LineCap MapCap(LineCap cap) noexcept
{
    switch (cap) {
    case LineCap::Round:
        return LineStyle::RoundCap;
    case LineCap::Square:
        return LineStyle::SquareCap;
    case LineCap::Butt:
        break;
    }
    return LineStyle::ButtCap;
}

LineStyle::LineJoin MapJoin(LineJoin join) noexcept
{
    switch (join) {
    case LineJoin::Round:
        return LineStyle::RoundJoin;
    case LineJoin::Bevel:
        return LineStyle::BevelJoin;
    case LineJoin::Mitre:
        break;
    }
    return LineStyle::MitreJoin;
}

/// An upper bound of a path's length: that of its control polygons.
double BoundLength(const Geometry::PolyCurveDbl& path)
{
    double length = 0.0;
    for (const Geometry::CurveDbl& curve : path.GetCurves()) {
        const auto& points = curve.GetPoints();
        for (std::size_t i = 1; i < points.size(); ++i)
            length += std::hypot(points[i].x - points[i - 1].x, points[i].y - points[i - 1].y);
    }
    return length;
}

/// User units per unit of the dashes. A length of 0 makes dashes endless (SVG 2, 9.6.1).
double FindDashScale(const Geometry::PolyCurveDbl& shape, double pathLength)
{
    return pathLength < 0.0 ? 1.0 : Geometry::PathMeasure(shape).GetLength() / pathLength;
}

/// The dashes in user units, or none for a solid line.
std::vector<double> ResolveDashes(const Style& style, const LengthContext& context, double scale,
                                  const Geometry::PolyCurveDbl& shape, Notices& notices)
{
    std::vector<double> dashes;
    for (const Length& dash : *style.dashes)
        dashes.push_back(scale * dash.Resolve(context, LengthAxis::Diagonal));
    const double sum = std::accumulate(dashes.begin(), dashes.end(), 0.0);
    if (!(sum > 0.0) || !std::isfinite(sum))
        return {};
    if (BoundLength(shape) / sum * static_cast<double>(dashes.size()) > MaxDashes) {
        notices.Add("a line of more than a million dashes is drawn solid");
        return {};
    }
    return dashes;
}

} // namespace

LineStyleDescriptorConst MakeLineStyle(const Style& style, const LengthContext& context,
                                       const Geometry::PolyCurveDbl& shape, double pathLength,
                                       Notices& notices)
{
    const double width = style.strokeWidth.Resolve(context, LengthAxis::Diagonal);
    if (!(width > 0.0) || !std::isfinite(width))
        return LineStyleDescriptorConst::CreateNone();
    LineStyle line(width);
    line.SetCap(MapCap(style.lineCap));
    line.SetJoin(MapJoin(style.lineJoin));
    line.SetMiterLimit(style.mitreLimit);
    if (style.dashes) {
        const double scale = FindDashScale(shape, pathLength);
        line.SetDashPattern(ResolveDashes(style, context, scale, shape, notices));
        if (!line.GetDashPattern().empty())
            line.SetDashPhase(scale * style.dashOffset.Resolve(context, LengthAxis::Diagonal));
    }
    return {LineStyle::Consolidate(line),
            {},
            style.IsBelow(PaintLayer::Stroke, PaintLayer::Fill),
            true,
            LineStyleDescriptorConst::Centre};
}

} // namespace Svg
