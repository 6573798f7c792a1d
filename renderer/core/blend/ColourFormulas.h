#pragma once

#include <renderer/core/blend/BlendFormulas.h>

/// \file
/// The blend formulas that look at the whole colour, as in BlendFormulas.h homogeneous: the results
/// are times p = as·ab. Their arguments B and S are premultiplied by one alpha only, because the
/// differences of two channels of one pixel, which decide hue and saturation, are exact that way.

namespace Renderer::Blending {

/// Three additive channels.
struct Triple
{
    float r, g, b;
};

inline Triple operator*(const Triple& c, float factor)
{
    return {c.r * factor, c.g * factor, c.b * factor};
}

inline Triple operator+(const Triple& c, float offset)
{
    return {c.r + offset, c.g + offset, c.b + offset};
}

inline float Least(const Triple& c)
{
    return Least(Least(c.r, c.g), c.b);
}

inline float Greatest(const Triple& c)
{
    return Greatest(Greatest(c.r, c.g), c.b);
}

/// A hundred times the luminosity 0.30·r + 0.59·g + 0.11·b: exact for integer channels.
inline float Luminosity100(const Triple& c)
{
    return 30.0f * c.r + 59.0f * c.g + 11.0f * c.b;
}

inline float Luminosity(const Triple& c)
{
    return Luminosity100(c) * 0.01f;
}

inline float Saturation(const Triple& c)
{
    return Greatest(c) - Least(c);
}

/// W3C SetSat: \p c scaled and shifted so that its least channel is 0 and its greatest \p
/// saturation; black where \p c is grey.
inline Triple SetSaturation(const Triple& c, float saturation)
{
    const float range = Saturation(c);
    const float scale = Quotient(saturation, range);
    return (c + -Least(c)) * scale;
}

/// W3C SetLum with ClipColor: \p c shifted to the luminosity, then drawn towards grey into 0…limit.
inline Triple SetLuminosity(const Triple& c, float luminosity, float limit)
{
    const Triple shifted = c + (luminosity - Luminosity(c));
    const float least = Least(shifted);
    const float greatest = Greatest(shifted);
    const float low = Quotient(luminosity, luminosity - least);
    const float high = Quotient(limit - luminosity, greatest - luminosity);
    const float scale = Least(least < 0.0f ? low : 1.0f, greatest > limit ? high : 1.0f);
    return (shifted + -luminosity) * scale + luminosity;
}

/// A backdrop and a source pixel: additive colour, each premultiplied by its own alpha, and the
/// alphas.
struct ColourPair
{
    Triple B, S;
    float ab, as;
};

// W3C.
inline Triple BlendColour(Mode<FillBlendMode::Hue>, const ColourPair& c)
{
    return SetLuminosity(SetSaturation(c.S, c.as * Saturation(c.B)), c.as * Luminosity(c.B),
                         c.as * c.ab);
}

inline Triple BlendColour(Mode<FillBlendMode::Saturation>, const ColourPair& c)
{
    return SetLuminosity(SetSaturation(c.B, c.ab * Saturation(c.S)), c.as * Luminosity(c.B),
                         c.as * c.ab);
}

inline Triple BlendColour(Mode<FillBlendMode::Color>, const ColourPair& c)
{
    return SetLuminosity(c.S * c.ab, c.as * Luminosity(c.B), c.as * c.ab);
}

inline Triple BlendColour(Mode<FillBlendMode::Luminosity>, const ColourPair& c)
{
    return SetLuminosity(c.B * c.as, c.ab * Luminosity(c.S), c.as * c.ab);
}

/// The opponent channels of a Lab pixel, premultiplied, without their offset. The unit is 1/255 of
/// a storage step: with the offset 128/255 of ICC's version-4 encoding all values are exact in a
/// float.
struct Opponents
{
    float a, b;
};

inline Opponents RemoveOffset(float a, float b, float alpha)
{
    return {255.0f * a - 128.0f * alpha, 255.0f * b - 128.0f * alpha};
}

/// The stored form of opponents that are premultiplied by \p p.
inline Opponents AddOffset(const Opponents& opponents, float p)
{
    return {(opponents.a + 128.0f * p) * (1.0f / 255.0f),
            (opponents.b + 128.0f * p) * (1.0f / 255.0f)};
}

/// Chroma, 0 for a pixel that rounding to storage could have made of a neutral one: \p threshold is
/// half a storage step. (A neutral pixel with alpha is not stored as exactly neutral, and would
/// lend an arbitrary hue to what it is blended with.)
inline float Chroma(const Opponents& c, float threshold)
{
    const bool neutral = Greatest(Absolute(c.a), Absolute(c.b)) <= threshold;
    return neutral ? 0.0f : __builtin_sqrtf(c.a * c.a + c.b * c.b);
}

/// The hue of \p c with another chroma; neutral where \p c is.
inline Opponents SetChroma(const Opponents& c, float chroma, float threshold)
{
    const float scale = Quotient(chroma, Chroma(c, threshold));
    return {c.a * scale, c.b * scale};
}

} // namespace Renderer::Blending
