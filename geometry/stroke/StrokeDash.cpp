#include <geometry/stroke/StrokeDash.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Geometry {
namespace {

/// The length of the path between two vertices: that of the arc of a circle which the tangents at
/// both ends describe, chord·(θ/2)/sin(θ/2) to the second order.
double MeasureEdge(const StrokeVertex& from, const StrokeVertex& to)
{
    const double chord = Length(to.point - from.point);
    const double sine = Cross(from.out, to.in);
    const bool isArc = Dot(from.out, to.in) > 0.5;
    return isArc ? chord * (1.0 + sine * sine / 24.0) : chord;
}

StrokeVertex Cut(const StrokeVertex& from, const StrokeVertex& to, double fraction)
{
    const Point point = from.point + fraction * (to.point - from.point);
    if (from.out == to.in)
        return {point, to.in, to.in, false};
    const Point tangent = from.out + fraction * (to.in - from.out);
    const double length = Length(tangent);
    const Point direction = length > 0.0 ? tangent * (1.0 / length) : to.in;
    return {point, direction, direction, false};
}

} // namespace

void StrokeDash::SetPattern(const StrokeParameters& parameters)
{
    m_isDashed = false;
    m_dashes.clear();
    if (parameters.dashes.empty())
        return;
    const int rounds = parameters.dashes.size() % 2 == 1 ? 2 : 1;
    for (int round = 0; round < rounds; ++round)
        for (const double dash : parameters.dashes)
            m_dashes.push_back(dash * parameters.dashUnit);
    m_period = std::accumulate(m_dashes.begin(), m_dashes.end(), 0.0);
    double gaps = 0.0;
    for (std::size_t i = 1; i < m_dashes.size(); i += 2)
        gaps += m_dashes[i];
    const bool valid =
        std::all_of(m_dashes.begin(), m_dashes.end(), [](double d) { return d >= 0.0; });
    m_isDashed = valid && gaps > 0.0 && std::isfinite(m_period);
    if (!m_isDashed)
        return;
    m_epsilon = 1e-9 * m_period;
    m_phase = std::fmod(parameters.dashPhase * parameters.dashUnit, m_period);
    if (m_phase < 0.0)
        m_phase += m_period;
}

void StrokeDash::Draw(const StrokePath& path, StrokeOutline& outline, PolyPolygonType<double>& out)
{
    const Drawing drawing{outline, out};
    const std::vector<StrokeVertex>& vertices = path.vertices;
    const std::size_t edges = path.closed ? vertices.size() : vertices.size() - 1;
    double length = 0.0;
    for (std::size_t i = 0; i < edges; ++i)
        length += MeasureEdge(vertices[i], vertices[(i + 1) % vertices.size()]);
    if (!(length / m_period * static_cast<double>(m_dashes.size() / 2) <= MaximumDashes)) {
        path.closed ? outline.AddClosed(vertices, out) : outline.AddOpen(vertices, out);
        return;
    }
    Restart();
    m_holdsFirst = path.closed && IsOn();
    for (std::size_t i = 0; i < edges; ++i)
        WalkEdge(vertices[i], vertices[(i + 1) % vertices.size()], drawing);
    Finish(path, drawing);
}

void StrokeDash::Restart()
{
    m_piece.clear();
    m_first.clear();
    m_index = 0;
    m_remaining = m_dashes[0] - m_phase;
    while (m_remaining <= 0.0 && m_index + 1 < m_dashes.size()) {
        // A dash or gap that ends just where the run begins is over, but a dash of length 0 there
        // is still to come.
        if (m_remaining == 0.0 && m_dashes[m_index] == 0.0 && IsOn())
            break;
        m_remaining += m_dashes[++m_index];
    }
    m_remaining = std::max(m_remaining, 0.0);
}

void StrokeDash::Advance()
{
    m_index = (m_index + 1) % m_dashes.size();
    m_remaining = m_dashes[m_index];
}

void StrokeDash::WalkEdge(const StrokeVertex& from, const StrokeVertex& to, const Drawing& drawing)
{
    if (IsOn() && m_piece.empty())
        m_piece.push_back({from.point, from.out, from.out, false});
    const double length = MeasureEdge(from, to);
    double position = 0.0;
    while (m_remaining <= length - position + m_epsilon) {
        position = std::min(position + m_remaining, length);
        const bool atEnd = position >= length - m_epsilon;
        if (IsOn()) {
            if (m_dashes[m_index + 1] == 0.0) { // no gap: the next dash continues this one
                Advance();
                Advance();
                continue;
            }
            EndDash(Cut(from, to, atEnd ? 1.0 : position / length), drawing);
        } else if (!atEnd) {
            m_piece.push_back(Cut(from, to, position / length));
        } // a dash that starts at a vertex starts with the next edge and its direction
        Advance();
    }
    m_remaining -= length - position;
    if (IsOn() && !m_piece.empty())
        m_piece.push_back(to);
}

void StrokeDash::EndDash(const StrokeVertex& end, const Drawing& drawing)
{
    if (m_piece.empty() || !(m_piece.back().point == end.point))
        m_piece.push_back(end);
    if (m_piece.size() > 1)
        m_piece.back().out = m_piece.back().in;
    if (m_holdsFirst)
        m_first.swap(m_piece);
    else
        drawing.AddDash(m_piece);
    m_holdsFirst = false;
    m_piece.clear();
}

/// Draws what is on at the end of the run, as one with a dash that began at the start.
void StrokeDash::Finish(const StrokePath& path, const Drawing& drawing)
{
    if (m_piece.size() < 2) { // gap, or a dash that would begin just at the end
        if (!m_first.empty())
            drawing.AddDash(m_first);
        return;
    }
    if (!path.closed) {
        m_piece.back().out = m_piece.back().in;
    } else if (m_holdsFirst) { // never ended
        drawing.outline.AddClosed(path.vertices, drawing.out);
        return;
    } else if (!m_first.empty()) {
        m_piece.insert(m_piece.end(), m_first.begin() + 1, m_first.end());
        if (m_first.size() == 1)
            m_piece.back().out = m_piece.back().in;
    } else {
        m_piece.back().out = m_piece.back().in;
    }
    drawing.AddDash(m_piece);
}

} // namespace Geometry
