#pragma once

#include <cstring>
#include <type_traits>

#include <renderer/core/blend/IntegerArithmetic.h>
#include <renderer/core/blend/PixelWord.h>

namespace Renderer::Blending {

/// Vectors of pixels whose channels make up a word, and Normal composition of such vectors.
/// Channels are worked on in lanes of twice their width: those at even places in one vector, those
/// at odd places in another. \tparam bytes the size of a vector.
template<class PixelT, unsigned bytes>
struct WordVectors
{
    using ChannelType = typename PixelT::ChannelType;
    using Arithmetic = IntegerArithmetic<ChannelType>;
    using Word = typename WordOfSize<sizeof(PixelT)>::Type;
    using Wide = typename Arithmetic::Wide;
    static constexpr unsigned Pixels = bytes / sizeof(Word);
    static constexpr unsigned Channels = PixelT::ChannelCount;

    using Words [[gnu::vector_size(bytes)]] = Word;
    using Wides [[gnu::vector_size(bytes)]] = Wide;
    using Covers [[gnu::vector_size(Pixels)]] = unsigned char;

    static_assert(Channels % 2 == 0 && sizeof(Wide) == 2 * sizeof(ChannelType));

    /// The channels of a vector of pixels.
    struct Lanes
    {
        Wides even;
        Wides odd;
    };

    /// Premultiplied pixels to be composited, and their alpha in every lane.
    struct Source
    {
        Lanes colour;
        Wides alpha;
    };

    [[gnu::always_inline]] static void Split(const Words& words, Lanes& lanes)
    {
        lanes.even = reinterpret_cast<Wides>(words) & Wide{Arithmetic::Max};
        lanes.odd = reinterpret_cast<Wides>(words) >> Arithmetic::Bits;
    }

    [[gnu::always_inline]] static void Join(const Lanes& lanes, Words& words)
    {
        const Wides joined = lanes.even | (lanes.odd << Arithmetic::Bits);
        words = reinterpret_cast<Words>(joined);
    }

    /// Puts the low lane of each word into all its lanes.
    [[gnu::always_inline]] static void Spread(const Words& words, Wides& lanes)
    {
        Words spread = words;
        for (unsigned bit = 2 * Arithmetic::Bits; bit < 8 * sizeof(Word); bit *= 2)
            spread |= spread << bit;
        lanes = reinterpret_cast<Wides>(spread);
    }

    /// Colour above alpha, which would overflow sums, counts as equal to it.
    [[gnu::always_inline]] static void Prepare(const Words& words, Source& source)
    {
        Split(words, source.colour);
        Spread(words >> (Channels - 1) * Arithmetic::Bits, source.alpha);
        const auto limit = [&](Wides& lanes) {
            lanes = lanes < source.alpha ? lanes : source.alpha;
        };
        limit(source.colour.even);
        limit(source.colour.odd);
    }

    [[gnu::always_inline]] static void Load(const Word* from, Words& words)
    {
        std::memcpy(&words, from, sizeof(words));
    }

    [[gnu::always_inline]] static void Store(const Words& words, Word* to)
    {
        std::memcpy(to, &words, sizeof(words));
    }

    /// The weight of a coverage byte, in units of 1/Max.
    static constexpr Wide GetWeight(unsigned char cover)
    {
        return static_cast<Wide>(cover * (Arithmetic::Max / 255));
    }

    /// Puts the weight of each pixel's coverage into all its lanes.
    /// \param covers a coverage byte per word.
    [[gnu::always_inline]] static void GetWeights(const Words& covers, Wides& lanes)
    {
        if constexpr (sizeof(ChannelType) > 1)
            Spread(covers * Word{Arithmetic::Max / 255}, lanes);
        else
            Spread(covers, lanes);
    }

    /// Scales a source, without the division that follows the sum, and finds what remains of the
    /// backdrop; see IntegerArithmetic::Keep.
    [[gnu::always_inline]] static void Weigh(const Source& source, const Wides& weights,
                                             Lanes& scaled, Wides& keep)
    {
        scaled.even = source.colour.even * weights;
        scaled.odd = source.colour.odd * weights;
        keep = source.alpha * weights;
        Arithmetic::DivideInPlace(keep);
        keep = Wide{Arithmetic::Max} - keep;
    }

