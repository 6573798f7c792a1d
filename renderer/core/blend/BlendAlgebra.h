#pragma once

#include <array>

#include <renderer/core/blend/ColourFormulas.h>
#include <renderer/core/blend/PixelLayout.h>

/// \file
/// Composition of one source pixel over one backdrop pixel, whatever the mode: from the roles of
/// the channels to the formulas, and from B(b, s) to the stored result.

namespace Renderer::Blending {

/// A pixel in floats: premultiplied, in units of a storage step.
template<class PixelT>
struct FloatPixel
{
    float colour[PixelT::ColourCount];
    float alpha;
};

/// as·ab·B(b, s) of every colour channel.
template<class PixelT>
using BlendedColour = std::array<float, PixelT::ColourCount>;

template<class PixelT>
Triple GetAdditive(const FloatPixel<PixelT>& c)
{
    if constexpr (GetLayout<PixelT>() == ColourLayout::CMYK)
        return {c.alpha - c.colour[0], c.alpha - c.colour[1], c.alpha - c.colour[2]};
    else
        return {c.colour[0], c.colour[1], c.colour[2]};
}

/// What DarkerColor and LighterColor compare, times the pixel's alpha; in any unit. For CMYK the
/// complement of the ink sum 0.3·c + 0.59·m + 0.11·y + k of PDF 1.7, 10.3.3, without its clamp, so
/// that colours beyond full black still differ.
template<class PixelT>
float GetComparedLuminosity(const FloatPixel<PixelT>& c)
{
    constexpr auto layout = GetLayout<PixelT>();
    if constexpr (layout == ColourLayout::RGB)
        return Luminosity100(GetAdditive(c));
    else if constexpr (layout == ColourLayout::CMYK)
        return Luminosity100(GetAdditive(c)) - 100.0f * c.colour[3];
    else
        return c.colour[0];
}

/// The separable modes, channel by channel.
template<BlendMode mode, class PixelT>
requires SeparableMode<mode> BlendedColour<PixelT> BlendPixel(const FloatPixel<PixelT>& b,
                                                              const FloatPixel<PixelT>& s)
{
    BlendedColour<PixelT> result;
    for (std::size_t c = 0; c < PixelT::ColourCount; ++c) {
        const Terms terms = MakeTerms(b.colour[c], s.colour[c], b.alpha, s.alpha);
        if (PixelT::Roles[c] == Raster::ChannelRole::Opponent)
            result[c] = terms.y;
        else if (PixelT::Roles[c] == Raster::ChannelRole::Subtractive)
            result[c] = terms.p - Blend(Mode<mode>{}, Complement(terms));
        else
            result[c] = Blend(Mode<mode>{}, terms);
    }
    return result;
}

/// The whole colour of smaller, larger luminosity; the backdrop's where they are equal.
template<BlendMode mode, class PixelT>
requires(mode == FillBlendMode::DarkerColor || mode == FillBlendMode::LighterColor)
    BlendedColour<PixelT> BlendPixel(const FloatPixel<PixelT>& b, const FloatPixel<PixelT>& s)
{
    const float backdrop = s.alpha * GetComparedLuminosity(b);
    const float source = b.alpha * GetComparedLuminosity(s);
    const bool takesSource =
        mode == FillBlendMode::DarkerColor ? source < backdrop : source > backdrop;
    BlendedColour<PixelT> result;
    for (std::size_t c = 0; c < PixelT::ColourCount; ++c)
        result[c] = takesSource ? b.alpha * s.colour[c] : s.alpha * b.colour[c];
    return result;
}

/// Hue, Saturation, Color or Luminosity of Lab pixels, in LCh: hue is the direction, saturation the
/// length of the opponent channels.
template<BlendMode mode, class PixelT>
BlendedColour<PixelT> BlendLab(const FloatPixel<PixelT>& b, const FloatPixel<PixelT>& s)
{
    constexpr float halfStep = 127.5f;
    const Opponents backdrop = RemoveOffset(b.colour[1], b.colour[2], b.alpha);
    const Opponents source = RemoveOffset(s.colour[1], s.colour[2], s.alpha);
    const float p = s.alpha * b.alpha;
    if constexpr (mode == FillBlendMode::Luminosity) {
        return {b.alpha * s.colour[0], s.alpha * b.colour[1], s.alpha * b.colour[2]};
    } else if constexpr (mode == FillBlendMode::Color) {
        return {s.alpha * b.colour[0], b.alpha * s.colour[1], b.alpha * s.colour[2]};
    } else if constexpr (mode == FillBlendMode::Hue) {
        const Opponents turned =
            AddOffset(SetChroma(source, s.alpha * Chroma(backdrop, halfStep), halfStep), p);
        return {s.alpha * b.colour[0], turned.a, turned.b};
    } else {
        const Opponents scaled =
            AddOffset(SetChroma(backdrop, b.alpha * Chroma(source, halfStep), halfStep), p);
        return {s.alpha * b.colour[0], scaled.a, scaled.b};
    }
}

/// Hue, Saturation, Color and Luminosity: a grey has neither hue nor saturation; of CMYK the
/// chromatic inks blend as RGB and black stays the backdrop's, or is the source's for Luminosity
/// (PDF 1.7, 11.3.5.3).
template<BlendMode mode, class PixelT>
requires requires(ColourPair c)
{
    BlendColour(Mode<mode>{}, c);
}
BlendedColour<PixelT> BlendPixel(const FloatPixel<PixelT>& b, const FloatPixel<PixelT>& s)
{
    constexpr auto layout = GetLayout<PixelT>();
    constexpr bool ofSource = mode == FillBlendMode::Luminosity;
    if constexpr (layout == ColourLayout::Grey) {
        return {ofSource ? b.alpha * s.colour[0] : s.alpha * b.colour[0]};
    } else if constexpr (layout == ColourLayout::Lab) {
        return BlendLab<mode>(b, s);
    } else {
        const Triple result =
            BlendColour(Mode<mode>{}, ColourPair{GetAdditive(b), GetAdditive(s), b.alpha, s.alpha});
        if constexpr (layout == ColourLayout::RGB) {
            return {result.r, result.g, result.b};
        } else {
            const float p = s.alpha * b.alpha;
            const float black = ofSource ? b.alpha * s.colour[3] : s.alpha * b.colour[3];
            return {p - result.r, p - result.g, p - result.b, black};
        }
    }
}

/// The pixel with its colour clamped to 0…alpha.
template<class PixelT>
FloatPixel<PixelT> Clamp(const FloatPixel<PixelT>& c)
{
    FloatPixel<PixelT> result = c;
    for (float& channel : result.colour)
        channel = Least(Greatest(channel, 0.0f), c.alpha);
    return result;
}

/// The source s composited over the backdrop b (W3C Compositing, section 5; PDF 1.7, 11.3.6), in
/// premultiplied form:
///   a   = ab + k·as·(1 − ab)
///   a·C = (1 − k·as)·B + k·((1 − ab)·S + as·ab·B(b, s))
/// Erase and Mask scale the backdrop by 1 − k·as and by 1 − k·(1 − as).
/// \param k the weight of the source, 0…1: its coverage and mask.
template<BlendMode mode, class PixelT>
FloatPixel<PixelT> CompositePixel(const FloatPixel<PixelT>& b, const FloatPixel<PixelT>& s, float k)
{
    constexpr float max = static_cast<float>(PixelT::Max);
    constexpr bool clampsInput = IsUnbounded<PixelT> && !KeepsUnboundedColour(mode);
    constexpr bool clampsBlend = !(IsUnbounded<PixelT> && KeepsUnboundedColour(mode));
    const float sourceAlpha = mode == FillBlendMode::Mask ? max - s.alpha : s.alpha;
    const float keep = 1.0f - k * sourceAlpha * (1.0f / max);

    FloatPixel<PixelT> result;
    if constexpr (mode == FillBlendMode::Erase || mode == FillBlendMode::Mask) {
        for (std::size_t c = 0; c < PixelT::ColourCount; ++c)
            result.colour[c] = b.colour[c] * keep;
        result.alpha = b.alpha * keep;
        return result;
    } else if constexpr (mode == FillBlendMode::Normal) {
        for (std::size_t c = 0; c < PixelT::ColourCount; ++c)
            result.colour[c] = b.colour[c] * keep + s.colour[c] * k;
    } else {
        const float limit = s.alpha * b.alpha;
        const float weight = k * (1.0f / max);
        const auto blended =
            clampsInput ? BlendPixel<mode>(Clamp(b), Clamp(s)) : BlendPixel<mode>(b, s);
        for (std::size_t c = 0; c < PixelT::ColourCount; ++c) {
            const float blend = clampsBlend ? Least(Greatest(blended[c], 0.0f), limit) : blended[c];
            result.colour[c] =
                b.colour[c] * keep + weight * ((max - b.alpha) * s.colour[c] + blend);
        }
    }
    result.alpha = Least(b.alpha * keep + s.alpha * k, max);
    return result;
}

} // namespace Renderer::Blending
