#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include <raster/ResampleFilters.h>

namespace Raster::Resampling {

/// Writes the positions step · deviceX + origin, brought near the picture, of \p count device
/// pixels whose first has its centre at \p deviceX.
inline void SetPositions(const ExtendedAxis& axis, double step, double deviceX, double origin,
                         unsigned count, double* __restrict out) noexcept
{
    // Device positions are exact: the result does not depend on where the block begins.
    for (unsigned k = 0; k < count; ++k)
        out[k] = step * (deviceX + int(k)) + origin;
    // Rounding is monotonic too: between two positions in the picture all are.
    if (!axis.IsInside(out[0]) || !axis.IsInside(out[count - 1]))
        axis.FoldAll(out, count);
}

/// Writes the taps of a filter at positions that have been brought near the picture: the first one
/// and the weights, those of tap i from \p weights + i · \p plane on.
template<class Filter, class Real>
void SetTaps(const double* __restrict positions, unsigned count, int* __restrict firsts,
             Real* __restrict weights, std::size_t plane) noexcept
{
    for (unsigned k = 0; k < count; ++k) {
        const double u = positions[k] - 0.5;
        const int index = FloorNearPicture(u);
        const double fraction = u - index;
        const auto exact = Filter::GetWeights(fraction > 0 ? fraction : 0);
        for (std::size_t i = 0; i < exact.size(); ++i)
            weights[i * plane + k] = static_cast<Real>(exact[i]);
        firsts[k] = index - (Filter::Taps / 2 - 1);
    }
}

/// Writes the indices of the nearest pixels, −1 for transparent ones.
inline void SetIndices(const ExtendedAxis& axis, double step, double deviceX, double origin,
                       unsigned count, int* __restrict out) noexcept
{
    // Rounding is monotonic: what holds for the ends holds between them.
    const auto isInside = [&](unsigned k) {
        const double u = step * (deviceX + int(k)) + origin;
        return axis.IsInside(u) && FloorNearPicture(u) < axis.GetSize();
    };
    if (isInside(0) && isInside(count - 1)) {
        for (unsigned k = 0; k < count; ++k)
            out[k] = FloorNearPicture(step * (deviceX + int(k)) + origin);
        return;
    }
    for (unsigned k = 0; k < count; ++k)
        out[k] = axis.Map(FloorNearPicture(axis.Fold(step * (deviceX + int(k)) + origin)));
}

struct IndexRange
{
    int lowest;
    int highest;
};

inline IndexRange GetRange(const int* indices, unsigned count) noexcept
{
    int lowest = indices[0];
    int highest = indices[0];
    for (unsigned k = 1; k < count; ++k) {
        lowest = indices[k] < lowest ? indices[k] : lowest;
        highest = indices[k] > highest ? indices[k] : highest;
    }
    return {lowest, highest};
}

/// What the columns of the device read along rows of a picture: it is the same in every row, so it
/// is computed once, when it is first asked for. Holds the last 1024 columns or so, in chunks.
template<class Real>
class ColumnTable
{
public:
    /// Columns that are held.
    static constexpr unsigned Length = 1024;

    struct Columns
    {
        unsigned count;      ///< how many there are: at least 1, perhaps fewer than asked for
        const int* firsts;   ///< the first tap or, for nearest neighbours, the index
        const Real* weights; ///< those of tap i begin at i · Length
    };

    /// Not set to 0, since most of it is never used.
    ColumnTable() noexcept { Clear(); }

    /// What is added to the positions of all columns; skewed maps have another in each row.
    void SetOrigin(double origin) noexcept
    {
        if (origin != m_origin)
            Clear();
        m_origin = origin;
    }

    template<class Filter>
    Columns GetTaps(const ExtendedAxis& axis, double step, int x, unsigned count) noexcept
    {
        static_assert(Filter::Taps <= MaxTaps);
        return Get(x, count, [&](double deviceX, unsigned slot) {
            alignas(32) double positions[ChunkLength];
            SetPositions(axis, step, deviceX, m_origin, ChunkLength, positions);
            SetTaps<Filter>(positions, ChunkLength, &m_firsts[slot], &m_weights[slot], Length);
        });
    }

    Columns GetColumns(const ExtendedAxis& axis, double step, int x, unsigned count) noexcept
    {
        return Get(x, count, [&](double deviceX, unsigned slot) {
            SetIndices(axis, step, deviceX, m_origin, ChunkLength, &m_firsts[slot]);
        });
    }

private:
    static constexpr int ChunkLength = 32;
    static constexpr unsigned ChunkCount = Length / ChunkLength;
    static constexpr std::size_t MaxTaps = 6;
    /// No chunk has this number.
    static constexpr int NoChunk = std::numeric_limits<int>::max();

    void Clear() noexcept { m_chunks.fill(NoChunk); }

    template<class Compute>
    Columns Get(int x, unsigned count, Compute compute) noexcept
    {
        const unsigned first = unsigned(x) % Length;
        count = std::min(count, Length - first);
        const int lastChunk = (x + int(count - 1)) >> ChunkShift;
        for (int chunk = x >> ChunkShift; chunk <= lastChunk; ++chunk) {
            const unsigned slot = unsigned(chunk) % ChunkCount;
            if (m_chunks[slot] == chunk)
                continue;
            compute(double(chunk) * ChunkLength + 0.5, slot * ChunkLength);
            m_chunks[slot] = chunk;
        }
        return {count, &m_firsts[first], &m_weights[first]};
    }

    static constexpr int ChunkShift = 5;
    static_assert(1 << ChunkShift == ChunkLength);

    double m_origin = 0;
    std::array<int, ChunkCount> m_chunks; // the number of the chunk that each slot holds
    alignas(32) std::array<int, Length> m_firsts;
    alignas(32) std::array<Real, MaxTaps * Length> m_weights;
};

} // namespace Raster::Resampling
