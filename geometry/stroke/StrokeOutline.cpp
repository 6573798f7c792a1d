#include <geometry/stroke/StrokeOutline.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Geometry {
namespace {

/// Whether the edge between two vertices runs along their tangents.
bool IsStraight(const StrokeVertex& from, const StrokeVertex& to)
{
    return from.out == to.in;
}

} // namespace

void StrokeOutline::SetPen(const StrokeParameters& parameters,
                           const StrokePrecision& precision) noexcept
{
    m_radius = precision.radius;
    m_cap = parameters.cap;
    m_capLength = parameters.capLength;
    m_join = parameters.join;
    m_joinRule = {parameters, precision};
    // A tenth of the tolerance is for the tiny pieces of curves between turns.
    m_arcExcess = 0.9 * precision.tolerance / precision.turningRadius;
    m_arcSteps = 0.0;
    m_arcPoints = 1 << 24;
}

void StrokeOutline::AddOpen(std::span<const StrokeVertex> vertices, PolyPolygonType<double>& out)
{
    if (vertices.size() == 1 && m_cap == StrokeCap::Butt)
        return;
    m_left.Clear();
    m_right.Clear();
    const StrokeVertex* before = nullptr;
    for (const StrokeVertex& vertex : vertices) {
        const StrokeVertex* after = &vertex == &vertices.back() ? nullptr : &vertex + 1;
        AddVertex(vertex, before, after);
        before = &vertex;
    }
    AddCap(vertices.back().point, vertices.back().out);
    m_left.AddReversed(m_right);
    AddCap(vertices.front().point, -1.0 * vertices.front().in);
    m_left.Flush(out);
}

void StrokeOutline::AddClosed(std::span<const StrokeVertex> vertices, PolyPolygonType<double>& out)
{
    m_left.Clear();
    m_right.Clear();
    const StrokeVertex* before = &vertices.back();
    for (const StrokeVertex& vertex : vertices) {
        const StrokeVertex* after = &vertex == &vertices.back() ? &vertices.front() : &vertex + 1;
        AddVertex(vertex, before, after);
        before = &vertex;
    }
    CloseFans(vertices.front());
    m_left.Flush(out);
    m_right.Reverse();
    m_right.Flush(out);
}

void StrokeOutline::AddVertex(const StrokeVertex& vertex, const StrokeVertex* before,
                              const StrokeVertex* after)
{
    const Point point = vertex.point + vertex.aside * Normal(vertex.out);
    const Point normal = (m_radius * vertex.reach) * Normal(vertex.out);
    const Crossing crossing =
        after && !IsStraight(vertex, *after) ? FindCrossing(vertex, *after) : Crossing::None;
    if (IsSameDirection(vertex.in, vertex.out)) {
        m_left.Add(point + normal);
        m_right.Add(point - normal);
        if (m_left.IsInFan() && crossing != Crossing::Left) {
            m_left.CloseFan(point);
            m_left.Add(point + normal);
        }
        if (m_right.IsInFan() && crossing != Crossing::Right) {
            m_right.CloseFan(point);
            m_right.Add(point - normal);
        }
    } else {
        CloseFans(vertex);
        if (!(before && after && AddPlainCorner(*before, vertex, *after)))
            AddTurn(vertex, before, after);
    }
    if (crossing == Crossing::Left)
        m_left.ContinueFan(point, vertex.out, after->in, point + normal);
    else if (crossing == Crossing::Right)
        m_right.ContinueFan(point, vertex.out, after->in, point - normal);
}

/// Ends the fans of the edge that arrives at a vertex.
void StrokeOutline::CloseFans(const StrokeVertex& vertex)
{
    const Point normal = m_radius * Normal(vertex.in);
    if (m_left.IsInFan()) {
        m_left.Add(vertex.point + normal);
        m_left.CloseFan(vertex.point);
    }
    if (m_right.IsInFan()) {
        m_right.Add(vertex.point - normal);
        m_right.CloseFan(vertex.point);
    }
}

/// The normals of both ends cross where each end lies before the other's normal and its pen's end
/// behind it.
StrokeOutline::Crossing StrokeOutline::FindCrossing(const StrokeVertex& from,
                                                    const StrokeVertex& to) const
{
    const Point chord = to.point - from.point;
    const double turn = m_radius * Cross(from.out, to.in);
    if (std::max(Dot(chord, from.out), Dot(chord, to.in)) >= std::abs(turn))
        return Crossing::None;
    return turn > 0.0 ? Crossing::Left : Crossing::Right;
}

