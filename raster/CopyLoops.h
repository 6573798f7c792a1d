#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <raster/MappedPicture.h>
#include <raster/ResampleFilters.h>

/// The loops that read pixels as they are.
namespace Raster::Resampling {

/// Copies from a row, which is −1 where all is transparent, from column \p position on.
template<class P>
void CopyRow(const MappedPicture& picture, std::int64_t row, std::int64_t position, unsigned length,
             P* out)
{
    if (row < 0) {
        std::fill_n(out, length, P{});
        return;
    }
    const P* const pixels = picture.GetRow<P>(row);
    const std::int64_t width = picture.width;
    const std::int64_t end = position + length;
    while (position < end) {
        const std::int64_t index = MapIndex(position, width, picture.extend);
        if (index < 0) {
            *out++ = P{};
            ++position;
            continue;
        }
        // Pixels follow each other in the picture itself and in its repetitions.
        const bool isRun = index == position || picture.extend == ExtendType::Wrap;
        const std::int64_t count = isRun ? std::min(end - position, width - index) : 1;
        std::memcpy(out, pixels + index, std::size_t(count) * sizeof(P));
        out += count;
        position += count;
    }
}

/// Copies through a map by whole pixels.
template<class P>
struct CopyWholePixels
{
    static void Apply(const MappedPicture* picture, int x, int y, unsigned length, P* out)
    {
        const auto row =
            MapIndex<std::int64_t>(y + picture->offsetY, picture->height, picture->extend);
        CopyRow(*picture, row, x + picture->offsetX, length, out);
    }
};

/// Looks up nearest neighbours where a step on the device is a step in the picture.
template<class P>
struct NearestUnitSteps
{
    static void Apply(const MappedPicture* picture, int x, int y, unsigned length, P* out)
    {
        const auto& map = picture->map;
        const ExtendedAxis axis(picture->height, picture->extend);
        const double v = axis.Fold(map.m11 * (y + 0.5) + map.m12 + NearestBias);
        CopyRow(*picture, axis.Map(FloorNearPicture(v)), x + picture->offsetX, length, out);
    }
};

/// Looks up nearest neighbours anywhere.
template<class P, bool isRow>
struct NearestAny
{
    static constexpr unsigned BlockLength = 128;

    static void Apply(const MappedPicture* picture, int x, int y, unsigned length, P* out)
    {
        const auto& map = picture->map;
        const ExtendedAxis xAxis(picture->width, picture->extend);
        const ExtendedAxis yAxis(picture->height, picture->extend);
        const double rowU = map.m01 * (y + 0.5) + map.m02 + NearestBias;
        const double rowV = map.m11 * (y + 0.5) + map.m12 + NearestBias;
        int constantRow = 0;
        if constexpr (isRow) {
            constantRow = yAxis.Map(FloorNearPicture(yAxis.Fold(rowV)));
            if (constantRow < 0) {
                std::fill_n(out, length, P{});
                return;
            }
        }
        alignas(32) int columns[BlockLength];
        alignas(32) int rows[BlockLength];
        for (unsigned begin = 0; begin < length; begin += BlockLength) {
            const unsigned count = std::min(length - begin, BlockLength);
            const double deviceX = double(x) + 0.5 + begin;
            bool isInside = SetIndices(xAxis, map.m00, deviceX, rowU, count, columns);
            if constexpr (!isRow)
                isInside &= SetIndices(yAxis, map.m10, deviceX, rowV, count, rows);
            const auto* const pixels = picture->pixels;
            const std::ptrdiff_t stride = picture->stride;
            const P* const row = picture->GetRow<P>(constantRow);
            for (unsigned k = 0; k < count; ++k) {
                const int column = columns[k];
                if constexpr (isRow) {
                    out[begin + k] = isInside || column >= 0 ? row[column] : P{};
                } else {
                    const auto* at = reinterpret_cast<const P*>(pixels + stride * rows[k]) + column;
                    out[begin + k] = isInside || (column >= 0 && rows[k] >= 0) ? *at : P{};
                }
            }
        }
    }

private:
    /// \return whether all positions lie in the picture, so that no index is −1.
    static bool SetIndices(const ExtendedAxis& axis, double step, double deviceX, double origin,
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
            return true;
        }
        for (unsigned k = 0; k < count; ++k)
            out[k] = axis.Map(FloorNearPicture(axis.Fold(step * (deviceX + int(k)) + origin)));
        return false;
    }
};

} // namespace Raster::Resampling
