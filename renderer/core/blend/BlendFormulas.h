#pragma once

#include <type_traits>

#include <renderer/paint/FillBlendMode.h>

/// \file
/// The separable blend formulas B(b, s), one channel at a time. Sources: "W3C" is W3C Compositing
/// and Blending Level 1, section 10; the others are given in full.
///
/// The formulas are written in homogeneous form. Premultiplied storage holds S = as·s and B = ab·b;
/// what composition needs is as·ab·B(b, s). With x = as·ab·b = as·B and y = as·ab·s = ab·S that is
/// a function of x, y and p = as·ab of degree one, so no colour is ever divided by its alpha. For
/// 8-bit pixels every product is an integer below 2^24, exact in a float: the comparisons at the
/// formulas' discontinuities are exact as well. The complements are products of exact differences
/// of their own, never 1 − b in floating point, because they are divided by.
///
/// Selects instead of branches, one expression per formula: the compiler turns them into vector
/// code.

namespace Renderer::Blending {

using BlendMode = FillBlendMode::BlendMode;

/// Selects a formula by overload.
template<BlendMode mode>
using Mode = std::integral_constant<BlendMode, mode>;

/// One channel of a backdrop b and a source s, every term times p = as·ab.
struct Terms
{
    float x;  ///< b
    float xc; ///< 1 − b
    float y;  ///< s
    float yc; ///< 1 − s
    float p;  ///< 1
    float q;  ///< b·s
    float qc; ///< (1 − b)·(1 − s)
};

/// \param b, s premultiplied colour. \param ab, as their alphas.
inline Terms MakeTerms(float b, float s, float ab, float as)
{
    const float bc = ab - b;
    const float sc = as - s;
    return {as * b, as * bc, ab * s, ab * sc, as * ab, b * s, bc * sc};
}

/// The terms of 1 − b and 1 − s.
inline Terms Complement(const Terms& t)
{
    return {t.xc, t.x, t.yc, t.y, t.p, t.qc, t.q};
}

/// The terms with backdrop and source exchanged.
inline Terms Exchange(const Terms& t)
{
    return {t.y, t.yc, t.x, t.xc, t.p, t.q, t.qc};
}

/// Whether a mode leaves the colour of unbounded pixels unbounded. All other modes see b and s
/// clamped to 0…1, and their result is.
constexpr bool KeepsUnboundedColour(BlendMode mode)
{
    switch (mode) {
    case FillBlendMode::Normal:
    case FillBlendMode::Nameless:
    case FillBlendMode::Multiply:
    case FillBlendMode::Screen:
    case FillBlendMode::Darken:
    case FillBlendMode::Lighten:
    case FillBlendMode::Add:
    case FillBlendMode::Subtract:
    case FillBlendMode::Difference:
    case FillBlendMode::Exclusion:
    case FillBlendMode::Average:
    case FillBlendMode::Erase:
    case FillBlendMode::Mask:
        return true;
    default:
        return false;
    }
}

inline float Least(float a, float b)
{
    return a < b ? a : b;
}

inline float Greatest(float a, float b)
{
    return a > b ? a : b;
}

inline float Absolute(float a)
{
    return a < 0.0f ? -a : a;
}

/// a/b, or 0 where b is 0; neither negative.
inline float Quotient(float a, float b)
{
    const float quotient = a / (b > 0.0f ? b : 1.0f);
    return b > 0.0f ? quotient : 0.0f;
}

/// p·min(1, n/d), 0 where n is 0; n and d not negative.
inline float LimitedQuotient(float n, float d, float p)
{
    const float quotient = p * (n / (n < d ? d : 1.0f));
    return n < d ? quotient : (n > 0.0f ? p : 0.0f);
}

// Results outside 0…p are clamped by the caller, where the mode is bounded.

// W3C.
inline float Blend(Mode<FillBlendMode::Normal>, const Terms& t)
{
    return t.y;
}

inline float Blend(Mode<FillBlendMode::Multiply>, const Terms& t)
{
    return t.q;
}

inline float Blend(Mode<FillBlendMode::Screen>, const Terms& t)
{
    return t.x + t.y - t.q;
}

inline float Blend(Mode<FillBlendMode::Darken>, const Terms& t)
{
    return Least(t.x, t.y);
}

inline float Blend(Mode<FillBlendMode::Lighten>, const Terms& t)
{
    return Greatest(t.x, t.y);
}

inline float Blend(Mode<FillBlendMode::Difference>, const Terms& t)
{
    return Absolute(t.x - t.y);
}

inline float Blend(Mode<FillBlendMode::Exclusion>, const Terms& t)
{
    return t.x + t.y - 2.0f * t.q;
}

// W3C: s ≤ ½ ? Multiply(b, 2s) : Screen(b, 2s − 1), the latter being 1 − 2(1 − b)(1 − s).
inline float Blend(Mode<FillBlendMode::HardLight>, const Terms& t)
{
    return t.y <= t.yc ? 2.0f * t.q : t.p - 2.0f * t.qc;
}

// W3C: HardLight with the layers exchanged.
inline float Blend(Mode<FillBlendMode::Overlay>, const Terms& t)
{
    return Blend(Mode<FillBlendMode::HardLight>{}, Exchange(t));
}

// W3C: b = 0 ? 0 : min(1, b/(1 − s)).
inline float Blend(Mode<FillBlendMode::ColorDodge>, const Terms& t)
{
    return LimitedQuotient(t.x, t.yc, t.p);
}

// W3C: b = 1 ? 1 : 1 − min(1, (1 − b)/s).
inline float Blend(Mode<FillBlendMode::ColorBurn>, const Terms& t)
{
    return t.p - LimitedQuotient(t.xc, t.y, t.p);
}

// W3C: s ≤ ½ ? b − (1 − 2s)·b·(1 − b) : b + (2s − 1)·(D(b) − b), D(b) = √b above b = ¼ and
// ((16b − 12)·b + 4)·b up to there.
inline float Blend(Mode<FillBlendMode::SoftLight>, const Terms& t)
{
    const float b = Quotient(t.x, t.p);
    const float root = __builtin_sqrtf(b);
    const float polynomial = ((16.0f * b - 12.0f) * b + 4.0f) * b;
    const float dark = b * (1.0f - b);
    const float light = (b <= 0.25f ? polynomial : root) - b;
    return t.x + (t.y - t.yc) * (t.y <= t.yc ? dark : light);
}

// max(0, b + s − 1).
inline float Blend(Mode<FillBlendMode::LinearBurn>, const Terms& t)
{
    return t.x - t.yc;
}

// min(1, b + s).
inline float Blend(Mode<FillBlendMode::Add>, const Terms& t)
{
    return t.x + t.y;
}

// max(0, b − s).
inline float Blend(Mode<FillBlendMode::Subtract>, const Terms& t)
{
    return t.x - t.y;
}

// s ≤ ½ ? ColorBurn(b, 2s) : ColorDodge(b, 2s − 1).
inline float Blend(Mode<FillBlendMode::VividLight>, const Terms& t)
{
    const bool burns = t.y <= t.yc;
    const float quotient = LimitedQuotient(burns ? t.xc : t.x, 2.0f * (burns ? t.y : t.yc), t.p);
    return burns ? t.p - quotient : quotient;
}

// s ≤ ½ ? min(b, 2s) : max(b, 2s − 1).
inline float Blend(Mode<FillBlendMode::PinLight>, const Terms& t)
{
    return t.y <= t.yc ? Least(t.x, 2.0f * t.y) : Greatest(t.x, t.y - t.yc);
}

// b + 2s − 1.
inline float Blend(Mode<FillBlendMode::LinearLight>, const Terms& t)
{
    return t.x + (t.y - t.yc);
}

// b + s ≥ 1 ? 1 : 0.
inline float Blend(Mode<FillBlendMode::HardMix>, const Terms& t)
{
    return t.x >= t.yc ? t.p : 0.0f;
}

// (b + s)/2.
inline float Blend(Mode<FillBlendMode::Average>, const Terms& t)
{
    return 0.5f * (t.x + t.y);
}

// 1 − |1 − b − s|.
inline float Blend(Mode<FillBlendMode::Negation>, const Terms& t)
{
    return t.p - Absolute(t.xc - t.y);
}

// s = 1 ? 1 : min(1, b²/(1 − s)).
inline float Blend(Mode<FillBlendMode::Reflect>, const Terms& t)
{
    const float quotient = t.x * (t.x / (t.yc > 0.0f ? t.yc : 1.0f));
    return t.yc > 0.0f ? quotient : t.p;
}

// Reflect with the layers exchanged.
inline float Blend(Mode<FillBlendMode::Glow>, const Terms& t)
{
    return Blend(Mode<FillBlendMode::Reflect>{}, Exchange(t));
}

// (1 − s)·b + s·(b < ½ ? 1 : 0): moves towards the extreme that contrasts with the backdrop.
inline float Blend(Mode<FillBlendMode::ContrastInvert>, const Terms& t)
{
    return t.x - t.q + (t.x < t.xc ? t.y : 0.0f);
}

/// Whether a mode blends each channel for itself.
template<BlendMode mode>
concept SeparableMode = requires(Terms t)
{
    Blend(Mode<mode>{}, t);
};

} // namespace Renderer::Blending
