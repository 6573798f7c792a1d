#include <geometry/EllipticArc.h>

#include <cmath>
#include <numbers>

namespace Geometry {
namespace {

/// The frame of an ellipse: maps the unit circle onto it.
struct EllipseFrame
{
    Point centre;
    Point axisX; // image of (1, 0)
    Point axisY; // image of (0, 1)

    Point Map(Point unit) const { return centre + unit.x * axisX + unit.y * axisY; }
};

struct CentreArc
{
    EllipseFrame frame;
    double startAngle = 0.0;
    double sweepAngle = 0.0; // signed
};

/// Endpoint to centre parameterisation (SVG 1.1, F.6.5 and F.6.6). The start and end are brought
/// into the unit circle's frame, where the centre lies on their bisector.
CentreArc ToCentre(Point start, const EllipticArc& arc)
{
    const double cosine = std::cos(arc.rotation), sine = std::sin(arc.rotation);
    double radiusX = std::abs(arc.radiusX), radiusY = std::abs(arc.radiusY);
    const Point half = 0.5 * (start - arc.end);
    Point unit{(cosine * half.x + sine * half.y) / radiusX,
               (cosine * half.y - sine * half.x) / radiusY};
    const double distance = std::hypot(unit.x, unit.y); // half the chord on the unit circle
    double toCentre = 0.0;                              // per unit of the half chord
    if (distance > 1.0) {
        radiusX *= distance;
        radiusY *= distance;
        unit = unit * (1.0 / distance);
    } else {
        toCentre = std::sqrt((1.0 - distance) * (1.0 + distance)) / distance;
        if (arc.largeArc == arc.sweep)
            toCentre = -toCentre;
    }
    const Point unitCentre{toCentre * unit.y, -toCentre * unit.x};

    CentreArc result;
    result.frame.axisX = {cosine * radiusX, sine * radiusX};
    result.frame.axisY = {-sine * radiusY, cosine * radiusY};
    result.frame.centre = 0.5 * (start + arc.end);
    result.frame.centre = result.frame.Map(unitCentre);
    const Point first = unit - unitCentre;
    const Point last = -1.0 * unit - unitCentre;
    result.startAngle = std::atan2(first.y, first.x);
    double sweep = std::atan2(last.y, last.x) - result.startAngle;
    if (arc.sweep && sweep <= 0.0)
        sweep += 2.0 * std::numbers::pi;
    else if (!arc.sweep && sweep >= 0.0)
        sweep -= 2.0 * std::numbers::pi;
    result.sweepAngle = sweep;
    return result;
}

template<class Pen>
void Append(Pen& pen, Point start, const EllipticArc& arc)
{
    if (start == arc.end)
        return;
    const double radii = arc.radiusX * arc.radiusY;
    const bool usable = std::isfinite(radii) && radii != 0.0 && std::isfinite(arc.rotation) &&
                        std::isfinite(start.x + start.y + arc.end.x + arc.end.y);
    const CentreArc centre = usable ? ToCentre(start, arc) : CentreArc();
    const Point check = centre.frame.centre + centre.frame.axisX + centre.frame.axisY;
    if (!usable || !std::isfinite(check.x + check.y + centre.sweepAngle)) {
        pen.LineTo(arc.end);
        return;
    }
    // A hair less than the exact quotient, so that half turns stay two pieces despite rounding.
    const double quarters = std::abs(centre.sweepAngle) / (0.5 * std::numbers::pi);
    const int count = std::max(1, static_cast<int>(std::ceil(quarters - 1e-9)));
    const double step = centre.sweepAngle / count;
    const double handle = std::copysign(GetArcHandleLength(std::abs(step)), step);
    Point from{std::cos(centre.startAngle), std::sin(centre.startAngle)};
    for (int i = 1; i <= count; ++i) {
        const double angle = centre.startAngle + i * step;
        const Point to{std::cos(angle), std::sin(angle)};
        const Point control1 =
            centre.frame.Map({from.x - handle * from.y, from.y + handle * from.x});
        const Point control2 = centre.frame.Map({to.x + handle * to.y, to.y - handle * to.x});
        pen.CurveTo(control1, control2, i == count ? arc.end : centre.frame.Map(to));
        from = to;
    }
}

} // namespace

double GetArcHandleLength(double angle) noexcept
{
    const double quarters = angle / (0.5 * std::numbers::pi);
    // For a quarter this gives 0.5519150244935, the minimax solution for the radius.
    constexpr double shortening = 6.6949e-4;
    const double square = quarters * quarters;
    return 4.0 / 3.0 * std::tan(0.25 * angle) * (1.0 - shortening * square * square);
}

void AppendEllipticArc(CurveDbl& curve, const EllipticArc& arc)
{
    Append(curve, curve.GetPoints().back(), arc);
}

void AppendEllipticArc(PolyCurveDbl& path, Point start, const EllipticArc& arc)
{
    Append(path, start, arc);
}

} // namespace Geometry