/// The corner of two straight edges whose sides meet in a point each, as in most polygons.
/// \return whether it is one.
bool StrokeOutline::AddPlainCorner(const StrokeVertex& before, const StrokeVertex& vertex,
                                   const StrokeVertex& after)
{
    if (!vertex.corner || !IsStraight(before, vertex) || !IsStraight(vertex, after))
        return false;
    const double twice = 1.0 + Dot(vertex.in, vertex.out); // 2·cos²(turn/2)
    if (!m_joinRule.HasTip(m_join, m_radius, 0.5 * twice) ||
        !MeetsInside(before, vertex, after, twice))
        return false;
    const Point tip = (m_radius / twice) * Normal(vertex.in + vertex.out);
    m_left.Add(vertex.point + tip);
    m_right.Add(vertex.point - tip);
    return true;
}

/// Whether the inner sides of two straight edges meet in the nearer half of both: they do so
/// radius·tan(turn/2) from the vertex. \param twice 1 + the cosine of the turn
bool StrokeOutline::MeetsInside(const StrokeVertex& before, const StrokeVertex& vertex,
                                const StrokeVertex& after, double twice) const
{
    const double shorter = std::min(Dot(vertex.point - before.point, vertex.in),
                                    Dot(after.point - vertex.point, vertex.out));
    const double sine = std::abs(Cross(vertex.in, vertex.out));
    // Where the path turns back, rounding leaves something near 0.
    constexpr double least = 1e-9;
    return m_radius * sine <= 0.5 * shorter * twice && twice > least;
}

/// Turns the pen about a vertex, between the edges before and after it, if there are any.
void StrokeOutline::AddTurn(const StrokeVertex& vertex, const StrokeVertex* before,
                            const StrokeVertex* after)
{
    const StrokeJoin join = vertex.corner ? m_join : StrokeJoin::Round;
    Turn turn;
    turn.point = vertex.point;
    turn.side = Cross(vertex.in, vertex.out) >= 0.0 ? 1.0 : -1.0;
    turn.from = (-turn.side * m_radius) * Normal(vertex.in);
    turn.to = (-turn.side * m_radius) * Normal(vertex.out);
    turn.cosine = Dot(vertex.in, vertex.out);
    turn.straightBefore = before && IsStraight(*before, vertex);
    turn.straightAfter = after && IsStraight(vertex, *after);
    turn.besideFan =
        (before && !turn.straightBefore && FindCrossing(*before, vertex) != Crossing::None) ||
        (after && !turn.straightAfter && FindCrossing(vertex, *after) != Crossing::None);
    StrokeSide& inner = turn.side > 0.0 ? m_left : m_right;
    StrokeSide& outer = turn.side > 0.0 ? m_right : m_left;

    Point meeting;
    if (join != StrokeJoin::None && before && after &&
        FindInnerMeeting(turn, *before, vertex, *after, meeting))
        inner.Add(meeting);
    else
        AddInnerTurn(inner, turn, vertex.corner);
    AddOuterJoin(outer, turn, join);
}

/// Where the inner edges of two quadrilaterals meet, if it is in the nearer half of both.
bool StrokeOutline::FindInnerMeeting(const Turn& turn, const StrokeVertex& before,
                                     const StrokeVertex& vertex, const StrokeVertex& after,
                                     Point& meeting) const
{
    if (turn.straightBefore && turn.straightAfter) {
        const double twice = 1.0 + turn.cosine;
        if (!MeetsInside(before, vertex, after, twice))
            return false;
        meeting = turn.point - (1.0 / twice) * (turn.from + turn.to);
        return true;
    }
    if (FindCrossing(before, vertex) != Crossing::None ||
        FindCrossing(vertex, after) != Crossing::None)
        return false;
    const double offset = turn.side * m_radius;
    const Point a0 = before.point + offset * Normal(before.out);
    const Point b0 = turn.point - turn.to;
    const Point a = turn.point - turn.from - a0;
    const Point b = after.point + offset * Normal(after.in) - b0;
    const double determinant = Cross(a, b);
    if (!(determinant * determinant > 1e-24 * Dot(a, a) * Dot(b, b)))
        return false;
    const double onA = Cross(b0 - a0, b) / determinant;
    const double onB = Cross(b0 - a0, a) / determinant;
    if (!(onA >= 0.5 && onA <= 1.0 && onB >= 0.0 && onB <= 0.5))
        return false;
    meeting = a0 + onA * a;
    return true;
}

