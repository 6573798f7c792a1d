#include <geometry/stroke/StrokeOutline.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Geometry {
namespace {

/// Whether two unit vectors are the same direction for every purpose here.
bool IsStraight(Point in, Point out)
{
    return Dot(in, out) > 0.0 && std::abs(Cross(in, out)) < 1e-8;
}

} // namespace

StrokeOutline::StrokeOutline(const StrokeParameters& parameters, const StrokePrecision& precision,
                             PolyPolygonType<double>& out)
    : m_radius(0.5 * parameters.width),
      m_cap(parameters.cap),
      m_join(parameters.join),
      m_mitreLimit(parameters.mitreLimit),
      m_largestTurn(2.0 * std::acos(precision.halfTurn)),
      m_slack(0.25 * precision.curve),
      m_out(out)
{}

void StrokeOutline::AddOpen(std::span<const StrokeVertex> vertices)
{
    if (vertices.size() == 1 && m_cap == StrokeCap::Butt)
        return;
    m_left.clear();
    m_right.clear();
    Edge edges[2]; // the one before the vertex and the one after it, in turn
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        Edge* before = i > 0 ? &edges[(i + 1) % 2] : nullptr;
        Edge* after = i + 1 < vertices.size() ? &edges[i % 2] : nullptr;
        if (after)
            *after = MakeEdge(vertices[i], vertices[i + 1]);
        AddVertex(vertices[i], before, after);
    }
    AddCap(vertices.back().point, vertices.back().out);
    m_left.insert(m_left.end(), m_right.rbegin(), m_right.rend());
    AddCap(vertices.front().point, -1.0 * vertices.front().in);
    Flush(false, m_left);
}

void StrokeOutline::AddClosed(std::span<const StrokeVertex> vertices)
{
    m_left.clear();
    m_right.clear();
    Edge before = MakeEdge(vertices.back(), vertices.front());
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const Edge after = MakeEdge(vertices[i], vertices[(i + 1) % vertices.size()]);
        AddVertex(vertices[i], &before, &after);
        before = after;
    }
    Flush(false, m_left);
    Flush(true, m_right);
}

StrokeOutline::Edge StrokeOutline::MakeEdge(const StrokeVertex& from, const StrokeVertex& to) const
{
    const Point chord = to.point - from.point;
    // The quadrilateral is a bilinear map of (fraction of the edge, fraction of the normal), whose
    // Jacobian is linear: positive at the four corners means positive everywhere.
    const double cross = m_radius * std::abs(Cross(from.out, to.in));
    if (std::min(Dot(chord, from.out), Dot(chord, to.in)) > cross && Dot(from.out, to.in) > 0.0)
        return {from.point, to.point, from.out, to.in};
    // Where coordinates are too coarse for the dashes, both ends may be the same point.
    const double length = Length(chord);
    const Point direction = length > 0.0 ? Point{chord.x / length, chord.y / length} : from.out;
    return {from.point, to.point, direction, direction};
}

void StrokeOutline::AddVertex(const StrokeVertex& vertex, const Edge* before, const Edge* after)
{
    const Point first = before ? before->end : vertex.in;
    const Point last = after ? after->start : vertex.out;
    const bool turnsBefore = !IsStraight(first, vertex.in);
    const bool turnsHere = !IsStraight(vertex.in, vertex.out);
    const bool turnsAfter = !IsStraight(vertex.out, last);
    if (!turnsBefore && !turnsHere && !turnsAfter) {
        m_left.push_back(vertex.point + m_radius * Normal(last));
        m_right.push_back(vertex.point - m_radius * Normal(last));
        return;
    }
    if (turnsBefore)
        AddTurn(vertex.point, first, vertex.in, StrokeJoin::Round, nullptr, nullptr);
    if (turnsHere) {
        const StrokeJoin join = vertex.corner ? m_join : StrokeJoin::Round;
        const bool alone = !turnsBefore && !turnsAfter;
        AddTurn(vertex.point, vertex.in, vertex.out, join, alone ? before : nullptr,
                alone ? after : nullptr);
    }
    if (turnsAfter)
        AddTurn(vertex.point, vertex.out, last, StrokeJoin::Round, nullptr, nullptr);
}

