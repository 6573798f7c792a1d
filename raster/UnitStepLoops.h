#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <raster/FilterLoops.h>

namespace Raster::Resampling {

/// Interpolates bilinearly where a step on the device is a step in the picture: all pixels have the
/// same weights. Spans are often but a few pixels long, along strokes and edges, so that little is
/// set up for them.
template<class P>
struct BilinearUnitSteps
{
    using Real = RealOf<P>;

    static void Apply(const MappedPicture* picture, ColumnTable<Real>*, int x, int y,
                      unsigned length, P* out)
    {
        const auto& map = picture->map;
        const Rows rows(*picture, map.m11 * (y + 0.5) + map.m12);
        if (rows.IsEmpty()) {
            std::fill_n(out, length, P{});
            return;
        }
        const auto [left, right] = BilinearFilter::GetWeights(picture->fractionX);
        const Weights weights{rows.GetWeight(0), rows.GetWeight(1), Real(left), Real(right)};
        const std::int64_t width = picture->width;
        const ExtendType extend = picture->extend;
        std::int64_t position = x + picture->offsetX;
        while (length > 0) {
            const auto column = MapIndex(position, width, extend);
            // Pixels follow each other in the picture itself and in its repetitions.
            const bool isRun = column >= 0 && (column == position || extend == ExtendType::Wrap);
            const std::int64_t behind = isRun ? width - 1 - column : 0;
            unsigned run = 1;
            if (behind > 0) {
                run = unsigned(std::min<std::int64_t>({length, behind, BlockLength}));
                SumRun(rows, unsigned(column), weights, run, out);
            } else {
                SumAcross(rows, column, MapIndex(position + 1, width, extend), weights, out);
                run = CountAlike(position, width, extend, length);
                std::fill_n(out + 1, run - 1, *out);
            }
            length -= run;
            out += run;
            position += run;
        }
    }

private:
    using Rows = RowBlend<P, BilinearFilter>;
    using Pair = PixelPair<P>;

    struct Weights
    {
        Real top;
        Real bottom;
        Real left;
        Real right;
    };

    /// Runs from here on are worth the loops over channels.
    static constexpr unsigned LongRun = 24;

    /// How many pixels, at least the first, read the same columns beside the picture.
    static unsigned CountAlike(std::int64_t position, std::int64_t width, ExtendType extend,
                               unsigned length) noexcept
    {
        if (extend != ExtendType::Clamp)
            return 1;
        return position < 0            ? unsigned(std::min<std::int64_t>(-position, length))
               : position >= width - 1 ? length
                                       : 1;
    }

    /// Reads \p count + 1 columns that follow each other.
    static void SumRun(const Rows& rows, unsigned column, const Weights& weights, unsigned count,
                       P* out) noexcept
    {
        if (count >= LongRun) {
            alignas(32) Real columns[Rows::MaxColumns * P::ChannelCount];
            rows.BlendRun(column, count + 1, columns);
            SumColumns(columns, weights.left, weights.right, count, out);
            return;
        }
        const P* const top = rows.GetPixels(0, column);
        const P* const bottom = rows.GetPixels(1, column);
        if (count == 1) {
            SumOne(top, bottom, weights, out);
            return;
        }
        Pair pair = Blend(top, bottom, weights);
        for (unsigned k = 0; k + 3 <= count; k += 2) {
            const Pair next = Blend(top + k + 2, bottom + k + 2, weights);
            SumTwo(pair, Pair::Between(pair, next), weights, out + k);
            pair = next;
        }
        // If one is left, the last but one comes out the same again.
        const unsigned last = count - 2;
        SumTwo(Blend(top + last, bottom + last, weights),
               Blend(top + last + 1, bottom + last + 1, weights), weights, out + last);
    }

    static void SumColumns(const Real* __restrict columns, Real left, Real right, unsigned count,
                           P* __restrict out) noexcept
    {
        using Channel = typename P::ChannelType;
        constexpr std::size_t Channels = P::ChannelCount;
        auto* __restrict channels = reinterpret_cast<Channel*>(out);
        for (std::size_t c = 0; c < count * Channels; ++c)
            channels[c] = RoundChannel<Channel>(left * columns[c] + right * columns[c + Channels]);
        ClampAlpha(out, count);
    }

    /// Two columns.
    static Pair Blend(const P* top, const P* bottom, const Weights& weights) noexcept
    {
        Pair sum(top);
        sum.Scale(weights.top);
        Pair below(bottom);
        below.Scale(weights.bottom);
        sum.Add(below);
        return sum;
    }

    /// Two pixels, from their left columns and their right ones.
    static void SumTwo(const Pair& left, const Pair& right, const Weights& weights, P* out) noexcept
    {
        Pair sum = left;
        sum.Scale(weights.left);
        Pair behind = right;
        behind.Scale(weights.right);
        sum.Add(behind);
        sum.StoreRounded(out);
        ClampAlpha(out, 2);
    }

    static void SumOne(const P* top, const P* bottom, const Weights& weights, P* out) noexcept
    {
        Pair columns = Blend(top, bottom, weights);
        columns.Scale(weights.left, weights.right);
        columns.Add(Pair::Between(columns, columns));
        P both[2];
        columns.StoreRounded(both);
        *out = both[0];
        ClampAlpha(out, 1);
    }

    /// A pixel whose columns do not follow each other; −1 is transparent.
    static void SumAcross(const Rows& rows, std::int64_t column, std::int64_t next,
                          const Weights& weights, P* out) noexcept
    {
        const auto read = [&](std::size_t tap, std::int64_t at) {
            return at < 0 ? P{} : *rows.GetPixels(tap, unsigned(at));
        };
        const P top[] = {read(0, column), read(0, next)};
        const P bottom[] = {read(1, column), read(1, next)};
        SumOne(top, bottom, weights, out);
    }
};

} // namespace Raster::Resampling