/// The way from point - from to point - to on the inner side of a turn, through the vertex. Along a
/// curve the pen's end runs backwards from the one to the other: a fan.
void StrokeOutline::AddInnerTurn(StrokeSide& side, const Turn& turn, bool corner)
{
    const Point from = turn.point - turn.from, to = turn.point - turn.to;
    side.Add({from, turn.point});
    if (!corner) {
        side.Add(to);
        AddArc(side, turn.point, -1.0 * turn.to, -1.0 * turn.from, -turn.side);
        side.Add({from, turn.point});
    }
    side.Add(to);
}

/// The way from point + from to point + to on the outer side of a turn.
void StrokeOutline::AddOuterJoin(StrokeSide& side, const Turn& turn, StrokeJoin join)
{
    const double halfSquare = 0.5 * (1.0 + turn.cosine); // cosine of half the turn, squared
    if (m_joinRule.HasTip(join, m_radius, halfSquare)) {
        // Edges along the tangents run straight into it, and others nearly do if it is low.
        // A fan needs the pen's own positions at the vertex.
        const bool isLow = !turn.besideFan && m_joinRule.IsLow(m_radius, halfSquare);
        if (!isLow && !turn.straightBefore)
            side.Add(turn.point + turn.from);
        side.Add(turn.point + (0.5 / halfSquare) * (turn.from + turn.to));
        if (!isLow && !turn.straightAfter)
            side.Add(turn.point + turn.to);
        return;
    }
    side.Add(turn.point + turn.from);
    if (join == StrokeJoin::None)
        side.Add(turn.point);
    else if (join == StrokeJoin::Round)
        AddArc(side, turn.point, turn.from, turn.to, turn.side);
    side.Add(turn.point + turn.to);
}

/// The points between the ends of an arc of at most half a turn, from centre + \p from to
/// centre + \p to; to the left for a positive \p direction.
void StrokeOutline::AddArc(StrokeSide& side, Point centre, Point from, Point to, double direction)
{
    PrepareArcs();
    if (!(m_arcSteps <= m_arcPoints))
        return;
    const double cosine = m_arcStep.x, sine = direction * m_arcStep.y;
    // A little outside, so that the edges lie as much outside the true arc as inside.
    const double reach = 1.0 + m_arcExcess / 1.5;
    const double least = 1e-9 * m_radius * m_radius;
    for (;;) {
        from = {cosine * from.x - sine * from.y, sine * from.x + cosine * from.y};
        if (direction * Cross(from, to) <= least && Dot(from, to) > 0.0)
            return;
        side.Add(centre + reach * from);
        m_arcPoints -= 1.0;
    }
}

void StrokeOutline::PrepareArcs()
{
    if (m_arcSteps > 0.0)
        return;
    // At most half a right angle at once, even for pens thinner than the tolerance: a round cap of
    // four steps has 97 % of its area, one of two steps three quarters.
    const double half = std::acos(std::max(1.0 - m_arcExcess, std::cos(std::numbers::pi / 8.0)));
    m_arcSteps = std::ceil(std::numbers::pi / (2.0 * half) - 1e-9);
    const double step = std::numbers::pi / m_arcSteps;
    m_arcStep = {std::cos(step), std::sin(step)};
    m_arcExcess = 1.0 - std::cos(0.5 * step);
}

/// The way around an end of the path, from the left to the right of \p direction.
void StrokeOutline::AddCap(Point point, Point direction)
{
    const Point ahead = (m_capLength * m_radius) * direction, left = m_radius * Normal(direction);
    if (m_cap == StrokeCap::Square)
        m_left.Add({point + left + ahead, point - left + ahead});
    else if (m_cap == StrokeCap::Round && m_capLength == 1.0)
        AddArc(m_left, point, left, -1.0 * left, -1.0);
    else if (m_cap == StrokeCap::Round)
        AddEllipse(point, left, ahead);
}

/// A round cap that is longer or shorter than wide, with the steps of a circle.
void StrokeOutline::AddEllipse(Point point, Point left, Point ahead)
{
    PrepareArcs();
    if (!(m_arcSteps <= m_arcPoints))
        return;
    const double reach = 1.0 + m_arcExcess / 1.5;
    Point at = reach * m_arcStep;
    for (double i = 1.0; i < m_arcSteps; i += 1.0) {
        m_left.Add(point + at.x * left + at.y * ahead);
        at = {m_arcStep.x * at.x - m_arcStep.y * at.y, m_arcStep.y * at.x + m_arcStep.x * at.y};
    }
    m_arcPoints -= m_arcSteps;
}

} // namespace Geometry
