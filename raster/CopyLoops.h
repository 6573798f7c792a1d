#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <raster/ColumnTable.h>
#include <raster/MappedPicture.h>
#include <raster/PixelPair.h>
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
    static void Apply(const MappedPicture* picture, ColumnTable<RealOf<P>>*, int x, int y,
                      unsigned length, P* out)
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
    static void Apply(const MappedPicture* picture, ColumnTable<RealOf<P>>*, int x, int y,
                      unsigned length, P* out)
    {
        const auto& map = picture->map;
        const ExtendedAxis axis(picture->height, picture->extend);
        const double v = axis.Fold(map.m11 * (y + 0.5) + map.m12 + NearestBias);
        CopyRow(*picture, axis.Map(FloorNearPicture(v)), x + picture->offsetX, length, out);
    }
};

/// Looks up nearest neighbours where device rows run along rows of the picture.
template<class P>
struct NearestRows
{
    static void Apply(const MappedPicture* picture, ColumnTable<RealOf<P>>* table, int x, int y,
                      unsigned length, P* out)
    {
        const auto& map = picture->map;
        const ExtendedAxis xAxis(picture->width, picture->extend);
        const ExtendedAxis yAxis(picture->height, picture->extend);
        const int row =
            yAxis.Map(FloorNearPicture(yAxis.Fold(map.m11 * (y + 0.5) + map.m12 + NearestBias)));
        if (row < 0) {
            std::fill_n(out, length, P{});
            return;
        }
        const P* const pixels = picture->GetRow<P>(row);
        const bool isTransparent = picture->extend == ExtendType::Transparent;
        table->SetOrigin(map.m01 * (y + 0.5) + map.m02 + NearestBias);
        while (length > 0) {
            const auto columns = table->GetColumns(xAxis, map.m00, x, length);
            const int* const indices = columns.firsts;
            if (isTransparent) {
                for (unsigned k = 0; k < columns.count; ++k)
                    out[k] = indices[k] < 0 ? P{} : pixels[indices[k]];
            } else {
                for (unsigned k = 0; k < columns.count; ++k)
                    out[k] = pixels[indices[k]];
            }
            length -= columns.count;
            out += columns.count;
            if (length > 0)
                x += int(columns.count);
        }
    }
};

/// Looks up nearest neighbours anywhere.
template<class P>
struct NearestAny
{
    static constexpr unsigned BlockLength = 128;

    static void Apply(const MappedPicture* picture, ColumnTable<RealOf<P>>*, int x, int y,
                      unsigned length, P* out)
    {
        const auto& map = picture->map;
        const ExtendedAxis xAxis(picture->width, picture->extend);
        const ExtendedAxis yAxis(picture->height, picture->extend);
        const double rowU = map.m01 * (y + 0.5) + map.m02 + NearestBias;
        const double rowV = map.m11 * (y + 0.5) + map.m12 + NearestBias;
        const auto* const pixels = picture->pixels;
        const std::ptrdiff_t stride = picture->stride;
        alignas(32) int columns[BlockLength];
        alignas(32) int rows[BlockLength];
        for (unsigned begin = 0; begin < length; begin += BlockLength) {
            const unsigned count = std::min(length - begin, BlockLength);
            const double deviceX = double(x) + 0.5 + begin;
            SetIndices(xAxis, map.m00, deviceX, rowU, count, columns);
            SetIndices(yAxis, map.m10, deviceX, rowV, count, rows);
            for (unsigned k = 0; k < count; ++k) {
                const auto* row = reinterpret_cast<const P*>(pixels + stride * rows[k]);
                out[begin + k] = columns[k] < 0 || rows[k] < 0 ? P{} : row[columns[k]];
            }
        }
    }
};

} // namespace Raster::Resampling
