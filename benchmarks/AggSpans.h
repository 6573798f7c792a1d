#pragma once

#include <cmath>
#include <numbers>

#include <agg_basics.h>

namespace Benchmarks {

/// The gradient of one full turn, in the manner of AGG's own gradient functions.
struct GradientConical
{
    /// \param d what a full turn gives. \return 0…d.
    static int calculate(int x, int y, int d)
    {
        const double angle = std::atan2(double(y), double(x));
        const double turn =
            (angle < 0.0 ? angle + 2.0 * std::numbers::pi : angle) / (2.0 * std::numbers::pi);
        return int(turn * d);
    }
};

/// Scales the pixels of a span by one opacity.
template<class Colour>
class SpanOpacity
{
public:
    explicit SpanOpacity(double opacity) : m_cover(agg::cover_type(std::lround(opacity * 255.0))) {}
    void prepare() {}
    void generate(Colour* span, int, int, unsigned length) const
    {
        for (; length != 0; --length, ++span) {
            span->r = Colour::mult_cover(span->r, m_cover);
            span->g = Colour::mult_cover(span->g, m_cover);
            span->b = Colour::mult_cover(span->b, m_cover);
            span->a = Colour::mult_cover(span->a, m_cover);
        }
    }

private:
    agg::cover_type m_cover;
};

} // namespace Benchmarks