/// Turns the pen about \p point. The edges are given where the inner side may take the direct way.
void StrokeOutline::AddTurn(Point point, Point in, Point out, StrokeJoin join, const Edge* before,
                            const Edge* after)
{
    const double sine = Cross(in, out), cosine = Dot(in, out);
    const double side = sine >= 0.0 ? 1.0 : -1.0; // the left is the inner side for 1
    Side& inner = side > 0.0 ? m_left : m_right;
    Side& outer = side > 0.0 ? m_right : m_left;
    const Point from = (side * m_radius) * Normal(in), to = (side * m_radius) * Normal(out);

    Point meeting;
    if (join != StrokeJoin::None && before && after &&
        FindInnerMeeting(*before, *after, side, meeting))
        inner.push_back(meeting);
    else
        inner.insert(inner.end(), {point + from, point, point + to});

    const double turn = side * std::atan2(std::abs(sine), cosine);
    AddOuterJoin(outer, point, -1.0 * from, -1.0 * to, cosine, turn, join);
}

/// Where the inner edges of two quadrilaterals meet, if it is in the nearer half of both.
bool StrokeOutline::FindInnerMeeting(const Edge& before, const Edge& after, double side,
                                     Point& meeting) const
{
    const double offset = side * m_radius;
    const Point a0 = before.from + offset * Normal(before.start);
    const Point a1 = before.to + offset * Normal(before.end);
    const Point b0 = after.from + offset * Normal(after.start);
    const Point b1 = after.to + offset * Normal(after.end);
    const Point a = a1 - a0, b = b1 - b0;
    const double determinant = Cross(a, b);
    if (!(std::abs(determinant) > 1e-12 * std::sqrt(Dot(a, a) * Dot(b, b))))
        return false;
    const double onA = Cross(b0 - a0, b) / determinant;
    const double onB = Cross(b0 - a0, a) / determinant;
    if (!(onA >= 0.5 && onA <= 1.0 && onB >= 0.0 && onB <= 0.5))
        return false;
    meeting = a0 + onA * a;
    return true;
}

/// The way from point + fromNormal to point + toNormal on the outer side of a turn.
void StrokeOutline::AddOuterJoin(Side& side, Point point, Point fromNormal, Point toNormal,
                                 double cosine, double turn, StrokeJoin join)
{
    const double halfSquare = 0.5 * (1.0 + cosine); // cosine of half the turn, squared
    if (join != StrokeJoin::None && m_radius * (1.0 - halfSquare) <= m_slack && cosine > 0.0) {
        // No join would be told from another: one point does.
        side.push_back(point + (0.5 / halfSquare) * (fromNormal + toNormal));
        return;
    }
    side.push_back(point + fromNormal);
    switch (join) {
    case StrokeJoin::None:
        side.push_back(point);
        break;
    case StrokeJoin::Mitre:
        // Length ÷ width is 1 ÷ cos(turn/2). The limit is a user's parameter and holds to 1e-6, so
        // that the limit √2 takes right angles however they are rotated.
        if (m_mitreLimit > 0.0 && halfSquare * m_mitreLimit * m_mitreLimit >= 1.0 - 1e-6)
            side.push_back(point + (0.5 / halfSquare) * (fromNormal + toNormal));
        break;
    case StrokeJoin::Round:
        AddArc(side, point, fromNormal, turn);
        break;
    case StrokeJoin::Bevel:
        break;
    }
    side.push_back(point + toNormal);
}

/// The points between the ends of an arc, which begins at centre + from.
void StrokeOutline::AddArc(Side& side, Point centre, Point from, double angle)
{
    const double count = std::ceil(std::abs(angle) / m_largestTurn - 1e-9);
    if (!(count >= 2.0 && count <= m_arcPoints))
        return;
    m_arcPoints -= count;
    const double step = angle / count;
    const double cosine = std::cos(step), sine = std::sin(step);
    for (auto i = static_cast<std::size_t>(count); i > 1; --i) {
        from = {cosine * from.x - sine * from.y, sine * from.x + cosine * from.y};
        side.push_back(centre + from);
    }
}

/// The way around an end of the path, from the left to the right of \p direction.
void StrokeOutline::AddCap(Point point, Point direction)
{
    const Point ahead = m_radius * direction, left = m_radius * Normal(direction);
    if (m_cap == StrokeCap::Square)
        m_left.insert(m_left.end(), {point + left + ahead, point - left + ahead});
    else if (m_cap == StrokeCap::Round)
        AddArc(m_left, point, left, -std::numbers::pi);
}

void StrokeOutline::Flush(bool reversed, const Side& side)
{
    m_out.BeginPolygon(true);
    const auto add = [this](Point point) { m_out.AddPoint(point); };
    if (reversed)
        std::for_each(side.rbegin(), side.rend(), add);
    else
        std::for_each(side.begin(), side.end(), add);
}

} // namespace Geometry
