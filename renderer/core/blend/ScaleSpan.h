#pragma once

#include <renderer/core/blend/Processor.h>
#include <renderer/core/blend/WordNormal.h>

/// \file
/// Scaling of spans of premultiplied pixels that are words: every channel times a factor in units
/// of 1/Max, exactly rounded.

namespace Renderer::Blending {

/// Scales all pixels by one factor.
template<class PixelT, class Code>
struct ScaleRun
{
    static void Apply(void* pixels, typename PixelT::ChannelType factor, unsigned length)
    {
        WithVectors<PixelT, Code>(length, [=]<class Vectors>(Vectors) {
            using Word = typename Vectors::Word;
            const auto factors = typename Vectors::Wides{} + typename Vectors::Wide{factor};
            RewriteSpan<Vectors>(
                static_cast<Word*>(pixels), nullptr, nullptr, length,
                [&](auto& vector, const auto&, const auto&) { Vectors::Scale(factors, vector); });
        });
    }
};

/// Scales each pixel by the alpha of another one.
template<class PixelT, class Code>
struct ScaleByPixels
{
    static void Apply(void* pixels, const void* others, unsigned length)
    {
        WithVectors<PixelT, Code>(length, [=]<class Vectors>(Vectors) {
            using Word = typename Vectors::Word;
            RewriteSpan<Vectors>(static_cast<Word*>(pixels), static_cast<const Word*>(others),
                                 nullptr, length, [](auto& vector, const auto& from, const auto&) {
                                     typename Vectors::Wides factors;
                                     Vectors::SpreadAlpha(from, factors);
                                     Vectors::Scale(factors, vector);
                                 });
        });
    }
};

template<class PixelT>
void ScaleSpan(PixelT* pixels, typename PixelT::ChannelType factor, unsigned length)
{
    using ChannelType = typename PixelT::ChannelType;
    static const auto function =
        HasWideCode()
            ? &WideCode::Call<ScaleRun<PixelT, WideCode>, void*, ChannelType, unsigned>
            : &BaselineCode::Call<ScaleRun<PixelT, BaselineCode>, void*, ChannelType, unsigned>;
    function(pixels, factor, length);
}

template<class PixelT>
void ScaleSpanByAlpha(PixelT* pixels, const PixelT* others, unsigned length)
{
    static const auto function =
        HasWideCode()
            ? &WideCode::Call<ScaleByPixels<PixelT, WideCode>, void*, const void*, unsigned>
            : &BaselineCode::Call<ScaleByPixels<PixelT, BaselineCode>, void*, const void*,
                                  unsigned>;
    function(pixels, others, length);
}

} // namespace Renderer::Blending
