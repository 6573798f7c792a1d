#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <raster/ColumnTable.h>
#include <raster/MappedPicture.h>
#include <raster/PixelPair.h>
#include <raster/ResampleFilters.h>

/// The loops that interpolate spans. All of them compute the same sums in the same order: first the
/// taps of each column, from the top; then, of the columns, those at even places and those at odd
/// places, from the left; then the two sums together. So it does not show which loop a pixel went
/// through.
namespace Raster::Resampling {

/// Pixels that are worked on at once.
inline constexpr unsigned BlockLength = 128;

/// The taps of a block's pixels along one axis.
template<class Filter, class Real>
struct BlockTaps
{
    alignas(32) int firsts[BlockLength];
    alignas(32) Real weights[Filter::Taps][BlockLength];

    /// Sets the taps at the positions step · deviceX + origin.
    /// \return whether all are in the picture.
    bool Set(const ExtendedAxis& axis, double step, double deviceX, double origin,
             unsigned count) noexcept
    {
        alignas(32) double positions[BlockLength];
        SetPositions(axis, step, deviceX, origin, count, positions);
        SetTaps<Filter>(positions, count, firsts, weights[0], BlockLength);
        const auto range = GetRange(firsts, count);
        return range.lowest >= 0 && range.highest + Filter::Taps <= axis.GetSize();
    }
    bool IsInside(const ExtendedAxis& axis, unsigned k) const noexcept
    {
        return firsts[k] >= 0 && firsts[k] + Filter::Taps <= axis.GetSize();
    }
};

/// A sum as a channel. Integers are rounded to nearest; the sum is in their range.
template<class Channel, class Real>
Channel RoundChannel(Real sum) noexcept
{
    if constexpr (std::is_floating_point_v<Channel>)
        return static_cast<Channel>(sum);
    else
        return static_cast<Channel>(static_cast<int>(sum + Real(0.5)));
}

/// Brings float alpha into its range. Below it, beside an edge that a filter overshoots, there is
/// no pixel: its colour would darken what lies below it.
template<class P>
void ClampAlpha(P* pixels, unsigned count) noexcept
{
    if constexpr (std::is_floating_point_v<typename P::ChannelType>) {
        for (unsigned k = 0; k < count; ++k) {
            if (pixels[k].Alpha() < 0)
                pixels[k] = {};
            pixels[k].Alpha() = std::min(pixels[k].Alpha(), P::Max);
        }
    }
}

/// Turns sums into pixels. Without overshoot, colour stays within alpha because every step of the
/// sums is monotonic.
template<class P, class Filter>
void StorePixels(const RealOf<P>* __restrict sums, P* __restrict out, unsigned count) noexcept
{
    using Channel = typename P::ChannelType;
    using Real = RealOf<P>;
    if constexpr (std::is_integral_v<Channel> && Filter::Overshoots) {
        for (unsigned k = 0; k < count; ++k) {
            const Real* pixel = sums + std::size_t{k} * P::ChannelCount;
            const Real alpha = std::clamp(pixel[P::AlphaIndex], Real(0), Real(P::Max));
            for (std::size_t c = 0; c < P::ChannelCount; ++c)
                out[k][c] = RoundChannel<Channel>(std::clamp(pixel[c], Real(0), alpha));
        }
    } else {
        auto* __restrict channels = reinterpret_cast<Channel*>(out);
        for (std::size_t i = 0; i < std::size_t{count} * P::ChannelCount; ++i)
            channels[i] = RoundChannel<Channel>(sums[i]);
        ClampAlpha(out, count);
    }
}

/// Interpolates anywhere.
template<class P, class Filter>
struct FilterAny
{
    using Real = RealOf<P>;
    using Taps = BlockTaps<Filter, Real>;
    static constexpr unsigned Count = Filter::Taps;

