#include <renderer/core/texture/CPolygon.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Renderer::Texture {

namespace {

constexpr double Grid = CCoverage::Whole;

double RoundToGrid(double value) noexcept
{
    return std::floor(value * Grid + 0.5) / Grid;
}

/// \pre 0 ≤ value < 2³⁰.
std::int32_t Round(double value) noexcept
{
    return static_cast<std::int32_t>(value + 0.5);
}

int Floor(double value) noexcept
{
    const int whole = static_cast<int>(value);
    return whole - (value < whole ? 1 : 0);
}

/// The corners of what maps a polygon's texture.
std::array<CVertex, 4> GetMapped(std::span<const CVertex> vertices) noexcept
{
    std::array<CVertex, 4> corners{};
    for (std::size_t i = 0; i < corners.size() && !vertices.empty(); ++i)
        corners[i] = vertices[vertices.size() == corners.size() ? i : 0];
    return corners;
}

} // namespace

double CPolygon::Edge::XAt(double y) const noexcept
{
    if (y <= y0)
        return x0;
    if (y >= y1)
        return x1;
    return std::clamp(x0 + (y - y0) * slope, std::min(x0, x1), std::max(x0, x1));
}

CPolygon::CPolygon(std::span<const CVertex> vertices) noexcept : m_map(GetMapped(vertices))
{
    const std::size_t count = std::min(vertices.size(), MaxVertices);
    Kernel::RectT<double> box{MaxCoordinate, MaxCoordinate, -MaxCoordinate, -MaxCoordinate};
    const auto round = [&](std::size_t i) {
        const Point point{RoundToGrid(vertices[i].x), RoundToGrid(vertices[i].y)};
        box = box.Union({point.x, point.y, point.x, point.y});
        return point;
    };
    if (count == 0)
        return;
    Point from = round(count - 1);
    for (std::size_t i = 0; i < count; ++i) {
        const Point to = round(i);
        AddEdge(from, to);
        from = to;
    }
    if (m_edgeCount > 0)
        m_bounds = {Floor(box.left), Floor(box.top), Floor(box.right) + 1,
                    static_cast<int>(std::ceil(box.bottom))};
}

void CPolygon::AddEdge(Point from, Point to) noexcept
{
    if (from.y == to.y)
        return;
    const bool down = from.y < to.y;
    const Point upper = down ? from : to;
    const Point lower = down ? to : from;
    m_edges[m_edgeCount++] = {
        upper.x,      upper.y, lower.x, lower.y, (lower.x - upper.x) / (lower.y - upper.y),
        down ? 1 : -1};
}

void CPolygon::ComputeCoverages(int y, int left, int right, CCoverage& row)
{
    row.begin = row.fullBegin = row.fullEnd = row.end = 0;
    std::array<Piece, MaxVertices> pieces;
    std::size_t count = 0;
    double least = std::numeric_limits<double>::max();
    double most = std::numeric_limits<double>::lowest();
    for (std::size_t i = 0; i < m_edgeCount; ++i) {
        const Edge& edge = m_edges[i];
        const double top = std::max(edge.y0, double(y)), bottom = std::min(edge.y1, y + 1.0);
        if (!(top < bottom))
            continue;
        const double x0 = edge.XAt(top), x1 = edge.XAt(bottom);
        pieces[count++] = {std::min(x0, x1), std::max(x0, x1),
                           static_cast<std::int32_t>((bottom - top) * Grid), edge.sign};
        least = std::min({least, x0, x1});
        most = std::max({most, x0, x1});
    }
    if (count == 0)
        return;
    row.begin = row.fullBegin = Floor(least);
    row.end = row.fullEnd = Floor(most) + 1;
    ClipCoverages(left, right, row);
    if (row.IsEmpty())
        return;
    m_map.BeginRow(y + 0.5);
    row.first = row.begin;
    row.areas.assign(std::size_t(row.end - row.begin) + 1, 0);
    for (std::size_t i = 0; i < count; ++i)
        AddPiece(pieces[i], row.begin, row.end, row);
    std::int32_t sum = 0;
    for (std::int32_t& area : row.areas) {
        sum += area;
        area = std::min(std::abs(sum), CCoverage::Whole);
    }
    PrepareEntryBlock(row);
    PrepareExitBlock(row);
}

/// Adds what a piece covers to its right: to each pixel that it crosses the part of its height
/// there times the mean distance to the pixel's right border, the rest to the pixels behind.
void CPolygon::AddPiece(const Piece& piece, int begin, int end, CCoverage& row) noexcept
{
    std::int32_t* const areas = row.areas.data();
    const auto add = [&](int x, std::int32_t area) { areas[x - begin] += piece.sign * area; };
    if (piece.x0 >= end)
        return;
    const int last = Floor(std::min(piece.x1, double(end)));
    const double width = piece.x1 - piece.x0;
    // The height of the piece to the left of a column's border.
    const auto heightAt = [&](double x) {
        return x >= piece.x1 ? piece.height
                             : Round(double(piece.height) * ((x - piece.x0) / width));
    };
    int x = Floor(std::max(piece.x0, double(begin)));
    std::int32_t done = 0;
    if (piece.x0 < begin) {
        done = heightAt(begin);
        add(begin, done);
    }
    for (; x <= last && x < end; ++x) {
        const std::int32_t height = heightAt(x + 1.0) - done;
        const double from = std::max(piece.x0, double(x)), to = std::min(piece.x1, x + 1.0);
        const std::int32_t area = Round(double(height) * (x + 1.0 - 0.5 * (from + to)));
        add(x, area);
        add(x + 1, height - area);
        done += height;
    }
}

/// Finds where the row begins and where its pixels are covered wholly.
void CPolygon::PrepareEntryBlock(CCoverage& row) noexcept
{
    while (row.begin < row.end && row.GetArea(row.begin) == 0)
        ++row.begin;
    row.fullBegin = row.begin;
    while (row.fullBegin < row.end && row.GetArea(row.fullBegin) != CCoverage::Whole)
        ++row.fullBegin;
}

/// Finds where pixels are no longer covered wholly and where the row ends.
void CPolygon::PrepareExitBlock(CCoverage& row) noexcept
{
    while (row.end > row.begin && row.GetArea(row.end - 1) == 0)
        --row.end;
    row.fullBegin = std::min(row.fullBegin, row.end);
    row.fullEnd = row.fullBegin;
    while (row.fullEnd < row.end && row.GetArea(row.fullEnd) == CCoverage::Whole)
        ++row.fullEnd;
}

void CPolygon::ClipCoverages(int left, int right, CCoverage& row) noexcept
{
    ClipEntryPixels(left, row);
    ClipExitPixels(right, row);
}

void CPolygon::ClipEntryPixels(int left, CCoverage& row) noexcept
{
    for (int* const place : {&row.begin, &row.fullBegin, &row.fullEnd, &row.end})
        *place = std::max(*place, left);
}

void CPolygon::ClipExitPixels(int right, CCoverage& row) noexcept
{
    for (int* const place : {&row.begin, &row.fullBegin, &row.fullEnd, &row.end})
        *place = std::min(*place, right);
}

} // namespace Renderer::Texture