    /// Reads a byte per pixel.
    [[gnu::always_inline]] static void LoadBytes(const unsigned char* from, Words& words)
    {
        Covers covers;
        std::memcpy(&covers, from, sizeof(covers));
        if constexpr (sizeof(covers) == 4 && sizeof(Word) == 4) {
            // The compiler converts so short a vector byte by byte.
            using Bytes [[gnu::vector_size(16)]] = unsigned char;
            const auto narrow = reinterpret_cast<Bytes>(Words{reinterpret_cast<Word>(covers)});
            words = reinterpret_cast<Words>(__builtin_shufflevector(
                narrow, Bytes{}, 0, 16, 16, 16, 1, 16, 16, 16, 2, 16, 16, 16, 3, 16, 16, 16));
        } else {
            words = __builtin_convertvector(covers, Words);
        }
    }

    /// A scaled source over what remains of a backdrop, rounded once; see IntegerArithmetic::Over.
    [[gnu::always_inline]] static void Over(const Lanes& scaled, const Wides& keep, Words& pixels)
    {
        Lanes backdrop;
        Split(pixels, backdrop);
        backdrop.even = scaled.even + backdrop.even * keep;
        backdrop.odd = scaled.odd + backdrop.odd * keep;
        Arithmetic::DivideInPlace(backdrop.even);
        Arithmetic::DivideInPlace(backdrop.odd);
        Join(backdrop, pixels);
    }

    /// A source that is not scaled, over a backdrop.
    [[gnu::always_inline]] static void OverFull(const Source& source, Words& pixels)
    {
        const Wides keep = Wide{Arithmetic::Max} - source.alpha;
        Lanes backdrop;
        Split(pixels, backdrop);
        backdrop.even *= keep;
        backdrop.odd *= keep;
        Arithmetic::DivideInPlace(backdrop.even);
        Arithmetic::DivideInPlace(backdrop.odd);
        backdrop.even += source.colour.even;
        backdrop.odd += source.colour.odd;
        Join(backdrop, pixels);
    }
};

/// Rewrites a span of pixels vector by vector. Pixels must not depend on each other: the last
/// vector overlaps the one before it.
///
/// \param sources, covers one entry per pixel, or null where \p compute reads none.
/// \param compute \c compute(pixels, sources, covers) changes a vector of pixels; covers come as
///        words.
template<class Vectors, class Sources, class Covers, class Compute>
[[gnu::always_inline]] inline void RewriteSpan(typename Vectors::Word* pixels, Sources sources,
                                               Covers covers, unsigned length,
                                               const Compute& compute)
{
    using Word = typename Vectors::Word;
    using Words = typename Vectors::Words;
    constexpr bool hasSources = !std::is_null_pointer_v<Sources>;
    constexpr bool hasCovers = !std::is_null_pointer_v<Covers>;
    constexpr unsigned count = Vectors::Pixels;
    Words vector{}, source{}, cover{};
    if (length < count) {
        for (unsigned i = 0; i < count; ++i) {
            if (i < length) {
                vector[i] = pixels[i];
                if constexpr (hasSources)
                    source[i] = sources[i];
                if constexpr (hasCovers)
                    cover[i] = Word{covers[i]};
            }
        }
        compute(vector, source, cover);
        for (unsigned i = 0; i < count; ++i) {
            if (i < length)
                pixels[i] = vector[i];
        }
        return;
    }
    const auto computeAt = [&](unsigned i) {
        Vectors::Load(pixels + i, vector);
        if constexpr (hasSources)
            Vectors::Load(sources + i, source);
        if constexpr (hasCovers)
            Vectors::LoadBytes(covers + i, cover);
        compute(vector, source, cover);
    };
    const unsigned last = length - count;
    computeAt(last);
    const Words end = vector;
    for (unsigned i = 0; i < last; i += count) {
        computeAt(i);
        Vectors::Store(vector, pixels + i);
    }
    Vectors::Store(end, pixels + last);
}

} // namespace Renderer::Blending
