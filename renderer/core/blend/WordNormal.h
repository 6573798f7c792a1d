#pragma once

#include <renderer/core/blend/WordVectors.h>

/// \file
/// Normal composition of spans for pixels that are words, with coverage bytes and neither gamma nor
/// mask: the roads of almost everything that is drawn. The same bytes as CompositeFlat.

namespace Renderer::Blending {

/// Whether pixels have these roads: an even number of integer channels in a word.
template<class PixelT>
inline constexpr bool HasWordNormal =
    MakesWord<typename PixelT::ChannelType, PixelT::ChannelCount>&& PixelT::ChannelCount % 2 == 0;

/// Calls \p work with vectors of a size that suits the processor and the length of a span.
template<class PixelT, class Code, class Work>
[[gnu::always_inline]] inline void WithVectors(unsigned length, const Work& work)
{
    using Long = WordVectors<PixelT, Code::VectorBytes>;
    using Short = WordVectors<PixelT, 16>;
    if constexpr (Code::VectorBytes > 16) {
        if (length >= Long::Pixels)
            return work(Long{});
    }
    work(Short{});
}

/// Calls \p work for the first pixel of each row.
template<class Word, class Work>
[[gnu::always_inline]] inline void ForRows(void* destination, std::ptrdiff_t stride, unsigned rows,
                                           const Work& work)
{
    auto* row = static_cast<unsigned char*>(destination);
    for (; rows > 0; --rows, row += stride)
        work(reinterpret_cast<Word*>(row));
}

/// Composites one pixel over rows, with one coverage.
template<class PixelT, class Code>
struct SolidRun
{
    static void Apply(void* destination, std::ptrdiff_t stride, unsigned rows, const void* pixel,
                      unsigned char cover, unsigned length)
    {
        WithVectors<PixelT, Code>(length, [=]<class Vectors>(Vectors) {
            using Word = typename Vectors::Word;
            const Word word = Vectors::LoadOne(pixel);
            if (cover == 255 &&
                GetChannel<PixelT::AlphaIndex>(static_cast<const PixelT*>(pixel)) == PixelT::Max) {
                ForRows<Word>(destination, stride, rows,
                              [&](Word* row) { FillSpan<Vectors>(row, word, length); });
                return;
            }
            typename Vectors::Source source;
            typename Vectors::Lanes scaled;
            typename Vectors::Wides keep;
            Vectors::Prepare(typename Vectors::Words{} + word, source);
            Vectors::Weigh(source, typename Vectors::Wides{} + Vectors::GetWeight(cover), scaled,
                           keep);
            ForRows<Word>(destination, stride, rows, [&](Word* row) {
                RewriteSpan<Vectors>(row, nullptr, nullptr, length,
                                     [&](auto& vector, const auto&, const auto&) {
                                         Vectors::Over(scaled, keep, vector);
                                     });
            });
        });
    }
};

/// Composites one pixel over rows, with a coverage per pixel.
template<class PixelT, class Code>
struct SolidMask
{
    static void Apply(void* destination, std::ptrdiff_t stride, unsigned rows, const void* pixel,
                      const unsigned char* covers, unsigned length)
    {
        WithVectors<PixelT, Code>(length, [=]<class Vectors>(Vectors) {
            using Word = typename Vectors::Word;
            typename Vectors::Source source;
            Vectors::Prepare(typename Vectors::Words{} + Vectors::LoadOne(pixel), source);
            ForRows<Word>(destination, stride, rows, [&](Word* row) {
                RewriteSpan<Vectors>(row, nullptr, covers, length,
                                     [&](auto& vector, const auto&, const auto& weights) {
                                         typename Vectors::Wides keep;
                                         typename Vectors::Lanes scaled;
                                         Vectors::Weigh(source, weights, scaled, keep);
                                         Vectors::Over(scaled, keep, vector);
                                     });
            });
        });
    }
};

/// Composites a span over another, with one coverage.
template<class PixelT, class Code>
struct SpanRun
{
    static void Apply(void* destination, const void* scratch, unsigned char cover, unsigned length)
    {
        WithVectors<PixelT, Code>(length, [=]<class Vectors>(Vectors) {
            using Word = typename Vectors::Word;
            Word* const pixels = static_cast<Word*>(destination);
            const Word* const sources = static_cast<const Word*>(scratch);
            typename Vectors::Source source;
            if (cover == 255) {
                RewriteSpan<Vectors>(pixels, sources, nullptr, length,
                                     [&](auto& vector, const auto& from, const auto&) {
                                         Vectors::Prepare(from, source);
                                         Vectors::OverFull(source, vector);
                                     });
                return;
            }
            const auto weights = typename Vectors::Wides{} + Vectors::GetWeight(cover);
            RewriteSpan<Vectors>(pixels, sources, nullptr, length,
                                 [&](auto& vector, const auto& from, const auto&) {
                                     typename Vectors::Wides keep;
                                     typename Vectors::Lanes scaled;
                                     Vectors::Prepare(from, source);
                                     Vectors::Weigh(source, weights, scaled, keep);
                                     Vectors::Over(scaled, keep, vector);
                                 });
        });
    }
};

/// Composites a span over another, with a coverage per pixel.
template<class PixelT, class Code>
struct SpanMask
{
    static void Apply(void* destination, const void* scratch, const unsigned char* covers,
                      unsigned length)
    {
        WithVectors<PixelT, Code>(length, [=]<class Vectors>(Vectors) {
            using Word = typename Vectors::Word;
            RewriteSpan<Vectors>(static_cast<Word*>(destination), static_cast<const Word*>(scratch),
                                 covers, length,
                                 [](auto& vector, const auto& from, const auto& weights) {
                                     typename Vectors::Source source;
                                     typename Vectors::Wides keep;
                                     typename Vectors::Lanes scaled;
                                     Vectors::Prepare(from, source);
                                     Vectors::Weigh(source, weights, scaled, keep);
                                     Vectors::Over(scaled, keep, vector);
                                 });
        });
    }
};

} // namespace Renderer::Blending
