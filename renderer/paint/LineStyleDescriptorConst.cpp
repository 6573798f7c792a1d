#include <renderer/paint/LineStyleDescriptorConst.h>

#include <algorithm>
#include <cmath>

#include <renderer/core/Hairline.h>
#include <renderer/paint/LineStyleStrokeHelper.h>
#include <renderer/paint/PressureProfile.h>

namespace Renderer {

namespace {

using Raster::AffineTransform;
using Transform = AffineTransform::Params;

/// The consolidated style without a line.
const Kernel::Consolidated<LineStyle>& GetNoLine()
{
    static const auto& none =
        *new Kernel::Consolidated<LineStyle>(LineStyle::Consolidate(LineStyle()));
    return none;
}

/// The largest factor of a pressure profile, at least 1.
double GetLargestPressure(const Kernel::Counted<const Geometry::CurveDbl>& pressure)
{
    if (!pressure)
        return 1.0;
    const auto box = pressure->GetBoundingBox();
    return box.IsValid() ? std::max(1.0, box.GetRect().bottom) : 1.0;
}

/// How far the stroke reaches beyond its path, in device pixels. Inside, closed runs do not reach
/// beyond it, but open ones are centred on it.
/// \param weight the effective weight
double GetReach(const LineStyleDescriptorConst& lineStyle, double weight)
{
    const double sides =
        lineStyle.GetStrokeAlignment() == LineStyleDescriptorConst::Outside ? 2.0 : 1.0;
    return std::max(std::abs(weight), LeastPenWidth) * sides *
           lineStyle.GetLineStyle()->GetReachPerWeight() *
           GetLargestPressure(lineStyle.GetPressure());
}

/// The factor from logical lengths to device lengths that strokes are built with.
double GetStrokeScale(const Transform& current)
{
    const double scale = AffineTransform::GetScale(current);
    return scale > 0.0 ? scale : 1.0;
}

Kernel::RectT<double> Grow(const Kernel::RectT<double>& rect, Geometry::Point by)
{
    if (rect.IsUnset())
        return rect;
    // Beyond what is ever drawn, yet finite, also where it is mapped. Not a number counts as more.
    constexpr double largest = 1e100;
    const Geometry::Point reach{std::min(largest, by.x), std::min(largest, by.y)};
    return {rect.left - reach.x, rect.top - reach.y, rect.right + reach.x, rect.bottom + reach.y};
}

/// Half the sides of the box of a mapped circle: the lengths of the rows of the matrix.
Geometry::Point GetMappedCircle(double radius, const Transform& map)
{
    return {radius * std::hypot(map.m00, map.m01), radius * std::hypot(map.m10, map.m11)};
}

} // namespace

LineStyleDescriptorConst::LineStyleDescriptorConst() : m_lineStyle(GetNoLine()) {}

LineStyleDescriptorConst::LineStyleDescriptorConst(double weight, bool resIndependent)
    : m_lineStyle(LineStyle::Consolidate(LineStyle(weight, resIndependent)))
{}

LineStyleDescriptorConst::LineStyleDescriptorConst(Kernel::Consolidated<LineStyle> lineStyle)
{
    SetLineStyle(std::move(lineStyle));
}

LineStyleDescriptorConst::LineStyleDescriptorConst(
    Kernel::Consolidated<LineStyle> lineStyle, Kernel::Counted<const Geometry::CurveDbl> pressure,
    bool behind, bool scale, StrokeAlignment alignment)
    : m_pressure(std::move(pressure)), m_behind(behind), m_scale(scale), m_alignment(alignment)
{
    SetLineStyle(std::move(lineStyle));
}

LineStyleDescriptorConst::~LineStyleDescriptorConst() = default;

const LineStyleDescriptorConst& LineStyleDescriptorConst::CreateNone()
{
    // Retained for good, so that even a Counted to it does no harm.
    static const auto& none =
        *new Kernel::Counted<const LineStyleDescriptorConst>(new LineStyleDescriptorConst);
    return *none;
}

void LineStyleDescriptorConst::SetLineStyle(Kernel::Consolidated<LineStyle> lineStyle)
{
    m_lineStyle = lineStyle ? std::move(lineStyle) : GetNoLine();
}

double LineStyleDescriptorConst::GetEffectiveWeight(const Transform& /*current*/,
                                                    const Transform& scalar,
                                                    const Transform& logToDevice) const
{
    double weight = m_lineStyle->GetWeight();
    if (!m_lineStyle->GetResIndependent())
        weight *= AffineTransform::GetScale(
            m_scale ? AffineTransform::Concatenate(scalar, logToDevice) : logToDevice);
    return std::isfinite(weight) ? weight : 0.0;
}

Kernel::RectT<double> LineStyleDescriptorConst::InflateBaseRect(const Kernel::RectT<double>& rect,
                                                                const Transform& current,
                                                                const Transform& scalar,
                                                                const Transform& logToDevice) const
{
    if (!IsLineStyleVisible())
        return rect;
    const double reach = GetReach(*this, GetEffectiveWeight(current, scalar, logToDevice));
    Transform inverse;
    const bool shows = AffineTransform::Invert(current, inverse);
    if (m_lineStyle->GetResIndependent())
        return shows ? Grow(rect, GetMappedCircle(reach + InflationMargin, inverse)) : rect;
    const double radius = reach / GetStrokeScale(current);
    const Geometry::Point margin =
        shows ? GetMappedCircle(InflationMargin, inverse) : Geometry::Point{};
    return Grow(rect, margin + Geometry::Point{radius, radius});
}

Kernel::RectT<double>
LineStyleDescriptorConst::InflateSpreadRect(const Kernel::RectT<double>& rect,
                                            const Transform& current, const Transform& scalar,
                                            const Transform& logToDevice) const
{
    if (!IsLineStyleVisible())
        return rect;
    const double reach = GetReach(*this, GetEffectiveWeight(current, scalar, logToDevice));
    const Geometry::Point margin{InflationMargin, InflationMargin};
    if (m_lineStyle->GetResIndependent())
        return Grow(rect, margin + Geometry::Point{reach, reach});
    return Grow(rect, margin + GetMappedCircle(reach / GetStrokeScale(current), current));
}

bool LineStyleDescriptorConst::IsPressureProfileRedundant(
    const Kernel::Counted<const Geometry::CurveDbl>& pressure)
{
    // A Bézier curve is constant exactly when its control points are.
    return !pressure ||
           std::ranges::all_of(pressure->GetPoints(), [](const Geometry::Point& point) {
               return std::abs(point.y - 1.0) <= 1e-6;
           });
}

void LineStyleDescriptorConst::OptimisePressureProfile()
{
    if (IsPressureProfileRedundant(m_pressure))
        m_pressure = {};
    else
        m_pressure = Kernel::MakeCounted<Geometry::CurveDbl>(SimplifyPressure(*m_pressure));
}

Kernel::Counted<const Geometry::PolyCurveDbl> LineStyleDescriptorConst::GetPolyCurveOutline(
    const Geometry::PolyCurveDbl& path, const Transform& current, const Transform& scalar,
    const Transform& logToDevice, double tolerance, Geometry::WindingOrderMode winding) const
{
    const double stretch = AffineTransform::GetLargestSingularValue(current);
    const StrokeFrame frame{current,   GetEffectiveWeight(current, scalar, logToDevice),
                            tolerance, stretch > 0.0 ? tolerance / stretch : tolerance,
                            false,     winding};
    return LineStyleStrokeHelper().ProduceOutline(path, *this, frame);
}

bool operator==(const LineStyleDescriptorConst& a, const LineStyleDescriptorConst& b)
{
    const bool samePressure =
        a.m_pressure == b.m_pressure ||
        (a.m_pressure && b.m_pressure && a.m_pressure->IsEqual(*b.m_pressure, 1e-6));
    return samePressure && a.m_lineStyle == b.m_lineStyle && a.m_behind == b.m_behind &&
           a.m_scale == b.m_scale && a.m_alignment == b.m_alignment;
}

Kernel::RectT<double> InflateRect(const Kernel::RectT<double>& rect,
                                  const LineStyleDescriptorConst& lineStyle,
                                  const Transform& current, const Transform& scalar)
{
    return lineStyle.InflateBaseRect(rect, current, scalar);
}

} // namespace Renderer
