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

    static_assert(Channels <= 4 && Channels % 2 == 0 && sizeof(Wide) == 2 * sizeof(ChannelType));

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

    /// Puts the alpha of each pixel into all its lanes.
    [[gnu::always_inline]] static void SpreadAlpha(const Words& words, Wides& lanes)
    {
        Spread(words >> (Channels - 1) * Arithmetic::Bits, lanes);
    }

    /// Multiplies the channels by factors in units of 1/Max, exactly rounded.
    [[gnu::always_inline]] static void Scale(const Wides& factors, Words& words)
    {
        Lanes lanes;
        Split(words, lanes);
        lanes.even *= factors;
        lanes.odd *= factors;
        Arithmetic::DivideInPlace(lanes.even);
        Arithmetic::DivideInPlace(lanes.odd);
        Join(lanes, words);
    }

    /// Colour above alpha, which would overflow sums, counts as equal to it.
    [[gnu::always_inline]] static void Prepare(const Words& words, Source& source)
    {
        Split(words, source.colour);
        SpreadAlpha(words, source.alpha);
        const auto limit = [&](Wides& lanes) {
            lanes = lanes < source.alpha ? lanes : source.alpha;
        };
        limit(source.colour.even);
        limit(source.colour.odd);
    }

    /// \name Single words; pixels are objects of another type
    /// @{
    [[gnu::always_inline]] static Word LoadOne(const void* from)
    {
        Word word;
        std::memcpy(&word, from, sizeof(word));
        return word;
    }
    [[gnu::always_inline]] static void StoreOne(Word word, void* to)
    {
        std::memcpy(to, &word, sizeof(word));
    }
    /// @}

    [[gnu::always_inline]] static void Load(const Word* from, Words& words)
    {
        std::memcpy(&words, from, sizeof(words));
    }

    /// Reads pixels that were perhaps written just before, by vectors of 16 bytes: the processor
    /// hands them on when it is asked for the same pieces.
    [[gnu::always_inline]] static void LoadPieces(const Word* from, Words& words)
    {
        if constexpr (bytes == 16) {
            Load(from, words);
        } else {
            using Halves = WordVectors<PixelT, 16>;
            typename Halves::Words low, high;
            Halves::Load(from, low);
            Halves::Load(from + Halves::Pixels, high);
            Concatenate(low, high, words);
        }
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

    /// Puts the weight of each pixel's coverage byte into all its lanes.
    [[gnu::always_inline]] static void LoadWeights(const unsigned char* covers, Wides& weights)
    {
        if constexpr (bytes == 16) {
            LoadWeights16(covers, weights);
        } else {
            using Halves = WordVectors<PixelT, 16>;
            typename Halves::Wides low, high;
            Halves::LoadWeights16(covers, low);
            Halves::LoadWeights16(covers + Halves::Pixels, high);
            Concatenate(low, high, weights);
        }
    }

    template<class Half, class Whole>
    [[gnu::always_inline]] static void Concatenate(const Half& low, const Half& high, Whole& whole)
    {
        using Quads [[gnu::vector_size(16)]] = std::uint64_t;
        whole = reinterpret_cast<Whole>(__builtin_shufflevector(
            reinterpret_cast<Quads>(low), reinterpret_cast<Quads>(high), 0, 1, 2, 3));
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

    /// Widens bytes by interleaving them with zeros, then with themselves: that is what processors
    /// do well; conversions of so short vectors are compiled byte by byte.
    [[gnu::always_inline]] static void LoadWeights16(const unsigned char* covers, Wides& weights)
    {
        using Bytes [[gnu::vector_size(16)]] = unsigned char;
        using Shorts [[gnu::vector_size(16)]] = std::uint16_t;
        typename WordOfSize<Pixels>::Type packed;
        std::memcpy(&packed, covers, sizeof(packed));
        using Quads [[gnu::vector_size(16)]] = std::uint64_t;
        const auto loaded = reinterpret_cast<Bytes>(Quads{packed, 0});
        auto lanes = reinterpret_cast<Shorts>(__builtin_shufflevector(
            loaded, Bytes{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
        if constexpr (sizeof(Wide) == 4)
            lanes = __builtin_shufflevector(lanes, Shorts{}, 0, 8, 1, 9, 2, 10, 3, 11);
        weights = reinterpret_cast<Wides>(lanes);
        if constexpr (Channels == 4 && sizeof(Wide) == 2)
            weights = __builtin_shufflevector(weights, weights, 0, 0, 1, 1, 2, 2, 3, 3);
        else if constexpr (Channels == 4)
            weights = __builtin_shufflevector(weights, weights, 0, 0, 1, 1);
        weights *= Wide{Arithmetic::Max / 255};
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

/// Writes one pixel everywhere.
template<class Vectors>
[[gnu::always_inline]] inline void FillSpan(typename Vectors::Word* pixels,
                                            typename Vectors::Word pixel, unsigned length)
{
    constexpr unsigned count = Vectors::Pixels;
    if (length < count) {
        for (unsigned i = 0; i < length; ++i)
            Vectors::StoreOne(pixel, pixels + i);
        return;
    }
    const typename Vectors::Words vector = typename Vectors::Words{} + pixel;
    constexpr std::size_t bytes = sizeof(vector);
    Vectors::Store(vector, pixels);
    // The next ones begin at their own size: stores across cache lines cost twice.
    auto i = static_cast<unsigned>((bytes - reinterpret_cast<std::uintptr_t>(pixels) % bytes) /
                                   sizeof(pixel));
    for (; i + 4 * count <= length; i += 4 * count) {
        for (unsigned k = 0; k < 4; ++k)
            Vectors::Store(vector, pixels + i + k * count);
    }
    for (; i + count <= length; i += count)
        Vectors::Store(vector, pixels + i);
    Vectors::Store(vector, pixels + length - count);
}

/// Rewrites a span of pixels vector by vector. Pixels must not depend on each other: the last
/// vector overlaps the one before it.
///
/// \param sources, covers one entry per pixel, or null where \p compute reads none.
/// \param compute \c compute(pixels, sources, weights) changes a vector of pixels, given what its
///        covers weigh.
template<class Vectors, class Sources, class Covers, class Compute>
[[gnu::always_inline]] inline void RewriteSpan(typename Vectors::Word* pixels, Sources sources,
                                               Covers covers, unsigned length,
                                               const Compute& compute)
{
    using Words = typename Vectors::Words;
    constexpr bool hasSources = !std::is_null_pointer_v<Sources>;
    constexpr bool hasCovers = !std::is_null_pointer_v<Covers>;
    constexpr unsigned count = Vectors::Pixels;
    Words vector{}, source{};
    typename Vectors::Wides weights{};
    if (length < count) {
        // One by one: gathering them would cost more.
        for (unsigned i = 0; i < length; ++i) {
            vector[0] = Vectors::LoadOne(pixels + i);
            if constexpr (hasSources)
                source[0] = Vectors::LoadOne(sources + i);
            if constexpr (hasCovers)
                weights = decltype(weights){} + Vectors::GetWeight(covers[i]);
            compute(vector, source, weights);
            Vectors::StoreOne(vector[0], pixels + i);
        }
        return;
    }
    const auto computeAt = [&](unsigned i) {
        Vectors::Load(pixels + i, vector);
        if constexpr (hasSources)
            Vectors::LoadPieces(sources + i, source);
        if constexpr (hasCovers)
            Vectors::LoadWeights(covers + i, weights);
        compute(vector, source, weights);
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
