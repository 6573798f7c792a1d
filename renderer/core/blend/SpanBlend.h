#pragma once

#include <array>
#include <cstddef>

#include <renderer/paint/FillBlendMode.h>

namespace Renderer {

/// The blend functions of one pixel format and one mode: they composite a scratch span of
/// premultiplied pixels into a row of the destination.
///
/// With S the scratch pixel, c the coverage byte and m the mask byte (255 where there is no mask),
/// the source is S scaled by (c/255)^ratio · m/255; it is composited over the backdrop by the
/// mode's formula, with premultiplied storage.
struct SpanBlend
{
    /// One coverage for the whole span.
    using RunFunction = void (*)(void* destination, const unsigned char* mask, const void* scratch,
                                 unsigned char cover, double gammaRatio, unsigned length);
    /// A coverage byte per pixel.
    using MaskFunction = void (*)(void* destination, const unsigned char* mask, const void* scratch,
                                  const unsigned char* covers, double gammaRatio, unsigned length);

    /// The same without mask and with a ratio of 1, for a source that is one pixel everywhere, and
    /// for several rows at once that have the same coverage. \param stride bytes from row to row.
    using SolidRunFunction = void (*)(void* destination, std::ptrdiff_t stride, unsigned rows,
                                      const void* pixel, unsigned char cover, unsigned length);
    using SolidMaskFunction = void (*)(void* destination, std::ptrdiff_t stride, unsigned rows,
                                       const void* pixel, const unsigned char* covers,
                                       unsigned length);

    /// No pixel has more bytes.
    static constexpr unsigned LargestPixel = 20;

    RunFunction run = nullptr;
    MaskFunction mask = nullptr;
    /// Both or neither: a mode and format need not offer them. The same bytes as the general forms.
    SolidRunFunction solidRun = nullptr;
    SolidMaskFunction solidMask = nullptr;
    /// Whether a source of full alpha at full coverage replaces what lies below.
    bool opaqueReplaces = false;
};

/// One entry per blend mode; spans use the first FillBlendMode::SpanModeCount, composite groups
/// all.
using SpanBlendTable = std::array<SpanBlend, 33>;

/// How one pixel format interpolates: every channel d of the destination, alpha included, becomes
/// d + w·(p − d), with p the paint's and w = (c/255)^ratio · m/255 · the alpha of the weight pixel.
struct SpanInterpolation
{
    /// One coverage for the whole span.
    using RunFunction = void (*)(void* destination, const unsigned char* mask, const void* paint,
                                 const void* weights, unsigned char cover, double gammaRatio,
                                 unsigned length);
    /// A coverage byte per pixel.
    using MaskFunction = void (*)(void* destination, const unsigned char* mask, const void* paint,
                                  const void* weights, const unsigned char* covers,
                                  double gammaRatio, unsigned length);

    /// Makes weight pixels of full alpha, for transparency populators to scale.
    void (*beginWeights)(void* weights, unsigned length) = nullptr;
    RunFunction run = nullptr;
    MaskFunction mask = nullptr;
};

/// All blend functions of a pixel format.
struct SpanBlendSet
{
    SpanBlendTable modes;
    SpanInterpolation interpolation;
};

} // namespace Renderer
