#pragma once

#include <array>
#include <cstddef>

#include <kernel/Point.h>
#include <renderer/core/texture/CVertex.h>

namespace Renderer::Texture {

/// A place on a texture and the opacity there.
struct TexturePlace
{
    float u;
    float v;
    float opacity;
};

/// Maps a quadrangle of the page to a part of a texture, whose corners are its own: left upper,
/// right upper, right lower, left lower. Its left or upper edge may be one point.
///
/// With the distances d₀ and d₁ of a point from the lines through the left and the right edge, u is
/// the share s = d₀ / (d₀ + d₁) of the way from edge to edge. v is (1 − s)·v₀ + s·v₁, where v₀ and
/// v₁ are the places on these lines that lie in the direction between the middles of both edges
/// from the point. So v does not depend on the upper and the lower edge, of which one nearly
/// vanishes in tight bends; quadrangles that share their left and right edges agree on them; and
/// parallelograms are mapped affinely. The opacity goes with s.
class QuadrangleMap
{
public:
    using Point = Kernel::PointT<double>;

    explicit QuadrangleMap(const std::array<CVertex, 4>& corners) noexcept;

    /// Turns to the points at height \p y.
    void BeginRow(double y) noexcept;

    /// The place of a point of the row, or the nearest one that the quadrangle has.
    TexturePlace At(double x) const noexcept { return m_isAffine ? Find<true>(x) : Find<false>(x); }

    /// The places of points one apart from each other, but for their opacities.
    void AtEach(double x, std::size_t count, float* __restrict u,
                float* __restrict v) const noexcept
    {
        const QuadrangleMap map = *this; // which nothing that is written can be a part of
        const auto find = [&]<bool IsAffine>() {
            for (std::size_t i = 0; i < count; ++i) {
                const TexturePlace place = map.Find<IsAffine>(x + double(int(i)));
                u[i] = place.u;
                v[i] = place.v;
            }
        };
        if (m_isAffine)
            find.template operator()<true>();
        else
            find.template operator()<false>();
    }

private:
    /// A linear function of the plane, and its value where the present row begins.
    struct Linear
    {
        double atOrigin = 0.0, perX = 0.0, perY = 0.0, row = 0.0;

        double At(double x) const noexcept { return row + perX * x; }
    };

    template<bool IsAffine>
    TexturePlace Find(double x) const noexcept
    {
        x -= m_origin.x;
        const float s = Limit(IsAffine ? m_along.At(x) : m_along.At(x) / m_sum.At(x));
        const double first = m_first.At(x);
        const float v = Limit(first + double(s) * (m_second.At(x) - first));
        return {m_from.u + s * m_step.u, m_from.v + v * m_step.v,
                m_from.opacity + s * m_step.opacity};
    }

    static float Limit(double value) noexcept
    {
        const auto share = static_cast<float>(value);
        return share > 0.0F ? (share < 1.0F ? share : 1.0F) : 0.0F;
    }
    Linear MakeDistance(Point from, Point direction) const noexcept;
    Linear MakePlace(Point from, Point edge, Point across) const noexcept;

    Point m_origin; // of the functions
    Linear m_along; // d₀, or s where the edges are parallel
    Linear m_sum;   // d₀ + d₁
    Linear m_first; // v₀
    Linear m_second;
    bool m_isAffine = false;
    TexturePlace m_from;
    TexturePlace m_step;
};

} // namespace Renderer::Texture
