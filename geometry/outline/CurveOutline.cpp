#include <geometry/outline/CurveOutline.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include <geometry/EllipticArc.h>

namespace Geometry {

void CurveOutline::SetPen(const StrokeParameters& parameters, const StrokePrecision& precision,
                          const WidthProfile* profile) noexcept
{
    m_radius = precision.radius;
    m_tolerance = 0.9 * precision.tolerance;
    m_shortest = precision.shortest;
    m_cap = parameters.cap;
    m_capLength = parameters.capLength;
    m_join = parameters.join;
    m_joinRule = {parameters, precision};
    m_profile = profile;
    m_fitter.SetTolerance(m_tolerance);
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
    offset.ForEachTurn([&](double turn) {
        AddPart(side, offset, from, turn);
        from = turn;
    });
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
    m_fitter.Add(side, offset, from, to, true);
}

/// Adds the pen's ends over a part where they run backwards, in fans of at most a quarter turn.
void CurveOutline::AddFan(OutlineSide& side, const Offset& offset, double from, double to)
{
    const auto open = [&](double t) {
        side.OpenFan(offset.GetPoint(t), offset.GetTangent(t), side.GetEnd());
    };
    if (!side.IsInFan())
        open(from);
    if (!side.FanReaches(offset.GetTangent(to))) {
        const Point across = (offset.IsLeft() ? 1.0 : -1.0) * Normal(side.GetFanTangent());
        const double t = offset.GetCubic()->hodograph.FindDirection(across, from, to);
        if (t > from)
            m_fitter.Add(side, offset, from, t, false);
        from = std::max(t, from);
        side.CloseFan(offset.GetPoint(from));
        open(from);
    }
    m_fitter.Add(side, offset, from, to, false);
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
        AddInnerJoin(side, sign, before, after, from, to);
    else
        AddOuterJoin(side, sign, path, before, after, from, to);
}

/// On the inner side of a turn, two straight edges go directly to where they meet if that is in the
/// nearer half of both; others go through the vertex.
void CurveOutline::AddInnerJoin(OutlineSide& side, double sign, const OutlinePiece& before,
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
    if (after.corner)
        return;
    // Along a curve the pen's end runs backwards from the one to the other: a fan.
    AddArc(side, vertex, to - vertex, from - vertex, -sign);
    side.LineTo(from);
    side.LineTo(vertex);
    side.LineTo(to);
}

/// On the outer side of a turn, the join of the user; along a curve, a round one.
void CurveOutline::AddOuterJoin(OutlineSide& side, double sign, const OutlinePath& path,
                                const OutlinePiece& before, const OutlinePiece& after, Point from,
                                Point to) const
{
    const Point vertex = after.start;
    const double halfSquare = 0.5 * (1.0 + Dot(before.out, after.in));
    const StrokeJoin join = after.corner ? m_join : StrokeJoin::Round;
    if (m_joinRule.HasTip(join, Length(from - vertex), halfSquare)) {
        if (!IsPlain(before))
            side.LineTo(from);
        const Point tip = vertex + (0.5 / halfSquare) * ((from - vertex) + (to - vertex));
        side.LineTo(m_profile ? FindTip(sign, path, before, after, from, to, tip) : tip);
        if (!IsPlain(after))
            side.LineTo(to);
        return;
    }
    side.LineTo(from);
    if (join == StrokeJoin::None)
        side.LineTo(vertex);
    else if (join == StrokeJoin::Round)
        AddArc(side, vertex, from - vertex, to - vertex, -sign);
    side.LineTo(to);
}

/// Where edges of varying width meet beyond a corner; \p plain where they do not, or too far away.
Point CurveOutline::FindTip(double sign, const OutlinePath& path, const OutlinePiece& before,
                            const OutlinePiece& after, Point from, Point to, Point plain) const
{
    const auto direction = [&](const OutlinePiece& piece, double t) {
        return Offset(path, piece, sign * m_radius, m_profile).Sample(t, true).direction;
    };
    const Point in = direction(before, before.to), out = direction(after, after.from);
    const double determinant = Cross(in, out);
    const double ahead = Cross(to - from, out) / determinant;
    const double back = Cross(to - from, in) / determinant;
    const Point tip = from + ahead * in;
    const double radius = Length(from - after.start), reach = Length(tip - after.start);
    const bool isTip =
        ahead > 0.0 && back < 0.0 &&
        m_joinRule.HasTip(StrokeJoin::Mitre, radius, radius * radius / (reach * reach));
    return isTip ? tip : plain;
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
    const double tolerance = std::max(m_tolerance, FinestShare * radius);
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
    const Point ahead = (m_capLength * radius) * direction, left = radius * Normal(direction);
    if (m_cap == StrokeCap::Square) {
        side.LineTo(point + left + ahead);
        side.LineTo(point - left + ahead);
    } else if (m_cap == StrokeCap::Round && m_capLength == 1.0) {
        AddArc(side, point, left, -1.0 * left, -1.0);
    } else if (m_cap == StrokeCap::Round) {
        const double handle = GetArcHandleLength(0.5 * std::numbers::pi);
        const Point tip = point + ahead;
        side.CubicTo(point + left + handle * ahead, tip + handle * left, tip);
        side.CubicTo(tip - handle * left, point - left + handle * ahead, point - left);
    }
}

} // namespace Geometry
