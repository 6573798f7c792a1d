#include <renderer/core/texture/QuadrangleMap.h>

#include <cmath>

namespace Renderer::Texture {

namespace {

using Point = Kernel::PointT<double>;

/// Lines whose directions differ by no more are parallel.
constexpr double ParallelTolerance = 1e-9;

double Cross(Point a, Point b) noexcept
{
    return a.x * b.y - a.y * b.x;
}

/// \p edge brought to length 1, or \p fallback where it has none.
Point GetDirection(Point edge, Point fallback) noexcept
{
    const double length = std::hypot(edge.x, edge.y);
    return length > 0.0 ? (1.0 / length) * edge : fallback;
}

} // namespace

QuadrangleMap::QuadrangleMap(const std::array<CVertex, 4>& corners) noexcept
    : m_origin{corners[0].x, corners[0].y},
      m_from{corners[0].u, corners[0].v, corners[0].opacity},
      m_step{corners[2].u - m_from.u, corners[2].v - m_from.v, corners[2].opacity - m_from.opacity}
{
    const auto at = [&](std::size_t i) { return Point{corners[i].x, corners[i].y}; };
    const Point left = at(3) - at(0), right = at(2) - at(1);
    const Point first = GetDirection(left, GetDirection(right, {}));
    const Point second = GetDirection(right, first);
    m_along = MakeDistance(at(0), first);
    const Linear rest = MakeDistance(at(1), second);
    m_sum = {m_along.atOrigin - rest.atOrigin, m_along.perX - rest.perX, m_along.perY - rest.perY};
    m_isAffine = std::abs(m_sum.perX) + std::abs(m_sum.perY) < ParallelTolerance;
    if (m_isAffine && m_sum.atOrigin != 0.0)
        m_along = {m_along.atOrigin / m_sum.atOrigin, m_along.perX / m_sum.atOrigin,
                   m_along.perY / m_sum.atOrigin};
    const Point across = 0.5 * (at(1) + at(2) - at(0) - at(3));
    m_first = MakePlace(at(0), left, across);
    m_second = MakePlace(at(1), right, across);
    if (Cross(left, across) == 0.0)
        m_first = m_second;
    else if (Cross(right, across) == 0.0)
        m_second = m_first;
}

/// The distance from a line through \p from, to its left where y grows downwards.
QuadrangleMap::Linear QuadrangleMap::MakeDistance(Point from, Point direction) const noexcept
{
    return {Cross(m_origin - from, direction), direction.y, -direction.x};
}

/// The share of \p edge, which begins at \p from, that a point lies beside.
/// \param across the direction in which it does.
QuadrangleMap::Linear QuadrangleMap::MakePlace(Point from, Point edge, Point across) const noexcept
{
    const double whole = Cross(edge, across);
    if (whole == 0.0)
        return {};
    return {Cross(m_origin - from, across) / whole, across.y / whole, -across.x / whole};
}

void QuadrangleMap::BeginRow(double y) noexcept
{
    for (Linear* const function : {&m_along, &m_sum, &m_first, &m_second})
        function->row = function->atOrigin + function->perY * (y - m_origin.y);
}

} // namespace Renderer::Texture
