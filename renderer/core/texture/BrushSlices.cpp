// Brushes whose tip is bent along a path: slices between lines across it, and fans at corners.

#include <algorithm>
#include <cmath>

#include <renderer/core/texture/BrushPen.h>

namespace Renderer::Texture {

namespace {

using Point = Geometry::Point;

/// Times that a texture goes round in a slice at most.
constexpr double MostTiles = 8192.0;

/// The direction to the right of another one, where y grows downwards.
Point TurnRight(Point direction) noexcept
{
    return {-direction.y, direction.x};
}

double Cross(Point a, Point b) noexcept
{
    return a.x * b.y - a.y * b.x;
}

double Dot(Point a, Point b) noexcept
{
    return a.x * b.x + a.y * b.y;
}

} // namespace

void BrushPen::DrawSlices(const BrushPath& run)
{
    m_tileLength = m_runLength;
    if (m_settings.mode == Settings::Mode::Repeated) {
        const double tiles = m_runLength / m_tipLength;
        m_tileLength =
            run.IsClosed() ? m_runLength / std::max(1.0, std::round(tiles)) : m_tipLength;
    }
    // Texture places count from the slice's own tile, so that they keep their precision; no slice
    // reaches through more than one tile. Where width and opacity change, slices are short.
    double longest = std::max(m_tileLength, m_shortest);
    if (m_line.pressure)
        longest = std::min(longest, std::max(0.25 * m_line.weight, m_shortest));
    const auto& samples = run.GetSamples();
    for (std::size_t i = 0; i + 1 < samples.size() && !IsAborting(); ++i) {
        const BrushPath::Sample& a = samples[i];
        const BrushPath::Sample& b = samples[i + 1];
        const double length = b.length - a.length;
        if (!(length > 0.0)) {
            DrawJoin(a, b, a.length);
            continue;
        }
        const int parts = std::max(1, static_cast<int>(std::ceil(length / longest)));
        Section from = MakeSection(a.point, a.direction, a.length);
        for (int k = 1; k <= parts && !IsAborting(); ++k) {
            const double share = double(k) / parts;
            const Section to = k == parts
                                   ? MakeSection(b.point, b.direction, b.length)
                                   : MakeSection(a.point + share * (b.point - a.point),
                                                 a.direction + share * (b.direction - a.direction),
                                                 a.length + share * length);
            DrawSlice(from, to);
            from = to;
        }
    }
    if (run.IsClosed())
        DrawJoin(samples.back(), samples.front(), m_runLength);
}

BrushPen::Section BrushPen::MakeSection(Point centre, Point direction, double length) const
{
    const double share = length / m_runLength;
    const double size = GetSize(share);
    const double scale = 0.5 * m_line.weight * size / std::hypot(direction.x, direction.y);
    return {centre, scale * TurnRight(direction),          length / m_tileLength,
            size,   static_cast<float>(GetOpacity(share)), length};
}

CVertex BrushPen::MakeCorner(const Section& section, Point offset, double side) const
{
    const Point p = m_line.toDevice.Map(section.centre + offset);
    return {p.x, p.y, static_cast<float>(section.u), static_cast<float>(0.5 + 0.5 * side),
            section.opacity};
}

void BrushPen::DrawSlice(const Section& from, const Section& to)
{
    Section a = from, b = to;
    const double tile = std::floor(a.u);
    a.u -= tile;
    b.u = std::min(b.u - tile, MostTiles);
    const Corners corners{MakeCorner(a, -1.0 * a.side, -1), MakeCorner(b, -1.0 * b.side, -1),
                          MakeCorner(b, b.side, 1), MakeCorner(a, a.side, 1)};
    AddSlice(a, b.length, corners);
}

void BrushPen::AddSlice(const Section& from, double end, const Corners& corners)
{
    const double width = m_line.weight * m_scale * from.size;
    Add(corners, GetLevel(m_tileLength * m_scale, width), width, from.length, end);
}

/// Fills the gap at the outside of a corner.
void BrushPen::DrawJoin(const BrushPath::Sample& before, const BrushPath::Sample& after,
                        double length)
{
    const double cross = Cross(before.direction, after.direction);
    const double dot = Dot(before.direction, after.direction);
    const double turn = std::abs(std::atan2(cross, dot));
    if (turn < 1e-9)
        return;
    Section section = MakeSection(before.point, before.direction, length);
    section.u -= std::floor(section.u);
    const bool isRight = cross < 0.0; // the outside lies opposite to the turn
    const double side = isRight ? 1.0 : -1.0;
    const Point from = side * section.side;
    const Point to = side * MakeSection(before.point, after.direction, length).side;
    // Turns as small as those of curves are no corners.
    const Geometry::StrokeJoin join =
        turn <= BrushPath::MostTurn ? Geometry::StrokeJoin::Bevel : m_line.join;
    switch (join) {
    case Geometry::StrokeJoin::None:
        return;
    case Geometry::StrokeJoin::Round:
        DrawFan(section, from, to, isRight, int(std::ceil(turn / BrushPath::MostTurn)));
        return;
    case Geometry::StrokeJoin::Mitre: {
        const double half = std::cos(0.5 * turn);
        if (half > 0.0 && 1.0 / half <= m_line.mitreLimit * (1.0 + 1e-6)) {
            const Point tip = (0.5 / (half * half)) * (from + to);
            DrawFan(section, from, tip, isRight, 1);
            DrawFan(section, tip, to, isRight, 1);
            return;
        }
        break;
    }
    case Geometry::StrokeJoin::Bevel:
        break;
    }
    DrawFan(section, from, to, isRight, 1);
}

/// Triangles from the corner of the path to the outer edge, which turns from one offset to another.
void BrushPen::DrawFan(const Section& section, Point from, Point to, bool isRight, int parts)
{
    const double side = isRight ? 1.0 : -1.0;
    const double turn = std::atan2(Cross(from, to), Dot(from, to));
    Point last = from;
    for (int i = 1; i <= parts; ++i) {
        const double angle = turn * i / parts;
        const Point next =
            i == parts ? to : std::cos(angle) * from + std::sin(angle) * TurnRight(from);
        const CVertex middle = MakeCorner(section, {}, 0);
        AddSlice(
            section, section.length,
            {middle, middle, MakeCorner(section, next, side), MakeCorner(section, last, side)});
        last = next;
    }
}

} // namespace Renderer::Texture
