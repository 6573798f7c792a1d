#include <renderer/paint/LineStyleStrokeHelper.h>

#include <algorithm>
#include <ranges>
#include <span>

#include <geometry/BoundedTolerance.h>
#include <geometry/CombineRegions.h>
#include <renderer/core/MidPixelSnap.h>

namespace Renderer {

namespace {

using Kernel::Counted;
using Raster::AffineTransform;
using PolyPolygon = LineStyleStrokeHelper::PolyPolygon;

/// Gives a stroker the runs of a path, or of polylines, as they are or through a map.
class Strokes
{
public:
    Strokes(Geometry::PathStroker& stroker, PolyPolygon& out) : m_stroker(stroker), m_out(out) {}

    template<class... Map>
    void Add(const Geometry::CurveDbl& run, const Map&... map) const
    {
        if constexpr (sizeof...(map) > 0)
            m_stroker.StrokeMapped(run, map..., m_out);
        else
            m_stroker.Stroke(run, m_out);
    }
    template<class... Map>
    void Add(const PolyPolygon::View& polyline, const Map&... map) const
    {
        if constexpr (sizeof...(map) > 0)
            m_stroker.StrokeMapped(polyline.points, false, map..., m_out);
        else
            m_stroker.Stroke(polyline.points, false, m_out);
    }
    void AddSnapped(const Geometry::CurveDbl& run, const AffineTransform::Params& map) const
    {
        m_stroker.Stroke(SnapToPixelMiddles(run, map), m_out);
    }
    void AddSnapped(const PolyPolygon::View& polyline, const AffineTransform::Params& map) const
    {
        m_stroker.Stroke(SnapToPixelMiddles(polyline.points, false, map), false, m_out);
    }

private:
    Geometry::PathStroker& m_stroker;
    PolyPolygon& m_out;
};

/// A run, or a polyline as one, mapped to where its stroke is built.
Geometry::CurveDbl MakeRun(const Geometry::CurveDbl& run)
{
    return run;
}
Geometry::CurveDbl MakeRun(const PolyPolygon::View& polyline)
{
    Geometry::CurveDbl run;
    for (const Geometry::Point point : polyline.points)
        run.IsEmpty() ? run.MoveTo(point) : run.LineTo(point);
    return run;
}

/// Whether a stroke is drawn as an outline of curves.
bool IsOutlined(const LineStyleDescriptorConst& lineStyle)
{
    return lineStyle.GetLineStyle()->GetType() == LineStyle::VectorBrush ||
           !LineStyleDescriptorConst::IsPressureProfileRedundant(lineStyle.GetPressure());
}

/// Whether a resolution-independent stroke goes to pixel middles.
bool IsSnapped(const Geometry::StrokeParameters& pen, const StrokeFrame& frame)
{
    return frame.roundMidPixel && IsHairline(pen.width);
}

bool IsClosed(const Geometry::CurveDbl& run)
{
    return run.IsClosed();
}

bool IsAligned(const Geometry::PolyCurveDbl& path, const LineStyleDescriptorConst& lineStyle)
{
    return lineStyle.GetStrokeAlignment() != LineStyleDescriptorConst::Centre &&
           std::ranges::any_of(path.GetCurves(), IsClosed);
}

/// What is to be done with a stroke of twice the width and the filled path.
Geometry::RegionOperation GetOperation(const LineStyleDescriptorConst& lineStyle)
{
    return lineStyle.GetStrokeAlignment() == LineStyleDescriptorConst::Inside
               ? Geometry::RegionOperation::Intersect
               : Geometry::RegionOperation::Subtract;
}

/// Makes an aligned stroke, of polygons or of curves.
/// \tparam Stroke appends the centred strokes of runs: (runs, frame, shape), false for none.
/// \tparam Combine appends to \p out what is kept of \p wide, the strokes of closed runs of twice
/// the
///         width; false where that is too much work.
template<class Shape, class Stroke, class Combine>
bool AlignStroke(const Geometry::PolyCurveDbl& path, const StrokeFrame& frame, Shape& wide,
                 const Stroke& stroke, const Combine& combine, Shape& out)
{
    const auto isOpen = [](const Geometry::CurveDbl& run) { return !run.IsClosed(); };
    auto closedRuns = path.GetCurves() | std::views::filter(IsClosed);
    auto openRuns = path.GetCurves() | std::views::filter(isOpen);
    StrokeFrame wideFrame = frame;
    wideFrame.penScale *= 2.0;
    wideFrame.roundMidPixel = false;
    if (!stroke(closedRuns, wideFrame, wide))
        return false;
    if (!combine())
        stroke(closedRuns, frame, out);
    stroke(openRuns, frame, out);
    return true;
}

/// A path as it is filled, in the units of its stroke.
void Flatten(const Geometry::PolyCurveDbl& path, bool onDevice, const StrokeFrame& frame,
             PolyPolygon& out)
{
    if (!onDevice) {
        path.ExpandAdaptive(frame.logicalTolerance, out);
        return;
    }
    PolyPolygon logical;
    path.ExpandAdaptive(frame.logicalTolerance, logical);
    for (std::size_t i = 0; i < logical.GetPolygonCount(); ++i) {
        out.BeginPolygon();
        for (const Geometry::Point point : logical.GetPolygon(i).points)
            out.AddPoint(frame.current.Map(point));
    }
}

} // namespace

LineStyleStrokeHelper::Transform
LineStyleStrokeHelper::GetShapeTransform(const LineStyleDescriptorConst& lineStyle,
                                         const StrokeFrame& frame)
{
    return lineStyle.GetLineStyle()->GetResIndependent() ? Transform{} : frame.current;
}

Geometry::StrokeParameters
LineStyleStrokeHelper::ResolveEnds(const LineStyleDescriptorConst& lineStyle,
                                   const StrokeFrame& frame)
{
    const LineStyle& style = *lineStyle.GetLineStyle();
    const bool onDevice = style.GetResIndependent();
    const double scale = onDevice ? 1.0 : AffineTransform::GetScale(frame.current);
    Geometry::StrokeParameters pen;
    pen.width = frame.weight / (scale > 0.0 ? scale : 1.0);
    pen.cap = static_cast<Geometry::StrokeCap>(style.GetCap());
    pen.capLength = frame.capLength;
    pen.join = static_cast<Geometry::StrokeJoin>(style.GetJoin());
    pen.mitreLimit = style.GetMiterLimit();
    pen.tolerance = onDevice ? frame.deviceTolerance : frame.logicalTolerance;
    if (style.GetType() == LineStyle::Dashed) {
        pen.dashes = style.GetDashPattern();
        pen.dashPhase = style.GetDashPhase();
        pen.dashUnit = pen.width / style.GetWeight();
    }
    pen.width *= frame.penScale;
    return pen;
}

const Geometry::WidthProfile*
LineStyleStrokeHelper::PostProcessForPressure(const LineStyleDescriptorConst& lineStyle)
{
    const auto& pressure = lineStyle.GetPressure();
    if (LineStyleDescriptorConst::IsPressureProfileRedundant(pressure))
        return nullptr;
    if (m_pressure != pressure) {
        m_profile = Geometry::WidthProfile(*pressure);
        m_pressure = pressure;
    }
    return &m_profile;
}

template<class Runs>
bool LineStyleStrokeHelper::OutlineRuns(Runs&& runs, const LineStyleDescriptorConst& lineStyle,
                                        const StrokeFrame& frame, Geometry::PolyCurveDbl& out)
{
    const Geometry::StrokeParameters pen = ResolveEnds(lineStyle, frame);
    if (!m_outliner.SetPen(pen, PostProcessForPressure(lineStyle)))
        return false;
    const bool onDevice = lineStyle.GetLineStyle()->GetResIndependent();
    for (const auto& run : runs) {
        if (!onDevice) {
            m_outliner.Outline(MakeRun(run), out);
        } else if (IsSnapped(pen, frame)) {
            m_outliner.Outline(SnapToPixelMiddles(MakeRun(run), frame.current), out);
        } else {
            Geometry::CurveDbl mapped = MakeRun(run);
            mapped.Transform([&frame](Geometry::Point p) { return frame.current.Map(p); });
            m_outliner.Outline(mapped, out);
        }
    }
    return true;
}

template<class Runs>
bool LineStyleStrokeHelper::StrokeRuns(Runs&& runs, const LineStyleDescriptorConst& lineStyle,
                                       const StrokeFrame& frame, PolyPolygon& out)
{
    if (IsOutlined(lineStyle)) {
        // Half of the tolerance is for the outline, half for flattening it.
        StrokeFrame fine = frame;
        fine.deviceTolerance *= 0.5;
        fine.logicalTolerance *= 0.5;
        Geometry::PolyCurveDbl outline;
        if (!OutlineRuns(runs, lineStyle, fine, outline))
            return false;
        const double tolerance = ResolveEnds(lineStyle, fine).tolerance;
        outline.ExpandAdaptive(Geometry::GetBoundedTolerance(outline, tolerance), out);
        return true;
    }
    const Geometry::StrokeParameters pen = ResolveEnds(lineStyle, frame);
    if (!m_stroker.SetPen(pen))
        return false;
    const Strokes strokes(m_stroker, out);
    const bool onDevice = lineStyle.GetLineStyle()->GetResIndependent();
    const bool snaps = onDevice && IsSnapped(pen, frame);
    const auto toDevice = [&frame](Geometry::Point p) { return frame.current.Map(p); };
    for (const auto& run : runs) {
        if (snaps)
            strokes.AddSnapped(run, frame.current);
        else if (onDevice)
            strokes.Add(run, toDevice);
        else
            strokes.Add(run);
    }
    return true;
}

bool LineStyleStrokeHelper::ProducePolygons(const Geometry::PolyCurveDbl& path,
                                            const LineStyleDescriptorConst& lineStyle,
                                            const StrokeFrame& frame, PolyPolygon& out)
{
    const auto stroke = [&](auto&& runs, const StrokeFrame& with, PolyPolygon& to) {
        return StrokeRuns(runs, lineStyle, with, to);
    };
    if (!IsAligned(path, lineStyle))
        return stroke(path.GetCurves(), frame, out);
    m_wide.Clear();
    const auto combine = [&] {
        m_shape.Clear();
        Flatten(path, lineStyle.GetLineStyle()->GetResIndependent(), frame, m_shape);
        return Geometry::CombineRegions(m_wide, Geometry::WindingOrderMode::NonZero, m_shape,
                                        frame.winding, GetOperation(lineStyle), out);
    };
    return AlignStroke(path, frame, m_wide, stroke, combine, out);
}

bool LineStyleStrokeHelper::ProducePolygons(const PolyPolygon& polylines,
                                            const LineStyleDescriptorConst& lineStyle,
                                            const StrokeFrame& frame, PolyPolygon& out)
{
    const auto views =
        std::views::iota(std::size_t(0), polylines.GetPolygonCount()) |
        std::views::transform([&](std::size_t i) { return polylines.GetPolygon(i); });
    return StrokeRuns(views, lineStyle, frame, out);
}

bool LineStyleStrokeHelper::ProducePolygon(const Geometry::CurveDbl& run,
                                           const LineStyleDescriptorConst& lineStyle,
                                           const StrokeFrame& frame, PolyPolygon& out)
{
    return ProducePolygons(Geometry::PolyCurveDbl(run), lineStyle, frame, out);
}

Counted<const Geometry::PolyCurveDbl>
LineStyleStrokeHelper::ProduceOutline(const Geometry::PolyCurveDbl& path,
                                      const LineStyleDescriptorConst& lineStyle,
                                      const StrokeFrame& frame)
{
    using Outline = Geometry::PolyCurveDbl;
    auto outline = Kernel::MakeCounted<Outline>();
    const auto stroke = [&](auto&& runs, const StrokeFrame& with, Outline& to) {
        return OutlineRuns(runs, lineStyle, with, to);
    };
    Outline wide;
    const auto combine = [&] {
        Outline shape = path;
        if (lineStyle.GetLineStyle()->GetResIndependent())
            shape.Transform([&frame](Geometry::Point p) { return frame.current.Map(p); });
        return Geometry::CombineRegions(wide, Geometry::WindingOrderMode::NonZero, shape,
                                        frame.winding, GetOperation(lineStyle),
                                        ResolveEnds(lineStyle, frame).tolerance, *outline);
    };
    if (!lineStyle.CanProvidePolyCurveOutline())
        return {};
    if (!(IsAligned(path, lineStyle) ? AlignStroke(path, frame, wide, stroke, combine, *outline)
                                     : stroke(path.GetCurves(), frame, *outline)))
        return {};
    if (lineStyle.GetLineStyle()->GetResIndependent()) {
        Transform inverse;
        if (!AffineTransform::Invert(frame.current, inverse))
            return {};
        outline->Transform([&inverse](Geometry::Point p) { return inverse.Map(p); });
    }
    return outline;
}

} // namespace Renderer