    static void Apply(const MappedPicture* picture, ColumnTable<Real>*, int x, int y,
                      unsigned length, P* out)
    {
        for (unsigned begin = 0; begin < length; begin += BlockLength)
            Block(*picture, x + int(begin), y, std::min(length - begin, BlockLength), out + begin);
    }

private:
    static void Block(const MappedPicture& picture, int x, int y, unsigned count, P* out)
    {
        const auto& map = picture.map;
        const ExtendedAxis xAxis(picture.width, picture.extend);
        const ExtendedAxis yAxis(picture.height, picture.extend);
        Taps xTaps;
        Taps yTaps;
        const bool isInsideX =
            xTaps.Set(xAxis, map.m00, x + 0.5, map.m01 * (y + 0.5) + map.m02, count);
        const bool isInsideY =
            yTaps.Set(yAxis, map.m10, x + 0.5, map.m11 * (y + 0.5) + map.m12, count);

        alignas(32) Real sums[BlockLength * P::ChannelCount];
        const auto sumInside = [&](unsigned k) {
            Sum(picture.GetRow<P>(yTaps.firsts[k]) + xTaps.firsts[k], picture.stride, xTaps, yTaps,
                k, sums + std::size_t{k} * P::ChannelCount);
        };
        if (isInsideX && isInsideY) {
            for (unsigned k = 0; k < count; ++k)
                sumInside(k);
        } else {
            P patch[Count * Count]; // what is read across the edges
            for (unsigned k = 0; k < count; ++k) {
                if (xTaps.IsInside(xAxis, k) && yTaps.IsInside(yAxis, k)) {
                    sumInside(k);
                    continue;
                }
                Gather(picture, xAxis, yAxis, xTaps.firsts[k], yTaps.firsts[k], patch);
                Sum(patch, std::ptrdiff_t(Count * sizeof(P)), xTaps, yTaps, k,
                    sums + std::size_t{k} * P::ChannelCount);
            }
        }
        StorePixels<P, Filter>(sums, out, count);
    }

    static void Sum(const P* first, std::ptrdiff_t stride, const Taps& xTaps, const Taps& yTaps,
                    unsigned k, Real* out) noexcept
    {
        PixelPair<P> sum;
        for (unsigned i = 0; i < Count; i += 2) {
            const auto* row = reinterpret_cast<const unsigned char*>(first + i);
            PixelPair<P> columns(reinterpret_cast<const P*>(row));
            columns.Scale(yTaps.weights[0][k]);
            for (unsigned j = 1; j < Count; ++j) {
                row += stride;
                PixelPair<P> tap(reinterpret_cast<const P*>(row));
                tap.Scale(yTaps.weights[j][k]);
                columns.Add(tap);
            }
            columns.Scale(xTaps.weights[i][k], xTaps.weights[i + 1][k]);
            if (i == 0)
                sum = columns;
            else
                sum.Add(columns);
        }
        sum.StoreSum(out);
    }

    /// Not inlined, since seldom called.
    [[gnu::noinline]] static void Gather(const MappedPicture& picture, const ExtendedAxis& xAxis,
                                         const ExtendedAxis& yAxis, int x, int y, P* out) noexcept
    {
        for (int j = 0; j < int(Count); ++j) {
            const int row = yAxis.Map(y + j);
            for (int i = 0; i < int(Count); ++i) {
                const int column = xAxis.Map(x + i);
                *out++ = row < 0 || column < 0 ? P{} : picture.GetRow<P>(row)[column];
            }
        }
    }
};

/// A device row's place between rows of the picture: blends columns of them.
template<class P, class Filter>
class RowBlend
{
public:
    using Real = RealOf<P>;
    using Channel = typename P::ChannelType;
    static constexpr unsigned MaxColumns = BlockLength + Filter::Taps;

    RowBlend(const MappedPicture& picture, double position) noexcept
        : m_extend(picture.extend), m_width(picture.width)
    {
        const ExtendedAxis axis(picture.height, picture.extend);
        const double folded = axis.Fold(position);
        int first = 0;
        SetTaps<Filter>(&folded, 1, &first, m_weights.data(), 1);
        for (int j = 0; j < Filter::Taps; ++j) {
            const int row = axis.Map(first + j);
            m_rows[std::size_t(j)] = row < 0 ? nullptr : picture.GetRow<P>(row);
        }
    }

    /// Whether there is nothing but the transparent pixels around the picture.
    bool IsEmpty() const noexcept
    {
        for (const P* row : m_rows)
            if (row)
                return false;
        return true;
    }

    Real GetWeight(std::size_t tap) const noexcept { return m_weights[tap]; }

    /// Pixels from a column of the picture on, as many as there are, but no more than MaxColumns.
    const P* GetPixels(std::size_t tap, unsigned column) const noexcept
    {
        return m_rows[tap] ? m_rows[tap] + column : Zeros;
    }

