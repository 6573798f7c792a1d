#include <geometry/outline/OffsetFitter.h>

#include <algorithm>
#include <cmath>

#include <geometry/outline/CubicFit.h>

namespace Geometry {
namespace {

/// Whether the samples show all of a part: beside a cusp, nearly all of the turn may lie between
/// two of them.
bool IsEven(const OffsetPart& part, const CubicFit::Samples& samples, double tolerance)
{
    constexpr double most = 3.0 / double(CubicFit::Count + 1); // of the whole turn in one step
    const double whole =
        std::acos(std::clamp(Dot(part.start.direction, part.end.direction), -1.0, 1.0));
    const auto isStepEven = [&](const CurveSample& a, const CurveSample& b) {
        const double turn = std::abs(Cross(a.direction, b.direction));
        return turn <= most * whole || Length(b.point - a.point) * turn <= 8.0 * tolerance;
    };
    for (std::size_t i = 0; i + 1 < samples.size(); ++i)
        if (!isStepEven(samples[i], samples[i + 1]))
            return false;
    return isStepEven(part.start, samples.front()) && isStepEven(samples.back(), part.end);
}

/// Where a part whose fit strays by \p excess tolerances is cut: so that it becomes as many pieces
/// of the same turn as the sixth power of their length asks for.
double FindCut(const Offset& offset, const OffsetPart& part, double excess)
{
    const double count =
        std::clamp(std::ceil(std::pow(std::min(excess, 1e6), 1.0 / 6.0)), 2.0, 4.0);
    const Point in = offset.GetTangent(part.from), out = offset.GetTangent(part.to);
    const double angle = std::atan2(Cross(in, out), Dot(in, out));
    if (offset.GetCubic() && std::abs(angle) > 0.05) {
        const double t = offset.GetCubic()->hodograph.FindDirection(Rotate(in, angle / count),
                                                                    part.from, part.to);
        if (t > 0.0)
            return t;
    }
    return part.from + (part.to - part.from) / count;
}

} // namespace

void OffsetFitter::Add(OutlineSide& side, const Offset& offset, double from, double to,
                       bool forward)
{
    // Where numbers are coarser than the tolerance, nothing can be better than they are.
    m_finest = std::max(m_tolerance, FinestShare * offset.GetMagnitude());
    m_left = std::min(MostPartsOfOne, m_budget);
    m_budget -= m_left;
    AddPart(side, offset,
            {from, to, offset.Sample(from, forward), offset.Sample(to, forward), forward}, 0);
    m_budget += m_left;
}

/// Adds a part of an offset, from the end of the side, in as many cubics as it takes.
void OffsetFitter::AddPart(OutlineSide& side, const Offset& offset, const OffsetPart& part,
                           int depth)
{
    if (m_left == 0) {
        side.LineTo(part.end.point);
        return;
    }
    --m_left;
    const double tolerance = m_finest;
    CubicFit::Samples samples;
    double bulge = 0.0, extent = 0.0;
    const Point chord = part.end.point - part.start.point;
    const double length = Length(chord);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] =
            offset.Sample(std::lerp(part.from, part.to, CubicFit::GetFraction(i)), part.forward);
        const Point step = samples[i].point - part.start.point;
        extent = std::max(extent, Length(step));
        bulge = std::max(bulge, std::abs(Cross(chord, step)));
    }
    const bool isEven = IsEven(part, samples, tolerance);
    const bool isStraight = isEven && bulge <= 0.1 * tolerance * length &&
                            Dot(part.start.direction, chord) > 0.0 &&
                            Dot(part.end.direction, chord) > 0.0;
    if (isStraight || std::max(extent, length) <= 0.5 * tolerance || depth > 40) {
        side.LineTo(part.end.point);
        return;
    }
    double excess = 2.0;
    if (isEven) {
        const CubicFit fit(part.start, part.end, samples, 0.25 * tolerance);
        if (fit.GetError() <= tolerance) {
            side.CubicTo(fit.GetControl1(), fit.GetControl2(), part.end.point);
            return;
        }
        excess = fit.GetError() / tolerance;
    }
    const double t = FindCut(offset, part, excess);
    const CurveSample middle = offset.Sample(t, part.forward);
    AddPart(side, offset, {part.from, t, part.start, middle, part.forward}, depth + 1);
    AddPart(side, offset, {t, part.to, middle, part.end, part.forward}, depth + 1);
}

} // namespace Geometry
