#include <geometry/outline/CurveOutline.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include <geometry/EllipticArc.h>

namespace Geometry {
namespace {

/// The share of coordinates and radii that is as good as rounding.
constexpr double Finest = 1e-13;

/// A direction turned to the left by an angle.
Point Rotate(Point a, double angle)
{
    const double cosine = std::cos(angle), sine = std::sin(angle);
    return {cosine * a.x - sine * a.y, sine * a.x + cosine * a.y};
}

double GetLargest(Point a)
{
    return std::max(std::abs(a.x), std::abs(a.y));
}

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

void CurveOutline::SetPen(const StrokeParameters& parameters, const StrokePrecision& precision,
                          const WidthProfile* profile) noexcept
{
    m_radius = precision.radius;
    m_tolerance = 0.9 * precision.tolerance;
    m_shortest = precision.shortest;
    m_cap = parameters.cap;
    m_join = parameters.join;
    m_joinRule = {parameters, precision};
    m_profile = profile;
    m_budget = 1 << 22;
}

void CurveOutline::AddOpen(const OutlinePath& path, std::span<const OutlinePiece> pieces,
                           PolyCurveDbl& out)
{
    AddSide(m_left, 1.0, path, pieces, false);
    AddSide(m_right, -1.0, path, pieces, false);
    const OutlinePiece& first = pieces.front();
    const OutlinePiece& last = pieces.back();
    AddCap(m_left, last.end, last.out, GetRadius(path, last, last.to));
    m_left.AddReversed(m_right);
    AddCap(m_left, first.start, -1.0 * first.in, GetRadius(path, first, first.from));
    out.AddCurve(m_left.MakeRun());
}

void CurveOutline::AddClosed(const OutlinePath& path, std::span<const OutlinePiece> pieces,
                             PolyCurveDbl& out)
{
    AddSide(m_left, 1.0, path, pieces, true);
    out.AddCurve(m_left.MakeRun());
    AddSide(m_right, -1.0, path, pieces, true);
    m_right.Reverse();
    out.AddCurve(m_right.MakeRun());
}

void CurveOutline::AddDot(const OutlinePath& path, const OutlinePiece& piece, PolyCurveDbl& out)
{
    const double radius = GetRadius(path, piece, piece.from);
    if (m_cap == StrokeCap::Butt)
        return;
    m_left.Clear(m_shortest);
    for (const double sign : {1.0, -1.0}) {
        m_left.LineTo(piece.start + sign * radius * Normal(piece.in));
        AddCap(m_left, piece.start, sign * piece.in, radius);
    }
    out.AddCurve(m_left.MakeRun());
}

double CurveOutline::GetRadius(const OutlinePath& path, const OutlinePiece& piece, double t) const
{
    return Offset(path, piece, m_radius, m_profile).GetRadius(t).factor;
}

/// \param sign 1 for the left side, -1 for the right.
void CurveOutline::AddSide(OutlineSide& side, double sign, const OutlinePath& path,
                           std::span<const OutlinePiece> pieces, bool closed)
{
    side.Clear(m_shortest);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const Offset offset(path, pieces[i], sign * m_radius, m_profile);
        if (i > 0 || closed)
            AddJoint(side, sign, path, i > 0 ? pieces[i - 1] : pieces.back(), pieces[i]);
        else
            side.LineTo(offset.Sample(pieces[i].from, true).point);
        AddPiece(side, offset);
    }
    const OutlinePiece& last = pieces.back();
    if (!closed)
        side.LineTo(Offset(path, last, sign * m_radius, m_profile).Sample(last.to, true).point);
    if (side.IsInFan())
        side.CloseFan(last.end);
}

/// Adds the pen's ends along a piece, cut where they turn back. \pre the side has reached its
/// start.
void CurveOutline::AddPiece(OutlineSide& side, const Offset& offset)
{
    const OutlinePiece& piece = offset.GetPiece();
    if (IsPlain(piece)) {
        if (side.IsInFan())
            side.CloseFan(piece.start);
        return;
    }
    double from = piece.from;
    if (offset.GetCubic()) {
        // Between two extrema of the curvature, a pen of one width turns back once at most; one of
        // varying width is looked at more closely.
        const auto forwardness = [&](double t) { return offset.GetForwardness(t); };
        const double margin = 1e-6 * (piece.to - piece.from);
        double low = piece.from + margin;
        double before = forwardness(low);
        const auto search = [&](double high) {
            if (!(high > low))
                return;
            const double after = forwardness(high);
            if (before * after < 0.0) {
                const double turn = Bisect(forwardness, low, high);
                AddPart(side, offset, from, turn);
                from = turn;
            }
            low = high;
            before = after;
        };
        const double end = piece.to - margin;
        const int steps = m_profile ? 8 : 1;
        const SignChanges<5>& extrema = offset.GetCubic()->curvatureExtrema;
        const double* next = extrema.begin();
        for (int i = 1; i <= steps; ++i) {
            const double limit = i == steps ? end : std::lerp(piece.from, end, double(i) / steps);
            for (; next != extrema.end() && *next < limit; ++next)
                search(*next);
            search(limit);
        }
    }
    AddPart(side, offset, from, piece.to);
}

/// Adds the pen's ends over a part where they run one way.
void CurveOutline::AddPart(OutlineSide& side, const Offset& offset, double from, double to)
{
    const bool forward = offset.GetForwardness(0.5 * (from + to)) >= 0.0;
    if (!forward) {
        AddFan(side, offset, from, to);
        return;
    }
    if (side.IsInFan())
        side.CloseFan(offset.GetPoint(from));
    AddOffset(side, offset, {from, to, offset.Sample(from, true), offset.Sample(to, true), true},
              0);
}

void CurveOutline::AddFan(OutlineSide& side, const Offset& offset, double from, double to)
{
    const auto open = [&](double t) {
        side.OpenFan(offset.GetPoint(t), offset.GetTangent(t), side.GetEnd());
    };
    const auto add = [&](double low, double high) {
        AddOffset(side, offset,
                  {low, high, offset.Sample(low, false), offset.Sample(high, false), false}, 0);
    };
    if (!side.IsInFan())
        open(from);
    if (!side.FanReaches(offset.GetTangent(to))) {
        const Point across = (offset.IsLeft() ? 1.0 : -1.0) * Normal(side.GetFanTangent());
        const double t = offset.GetCubic()->hodograph.FindDirection(across, from, to);
        if (t > from)
            add(from, t);
        from = std::max(t, from);
        side.CloseFan(offset.GetPoint(from));
        open(from);
    }
    add(from, to);
}

/// Adds a part of an offset, from the end of the side, in as many cubics as it takes.
void CurveOutline::AddOffset(OutlineSide& side, const Offset& offset, const OffsetPart& part,
                             int depth)
{
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
    // Where coordinates are coarser than the tolerance, nothing can be better than they are.
    const double tolerance =
        std::max(m_tolerance, Finest * (GetLargest(part.start.point) + std::abs(m_radius)));
    const bool isStraight = bulge <= 0.1 * tolerance * length &&
                            Dot(part.start.direction, chord) > 0.0 &&
                            Dot(part.end.direction, chord) > 0.0;
    if (isStraight || std::max(extent, length) <= 0.5 * tolerance || depth > 40 || m_budget == 0) {
        side.LineTo(part.end.point);
        return;
    }
    double excess = 2.0;
    if (IsEven(part, samples, tolerance)) {
        const CubicFit fit(part.start, part.end, samples, 0.25 * tolerance);
        if (fit.GetError() <= tolerance) {
            side.CubicTo(fit.GetControl1(), fit.GetControl2(), part.end.point);
            --m_budget;
            return;
        }
        excess = fit.GetError() / tolerance;
    }
    const double t = FindCut(offset, part, excess);
    const CurveSample middle = offset.Sample(t, part.forward);
    AddOffset(side, offset, {part.from, t, part.start, middle, part.forward}, depth + 1);
    AddOffset(side, offset, {t, part.to, middle, part.end, part.forward}, depth + 1);
}

/// Leads a side from the end of one piece to the start of the next.
void CurveOutline::AddJoint(OutlineSide& side, double sign, const OutlinePath& path,
                            const OutlinePiece& before, const OutlinePiece& after)
{
    const Point in = before.out, out = after.in, vertex = after.start;
    const double radius = GetRadius(path, after, after.from);
    const double radiusBefore = m_profile ? GetRadius(path, before, before.to) : radius;
    const Point from = vertex + (sign * radius) * Normal(in);
    const Point to = vertex + (sign * radius) * Normal(out);
    const Point arrival = vertex + (sign * radiusBefore) * Normal(in);
    if (IsSameDirection(in, out)) {
        side.LineTo(arrival);
        side.LineTo(to);
        return;
    }
    if (side.IsInFan()) {
        side.LineTo(arrival);
        side.CloseFan(vertex);
    }
    if (!(radiusBefore == radius))
        side.LineTo(arrival);
    const double direction = Cross(in, out) >= 0.0 ? 1.0 : -1.0; // of the inner side
    if (direction == sign)
        AddInnerJoin(side, before, after, from, to);
    else
        AddOuterJoin(side, before, after, from, to, direction);
}

/// On the inner side of a turn, two straight edges go directly to where they meet if that is in the
/// nearer half of both; others go through the vertex.
void CurveOutline::AddInnerJoin(OutlineSide& side, const OutlinePiece& before,
                                const OutlinePiece& after, Point from, Point to) const
{
    const Point vertex = after.start;
    const double twice = 1.0 + Dot(before.out, after.in);
    const StrokeJoin join = after.corner ? m_join : StrokeJoin::Round;
    if (join != StrokeJoin::None && IsPlain(before) && IsPlain(after)) {
        const double shorter =
            std::min(Length(before.end - before.start), Length(after.end - after.start));
        const double sine = std::abs(Cross(before.out, after.in));
        constexpr double least = 1e-9; // where the path turns back, rounding leaves something
        if (m_radius * sine <= 0.5 * shorter * twice && twice > least) {
            side.LineTo(vertex + (1.0 / twice) * ((from - vertex) + (to - vertex)));
            return;
        }
    }
    side.LineTo(from);
    side.LineTo(vertex);
    side.LineTo(to);
}

/// \param direction of the inner side: 1 left, -1 right
void CurveOutline::AddOuterJoin(OutlineSide& side, const OutlinePiece& before,
                                const OutlinePiece& after, Point from, Point to,
                                double direction) const
{
    const Point vertex = after.start;
    const double halfSquare = 0.5 * (1.0 + Dot(before.out, after.in));
    const StrokeJoin join = after.corner ? m_join : StrokeJoin::Round;
    if (m_joinRule.HasTip(join, Length(from - vertex), halfSquare)) {
        if (!IsPlain(before))
            side.LineTo(from);
        side.LineTo(vertex + (0.5 / halfSquare) * ((from - vertex) + (to - vertex)));
        if (!IsPlain(after))
            side.LineTo(to);
        return;
    }
    side.LineTo(from);
    if (join == StrokeJoin::None)
        side.LineTo(vertex);
    else if (join == StrokeJoin::Round)
        AddArc(side, vertex, from - vertex, to - vertex, direction);
    side.LineTo(to);
}

/// The arc of at most half a turn from centre + \p from to centre + \p to; to the left for a
/// positive \p direction. \pre the side has reached its start.
void CurveOutline::AddArc(OutlineSide& side, Point centre, Point from, Point to,
                          double direction) const
{
    const double radius = Length(from);
    const double angle =
        std::abs(std::atan2(std::max(direction * Cross(from, to), 0.0), Dot(from, to)));
    if (!(angle * radius > m_shortest))
        return;
    // The error of a quarter is 2.0e-4 of the radius and falls with the sixth power of the angle.
    const double quarters = angle / (0.5 * std::numbers::pi);
    const double tolerance = std::max(m_tolerance, Finest * radius);
    const double share = std::pow(std::max(2.0e-4 * radius / tolerance, 1.0), 1.0 / 6.0);
    const double count = std::ceil(quarters * share - 1e-9);
    const double step = direction * angle / count;
    const double handle = direction * GetArcHandleLength(std::abs(step));
    Point at = from;
    for (double i = 1.0; i <= count; i += 1.0) {
        const Point next = i == count ? to : Rotate(from, i * step);
        side.CubicTo(centre + at + handle * Normal(at), centre + next - handle * Normal(next),
                     centre + next);
        at = next;
    }
}

/// The way around an end of the path, from the left to the right of \p direction.
void CurveOutline::AddCap(OutlineSide& side, Point point, Point direction, double radius) const
{
    const Point ahead = radius * direction, left = radius * Normal(direction);
    if (m_cap == StrokeCap::Square) {
        side.LineTo(point + left + ahead);
        side.LineTo(point - left + ahead);
    } else if (m_cap == StrokeCap::Round) {
        AddArc(side, point, left, -1.0 * left, -1.0);
    }
}

} // namespace Geometry