    /// Blends \p count columns, which may lie outside, from \p first on.
    void Blend(std::int64_t first, unsigned count, Real* out) const noexcept
    {
        while (count > 0) {
            const auto column = MapIndex<std::int64_t>(first, m_width, m_extend);
            // Pixels follow each other in the picture itself and in its repetitions.
            const bool isRun = column >= 0 && (column == first || m_extend == ExtendType::Wrap);
            const unsigned run =
                isRun ? unsigned(std::min<std::int64_t>(count, m_width - column)) : 1U;
            if (column < 0)
                std::fill_n(out, P::ChannelCount, Real(0));
            else
                BlendRun(unsigned(column), run, out);
            first += run;
            count -= run;
            out += std::size_t{run} * P::ChannelCount;
        }
    }

    /// Blends \p count columns of the picture that follow each other; no more than MaxColumns.
    void BlendRun(unsigned column, unsigned count, Real* __restrict out) const noexcept
    {
        constexpr std::size_t Taps = Filter::Taps;
        const Channel* rows[Taps];
        for (std::size_t j = 0; j < Taps; ++j)
            rows[j] = reinterpret_cast<const Channel*>(GetPixels(j, column));
        const std::array<Real, Taps> weights = m_weights;
        for (std::size_t i = 0; i < std::size_t{count} * P::ChannelCount; ++i) {
            Real sum = weights[0] * Real(rows[0][i]);
            for (std::size_t j = 1; j < Taps; ++j)
                sum += weights[j] * Real(rows[j][i]);
            out[i] = sum;
        }
    }

private:
    static constexpr P Zeros[MaxColumns]{};

    ExtendType m_extend;
    int m_width;
    std::array<const P*, Filter::Taps> m_rows; // null where transparent
    std::array<Real, Filter::Taps> m_weights;
};

/// Interpolates where device rows run along rows of the picture.
/// \tparam Code the processor that the loops are compiled for.
template<class P, class Filter, class Code>
struct FilterRows
{
    using Real = RealOf<P>;
    using Table = ColumnTable<Real>;
    static constexpr unsigned Channels = P::ChannelCount;

    static void Apply(const MappedPicture* picture, Table* table, int x, int y, unsigned length,
                      P* out)
    {
        const auto& map = picture->map;
        const Rows rows(*picture, map.m11 * (y + 0.5) + map.m12);
        if (rows.IsEmpty()) {
            std::fill_n(out, length, P{});
            return;
        }
        const ExtendedAxis axis(picture->width, picture->extend);
        table->SetOrigin(map.m01 * (y + 0.5) + map.m02);
        while (length > 0) {
            const auto columns =
                table->template GetTaps<Filter>(axis, map.m00, x, std::min(length, BlockLength));
            const auto range = GetRange(columns.firsts, columns.count);
            // Wide apart where the picture repeats.
            if (std::int64_t{range.highest} - range.lowest >= BlockLength)
                Code::template Call<FilterAny<P, Filter>>(picture, table, x, y, columns.count, out);
            else
                Block(rows, columns, range, out);
            length -= columns.count;
            out += columns.count;
            if (length > 0)
                x += int(columns.count);
        }
    }

private:
    using Rows = RowBlend<P, Filter>;

    static void Block(const Rows& rows, const typename Table::Columns& taps,
                      const IndexRange& range, P* out)
    {
        alignas(32) Real columns[Rows::MaxColumns * Channels];
        alignas(32) Real sums[BlockLength * Channels];
        rows.Blend(range.lowest, unsigned(range.highest - range.lowest + Filter::Taps), columns);
        const unsigned count = taps.count;
        const int* const firsts = taps.firsts;
        const Real* weights = taps.weights;
        for (unsigned k = 0; k < count; ++k, ++weights) {
            const Real* const first = columns + std::size_t(firsts[k] - range.lowest) * Channels;
            Real* const sum = sums + std::size_t{k} * Channels;
            for (unsigned c = 0; c < Channels; ++c) {
                Real even = weights[0] * first[c];
                Real odd = weights[Table::Length] * first[c + Channels];
                for (unsigned i = 2; i < Filter::Taps; i += 2) {
                    even += weights[i * Table::Length] * first[c + i * Channels];
                    odd += weights[(i + 1) * Table::Length] * first[c + (i + 1) * Channels];
                }
                sum[c] = even + odd;
            }
        }
        StorePixels<P, Filter>(sums, out, count);
    }
};

} // namespace Raster::Resampling
